#include "model/CoordinateTransform.h"

#include "model/CollageLayout.h"

#include <cmath>

QString CoordinateTransform::name(int transform)
{
    switch (transform) {
    case NoTransform:
        return QStringLiteral("No Transform");
    case FlippedHorizontally:
        return QStringLiteral("Flipped Horizontally");
    case FlippedVertically:
        return QStringLiteral("Flipped Vertically");
    case RotatedLeft:
        return QStringLiteral("Rotated 90\u00BA Left");
    case RotatedRight:
        return QStringLiteral("Rotated 90\u00BA Right");
    default:
        return QString();
    }
}

QRectF CoordinateTransform::apply(const QRectF &r, const QSizeF &extent, int transform)
{
    // The collage's width and height as whole points, as the document view reports them.
    const double W = std::trunc(extent.width());
    const double H = std::trunc(extent.height());
    const double x = r.x(), y = r.y(), w = r.width(), h = r.height();
    switch (transform) {
    case FlippedHorizontally:
        return QRectF(W - x - w, y, w, h);
    case FlippedVertically:
        return QRectF(x, H - y - h, w, h);
    case RotatedLeft:
        return QRectF(y, W - x - w, h, w);
    case RotatedRight:
        return QRectF(H - y - h, x, h, w);
    default:
        return r;
    }
}

void CoordinateTransform::applyCoordinateTransform(CollageLayout &layout)
{
    if (layout.coordinateTransform == NoTransform || !isValid(layout.coordinateTransform))
        return;
    for (TileLayout &tile : layout.tiles) {
        tile.frame = apply(tile.frame, layout.extent, layout.coordinateTransform);
        tile.cellFrame = apply(tile.cellFrame, layout.extent, layout.coordinateTransform);
    }
}
