#include "output/PrintSize.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Unit = PrintSize::Unit;

struct PixelCase {
    const char *name;
    PrintSize print;
    QSize pixels;
    int dotsPerMeter;
};

void PrintTo(const PixelCase &c, std::ostream *os) { *os << c.name; }

class PrintSizePixels : public ::testing::TestWithParam<PixelCase> {};

TEST_P(PrintSizePixels, CoversWholePixelsAtTheResolution)
{
    const PixelCase &c = GetParam();
    EXPECT_EQ(c.print.pixelSize(), c.pixels);
    EXPECT_EQ(c.print.isValid(), !c.pixels.isEmpty());
    if (!c.pixels.isEmpty()) {
        EXPECT_EQ(c.print.dotsPerMeter(), c.dotsPerMeter);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, PrintSizePixels,
    ::testing::Values(PixelCase{"A4At300Dpi", PrintSize(21.0, 29.7, Unit::Centimetres), QSize(2480, 3508), 11811},
                      PixelCase{"TenByEightInchesAt300", PrintSize(10, 8, Unit::Inches), QSize(3000, 2400), 11811},
                      PixelCase{"FourInchesAt72", PrintSize(4, 4, Unit::Inches, 72), QSize(288, 288), 2835},
                      PixelCase{"TinyRoundsUpToOnePixel", PrintSize(0.001, 0.001, Unit::Centimetres), QSize(1, 1), 11811},
                      PixelCase{"ZeroWidthIsInvalid", PrintSize(0, 10, Unit::Centimetres), QSize(), 0},
                      PixelCase{"NegativeDpiIsInvalid", PrintSize(10, 10, Unit::Inches, -5), QSize(), 0},
                      PixelCase{"BeyondTheLargestSideIsInvalid", PrintSize(1000, 10, Unit::Inches, 300), QSize(), 0},
                      PixelCase{"NotANumberIsInvalid", PrintSize(std::nan(""), 10, Unit::Inches), QSize(), 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(PrintSize, OfPixelsAndUnitsRoundTrip)
{
    const PrintSize cm = PrintSize::ofPixels(QSize(3000, 2000), Unit::Centimetres, 300);
    EXPECT_NEAR(cm.width(), 25.4, 1e-9);
    EXPECT_NEAR(cm.height(), 16.9333333, 1e-6);
    EXPECT_EQ(cm.pixelSize(), QSize(3000, 2000));
    const PrintSize inches = cm.inUnit(Unit::Inches);
    EXPECT_NEAR(inches.width(), 10.0, 1e-9);
    EXPECT_EQ(inches.pixelSize(), QSize(3000, 2000));
    EXPECT_NEAR(PrintSize::heightKeepingProportions(30.0, QSize(3000, 2000)), 20.0, 1e-9);
    EXPECT_NEAR(PrintSize::widthKeepingProportions(20.0, QSize(3000, 2000)), 30.0, 1e-9);
    EXPECT_EQ(PrintSize::heightKeepingProportions(30.0, QSize()), 0.0);
}

struct EnlargeCase {
    const char *name;
    PrintSize print;
    QSize source;
    double sharpest;
    double enlargement;
    bool warns;
};

void PrintTo(const EnlargeCase &c, std::ostream *os) { *os << c.name; }

class PrintSizeEnlargement : public ::testing::TestWithParam<EnlargeCase> {};

TEST_P(PrintSizeEnlargement, WarnsOnlyBeyondTheSharpestPhoto)
{
    const EnlargeCase &c = GetParam();
    EXPECT_NEAR(c.print.enlargement(c.source), c.enlargement, 1e-9);
    EXPECT_EQ(c.print.enlargesBeyond(c.source, c.sharpest), c.warns);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PrintSizeEnlargement,
    ::testing::Values(
        // 10 x 10 inches at 300 dpi is 3000 pixels a side.
        EnlargeCase{"SameSizeNeverWarns", PrintSize(10, 10, Unit::Inches), QSize(3000, 3000), 0.5, 1.0, false},
        EnlargeCase{"ShrinkingNeverWarns", PrintSize(10, 10, Unit::Inches), QSize(6000, 6000), 0.0, 0.5, false},
        EnlargeCase{"DoubleWithinSharpPhotos", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 2.5, 2.0, false},
        EnlargeCase{"DoubleBeyondTheSharpest", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 1.5, 2.0, true},
        EnlargeCase{"ExactlyTheSharpest", PrintSize(10, 10, Unit::Inches), QSize(1500, 1500), 2.0, 2.0, false},
        // Proportions kept: the larger ratio decides.
        EnlargeCase{"WiderPrintUsesTheLargerRatio", PrintSize(20, 10, Unit::Inches), QSize(3000, 3000), 1.0, 2.0, true},
        EnlargeCase{"UnknownSharpnessMeansTheOwnPixels", PrintSize(10, 10, Unit::Inches), QSize(2999, 2999), 0.0,
                    3000.0 / 2999.0, true}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
