#include "PaintKit.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

double meanLevel(const QImage &image, int channel)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb c = image.pixel(x, y);
            sum += channel == 0 ? qRed(c) : channel == 1 ? qGreen(c) : channel == 2 ? qBlue(c) : qAlpha(c);
        }
    return sum / (double(image.width()) * image.height());
}

TEST(PaintKit, FieldHasTheAskedSizeAndFollowsTheFunction)
{
    const struct { QSize size; int step; } cases[] = {
        {{100, 60}, 1}, {{101, 61}, 4}, {{7, 5}, 8}, {{640, 3}, 2}, {{1, 1}, 4},
    };
    for (const auto &c : cases) {
        const QImage image = PaintKit::field(c.size, c.step, [&](double x, double) -> QRgb {
            // Linear everywhere the grid samples, which reaches one step past the edge.
            const int v = int(x * 200 / (c.size.width() + c.step));
            return qRgba(v, v, v, 255);
        });
        ASSERT_EQ(image.size(), c.size) << c.step;
        // A ramp stays a ramp: the enlargement must not shift it sideways.
        for (int x = 0; x < c.size.width(); x += std::max(1, c.size.width() / 9)) {
            const int expected = x * 200 / (c.size.width() + c.step);
            EXPECT_NEAR(qRed(image.pixel(x, c.size.height() / 2)), expected, 3 + c.step / 2) << c.size.width() << " step " << c.step << " x " << x;
        }
    }
}

TEST(PaintKit, BlurKeepsTheAverageAndSmoothsDetail)
{
    for (double radius : {1.0, 3.0, 12.0, 40.0}) {
        QImage checker(160, 120, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < checker.height(); ++y)
            for (int x = 0; x < checker.width(); ++x)
                checker.setPixel(x, y, ((x / 4 + y / 4) & 1) ? qRgb(200, 40, 100) : qRgb(20, 140, 60));
        const QImage blurred = PaintKit::blurred(checker, radius);
        ASSERT_EQ(blurred.size(), checker.size());
        for (int ch = 0; ch < 3; ++ch)
            EXPECT_NEAR(meanLevel(blurred, ch), meanLevel(checker, ch), 4.0) << radius << " channel " << ch;
        // The centre of a wide blur is close to the average colour.
        if (radius >= 12) {
            const QRgb c = blurred.pixel(80, 60);
            EXPECT_NEAR(qRed(c), 110, 12) << radius;
            EXPECT_NEAR(qGreen(c), 90, 12) << radius;
        }
    }
}

TEST(PaintKit, BoxBlurLeavesAFlatPictureAloneUpToItsEdges)
{
    QImage flat(50, 30, QImage::Format_ARGB32_Premultiplied);
    flat.fill(qRgba(10, 120, 250, 255));
    QImage copy = flat;
    PaintKit::boxBlur(copy, 6);
    EXPECT_EQ(copy, flat);
}

TEST(PaintKit, GrainIsRepeatableUnbiasedAndKeepsAlpha)
{
    QImage a(300, 200, QImage::Format_ARGB32_Premultiplied);
    a.fill(qRgba(100, 100, 100, 255));
    QImage b = a, c = a;
    PaintKit::addGrain(a, 5, 8);
    PaintKit::addGrain(b, 5, 8);
    PaintKit::addGrain(c, 6, 8);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    EXPECT_NEAR(meanLevel(a, 0), 100.0, 0.5);
    EXPECT_EQ(meanLevel(a, 3), 255.0);
    // It does vary from pixel to pixel.
    int changed = 0;
    for (int x = 0; x < 300; ++x)
        changed += qRed(a.pixel(x, 50)) != 100;
    EXPECT_GT(changed, 150);
}

TEST(PaintKit, ProfilesSpanMinusOneToOne)
{
    for (int count : {2, 3, 17, 100, 513}) {
        QRandomGenerator rng{quint32(count)};
        const auto h = PaintKit::profile(rng, count, 0.5);
        ASSERT_GE(int(h.size()), count);
        EXPECT_DOUBLE_EQ(*std::min_element(h.begin(), h.end()), -1.0) << count;
        EXPECT_DOUBLE_EQ(*std::max_element(h.begin(), h.end()), 1.0) << count;
        EXPECT_DOUBLE_EQ(PaintKit::heightAt(h, 10, 0), h.front());
        EXPECT_DOUBLE_EQ(PaintKit::heightAt(h, 10, 10), h.back());
        EXPECT_DOUBLE_EQ(PaintKit::heightAt(h, 10, 50), h.back());   // beyond the end: clamped
    }
}

TEST(PaintKit, ColourMixing)
{
    const QColor a(0, 100, 200), b(200, 0, 100);
    EXPECT_EQ(PaintKit::mix(a, b, 0).rgb(), a.rgb());
    EXPECT_EQ(PaintKit::mix(a, b, 1).rgb(), b.rgb());
    EXPECT_EQ(PaintKit::mix(a, b, 2).rgb(), b.rgb());
    EXPECT_EQ(PaintKit::mix(a, b, 0.5).rgb(), QColor(100, 50, 150).rgb());
    EXPECT_EQ(PaintKit::shade(a, 0).rgb(), QColor(Qt::black).rgb());
    EXPECT_EQ(PaintKit::shade(a, 2).rgb(), QColor(Qt::white).rgb());
    EXPECT_EQ(PaintKit::premultiplied(QColor(200, 100, 50), 0.5), qRgba(100, 50, 25, 128));
}

} // namespace
