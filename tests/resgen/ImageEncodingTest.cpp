#include "ContactSheet.h"
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

TEST(ContactSheet, LaysOutOneCellPerPictureRowByRow)
{
    const struct { int count; int columns; int rows; } cases[] = {{0, 8, 1}, {1, 8, 1}, {8, 8, 1}, {9, 8, 2}, {69, 8, 9}, {5, 2, 3}};
    for (const auto &c : cases) {
        std::vector<ContactSheet::Entry> entries;
        for (int i = 0; i < c.count; ++i) {
            QImage picture(i % 2 ? 300 : 50, i % 2 ? 100 : 400, QImage::Format_RGB32);
            picture.fill(Qt::red);
            entries.emplace_back(QStringLiteral("p%1").arg(i), picture);
        }
        const int cell = 100;
        const QImage sheet = ContactSheet::render(entries, cell, c.columns);
        EXPECT_EQ(sheet.width(), c.columns * (cell + 10) + 10) << c.count;
        EXPECT_EQ(sheet.height(), c.rows * (cell + 22 + 10) + 10) << c.count;
        // The last picture's cell shows red in its middle.
        if (c.count > 0) {
            const int i = c.count - 1;
            const QPoint middle(10 + (i % c.columns) * (cell + 10) + cell / 2, 10 + (i / c.columns) * (cell + 32) + cell / 2);
            EXPECT_EQ(sheet.pixelColor(middle), QColor(Qt::red)) << c.count;
        }
    }
}

TEST(ContactSheet, SurvivesEmptyPictures)
{
    const QImage sheet = ContactSheet::render({{QStringLiteral("nothing"), QImage()}}, 50, 3);
    EXPECT_FALSE(sheet.isNull());
}

} // namespace
