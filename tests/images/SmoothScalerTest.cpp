#include "images/SmoothScaler.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace {

// Every output pixel of a halving is the rounded mean of its 2 x 2 block, channel by channel,
// whatever path (vectorised body, plain tail, odd edge) produced it.
TEST(SmoothScaler, HalvingIsTheExactRoundedBlockMeanEverywhere)
{
    QRandomGenerator random(7);
    for (const QSize size : {QSize(2, 2), QSize(3, 3), QSize(5, 4), QSize(37, 23), QSize(64, 9)}) {
        SCOPED_TRACE(size.width() * 1000 + size.height());
        QImage src(size, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x) {
                const int a = int(random.bounded(256));
                src.setPixel(x, y, qRgba(int(random.bounded(a + 1)), int(random.bounded(a + 1)), int(random.bounded(a + 1)), a));
            }
        const QImage half = SmoothScaler::halved(src, 1);
        ASSERT_EQ(half.size(), QSize((size.width() + 1) / 2, (size.height() + 1) / 2));
        for (int y = 0; y < half.height(); ++y)
            for (int x = 0; x < half.width(); ++x) {
                const int x0 = 2 * x, x1 = std::min(2 * x + 1, size.width() - 1);
                const int y0 = 2 * y, y1 = std::min(2 * y + 1, size.height() - 1);
                const QRgb p[4] = {src.pixel(x0, y0), src.pixel(x1, y0), src.pixel(x0, y1), src.pixel(x1, y1)};
                auto mean = [&](int (*channel)(QRgb)) {
                    return (channel(p[0]) + channel(p[1]) + channel(p[2]) + channel(p[3]) + 2) / 4;
                };
                const QRgb got = half.pixel(x, y);
                ASSERT_EQ(qRed(got), mean(qRed)) << x << "," << y;
                ASSERT_EQ(qGreen(got), mean(qGreen)) << x << "," << y;
                ASSERT_EQ(qBlue(got), mean(qBlue)) << x << "," << y;
                ASSERT_EQ(qAlpha(got), mean(qAlpha)) << x << "," << y;
            }
    }
}

} // namespace
