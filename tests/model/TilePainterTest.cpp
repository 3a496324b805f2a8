#include "model/TilePainter.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

struct LabelCase {
    const char *name;
    QSizeF tile;
    double tileBorder;
    double limitBorder;
    QRectF expected; // from the tile's bottom-left corner
};

void PrintTo(const LabelCase &c, std::ostream *os) { *os << c.name; }

class TitleLabel : public ::testing::TestWithParam<LabelCase> {};

TEST_P(TitleLabel, SitsAlongTheBottomInsideTheBorder)
{
    const LabelCase &c = GetParam();
    const QRectF r = TilePainter::titleLabelFrame(c.tile, c.tileBorder, c.limitBorder);
    EXPECT_NEAR(r.x(), c.expected.x(), 1e-4);
    EXPECT_NEAR(r.y(), c.expected.y(), 1e-4);
    EXPECT_NEAR(r.width(), c.expected.width(), 1e-4);
    EXPECT_NEAR(r.height(), c.expected.height(), 1e-4);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TitleLabel,
    ::testing::Values(
        // No border: height a quarter of the smaller side; the width loses what passes the
        // limit o + iw + 2 + border = 2 + 200 + 2 + 0.
        LabelCase{"plain", QSizeF(200, 100), 0, 0, QRectF(2, 2, 196, 25)},
        // A 1-point tile border moves the label in (limit 3 + 198 + 2); the border of 6 used
        // when labels are laid out again after a turn shortens it further (limit 209).
        LabelCase{"bordered", QSizeF(200, 100), 1, 0, QRectF(3, 3, 195, 24.5)},
        LabelCase{"relaidOut", QSizeF(200, 100), 1, 6, QRectF(3, 3, 189, 24.5)},
        // A wide border keeps the limit inside the tile: the full inner width.
        LabelCase{"wideBorder", QSizeF(200, 100), 10, 0, QRectF(12, 12, 180, 20)},
        LabelCase{"tall", QSizeF(50, 300), 0, 0, QRectF(2, 2, 46, 12.5)}));

TEST(TilePainter, TitleFontNeverBelowSix)
{
    EXPECT_EQ(TilePainter::titleFontSize(2.5), 6.0);
    EXPECT_EQ(TilePainter::titleFontSize(25), 25.0);
}

} // namespace
