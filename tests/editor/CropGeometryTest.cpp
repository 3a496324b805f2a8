#include "editor/CropGeometry.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

namespace {

const QRectF kBounds(0, 0, 400, 300);

struct RatioCase {
    const char *name;
    CropGeometry::Aspect aspect;
    QSizeF picture;
    double ratio;
};

class CropRatioTest : public ::testing::TestWithParam<RatioCase> {};

TEST_P(CropRatioTest, FollowsThePicturesOrientation)
{
    EXPECT_NEAR(CropGeometry::ratio(GetParam().aspect, GetParam().picture), GetParam().ratio, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Aspects, CropRatioTest,
    ::testing::Values(RatioCase{"Free", CropGeometry::Free, {400, 300}, 0},
                      RatioCase{"OriginalLandscape", CropGeometry::Original, {400, 300}, 4.0 / 3},
                      RatioCase{"OriginalPortrait", CropGeometry::Original, {300, 500}, 0.6},
                      RatioCase{"Square", CropGeometry::Square, {300, 500}, 1},
                      RatioCase{"FourThreeLandscape", CropGeometry::FourThree, {400, 300}, 4.0 / 3},
                      RatioCase{"FourThreePortrait", CropGeometry::FourThree, {300, 400}, 3.0 / 4},
                      RatioCase{"ThreeTwo", CropGeometry::ThreeTwo, {600, 400}, 1.5},
                      RatioCase{"SixteenNinePortrait", CropGeometry::SixteenNine, {900, 1600}, 9.0 / 16},
                      RatioCase{"EmptyPicture", CropGeometry::Square, {0, 0}, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CropGeometryTest, ConstrainedIsTheLargestRectOfTheRatioAboutTheCentre)
{
    const QRectF square = CropGeometry::constrained(kBounds, 1, kBounds);
    EXPECT_EQ(square, QRectF(50, 0, 300, 300));
    const QRectF wide = CropGeometry::constrained(kBounds, 16.0 / 9, kBounds);
    EXPECT_NEAR(wide.width() / wide.height(), 16.0 / 9, 1e-9);
    EXPECT_DOUBLE_EQ(wide.width(), 400);
    EXPECT_EQ(wide.center(), kBounds.center());
    // Free: only cut to the picture.
    EXPECT_EQ(CropGeometry::constrained(QRectF(-10, -10, 100, 100), 0, kBounds), QRectF(0, 0, 90, 90));
}

struct HandleCase {
    const char *name;
    QPointF point;
    CropGeometry::Handle handle;
};

class CropHandleTest : public ::testing::TestWithParam<HandleCase> {};

TEST_P(CropHandleTest, FindsTheHandleUnderThePoint)
{
    const QRectF rect(100, 100, 200, 100);
    EXPECT_EQ(CropGeometry::handleAt(rect, GetParam().point, 6), GetParam().handle);
}

INSTANTIATE_TEST_SUITE_P(
    Points, CropHandleTest,
    ::testing::Values(HandleCase{"TopLeft", {102, 97}, CropGeometry::TopLeft},
                      HandleCase{"Top", {200, 101}, CropGeometry::Top},
                      HandleCase{"TopEdgeAwayFromMiddle", {140, 99}, CropGeometry::Top},
                      HandleCase{"TopRight", {300, 100}, CropGeometry::TopRight},
                      HandleCase{"Right", {304, 150}, CropGeometry::Right},
                      HandleCase{"BottomRight", {298, 203}, CropGeometry::BottomRight},
                      HandleCase{"Bottom", {200, 200}, CropGeometry::Bottom},
                      HandleCase{"BottomLeft", {100, 200}, CropGeometry::BottomLeft},
                      HandleCase{"Left", {96, 160}, CropGeometry::Left},
                      HandleCase{"Inside", {200, 150}, CropGeometry::Inside},
                      HandleCase{"Outside", {20, 20}, CropGeometry::None}),
    [](const auto &info) { return std::string(info.param.name); });

struct DragCase {
    const char *name;
    QRectF start;
    CropGeometry::Handle handle;
    QPointF delta;
    double ratio;
    QRectF expected;
};

class CropDragTest : public ::testing::TestWithParam<DragCase> {};

TEST_P(CropDragTest, MovesTheRightSidesWithinThePicture)
{
    const DragCase &c = GetParam();
    const QRectF got = CropGeometry::dragged(c.start, c.handle, c.delta, c.ratio, kBounds);
    EXPECT_NEAR(got.left(), c.expected.left(), 1e-6) << ::testing::PrintToString(got);
    EXPECT_NEAR(got.top(), c.expected.top(), 1e-6) << ::testing::PrintToString(got);
    EXPECT_NEAR(got.width(), c.expected.width(), 1e-6) << ::testing::PrintToString(got);
    EXPECT_NEAR(got.height(), c.expected.height(), 1e-6) << ::testing::PrintToString(got);
    EXPECT_TRUE(kBounds.contains(got)) << ::testing::PrintToString(got);
    if (c.ratio > 0) {
        EXPECT_NEAR(got.width() / got.height(), c.ratio, 1e-6);
    }
}

const QRectF kStart(100, 100, 200, 100);

INSTANTIATE_TEST_SUITE_P(
    Drags, CropDragTest,
    ::testing::Values(
        DragCase{"FreeCornerOut", kStart, CropGeometry::BottomRight, {50, 20}, 0, {100, 100, 250, 120}},
        DragCase{"FreeCornerStopsAtThePicture", kStart, CropGeometry::BottomRight, {500, 500}, 0, {100, 100, 300, 200}},
        DragCase{"FreeLeftSideIn", kStart, CropGeometry::Left, {30, 40}, 0, {130, 100, 170, 100}},
        DragCase{"FreeSideCannotCrossItsOpposite", kStart, CropGeometry::Top, {0, 300}, 0, {100, 192, 200, 8}},
        DragCase{"MoveInside", kStart, CropGeometry::Inside, {-20, 10}, 0, {80, 110, 200, 100}},
        DragCase{"MoveStopsAtTheEdge", kStart, CropGeometry::Inside, {-500, 500}, 0, {0, 200, 200, 100}},
        DragCase{"SquareCornerKeepsTheShorterSide", kStart, CropGeometry::TopLeft, {-50, -80}, 1, {120, 20, 180, 180}},
        DragCase{"SquareCornerLimitedByThePicture", {100, 100, 100, 100}, CropGeometry::BottomRight, {400, 400}, 1,
                 {100, 100, 200, 200}},
        DragCase{"RatioSideDragsTheHeightAboutTheMiddle", {100, 100, 200, 100}, CropGeometry::Right, {40, 0}, 2,
                 {100, 90, 240, 120}},
        DragCase{"RatioBottomSideWidensAboutTheMiddle", {100, 100, 200, 100}, CropGeometry::Bottom, {0, 20}, 2,
                 {80, 100, 240, 120}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CropGeometryTest, ToPixelsRoundsAndStaysInThePicture)
{
    EXPECT_EQ(CropGeometry::toPixels(QRectF(10.4, 9.6, 100.0, 50.0), QSize(400, 300)), QRect(10, 10, 100, 50));
    EXPECT_EQ(CropGeometry::toPixels(QRectF(-5, -5, 500, 500), QSize(400, 300)), QRect(0, 0, 400, 300));
    EXPECT_TRUE(CropGeometry::toPixels(QRectF(500, 500, 10, 10), QSize(400, 300)).isEmpty());
}

} // namespace
