#include "support/TestImages.h"

#include "images/ImageOperations.h"
#include "images/SmoothScaler.h"
#include "images/UIImage.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testimages;

TEST(ImageOperations, FittingIntoAZeroSizeReturnsTheVeryImage)
{
    const UIImage img(gradient(40, 30));
    for (QSizeF size : {QSizeF(0, 10), QSizeF(10, 0), QSizeF(0, 0)})
        for (int method = 0; method < 4; ++method)
            EXPECT_TRUE(img.imageToFitSize(size, method).isSameImage(img));
    EXPECT_FALSE(img.imageToFitSize(QSizeF(10, 10), 0).isSameImage(img));
    EXPECT_TRUE(img.fixOrientation().isSameImage(img));
}

TEST(ImageOperations, FitLeavesTransparentBandsAndCropFillsEverything)
{
    const UIImage wide(QImage(gradient(400, 300)));
    const QImage fit = ImageOperations::imageScaledToFitSize(wide, QSizeF(100, 100)).bestRepresentation();
    ASSERT_EQ(fit.size(), QSize(100, 100));
    // 100 x 75 at y = 12.5: rows 0-11 and 88-99 stay clear.
    EXPECT_EQ(fit.pixelColor(50, 5).alpha(), 0);
    EXPECT_EQ(fit.pixelColor(50, 94).alpha(), 0);
    EXPECT_EQ(fit.pixelColor(50, 50).alpha(), 255);
    const QImage crop = ImageOperations::imageCroppedToFitSize(wide, QSizeF(100, 100)).bestRepresentation();
    for (QPoint p : {QPoint(0, 0), QPoint(99, 0), QPoint(0, 99), QPoint(99, 99)})
        EXPECT_EQ(crop.pixelColor(p).alpha(), 255);
}

TEST(ImageOperations, MegapixelCeiling)
{
    const struct {
        QSize pixels;
        double limit;
        bool same;
        QSizeF points;
        QSize resultPixels;
    } cases[] = {
        {{1000, 500}, 0.5, true, {1000, 500}, {1000, 500}},        // exactly at the limit
        {{400, 300}, 0.5, true, {400, 300}, {400, 300}},
        {{1001, 500}, 0.5, false, {1000.4998, 499.7502}, {1000, 499}}, // a hair over
        {{4000, 3000}, 0.5, false, {816.4966, 612.3724}, {816, 612}},
        {{4000, 3000}, 0.0, true, {4000, 3000}, {4000, 3000}},     // a factor of 0 is refused
        {{4000, 3000}, -1.0, true, {4000, 3000}, {4000, 3000}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.pixels.width() << "x" << c.pixels.height() << " under " << c.limit);
        const UIImage img(gradient(c.pixels.width(), c.pixels.height()));
        const UIImage out = img.scaleToUnderMegaPixels(c.limit);
        EXPECT_EQ(out.isSameImage(img), c.same);
        EXPECT_NEAR(out.width(), c.points.width(), 1e-3);
        EXPECT_NEAR(out.height(), c.points.height(), 1e-3);
        EXPECT_EQ(out.pixelSize(), c.resultPixels);
        EXPECT_LE(double(out.pixelsWide()) * out.pixelsHigh(), std::max(c.limit, 1e-9) * 1e6 + (c.same ? 1e12 : 0));
        if (!c.same) {
            // The receiver's own point size was changed to the scaled size as well.
            EXPECT_NEAR(img.width(), c.points.width(), 1e-3);
            EXPECT_NEAR(img.height(), c.points.height(), 1e-3);
            EXPECT_EQ(img.pixelSize(), c.pixels);
        }
    }
}

TEST(ImageOperations, ScaledImageKeepsTheContentWhereItWas)
{
    // A picture with a red left quarter keeps it on the left after shrinking.
    const UIImage img(leftRight(2000, 1000, 500, Qt::red, Qt::blue));
    const QImage out = img.scaleToUnderMegaPixels(0.02).bestRepresentation();
    EXPECT_EQ(out.pixelColor(5, out.height() / 2), QColor(Qt::red));
    EXPECT_EQ(out.pixelColor(out.width() - 5, out.height() / 2), QColor(Qt::blue));
}

TEST(ImageOperations, ShrinkingAFineCheckerboardGivesAnEvenGrey)
{
    // 1-pixel black and white squares shrunk by awkward factors must average to mid grey
    // everywhere; sampling would give black, white or moiré bands.
    const UIImage board(checkerboard(1200, 900));
    for (QSizeF size : {QSizeF(100, 75), QSizeF(333, 250), QSizeF(599, 449), QSizeF(71, 71)}) {
        for (int method : {0, 3}) {
            SCOPED_TRACE(testing::Message() << size.width() << "x" << size.height() << " method " << method);
            const QImage out = board.imageToFitSize(size, method).bestRepresentation();
            int lo = 255, hi = 0;
            for (int y = 2; y < out.height() - 2; ++y)
                for (int x = 2; x < out.width() - 2; ++x) {
                    const QColor c = out.pixelColor(x, y);
                    if (c.alpha() < 255)
                        continue; // the transparent bands of a fit
                    lo = std::min(lo, c.green());
                    hi = std::max(hi, c.green());
                }
            EXPECT_GE(lo, 110);
            EXPECT_LE(hi, 145);
        }
    }
    const QImage halved = SmoothScaler::scaled(checkerboard(64, 64), QSize(7, 5));
    for (int y = 0; y < halved.height(); ++y)
        for (int x = 0; x < halved.width(); ++x)
            EXPECT_NEAR(halved.pixelColor(x, y).green(), 128, 16);
}

TEST(ImageOperations, BorderedFrame)
{
    const QColor background(10, 200, 30, 77); // drawn opaque whatever its alpha
    const struct {
        const char *name;
        QSize pixels;
        int inset;
        bool limit;
        bool crop;
        QSizeF points;
        QSize resultPixels;
        int effectiveInset;
    } cases[] = {
        {"12 MP under the 8 MP limit", {4000, 3000}, 10, true, true, {3265.986, 2449.490}, {3265, 2449}, 10},
        {"no limit keeps the size", {400, 300}, 10, false, true, {400, 300}, {400, 300}, 10},
        {"limit not reached", {400, 300}, 10, true, false, {400, 300}, {400, 300}, 10},
        // The border never exceeds half the smaller side: content 0 (even) or 1 (odd) points.
        {"inset beyond half, even", {40, 30}, 100, false, true, {40, 30}, {40, 30}, 15},
        {"inset beyond half, odd", {41, 31}, 100, false, false, {41, 31}, {41, 31}, 15},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QImage picture(c.pixels, QImage::Format_RGB32);
        picture.fill(Qt::white);
        const UIImage source(picture);
        const UIImage out = source.imageWithInsetContent(c.inset, c.limit, background, c.crop);
        ASSERT_TRUE(out.isValid());
        EXPECT_NEAR(out.width(), c.points.width(), 1e-2);
        EXPECT_NEAR(out.height(), c.points.height(), 1e-2);
        const QImage px = out.bestRepresentation();
        ASSERT_EQ(px.size(), c.resultPixels);
        const QColor border = px.pixelColor(0, 0);
        EXPECT_EQ(border, QColor(10, 200, 30));
        const int e = c.effectiveInset;
        EXPECT_EQ(px.pixelColor(e - 1, px.height() / 2), QColor(10, 200, 30));
        // The centre shows the picture unless the content area has no height left.
        const bool contentLeft = px.height() - 2 * e >= 1;
        EXPECT_EQ(px.pixelColor(px.width() / 2, px.height() / 2) == QColor(Qt::white), contentLeft);
    }
}

TEST(ImageOperations, LetterboxOnBlack)
{
    const UIImage wide(QImage(leftRight(200, 100, 200, Qt::white, Qt::white)));
    const QImage out = ImageOperations::fitToSize(wide, QSizeF(100, 100)).bestRepresentation();
    ASSERT_EQ(out.size(), QSize(100, 100));
    EXPECT_EQ(out.pixelColor(50, 10), QColor(Qt::black));
    EXPECT_EQ(out.pixelColor(50, 90), QColor(Qt::black));
    EXPECT_EQ(out.pixelColor(50, 50), QColor(Qt::white));
    // A fitted rectangle of 33.33 points is widened outward to whole points: 33 -> 34 wide.
    const UIImage tall(QImage(leftRight(100, 300, 100, Qt::white, Qt::white)));
    const QImage narrow = ImageOperations::fitToSize(tall, QSizeF(100, 100)).bestRepresentation();
    int whiteColumns = 0;
    for (int x = 0; x < 100; ++x)
        whiteColumns += narrow.pixelColor(x, 50).lightness() > 200;
    EXPECT_EQ(whiteColumns, 34); // floor(33.33) .. ceil(66.67): columns 33 to 66
}

TEST(ImageOperations, ScaleImageToSizeCentresAndChangesTheReceiver)
{
    const UIImage img(QImage(leftRight(200, 100, 200, Qt::white, Qt::white)));
    const UIImage out = img.scaleImageToSize(QSizeF(100, 100));
    EXPECT_EQ(img.size(), QSizeF(100, 50));
    const QImage px = out.bestRepresentation();
    ASSERT_EQ(px.size(), QSize(100, 100));
    EXPECT_EQ(px.pixelColor(50, 10).alpha(), 0);
    EXPECT_EQ(px.pixelColor(50, 50), QColor(Qt::white));
    EXPECT_EQ(px.pixelColor(50, 90).alpha(), 0);
}

TEST(ImageOperations, QuarterTurns)
{
    QImage marked(30, 20, QImage::Format_RGB32);
    marked.fill(Qt::white);
    marked.setPixelColor(0, 0, Qt::red); // top-left corner
    const UIImage img(marked);
    const UIImage cw = UIImage::rotate90(img, true);
    const UIImage ccw = UIImage::rotate90(img, false);
    EXPECT_EQ(cw.size(), QSizeF(20, 30));
    EXPECT_EQ(cw.bestRepresentation().pixelColor(19, 0), QColor(Qt::red));  // top-right
    EXPECT_EQ(ccw.bestRepresentation().pixelColor(0, 29), QColor(Qt::red)); // bottom-left
    EXPECT_FALSE(UIImage::rotate90(UIImage(), true).isValid());
}

TEST(ImageOperations, CentredAspectCrop)
{
    const UIImage img(gradient(400, 100));
    const struct {
        QSizeF target;
        QSize expected;
    } cases[] = {{{1, 1}, {100, 100}}, {{50, 10}, {400, 80}}, {{2, 1}, {200, 100}}, {{1, 4}, {25, 100}}, {{0, 1}, {0, 0}}};
    for (const auto &c : cases) {
        const UIImage out = UIImage::doFitImage(img, c.target);
        EXPECT_EQ(out.pixelSize(), c.expected);
    }
    // Centred: the square crop starts at column 150.
    EXPECT_EQ(UIImage::doFitImage(img, QSizeF(1, 1)).bestRepresentation().pixel(0, 0), img.bestRepresentation().pixel(150, 0));
    // croppedImage measures from the lower left: the bottom 10 rows are the QImage's last rows.
    const UIImage bottom = img.croppedImage(QRectF(0, 0, 400, 10));
    EXPECT_EQ(bottom.bestRepresentation().pixel(0, 0), img.bestRepresentation().pixel(0, 90));
}

TEST(ImageOperations, JpegRecompressionAndThumbnails)
{
    const UIImage img(gradient(120, 80));
    const UIImage best = ImageOperations::imageCompressedByFactor(img, 1.0f);
    const UIImage worst = ImageOperations::imageCompressedByFactor(img, 0.0f);
    EXPECT_EQ(best.pixelSize(), QSize(120, 80));
    EXPECT_LT(meanDifference(best.bestRepresentation(), img.bestRepresentation()),
              meanDifference(worst.bestRepresentation(), img.bestRepresentation()));
    EXPECT_FALSE(ImageOperations::imageCompressedByFactor(UIImage(), 0.5f).isValid());

    EXPECT_FALSE(ImageOperations::imageByScalingProportionallyToSize(UIImage(), QSizeF(10, 10)).isValid());
    const UIImage thumb = ImageOperations::imageByScalingProportionallyToSize(img, QSizeF(30, 30));
    EXPECT_EQ(thumb.pixelSize(), QSize(30, 30));
    // Aspect fill of a landscape picture fills the height: no transparent band.
    EXPECT_EQ(thumb.bestRepresentation().pixelColor(15, 0).alpha(), 255);
}

TEST(ImageOperations, RoundedRectangles)
{
    QPainterPath path;
    path.addEllipse(0, 0, 1, 1); // replaced, not appended to
    ImageOperations::addRoundedRectToPath(path, QRectF(10, 20, 100, 50), 0);
    EXPECT_EQ(path.boundingRect(), QRectF(10, 20, 100, 50));
    EXPECT_TRUE(path.contains(QPointF(10.5, 20.5)));

    ImageOperations::addRoundedRectToPath(path, QRectF(10, 20, 100, 50), 10);
    EXPECT_NEAR(path.boundingRect().width(), 100, 1e-6);
    EXPECT_NEAR(path.boundingRect().height(), 50, 1e-6);
    EXPECT_TRUE(path.contains(QPointF(60, 45)));
    for (QPointF corner : {QPointF(11, 21), QPointF(109, 21), QPointF(11, 69), QPointF(109, 69)})
        EXPECT_FALSE(path.contains(corner));
    EXPECT_TRUE(path.contains(QPointF(10.5, 45)));  // the straight sides remain
    EXPECT_TRUE(path.contains(QPointF(60, 69.5)));

    // Drawing clipped by the rounded rectangle leaves the corners clear.
    ImageCanvas canvas(QSizeF(40, 40));
    QImage white(40, 40, QImage::Format_RGB32);
    white.fill(Qt::white);
    ImageOperations::drawInRectWithRadius(UIImage(white), canvas, QRectF(0, 0, 40, 40), 12);
    const QImage out = canvas.takeImage().bestRepresentation();
    EXPECT_EQ(out.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(out.pixelColor(39, 39).alpha(), 0);
    EXPECT_EQ(out.pixelColor(20, 20).alpha(), 255);
}

TEST(ImageOperations, ClippedContentModesStayInsideTheTarget)
{
    // A 20 x 20 red picture drawn top-left (mode 9) into a 10 x 10 target at the lower left of
    // a 40 x 40 canvas: clipped to the target, which in QImage rows is 30..39.
    QImage red(20, 20, QImage::Format_RGB32);
    red.fill(Qt::red);
    ImageCanvas canvas(QSizeF(40, 40));
    ImageOperations::drawInRect(UIImage(red), canvas, QRectF(0, 0, 10, 10), 9);
    const QImage out = canvas.takeImage().bestRepresentation();
    EXPECT_EQ(out.pixelColor(5, 35), QColor(Qt::red));
    EXPECT_EQ(out.pixelColor(5, 25).alpha(), 0);
    EXPECT_EQ(out.pixelColor(15, 35).alpha(), 0);
}
