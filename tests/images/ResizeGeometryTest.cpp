#include "support/TestImages.h"

#include "images/BottomLeftCoordinates.h"
#include "images/PhotoFraming.h"
#include "images/ResizeGeometry.h"
#include "images/UIImage.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testimages;

namespace {

void expectNear(const QRectF &actual, const QRectF &expected, double tolerance = 0.01)
{
    EXPECT_NEAR(actual.x(), expected.x(), tolerance);
    EXPECT_NEAR(actual.y(), expected.y(), tolerance);
    EXPECT_NEAR(actual.width(), expected.width(), tolerance);
    EXPECT_NEAR(actual.height(), expected.height(), tolerance);
}

} // namespace

TEST(ResizeGeometry, CoverAndFitArithmetic)
{
    const double kTall = 133.0 / 4000.0;
    const struct {
        const char *name;
        QSizeF image;
        QRectF target;
        int method;
        QSizeF scaled;
        QPointF offset;
        QRectF source;
        QRectF destination;
    } cases[] = {
        // Too wide: 133 x 100 scaled, 33 points of overflow; 16.5 rounds away from zero to 17.
        {"wide, centred crop", {4000, 3000}, {0, 0, 100, 100}, 0, {133, 100}, {17, 0}, {510, 0, 3000, 3000}, {0, 0, 100, 100}},
        {"wide, keep start", {4000, 3000}, {0, 0, 100, 100}, 1, {133, 100}, {0, 0}, {0, 0, 3000, 3000}, {0, 0, 100, 100}},
        {"wide, keep end", {4000, 3000}, {0, 0, 100, 100}, 2, {133, 100}, {33, 0}, {990, 0, 3000, 3000}, {0, 0, 100, 100}},
        // Fit: 100 x 75 at an unrounded offset of 12.5.
        {"wide, fit", {4000, 3000}, {0, 0, 100, 100}, 3, {100, 75}, {0, 0}, {0, 0, 4000, 3000}, {0, 12.5, 100, 75}},
        // Too tall: the start is the upper end (larger y), the end is y = 0. The scale comes
        // from the rounded height, k = 133 / 4000, so the region is 100 / k = 3007.52 square.
        {"tall, centred crop", {3000, 4000}, {0, 0, 100, 100}, 0, {100, 133}, {0, 17}, {0, 17 / kTall, 100 / kTall, 100 / kTall}, {0, 0, 100, 100}},
        {"tall, keep start", {3000, 4000}, {0, 0, 100, 100}, 1, {100, 133}, {0, 33}, {0, 33 / kTall, 100 / kTall, 100 / kTall}, {0, 0, 100, 100}},
        {"tall, keep end", {3000, 4000}, {0, 0, 100, 100}, 2, {100, 133}, {0, 0}, {0, 0, 100 / kTall, 100 / kTall}, {0, 0, 100, 100}},
        {"tall, fit", {3000, 4000}, {0, 0, 100, 100}, 3, {75, 100}, {0, 0}, {0, 0, 3000, 4000}, {12.5, 0, 75, 100}},
        // The target's origin carries through; equal aspects crop nothing.
        {"offset target, same aspect", {400, 300}, {10, 20, 40, 30}, 0, {40, 30}, {0, 0}, {0, 0, 400, 300}, {10, 20, 40, 30}},
        {"offset target, fit", {400, 100}, {10, 20, 40, 40}, 3, {40, 10}, {0, 0}, {0, 0, 400, 100}, {10, 35, 40, 10}},
        // Rounding of the scaled size: 3 x 2 into 10 x 10 covers with 15 x 10.
        {"small upscale", {3, 2}, {0, 0, 10, 10}, 0, {15, 10}, {3, 0}, {0.6, 0, 2, 2}, {0, 0, 10, 10}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const ResizeGeometry::Plan p = ResizeGeometry::plan(c.image, c.target, c.method);
        ASSERT_TRUE(p.drawable);
        EXPECT_EQ(p.scaledSize, c.scaled);
        EXPECT_EQ(p.cropOffset, c.offset);
        expectNear(p.source, c.source);
        expectNear(p.destination, c.destination);
    }
}

// A 400 x 300 photo framed by hand: the crop always has the tile's shape, stays inside the
// photo, follows the pointer when panned, keeps the point under the pointer when zoomed, and is
// measured from the top as the photo is seen. The framed plan draws that crop (from the bottom).
TEST(ResizeGeometry, FramingCropsClampsPansAndZooms)
{
    const QSizeF photo(400, 300);
    const QSizeF square(100, 100), wide(200, 100), tall(100, 200);
    const PhotoFraming centred(QPointF(0.5, 0.5), 1);
    const struct {
        const char *name;
        PhotoFraming framing;
        QSizeF tile;
        QRectF crop;
    } cases[] = {
        {"fill, centred", centred, square, {50, 0, 300, 300}},
        {"a corner is clamped inside", PhotoFraming(QPointF(0, 0), 1), square, {0, 0, 300, 300}},
        {"zoom beyond 8 stops at 8", PhotoFraming(QPointF(0.5, 0.5), 20), square, {181.25, 131.25, 37.5, 37.5}},
        {"zoom below fill is fill", PhotoFraming(QPointF(0.5, 0.5), 0.5), square, {50, 0, 300, 300}},
        // The same framing in tiles of other shapes: the centre is the photo's, not the tile's.
        {"left quarter, wide tile", PhotoFraming(QPointF(0.25, 0.5), 1), wide, {0, 50, 400, 200}},
        {"left quarter, tall tile", PhotoFraming(QPointF(0.25, 0.5), 1), tall, {25, 0, 150, 300}},
        // Dragging 10 points right shows 30 photo points further left (300 photo points per 100).
        {"pan right", centred.panned(photo, square, {10, 0}), square, {20, 0, 300, 300}},
        {"pan far right is clamped", centred.panned(photo, square, {100, 40}), square, {0, 0, 300, 300}},
        {"zoom 2 about the top left", centred.zoomedAbout(photo, square, {0, 0}, 2), square, {50, 0, 150, 150}},
        {"zoom 2 about the middle", centred.zoomedAbout(photo, square, {50, 50}, 2), square, {125, 75, 150, 150}},
        {"zoom 2 then back", centred.zoomedAbout(photo, square, {0, 0}, 2).zoomedAbout(photo, square, {0, 0}, 0.5), square,
         {50, 0, 300, 300}},
        {"from an alignment's crop", PhotoFraming::fromCropRect(photo, square, {100, 0, 300, 300}), square, {100, 0, 300, 300}},
        {"stored and read back", PhotoFraming::fromVariant(PhotoFraming(QPointF(0.2, 0.7), 3).toVariant()), square,
         {30, 160, 100, 100}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        expectNear(c.framing.cropRect(photo, c.tile), c.crop);
        const ResizeGeometry::Plan p = ResizeGeometry::plan(photo, QRectF(QPointF(0, 0), c.tile), 0, c.framing);
        ASSERT_TRUE(p.drawable);
        expectNear(p.source, BottomLeftCoordinates::toTopLeft(c.crop, photo.height()));
        expectNear(p.destination, QRectF(QPointF(0, 0), c.tile));
    }
    // What is not a framing reads as none, and none leaves the alignment to fit the photo.
    for (const QVariant &junk : {QVariant(), QVariant(QVariantMap()), QVariant(QStringLiteral("x")),
                                 QVariant(QVariantMap{{"x", 2.0}, {"y", 0.5}, {"zoom", 1.0}}),
                                 QVariant(QVariantMap{{"x", 0.5}, {"y", 0.5}})})
        EXPECT_TRUE(PhotoFraming::fromVariant(junk).isNull());
    EXPECT_TRUE(PhotoFraming::forAlignment(2, PhotoFraming(), QPointF(0.1, 0.1)).isNull());
    EXPECT_EQ(PhotoFraming::forAlignment(4, PhotoFraming(), QPointF(0.1, 0.2)), PhotoFraming(QPointF(0.1, 0.2), 1));
    EXPECT_EQ(PhotoFraming::forAlignment(4, PhotoFraming(), std::nullopt), centred);
    EXPECT_EQ(PhotoFraming::forAlignment(1, PhotoFraming(QPointF(0.3, 0.3), 2), std::nullopt), PhotoFraming(QPointF(0.3, 0.3), 2));
}

TEST(ResizeGeometry, DegenerateSizesAreNotDrawn)
{
    const struct {
        QSizeF image;
        QRectF target;
    } cases[] = {
        {{0, 0}, {0, 0, 10, 10}}, {{10, 0}, {0, 0, 10, 10}}, {{10, 10}, {0, 0, 0, 10}},
        {{10, 10}, {0, 0, 10, -5}}, {{NAN, 10}, {0, 0, 10, 10}}, {{10, 10}, {0, 0, INFINITY, 10}},
    };
    for (const auto &c : cases)
        for (int method = 0; method < 4; ++method)
            EXPECT_FALSE(ResizeGeometry::plan(c.image, c.target, method).drawable);
}

TEST(BottomLeftCoordinates, FlipsAroundTheSurfaceHeight)
{
    EXPECT_EQ(BottomLeftCoordinates::toTopLeft(QRectF(10, 0, 20, 30), 100), QRectF(10, 70, 20, 30));
    EXPECT_EQ(BottomLeftCoordinates::toTopLeft(QRectF(0, 70, 5, 30), 100), QRectF(0, 0, 5, 30));
    EXPECT_EQ(BottomLeftCoordinates::toTopLeft(QPointF(3, 0), 50), QPointF(3, 50));
    const QRectF r(1, 2, 3, 4);
    EXPECT_EQ(BottomLeftCoordinates::toTopLeft(BottomLeftCoordinates::toTopLeft(r, 9), 9), r);
}

// The start of a too-wide picture is its left end; the start of a too-tall picture is its top
// rows as QImage stores them. Pinned on real pixels so that the convention cannot flip.
TEST(ResizeGeometry, StartAndEndOnRealPixels)
{
    const QColor red(Qt::red), blue(Qt::blue);
    const UIImage wide(leftRight(400, 100, 200, red, blue));   // left half red
    const UIImage tall(topBottom(100, 400, 200, red, blue));   // top half red
    const struct {
        const char *name;
        const UIImage &image;
        int method;
        QColor expected;
        PhotoFraming framing = {};
    } cases[] = {
        {"wide, start = left", wide, 1, red},
        {"wide, end = right", wide, 2, blue},
        {"tall, start = top rows", tall, 1, red},
        {"tall, end = bottom rows", tall, 2, blue},
        // A framing's y is measured down from the top rows, whatever the method.
        {"tall, framed near the top", tall, 2, red, PhotoFraming(QPointF(0.5, 0.1), 1)},
        {"tall, framed near the bottom", tall, 1, blue, PhotoFraming(QPointF(0.5, 0.9), 1)},
        {"wide, framed zoomed in the right half", wide, 0, blue, PhotoFraming(QPointF(0.7, 0.5), 2)},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = c.image.imageToFitSize(QSizeF(50, 50), c.method, c.framing).bestRepresentation();
        ASSERT_EQ(out.size(), QSize(50, 50));
        for (QPoint p : {QPoint(0, 0), QPoint(49, 0), QPoint(25, 25), QPoint(0, 49), QPoint(49, 49)})
            EXPECT_EQ(out.pixelColor(p), c.expected) << p.x() << "," << p.y();
    }
    // The centred crop of the tall picture shows both halves: red above, blue below.
    const QImage centred = tall.imageToFitSize(QSizeF(50, 50), 0).bestRepresentation();
    EXPECT_EQ(centred.pixelColor(25, 5), red);
    EXPECT_EQ(centred.pixelColor(25, 45), blue);
}
