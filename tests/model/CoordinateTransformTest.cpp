#include "model/CoordinateTransform.h"

#include "model/CollageLayout.h"
#include "model/LayoutEngine.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

struct TransformCase {
    int transform;
    const char *name;
    QRectF expected; // of the tile (0, 0, 100, 50) in a 400 x 300 collage
};

class TransformTable : public ::testing::TestWithParam<TransformCase> {};

TEST_P(TransformTable, MovesTileAndNamesTransform)
{
    const TransformCase &c = GetParam();
    EXPECT_EQ(CoordinateTransform::name(c.transform), QString::fromUtf8(c.name));
    EXPECT_EQ(CoordinateTransform::apply(QRectF(0, 0, 100, 50), QSizeF(400, 300), c.transform), c.expected);
}

INSTANTIATE_TEST_SUITE_P(AllFive, TransformTable,
                         ::testing::Values(TransformCase{0, "No Transform", QRectF(0, 0, 100, 50)},
                                           TransformCase{1, "Flipped Horizontally", QRectF(300, 0, 100, 50)},
                                           TransformCase{2, "Flipped Vertically", QRectF(0, 250, 100, 50)},
                                           TransformCase{3, "Rotated 90\xC2\xBA Left", QRectF(0, 300, 50, 100)}, // º, not °
                                           TransformCase{4, "Rotated 90\xC2\xBA Right", QRectF(250, 0, 50, 100)}));

TEST(CoordinateTransform, OtherValuesHaveNoNameAndMoveNothing)
{
    EXPECT_TRUE(CoordinateTransform::name(5).isEmpty());
    EXPECT_TRUE(CoordinateTransform::name(-1).isEmpty());
    EXPECT_EQ(CoordinateTransform::apply(QRectF(1, 2, 3, 4), QSizeF(10, 10), 7), QRectF(1, 2, 3, 4));
}

TEST(CoordinateTransform, ExtentIsTruncatedToWholePoints)
{
    EXPECT_EQ(CoordinateTransform::apply(QRectF(0, 0, 100, 50), QSizeF(400.9, 300.9), 1), QRectF(300, 0, 100, 50));
}

// A whole layout turned keeps every tile inside the turned collage and keeps tiles apart.
TEST(CoordinateTransform, RotatedLayoutStaysInsideSwappedContentSize)
{
    for (int transform = 0; transform < CoordinateTransform::kCount; ++transform) {
        LayoutEngine engine;
        engine.setCoordinateTransform(transform);
        engine.setup(100, 0, 400, 200, QSizeF(400, 200));
        QVariantList modules;
        for (auto [w, h] : {std::pair{2, 1}, {1, 2}, {1, 1}, {1, 1}, {2, 1}})
            modules << QVariantMap{{QStringLiteral("widthFactor"), w}, {QStringLiteral("heightFactor"), h}};
        engine.loadTessaryDataModules(modules, true);
        CollageLayout layout = engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), nullptr);
        CoordinateTransform::applyCoordinateTransform(layout);
        const QRectF collage(QPointF(0, 0), layout.contentSize);
        EXPECT_EQ(layout.contentSize, CoordinateTransform::isRotation(transform) ? QSizeF(200, 400) : QSizeF(400, 200));
        for (size_t i = 0; i < layout.tiles.size(); ++i) {
            const TileLayout &t = layout.tiles[i];
            EXPECT_TRUE(collage.contains(t.cellFrame)) << "transform " << transform << " tile " << i;
            // The photo's fitted size is the size of the turned tile.
            EXPECT_NEAR(t.imageSize.width(), t.frame.width(), 1e-9);
            EXPECT_NEAR(t.imageSize.height(), t.frame.height(), 1e-9);
            for (size_t j = i + 1; j < layout.tiles.size(); ++j)
                EXPECT_FALSE(t.cellFrame.intersects(layout.tiles[j].cellFrame)) << transform << ": " << i << "/" << j;
        }
    }
}

} // namespace
