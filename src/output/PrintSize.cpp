#include "output/PrintSize.h"

#include <algorithm>
#include <cmath>

namespace {

double inchesPerUnit(PrintSize::Unit unit)
{
    return unit == PrintSize::Unit::Inches ? 1.0 : 1.0 / PrintSize::kCentimetresPerInch;
}

bool positive(double v)
{
    return std::isfinite(v) && v > 0.0;
}

} // namespace

PrintSize::PrintSize(double width, double height, Unit unit, double dotsPerInch)
    : m_width(width)
    , m_height(height)
    , m_unit(unit)
    , m_dotsPerInch(dotsPerInch)
{
}

PrintSize PrintSize::ofPixels(const QSize &pixels, Unit unit, double dotsPerInch)
{
    if (pixels.isEmpty() || !positive(dotsPerInch))
        return PrintSize(0, 0, unit, dotsPerInch);
    const double perPixel = 1.0 / dotsPerInch / inchesPerUnit(unit);
    return PrintSize(pixels.width() * perPixel, pixels.height() * perPixel, unit, dotsPerInch);
}

bool PrintSize::isValid() const
{
    if (!positive(m_width) || !positive(m_height) || !positive(m_dotsPerInch))
        return false;
    const double k = m_dotsPerInch * inchesPerUnit(m_unit);
    return m_width * k < kMaxPixelSide + 0.5 && m_height * k < kMaxPixelSide + 0.5;
}

PrintSize PrintSize::inUnit(Unit unit) const
{
    const double k = inchesPerUnit(m_unit) / inchesPerUnit(unit);
    return PrintSize(m_width * k, m_height * k, unit, m_dotsPerInch);
}

QSize PrintSize::pixelSize() const
{
    if (!isValid())
        return QSize();
    const double k = m_dotsPerInch * inchesPerUnit(m_unit);
    return QSize(std::max(1, int(std::lround(m_width * k))), std::max(1, int(std::lround(m_height * k))));
}

int PrintSize::dotsPerMeter() const
{
    if (!positive(m_dotsPerInch))
        return 0;
    return int(std::lround(m_dotsPerInch / 0.0254));
}

double PrintSize::heightKeepingProportions(double width, const QSize &pixels)
{
    return pixels.isEmpty() ? 0.0 : width * pixels.height() / pixels.width();
}

double PrintSize::widthKeepingProportions(double height, const QSize &pixels)
{
    return pixels.isEmpty() ? 0.0 : height * pixels.width() / pixels.height();
}

double PrintSize::enlargement(const QSize &source) const
{
    const QSize target = pixelSize();
    if (source.isEmpty() || target.isEmpty())
        return 0.0;
    return std::max(double(target.width()) / source.width(), double(target.height()) / source.height());
}

bool PrintSize::enlargesBeyond(const QSize &source, double sharpest) const
{
    const double limit = std::max(1.0, std::isfinite(sharpest) ? sharpest : 1.0);
    // A hair of tolerance: a print of exactly the picture's own pixels does not warn.
    return enlargement(source) > limit * (1.0 + 1e-9);
}
