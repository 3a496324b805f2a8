#include "ImageEncoding.h"

#include <QBuffer>
#include <QImageReader>

#include <gtest/gtest.h>

namespace {

QImage decode(const QByteArray &bytes, QByteArray *format = nullptr)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    if (format)
        *format = reader.format();
    return reader.read();
}

QImage sample()
{
    QImage image(40, 30, QImage::Format_ARGB32);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            image.setPixel(x, y, qRgba(x * 6, y * 8, 100, x < 20 ? 255 : (x - 20) * 12));
    return image;
}

TEST(ImageEncoding, LosslessFormatsKeepEveryPixelAndAlpha)
{
    const struct {
        const char *format;
        QByteArray (*encode)(const QImage &);
    } cases[] = {{"png", ImageEncoding::png}, {"tiff", ImageEncoding::tiff}};
    for (const auto &c : cases) {
        const QByteArray bytes = c.encode(sample());
        ASSERT_FALSE(bytes.isEmpty()) << c.format;
        EXPECT_EQ(bytes, c.encode(sample())) << c.format << " is not repeatable";
        QByteArray format;
        const QImage back = decode(bytes, &format);
        EXPECT_EQ(format, QByteArray(c.format));
        ASSERT_EQ(back.size(), QSize(40, 30)) << c.format;
        // TIFF keeps colour premultiplied by alpha: compare in that form, where both are exact.
        EXPECT_EQ(back.convertToFormat(QImage::Format_ARGB32_Premultiplied),
                  sample().convertToFormat(QImage::Format_ARGB32_Premultiplied)) << c.format;
    }
}

TEST(ImageEncoding, JpegIsOpaqueCloseAndRepeatable)
{
    QImage image(64, 48, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(200, 120, 40));
    const QByteArray bytes = ImageEncoding::jpeg(image);
    EXPECT_EQ(bytes, ImageEncoding::jpeg(image));
    QByteArray format;
    const QImage back = decode(bytes, &format);
    EXPECT_EQ(format, "jpeg");
    EXPECT_FALSE(back.hasAlphaChannel());
    const QColor c = back.pixelColor(32, 24);
    EXPECT_NEAR(c.red(), 200, 4);
    EXPECT_NEAR(c.green(), 120, 4);
    EXPECT_NEAR(c.blue(), 40, 4);
}

} // namespace
