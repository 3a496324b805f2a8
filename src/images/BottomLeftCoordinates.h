#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QTransform>

// The image operations measure rectangles with the origin at the lower left and y growing upward;
// QImage and QPainter put the origin at the top left with y growing downward. This is the one
// place where the two meet: every rectangle, point and path goes through here on its way to a
// painter or to a pixel region. The mapping is its own inverse.
//
// "Upper" therefore means larger y here and the top rows of a QImage there.
class BottomLeftCoordinates
{
public:
    // The rectangle as seen from the top-left corner of a surface of the given height.
    static QRectF toTopLeft(const QRectF &rect, qreal surfaceHeight);
    static QPointF toTopLeft(const QPointF &point, qreal surfaceHeight);
    static QPainterPath toTopLeft(const QPainterPath &path, qreal surfaceHeight);
    // The affine transform behind the three conversions.
    static QTransform transform(qreal surfaceHeight);
};
