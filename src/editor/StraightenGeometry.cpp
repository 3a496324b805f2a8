#include "editor/StraightenGeometry.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

QSizeF StraightenGeometry::rotatedBounds(const QSizeF &size, double degrees)
{
    const double c = std::abs(std::cos(qDegreesToRadians(degrees)));
    const double s = std::abs(std::sin(qDegreesToRadians(degrees)));
    return QSizeF(size.width() * c + size.height() * s, size.width() * s + size.height() * c);
}

double StraightenGeometry::inscribedScale(const QSizeF &size, double degrees)
{
    const double w = size.width(), h = size.height();
    if (w <= 0 || h <= 0)
        return 0;
    // A centred upright rectangle (s*w, s*h) fits the turned one when its projections on the
    // turned rectangle's two axes stay within the turned rectangle's half sides.
    const double c = std::abs(std::cos(qDegreesToRadians(degrees)));
    const double s = std::abs(std::sin(qDegreesToRadians(degrees)));
    const double alongWidth = w / (w * c + h * s);
    const double alongHeight = h / (w * s + h * c);
    return std::min({1.0, alongWidth, alongHeight});
}

QRectF StraightenGeometry::inscribedRect(const QSizeF &size, double degrees)
{
    const QSizeF bounds = rotatedBounds(size, degrees);
    const QSizeF inner = size * inscribedScale(size, degrees);
    return QRectF(QPointF((bounds.width() - inner.width()) / 2, (bounds.height() - inner.height()) / 2), inner);
}

QSize StraightenGeometry::straightenedSize(const QSize &size, double degrees)
{
    if (size.isEmpty())
        return QSize();
    const double scale = inscribedScale(QSizeF(size), degrees);
    // A hair under the exact size, so rounding never takes in a background pixel.
    return QSize(std::max(1, int(std::floor(size.width() * scale + 1e-6))),
                 std::max(1, int(std::floor(size.height() * scale + 1e-6))));
}
