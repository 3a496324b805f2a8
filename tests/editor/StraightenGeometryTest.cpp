#include "editor/EditorZoom.h"
#include "editor/StraightenGeometry.h"

#include "support/TestImages.h"

#include <QtMath>

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct StraightenCase {
    const char *name;
    QSizeF size;
    double degrees;
};

class StraightenGeometryTest : public ::testing::TestWithParam<StraightenCase> {};

// The kept rectangle has the picture's proportions, is centred, and each of its corners lies
// inside the turned picture.
TEST_P(StraightenGeometryTest, KeptRectangleLiesInsideTheTurnedPicture)
{
    const StraightenCase &c = GetParam();
    const QRectF kept = StraightenGeometry::inscribedRect(c.size, c.degrees);
    const QSizeF bounds = StraightenGeometry::rotatedBounds(c.size, c.degrees);
    EXPECT_NEAR(kept.width() / kept.height(), c.size.width() / c.size.height(), 1e-9);
    EXPECT_NEAR(kept.center().x(), bounds.width() / 2, 1e-9);
    EXPECT_NEAR(kept.center().y(), bounds.height() / 2, 1e-9);
    // Turn each corner back into the picture's own frame: it must be inside the picture.
    const double a = qDegreesToRadians(-c.degrees);
    bool touches = false;
    for (const QPointF corner : {kept.topLeft(), kept.topRight(), kept.bottomLeft(), kept.bottomRight()}) {
        const QPointF d = corner - QPointF(bounds.width() / 2, bounds.height() / 2);
        const double x = d.x() * std::cos(a) - d.y() * std::sin(a);
        const double y = d.x() * std::sin(a) + d.y() * std::cos(a);
        EXPECT_LE(std::abs(x), c.size.width() / 2 + 1e-6);
        EXPECT_LE(std::abs(y), c.size.height() / 2 + 1e-6);
        touches = touches || std::abs(std::abs(x) - c.size.width() / 2) < 1e-6 ||
                  std::abs(std::abs(y) - c.size.height() / 2) < 1e-6;
    }
    // And it is the largest: a corner touches the picture's edge.
    EXPECT_TRUE(touches);
    // Straightening the other way keeps the same amount.
    EXPECT_NEAR(StraightenGeometry::inscribedScale(c.size, -c.degrees), StraightenGeometry::inscribedScale(c.size, c.degrees),
                1e-12);
}

INSTANTIATE_TEST_SUITE_P(Angles, StraightenGeometryTest,
                         ::testing::Values(StraightenCase{"Landscape5", {400, 300}, 5},
                                           StraightenCase{"LandscapeMinus12", {4000, 3000}, -12.5},
                                           StraightenCase{"Portrait30", {300, 500}, 30},
                                           StraightenCase{"Square45", {200, 200}, 45},
                                           StraightenCase{"Panorama3", {3000, 500}, 3},
                                           StraightenCase{"Zero", {400, 300}, 0}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(StraightenGeometryTest, SizesOfKnownTurns)
{
    EXPECT_EQ(StraightenGeometry::straightenedSize(QSize(400, 300), 0), QSize(400, 300));
    // A square turned 45 degrees keeps 1/sqrt 2 of its side.
    EXPECT_EQ(StraightenGeometry::straightenedSize(QSize(200, 200), 45), QSize(141, 141));
    const QSizeF bounds = StraightenGeometry::rotatedBounds(QSizeF(400, 300), 90);
    EXPECT_NEAR(bounds.width(), 300, 1e-9);
    EXPECT_NEAR(bounds.height(), 400, 1e-9);
    EXPECT_EQ(StraightenGeometry::straightenedSize(QSize(), 5), QSize());
}

TEST(EditorZoomTest, StepsOfTheTable)
{
    const QSizeF picture(4000, 3000), viewport(1000, 500);
    struct Step {
        int index;
        double from, to;
    } steps[] = {{EditorZoom::ZoomOut, 1.0, 0.7071068},
                 {EditorZoom::ZoomIn, 1.0, 1.414214},
                 {EditorZoom::ActualSize, 0.3, 1.0},
                 {EditorZoom::ZoomToFit, 3.0, 500.0 / 3000},
                 {4, 0.5, 0.5},
                 {-1, 0.5, 0.5},
                 {EditorZoom::ZoomIn, EditorZoom::kMaximumZoom, EditorZoom::kMaximumZoom},
                 {EditorZoom::ZoomOut, EditorZoom::kMinimumZoom, EditorZoom::kMinimumZoom}};
    for (const Step &s : steps)
        EXPECT_NEAR(EditorZoom::afterStep(s.index, s.from, picture, viewport), s.to, 1e-9) << s.index << " from " << s.from;
    // In then out comes back within rounding.
    const double back = EditorZoom::afterStep(EditorZoom::ZoomOut, EditorZoom::afterStep(EditorZoom::ZoomIn, 0.37, picture, viewport),
                                              picture, viewport);
    EXPECT_NEAR(back, 0.37, 1e-6);
    EXPECT_DOUBLE_EQ(EditorZoom::fitFactor(QSizeF(), viewport), 1.0);
    EXPECT_DOUBLE_EQ(EditorZoom::fitFactor(QSizeF(100, 50), QSizeF(400, 400)), 4.0);
}

} // namespace
