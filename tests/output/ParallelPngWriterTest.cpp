#include "output/ParallelPngWriter.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace {

QImage noise(QSize size, QImage::Format format, quint32 seed)
{
    QImage image(size, format);
    QRandomGenerator random(seed);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            // Smooth areas and noise, so both the filter and the deflater have work.
            const quint32 r = x < size.width() / 2 ? random.generate() : quint32(x * 3 + y);
            const int alpha = format == QImage::Format_RGB32 ? 255 : int((r >> 24) & 0xff);
            image.setPixelColor(x, y, QColor(int(r & 0xff), int((r >> 8) & 0xff), int((r >> 16) & 0xff), alpha));
        }
    }
    return image;
}

struct PngCase {
    const char *name;
    QSize size;
    QImage::Format format;
    ParallelPngWriter::Options options;
};

void PrintTo(const PngCase &c, std::ostream *os) { *os << c.name; }

class PngRoundTrip : public ::testing::TestWithParam<PngCase> {};

// Whatever the bands, threads and level, any PNG reader gets back exactly the pixels written.
TEST_P(PngRoundTrip, ReadsBackPixelForPixel)
{
    const PngCase &c = GetParam();
    const QImage original = noise(c.size, c.format, 11);
    const QByteArray png = ParallelPngWriter::encode(original, c.options);
    ASSERT_FALSE(png.isEmpty());
    QImage decoded;
    ASSERT_TRUE(decoded.loadFromData(png, "png"));
    ASSERT_EQ(decoded.size(), c.size);
    const bool alpha = original.hasAlphaChannel();
    EXPECT_EQ(decoded.hasAlphaChannel(), alpha);
    const QImage::Format compare = alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888;
    EXPECT_TRUE(decoded.convertToFormat(compare) == original.convertToFormat(compare));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PngRoundTrip,
    ::testing::Values(PngCase{"onePixel", QSize(1, 1), QImage::Format_RGB32, {}},
                      PngCase{"oneColumn", QSize(1, 300), QImage::Format_RGB32, {1, 2, 7}},
                      PngCase{"oneRow", QSize(300, 1), QImage::Format_RGB32, {}},
                      PngCase{"manyBands", QSize(333, 517), QImage::Format_RGB32, {1, 3, 5}},
                      PngCase{"stored", QSize(64, 64), QImage::Format_RGB32, {0, 2, 10}},
                      PngCase{"best", QSize(64, 64), QImage::Format_RGB32, {9, 2, 0}},
                      PngCase{"oneThreadOneBand", QSize(200, 100), QImage::Format_RGB32, {1, 1, 1000}},
                      PngCase{"transparency", QSize(257, 129), QImage::Format_ARGB32, {1, 2, 16}},
                      PngCase{"premultiplied", QSize(100, 50), QImage::Format_ARGB32_Premultiplied, {}}));

TEST(ParallelPngWriter, RefusesNothingToWrite)
{
    EXPECT_TRUE(ParallelPngWriter::encode(QImage(), {}).isEmpty());
}

} // namespace
