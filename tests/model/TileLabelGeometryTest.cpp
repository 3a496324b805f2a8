#include "model/TileLabelGeometry.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(TileLabelGeometry, TitleLabelInsideBorderAlongBottom)
{
    struct Case {
        QSizeF tile;
        double border, margin;
        QRectF expected;
    };
    for (const Case &c : {
             // 200 x 100, no border: 2 in from the corner, a quarter of the height high; the
             // label plus the margin (2 + 200 + 2 + 4) overruns the tile by 8.
             Case{{200, 100}, 0, 4, {2, 2, 192, 25}},
             // A 5-point border moves the label in; it ends 1 point short of the tile's edge.
             Case{{200, 100}, 5, 0, {7, 7, 190, 22.5}},
             // The label height follows the smaller inner side.
             Case{{60, 300}, 0, 0, {2, 2, 56, 15}},
             // The update rule's fixed 6-point margin.
             Case{{100, 100}, 0, 6, {2, 2, 90, 25}},
         }) {
        const QRectF r = TileLabelGeometry::titleLabelFrame(c.tile, c.border, c.margin);
        EXPECT_NEAR(r.x(), c.expected.x(), 1e-4);
        EXPECT_NEAR(r.y(), c.expected.y(), 1e-4);
        EXPECT_NEAR(r.width(), c.expected.width(), 1e-4) << c.tile.width() << "x" << c.tile.height();
        EXPECT_NEAR(r.height(), c.expected.height(), 1e-4);
    }
    EXPECT_EQ(TileLabelGeometry::updatedLabelFrame({100, 100}, 0), TileLabelGeometry::titleLabelFrame({100, 100}, 0, 6));
}

TEST(TileLabelGeometry, FontNeverBelowSixAndStackingAndFlip)
{
    EXPECT_EQ(TileLabelGeometry::fontSize(QRectF(2, 2, 10, 3)), 6.0);
    EXPECT_EQ(TileLabelGeometry::fontSize(QRectF(2, 2, 10, 25)), 25.0);

    const QRectF index(2, 2, 50, 20);
    EXPECT_EQ(TileLabelGeometry::dimensionLabelY(index, 20, 100), 22);
    // A tile of 30 points has 8 points too few for both: the dimension label moves down by 12.
    EXPECT_EQ(TileLabelGeometry::dimensionLabelY(index, 20, 30), 10);

    EXPECT_EQ(TileLabelGeometry::toTopDown(QRectF(2, 2, 192, 25), 100), QRectF(2, 73, 192, 25));
}

} // namespace
