#include "support/TestImages.h"

#include "images/ContentModeGeometry.h"

#include <gtest/gtest.h>

TEST(ContentModeGeometry, DestinationAndClipPerMode)
{
    const QRectF target(10, 20, 100, 50);
    const QSizeF landscape(40, 20);
    const struct {
        int mode;
        QSizeF image;
        QRectF destination;
        bool clip;
    } cases[] = {
        {0, landscape, target, false},
        {3, landscape, target, false},
        {13, landscape, target, false},
        {-1, landscape, target, false},
        // Landscape: aspect fit fills the width and overflows this flat target's height.
        {1, landscape, {10, 20, 100, 50}, false},
        // Portrait: aspect fit fills the height, centred: dw = floor(50 * 20 / 40) = 25.
        {1, {20, 40}, {10 + 37, 20, 25, 50}, false},
        // Aspect fill of a landscape image fills the height: dw = floor(50 * 2) = 100.
        {2, landscape, {10, 20, 100, 50}, false},
        // Aspect fill of a portrait image fills the width and spills over: dh = 200.
        {2, {20, 40}, {10, 20 - 75, 100, 200}, false},
        {4, landscape, {10 + 30, 20 + 15, 40, 20}, false},
        {5, landscape, {40, 20, 40, 20}, true},
        {6, landscape, {40, 20 + 30, 40, 20}, true},
        {7, landscape, {10, 35, 40, 20}, true},
        {8, landscape, {10 + 60, 35, 40, 20}, true},
        {9, landscape, {10, 20, 40, 20}, true},
        {10, landscape, {70, 20, 40, 20}, true},
        {11, landscape, {10, 50, 40, 20}, true},
        {12, landscape, {70, 50, 40, 20}, true},
        // Odd leftovers are floored: (100 - 41) / 2 = 29.5 -> 29.
        {4, {41, 21}, {10 + 29, 20 + 14, 41, 21}, false},
        // An image of the target's size is drawn as it is, unclipped, in every mode.
        {9, {100, 50}, target, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "mode " << c.mode << " image " << c.image.width() << "x" << c.image.height());
        const ContentModeGeometry::Placement p = ContentModeGeometry::place(c.image, target, c.mode);
        EXPECT_EQ(p.destination, c.destination);
        EXPECT_EQ(p.clip, c.clip);
    }
}

TEST(ContentModeGeometry, AspectFitFollowsTheImageOrientationNotTheTarget)
{
    // A landscape image into a tall narrow target fills the width...
    EXPECT_EQ(ContentModeGeometry::place({40, 20}, {0, 0, 10, 100}, 1).destination, QRectF(0, 47, 10, 5));
    // ...and into a very wide flat target it also fills the width, overflowing the height.
    EXPECT_EQ(ContentModeGeometry::place({40, 20}, {0, 0, 400, 10}, 1).destination, QRectF(0, -95, 400, 200));
}
