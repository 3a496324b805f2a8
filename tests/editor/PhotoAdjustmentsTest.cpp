#include "editor/PhotoAdjustments.h"

#include <QFuture>
#include <QTest>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// A photo-like picture: a horizontal ramp from black to white (so there are shadows,
// midtones and highlights), colour varying down the rows, and a few hard-edged squares.
QImage scene(int w = 240, int h = 160)
{
    QImage img(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const double v = double(x) / (w - 1);
            const double hue = double(y) / h;
            const int r = int(255 * v * (0.6 + 0.4 * hue));
            const int g = int(255 * v * (0.8 - 0.3 * hue));
            const int b = int(255 * v * (0.5 + 0.5 * (1 - hue)));
            img.setPixel(x, y, qRgb(r, g, b));
        }
    }
    for (int y = 20; y < h; y += 50)
        for (int x = 10; x < w; x += 60)
            for (int dy = 0; dy < 16; ++dy)
                for (int dx = 0; dx < 16; ++dx)
                    img.setPixel(x + dx, y + dy, ((x / 60 + y / 50) & 1) ? qRgb(230, 230, 225) : qRgb(30, 35, 40));
    return img;
}

double luma(QRgb p)
{
    return 0.2126 * qRed(p) + 0.7152 * qGreen(p) + 0.0722 * qBlue(p);
}

// Statistics over the pixels whose luma in `reference` lies in [lo, hi).
struct Stats {
    double meanLuma = 0;
    double lumaSpread = 0; // standard deviation
    double chroma = 0;     // mean max - min channel
    double redOverBlue = 0;
    double greenExcess = 0; // mean G - (R + B) / 2
    double edgeEnergy = 0;  // mean squared Laplacian of luma
};

Stats measure(const QImage &img, const QImage &reference, double lo = 0, double hi = 256)
{
    Stats s;
    double sum = 0, sumSq = 0, chroma = 0, red = 0, blue = 0, green = 0, edges = 0;
    int n = 0, edgeCount = 0;
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            const double l = luma(reference.pixel(x, y));
            if (l < lo || l >= hi)
                continue;
            const QRgb p = img.pixel(x, y);
            const double v = luma(p);
            sum += v;
            sumSq += v * v;
            chroma += std::max({qRed(p), qGreen(p), qBlue(p)}) - std::min({qRed(p), qGreen(p), qBlue(p)});
            red += qRed(p);
            blue += qBlue(p);
            green += qGreen(p) - (qRed(p) + qBlue(p)) / 2.0;
            ++n;
            if (x > 0 && y > 0 && x + 1 < img.width() && y + 1 < img.height()) {
                const double lap = 4 * v - luma(img.pixel(x - 1, y)) - luma(img.pixel(x + 1, y)) - luma(img.pixel(x, y - 1))
                    - luma(img.pixel(x, y + 1));
                edges += lap * lap;
                ++edgeCount;
            }
        }
    }
    s.meanLuma = sum / n;
    s.lumaSpread = std::sqrt(sumSq / n - s.meanLuma * s.meanLuma);
    s.chroma = chroma / n;
    s.redOverBlue = red / std::max(blue, 1.0);
    s.greenExcess = green / n;
    s.edgeEnergy = edges / std::max(edgeCount, 1);
    return s;
}

enum Region { All, Dark, Bright };

double regionLo(Region r) { return r == Bright ? 170 : 0; }
double regionHi(Region r) { return r == Dark ? 80 : 256; }

struct DirectionCase {
    const char *name;
    PhotoAdjustments adjustments;
    double Stats::*statistic;
    Region region; // where the statistic is measured
    int direction; // +1 up, -1 down
    Region untouched = All; // a region that must stay within a level or two (All: none)
};

PhotoAdjustments with(double PhotoAdjustments::*field, double value)
{
    PhotoAdjustments a;
    a.*field = value;
    return a;
}

TEST(PhotoAdjustments, EachAdjustmentMovesItsStatisticTheRightWay)
{
    using A = PhotoAdjustments;
    const DirectionCase cases[] = {
        {"exposure up brightens", with(&A::exposure, 1), &Stats::meanLuma, All, +1},
        {"exposure down darkens", with(&A::exposure, -1), &Stats::meanLuma, All, -1},
        {"brightness up brightens", with(&A::brightness, 0.6), &Stats::meanLuma, All, +1},
        {"brightness down darkens", with(&A::brightness, -0.6), &Stats::meanLuma, All, -1},
        {"contrast up widens the spread", with(&A::contrast, 0.8), &Stats::lumaSpread, All, +1},
        {"contrast down narrows the spread", with(&A::contrast, -0.8), &Stats::lumaSpread, All, -1},
        {"shadows up opens the dark tones", with(&A::shadows, 0.8), &Stats::meanLuma, Dark, +1, Bright},
        {"shadows up brightens overall", with(&A::shadows, 0.8), &Stats::meanLuma, All, +1},
        {"shadows down deepens the dark tones", with(&A::shadows, -0.8), &Stats::meanLuma, Dark, -1, Bright},
        {"highlights down lowers bright pixels", with(&A::highlights, -0.8), &Stats::meanLuma, Bright, -1, Dark},
        {"highlights up raises bright pixels", with(&A::highlights, 0.8), &Stats::meanLuma, Bright, +1, Dark},
        {"saturation up raises chroma", with(&A::saturation, 0.8), &Stats::chroma, All, +1},
        {"saturation down lowers chroma", with(&A::saturation, -0.5), &Stats::chroma, All, -1},
        {"warmer raises red over blue", with(&A::temperature, 0.8), &Stats::redOverBlue, All, +1},
        {"cooler lowers red over blue", with(&A::temperature, -0.8), &Stats::redOverBlue, All, -1},
        {"magenta tint lowers green", with(&A::tint, 0.8), &Stats::greenExcess, All, -1},
        {"green tint raises green", with(&A::tint, -0.8), &Stats::greenExcess, All, +1},
        {"sharpness raises edge energy", with(&A::sharpness, 1), &Stats::edgeEnergy, All, +1},
    };
    const QImage source = scene();
    for (const DirectionCase &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = c.adjustments.applyTo(source);
        ASSERT_EQ(out.size(), source.size());
        const double before = measure(source, source, regionLo(c.region), regionHi(c.region)).*c.statistic;
        const double after = measure(out, source, regionLo(c.region), regionHi(c.region)).*c.statistic;
        EXPECT_GT(c.direction * (after - before), 0.02 * std::max(std::abs(before), 1.0)) << before << " -> " << after;
        if (c.untouched != All) {
            const double kept = measure(source, source, regionLo(c.untouched), regionHi(c.untouched)).meanLuma;
            const double now = measure(out, source, regionLo(c.untouched), regionHi(c.untouched)).meanLuma;
            EXPECT_NEAR(now, kept, 2.0) << "the other end of the tones moved";
        }
    }
}

// Per-pixel guarantees: neutral is the image itself; values too small to see go through the
// whole pipeline and come back within a level; full desaturation leaves no colour.
TEST(PhotoAdjustments, PixelGuarantees)
{
    const QImage source = scene();
    EXPECT_EQ(PhotoAdjustments{}.applyTo(source), source);
    EXPECT_TRUE(with(&PhotoAdjustments::exposure, 1).applyTo(QImage()).isNull());
    using Metric = int (*)(QRgb out, QRgb in);
    const Metric offSource = [](QRgb o, QRgb i) {
        return std::max({std::abs(qRed(o) - qRed(i)), std::abs(qGreen(o) - qGreen(i)), std::abs(qBlue(o) - qBlue(i))});
    };
    const Metric chroma = [](QRgb o, QRgb) {
        return std::max({qRed(o), qGreen(o), qBlue(o)}) - std::min({qRed(o), qGreen(o), qBlue(o)});
    };
    const struct {
        const char *name;
        PhotoAdjustments adjustments;
        Metric metric;
    } cases[] = {
        {"tiny exposure", with(&PhotoAdjustments::exposure, 1e-6), offSource},
        {"tiny saturation", with(&PhotoAdjustments::saturation, 1e-6), offSource},
        {"tiny shadows", with(&PhotoAdjustments::shadows, 1e-6), offSource},
        {"no saturation", with(&PhotoAdjustments::saturation, -1), chroma},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = c.adjustments.applyTo(source);
        int worst = 0;
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width(); ++x)
                worst = std::max(worst, c.metric(out.pixel(x, y), source.pixel(x, y)));
        EXPECT_LE(worst, 1);
    }
}

// Whatever the source format, the result is RGB32, or ARGB32 with the source's alpha exactly.
TEST(PhotoAdjustments, FormatsAreNormalisedAndAlphaIsKept)
{
    PhotoAdjustments a;
    a.exposure = 0.7;
    a.saturation = 0.4;
    a.sharpness = 0.8;
    QImage translucent = scene().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < translucent.height(); ++y)
        for (int x = 0; x < translucent.width(); ++x) {
            const QRgb p = translucent.pixel(x, y);
            translucent.setPixel(x, y, qRgba(qRed(p), qGreen(p), qBlue(p), (x * 7 + y * 3) % 256));
        }
    struct Case {
        const char *name;
        QImage image;
        QImage::Format expected;
    } cases[] = {
        {"RGB32", scene(), QImage::Format_RGB32},
        {"RGB888", scene().convertToFormat(QImage::Format_RGB888), QImage::Format_RGB32},
        {"Grayscale8", scene().convertToFormat(QImage::Format_Grayscale8), QImage::Format_RGB32},
        {"ARGB32", translucent, QImage::Format_ARGB32},
        {"ARGB32 premultiplied", translucent.convertToFormat(QImage::Format_ARGB32_Premultiplied), QImage::Format_ARGB32},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = a.applyTo(c.image);
        ASSERT_EQ(out.format(), c.expected);
        ASSERT_EQ(out.size(), c.image.size());
        if (c.expected == QImage::Format_ARGB32) {
            const QImage alphaBefore = c.image.convertToFormat(QImage::Format_ARGB32);
            for (int y = 0; y < out.height(); ++y)
                for (int x = 0; x < out.width(); ++x)
                    ASSERT_EQ(qAlpha(out.pixel(x, y)), qAlpha(alphaBefore.pixel(x, y))) << x << "," << y;
        }
    }
}

// The bands are cut at fixed rows and sharpening reads across them: one thread or many, the
// result is the same, and a flat picture stays flat (no seams at band edges or borders).
TEST(PhotoAdjustments, BandsLeaveNoTrace)
{
    PhotoAdjustments a;
    a.contrast = 0.3;
    a.shadows = 0.4;
    a.sharpness = 1;
    const QImage source = scene(300, 1000); // many bands; sharpening radius 1
    QThreadPool single;
    single.setMaxThreadCount(1);
    EXPECT_EQ(a.applyTo(source, single), a.applyTo(source));

    QImage flat(900, 2300, QImage::Format_RGB32); // a long side over 2000: sharpening radius 2
    flat.fill(qRgb(120, 130, 140));
    const QImage out = a.applyTo(flat);
    const QRgb first = out.pixel(0, 0);
    for (int y = 0; y < out.height(); ++y)
        for (int x = 0; x < out.width(); ++x)
            ASSERT_EQ(out.pixel(x, y), first) << x << "," << y;
}

// Called from every thread of the global pool at once (as the editor's workers do), it still
// finishes: its bands never wait for a thread of that pool.
TEST(PhotoAdjustments, FinishesWhenCalledFromEveryGlobalPoolThread)
{
    PhotoAdjustments a;
    a.exposure = 0.5;
    a.sharpness = 0.5;
    const QImage source = scene(400, 400);
    QList<QFuture<QImage>> futures;
    for (int i = 0; i < QThreadPool::globalInstance()->maxThreadCount() + 1; ++i)
        futures.append(QtConcurrent::run([a, source] { return a.applyTo(source); }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return std::all_of(futures.begin(), futures.end(), [](auto &f) { return f.isFinished(); }); }, 20000));
    for (QFuture<QImage> &f : futures)
        EXPECT_EQ(f.result(), futures.first().result());
}

TEST(PhotoAdjustments, OutOfRangeValuesAreClamped)
{
    const QImage source = scene();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    PhotoAdjustments wild{100, -100, nan, 7, -7, std::numeric_limits<double>::infinity(), 3, -3, 50};
    PhotoAdjustments limits{4, -1, 0, 1, -1, 0, 1, -1, 1};
    EXPECT_EQ(wild.applyTo(source), limits.applyTo(source));
}

} // namespace
