#include "BottomLeftCoordinates.h"

QTransform BottomLeftCoordinates::transform(qreal surfaceHeight)
{
    // y' = surfaceHeight - y
    return QTransform(1, 0, 0, -1, 0, surfaceHeight);
}

QRectF BottomLeftCoordinates::toTopLeft(const QRectF &rect, qreal surfaceHeight)
{
    return QRectF(rect.x(), surfaceHeight - rect.y() - rect.height(), rect.width(), rect.height());
}

QPointF BottomLeftCoordinates::toTopLeft(const QPointF &point, qreal surfaceHeight)
{
    return QPointF(point.x(), surfaceHeight - point.y());
}

QPainterPath BottomLeftCoordinates::toTopLeft(const QPainterPath &path, qreal surfaceHeight)
{
    return transform(surfaceHeight).map(path);
}
