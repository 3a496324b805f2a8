#pragma once

#include <QRectF>
#include <QSizeF>

// Straightening a photo: it is turned by a small angle about its centre, then cut to the
// largest rectangle of its own proportions that holds no corner of the background the turn
// uncovered.
class StraightenGeometry
{
public:
    // The size of the box around the turned picture.
    static QSizeF rotatedBounds(const QSizeF &size, double degrees);
    // The scale (0 .. 1) of the largest rectangle with the picture's proportions, centred, that
    // lies inside the picture turned by `degrees`.
    static double inscribedScale(const QSizeF &size, double degrees);
    // That rectangle, in the coordinates of the turned picture's bounding box.
    static QRectF inscribedRect(const QSizeF &size, double degrees);
    // The pixel size of the straightened picture (at least 1 x 1 for a non-empty picture).
    static QSize straightenedSize(const QSize &size, double degrees);
};
