#include "support/MultiPageTiff.h"
#include "support/SimpleGif.h"
#include "support/TestImages.h"

#include "support/ExifJpeg.h"
#include "images/ImageFileReader.h"
#include "images/PictureCompleteness.h"
#include "images/UIImage.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace testimages;

namespace {

QByteArray marker(char code)
{
    return QByteArray("\xFF", 1) + code;
}

TEST(PictureCompleteness, AJpegIsCompleteOnlyWithAnEndAfterItsLastScan)
{
    const QByteArray soi = marker('\xD8'), sos = marker('\xDA'), eoi = marker('\xD9');
    const QByteArray header = soi + QByteArray(200, 'h');
    const QByteArray scan = QByteArray(5000, 's');
    // An embedded thumbnail inside an application segment brings a scan and an end of its own.
    const QByteArray thumbnail = marker('\xE1') + soi + sos + QByteArray(100, 't') + eoi;
    const struct {
        const char *name;
        QByteArray bytes;
        bool complete;
    } cases[] = {
        {"complete", header + sos + scan + eoi, true},
        {"complete, trailing bytes", header + sos + scan + eoi + "trailing", true},
        {"complete, progressive (several scans)", header + sos + scan + sos + scan + eoi, true},
        {"complete with a thumbnail", header + thumbnail + sos + scan + eoi, true},
        {"cut inside the scan", header + sos + scan, false},
        {"cut inside the second scan", header + sos + scan + sos + scan.left(10), false},
        {"cut after a thumbnail's end", header + thumbnail + sos + scan, false},
        {"no scan at all", header + eoi, false},
        {"empty", QByteArray(), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(PictureCompleteness::jpegIsComplete(c.bytes), c.complete) << c.name;
}

// The last page's strip claims more bytes than the file holds after it.
QByteArray tiffWithOverlongLastStrip()
{
    QByteArray tiff = multiPageTiff({{40, 10}, {20, 30}});
    // The last StripByteCounts entry (tag 279, LONG, one value).
    const qsizetype entry = tiff.lastIndexOf(QByteArrayView("\x17\x01\x04\x00\x01\x00\x00\x00", 8));
    if (entry >= 0)
        qToLittleEndian(quint32(20 * 30 + 4096), tiff.data() + entry + 8);
    return tiff;
}

// Pictures whose data ends early are refused, with the file named, by every way of loading;
// the whole files load. Before, GIF, BMP, PNG, TIFF and WebP files cut short loaded as if whole
// (the missing part black, or later TIFF pages left out).
TEST(PictureCompleteness, TruncatedPicturesAreRefusedAndWholeOnesRead)
{
    QTemporaryDir dir;
    const QImage picture = gradient(120, 80);
    const struct {
        const char *name;
        QByteArray whole;
        int frames;
        QList<qsizetype> cuts; // lengths of cut-short copies; negative counts from the end
    } cases[] = {
        {"photo.jpg", encode(picture, "jpeg", 90), 1, {-1, -2, -200}},
        {"photo.png", encode(picture, "png"), 1, {-1, -12, 200}},
        {"photo.gif", simpleGif(quarters(120, 80)), 1, {-1, -2, -300}},
        {"photo.bmp", encode(picture, "bmp"), 1, {-1, -360, -5000}},
        {"odd.bmp", encode(gradient(121, 81), "bmp"), 1, {-2, -400}},
        {"photo.tif", encode(picture, "tiff"), 1, {-1, -200, -5000}},
        {"pages.tif", multiPageTiff({{40, 10}, {20, 60}, {30, 30}}), 3, {-1, -200, -1000}},
        {"photo.webp", encode(picture, "webp"), 1, {-1, -100}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString whole = dir.filePath(QLatin1String(c.name));
        ASSERT_TRUE(writeFile(whole, c.whole));
        const UIImage::LoadResult read = UIImage::loadFile(whole);
        ASSERT_TRUE(read.ok()) << read.error.toStdString();
        EXPECT_EQ(read.image.frameCount(), c.frames);
        QList<QByteArray> cut;
        for (qsizetype length : c.cuts)
            cut.append(c.whole.left(length < 0 ? c.whole.size() + length : length));
        if (QByteArray(c.name) == "pages.tif")
            cut.append(tiffWithOverlongLastStrip());
        for (const QByteArray &bytes : cut) {
            SCOPED_TRACE(testing::Message() << bytes.size() << " of " << c.whole.size() << " bytes");
            const QString file = dir.filePath(QStringLiteral("cut-") + QLatin1String(c.name));
            ASSERT_TRUE(writeFile(file, bytes));
            for (const UIImage::LoadResult &r : {UIImage::loadFile(file), UIImage::loadFileUnderMegaPixels(file, 0.001)}) {
                EXPECT_FALSE(r.ok());
                EXPECT_FALSE(r.image.isValid());
                EXPECT_TRUE(r.error.contains(file)) << r.error.toStdString();
                EXPECT_TRUE(r.error.contains(QStringLiteral("truncated"))) << r.error.toStdString();
            }
        }
    }
}

TEST(PictureCompleteness, StructureChecksOfEachFormat)
{
    const QByteArray gif = simpleGif(quarters(8, 8));
    const QByteArray png = encode(gradient(8, 8), "png");
    const struct {
        const char *name;
        QByteArray bytes;
        QByteArray format;
        bool complete;
    } cases[] = {
        {"GIF with junk after its trailer-less image", gif.left(gif.size() - 1) + "junk", "gif", true},
        {"GIF without its trailer", gif.left(gif.size() - 1), "gif", false},
        {"GIF of a header only", gif.left(13), "gif", false},
        {"PNG with bytes after IEND", png + "more", "png", true},
        {"PNG without its signature's chunks", png.left(8), "png", false},
        {"BMP of a header only", QByteArray("BM"), "bmp", false},
        // Rows are padded to four bytes; the last one's padding is not needed.
        {"BMP without its last row's padding", encode(gradient(121, 81), "bmp").chopped(1), "bmp", true},
        {"BMP without a pixel", encode(gradient(121, 81), "bmp").chopped(2), "bmp", false},
        {"TIFF with a strip table beyond the end", tiffWithOverlongLastStrip(), "tiff", false},
        {"not a TIFF", QByteArray("XX*\0", 4), "tiff", false},
        {"WebP shorter than its RIFF size", encode(gradient(8, 8), "webp").chopped(1), "webp", false},
        {"a format without a check", QByteArray("P6 1 1 255 xyz"), "ppm", true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(PictureCompleteness::isComplete(c.bytes, c.format, 64), c.complete) << c.name;
}

} // namespace
