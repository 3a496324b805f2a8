#pragma once

#include <QSize>

// A print size for a picture: width and height in centimetres or inches at a resolution in
// dots per inch, and what printing a picture at that size asks of it. The save dialog offers it
// beside the file format; the picture is then resampled to pixelSize() and the resolution is
// written into the file, so that a print shop or a layout program places it at that size.
class PrintSize
{
public:
    enum class Unit { Centimetres, Inches };

    static constexpr double kDefaultDotsPerInch = 300.0;
    static constexpr double kCentimetresPerInch = 2.54;
    // The largest side a print may ask for, in pixels (the canvas limit of the renderer).
    static constexpr int kMaxPixelSide = 60000;

    PrintSize() = default;
    PrintSize(double width, double height, Unit unit, double dotsPerInch = kDefaultDotsPerInch);

    // The size at which a picture of `pixels` prints without resampling at `dotsPerInch`.
    static PrintSize ofPixels(const QSize &pixels, Unit unit, double dotsPerInch = kDefaultDotsPerInch);

    double width() const { return m_width; }
    double height() const { return m_height; }
    Unit unit() const { return m_unit; }
    double dotsPerInch() const { return m_dotsPerInch; }

    // Positive, finite sizes and resolution whose pixel size is within kMaxPixelSide.
    bool isValid() const;
    // The same print size expressed in the other unit.
    PrintSize inUnit(Unit unit) const;
    // The whole pixels the print covers: each side times the resolution, rounded, at least 1.
    // Empty when the size is not valid.
    QSize pixelSize() const;
    // The resolution as a picture file stores it (QImage::setDotsPerMeterX/Y).
    int dotsPerMeter() const;

    // The height in this unit that keeps the proportions of `pixels` for `width`.
    static double heightKeepingProportions(double width, const QSize &pixels);
    // The width likewise, for a height.
    static double widthKeepingProportions(double height, const QSize &pixels);

    // How many times a picture of `source` pixels is enlarged when resampled to fill the print
    // (the picture keeps its proportions, so the larger of the two ratios); below 1 it shrinks.
    double enlargement(const QSize &source) const;
    // Whether the print stretches the picture beyond the detail its sharpest photo holds:
    // `sharpest` is how many of that photo's own pixels fall on one pixel of the picture (1 for
    // a picture at its photos' own resolution). Shrinking, or enlarging within that, is fine.
    bool enlargesBeyond(const QSize &source, double sharpest) const;

private:
    double m_width = 0.0;
    double m_height = 0.0;
    Unit m_unit = Unit::Centimetres;
    double m_dotsPerInch = kDefaultDotsPerInch;
};
