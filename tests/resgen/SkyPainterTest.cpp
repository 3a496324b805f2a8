#include "SkyPainter.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace {

// A picture whose every row above the water has its own colour, so a mirrored row can be
// recognised by its colour alone.
QImage striped(int w, int h)
{
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            image.setPixel(x, y, qRgb((y * 37) % 256, (y * 11) % 256, 255 - (y * 5) % 256));
    return image;
}

TEST(SkyPainter, ReflectionMirrorsTheRowsAboveTheWaterLine)
{
    const int w = 64, h = 120;
    for (int waterY : {60, 80, 100}) {
        const QImage source = striped(w, h);
        QImage image = source;
        SkyPainter::reflect(image, waterY, QColor(0, 0, 0), 0.0, 3, 1.0);
        // Above the water nothing changes.
        EXPECT_EQ(image.copy(0, 0, w, waterY), source.copy(0, 0, w, waterY)) << waterY;
        // Row waterY + k shows row waterY - 1 - k, only darkened (towards black here) and with
        // soft wavelets; the hue order of channels survives.
        for (int k : {0, 5, 15}) {
            const QRgb mirrored = image.pixel(w / 2, waterY + k);
            const QRgb original = source.pixel(w / 2, waterY - 1 - k);
            for (int shift : {16, 8, 0}) {
                const int m = int((mirrored >> shift) & 0xff), o = int((original >> shift) & 0xff);
                EXPECT_LE(m, o + 30) << waterY << " row " << k << " shift " << shift;
                EXPECT_GE(m, o * 0.4 - 30) << waterY << " row " << k << " shift " << shift;
            }
        }
    }
}

TEST(SkyPainter, ReflectionBelowThePictureDoesNothing)
{
    QImage image = striped(40, 30);
    const QImage before = image;
    SkyPainter::reflect(image, 30, Qt::blue, 4.0, 1);
    EXPECT_EQ(image, before);
}

TEST(SkyPainter, RippledRowsOnlyMoveSideways)
{
    // Each row of a picture with one bright dot per row keeps its dot, at most `amplitude`
    // pixels away; with no amplitude nothing moves.
    const int w = 200, h = 80, amplitude = 6;
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    for (int y = 0; y < h; ++y)
        image.setPixel(100, y, qRgb(255, 255, 255));
    QImage still = image;
    SkyPainter::rippleRows(still, 0.0, 9);
    EXPECT_EQ(still, image);
    SkyPainter::rippleRows(image, amplitude, 9);
    int moved = 0;
    for (int y = 0; y < h; ++y) {
        int at = -1;
        for (int x = 0; x < w; ++x)
            if (qRed(image.pixel(x, y)) == 255)
                at = x;
        ASSERT_GE(at, 100 - amplitude) << y;
        ASSERT_LE(at, 100 + amplitude) << y;
        moved += at != 100;
    }
    EXPECT_GT(moved, 0);
}

TEST(SkyPainter, CumulusStaysInsideItsPictureAndLeavesTheSkyOutsideAlone)
{
    QImage image(300, 200, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(40, 100, 200));
    QRandomGenerator rng(4);
    SkyPainter::cumulus(image, QRectF(0, 0, 300, 80), rng, 4, 120, Qt::white, QColor(150, 160, 180));
    // Clouds were drawn (lighter pixels in the sky band) and none below their region's base.
    int cloudy = 0;
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 300; ++x)
            cloudy += qRed(image.pixel(x, y)) > 100;
    EXPECT_GT(cloudy, 300);
    for (int y = 110; y < 200; ++y)
        for (int x = 0; x < 300; x += 3)
            ASSERT_EQ(image.pixel(x, y), QColor(40, 100, 200).rgb()) << x << "," << y;
}

} // namespace
