#include "model/TileLabelGeometry.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

// The title label sits along the tile's bottom inside its border, a quarter of the smaller inner
// side high; its width loses what passes the limit origin + inner width + 2 + margin. The tile on
// screen and the painted tile of a render place it alike.
TEST(TileLabelGeometry, TitleLabelInsideBorderAlongBottom)
{
    struct Case {
        QSizeF tile;
        double border, margin;
        QRectF expected; // from the tile's bottom-left corner
    };
    for (const Case &c : {
             Case{{200, 100}, 0, 0, {2, 2, 196, 25}},
             // The label plus the margin (2 + 200 + 2 + 4) overruns the tile by 8.
             Case{{200, 100}, 0, 4, {2, 2, 192, 25}},
             // A border moves the label in; the 6-point margin of labels laid out again after a
             // turn shortens it further.
             Case{{200, 100}, 1, 0, {3, 3, 195, 24.5}},
             Case{{200, 100}, 1, 6, {3, 3, 189, 24.5}},
             Case{{200, 100}, 5, 0, {7, 7, 190, 22.5}},
             // A wide border keeps the limit inside the tile: the full inner width.
             Case{{200, 100}, 10, 0, {12, 12, 180, 20}},
             // The label height follows the smaller inner side.
             Case{{60, 300}, 0, 0, {2, 2, 56, 15}},
         }) {
        const QRectF r = TileLabelGeometry::titleLabelFrame(c.tile, c.border, c.margin);
        SCOPED_TRACE(testing::Message() << c.tile.width() << "x" << c.tile.height() << " border " << c.border
                                        << " margin " << c.margin);
        EXPECT_NEAR(r.x(), c.expected.x(), 1e-4);
        EXPECT_NEAR(r.y(), c.expected.y(), 1e-4);
        EXPECT_NEAR(r.width(), c.expected.width(), 1e-4);
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
