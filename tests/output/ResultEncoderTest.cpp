#include "support/FaultFolder.h"
#include "support/TiffTags.h"

#include "output/PrintSize.h"
#include "output/ResultFormat.h"
#include "model/CollageLayout.h"
#include "model/PhotoSharpness.h"
#include "output/ResultEncoder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDir>
#include <QImageReader>
#include <QPainter>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace {

QImage collage(QSize size, bool transparent = false)
{
    QImage image(size, transparent ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    image.fill(transparent ? QColor(Qt::transparent) : QColor(Qt::white));
    QPainter p(&image);
    p.fillRect(0, 0, size.width() / 2, size.height() / 2, QColor(200, 40, 40));
    p.fillRect(size.width() / 2, size.height() / 2, size.width() / 2, size.height() / 2, QColor(40, 40, 200));
    return image;
}

struct SaveCase {
    const char *name;
    ResultEncoder::Settings settings;
    QSize expectedSize;
    int expectedDotsPerMeter; // 0: not checked (the format keeps no resolution)
};

void PrintTo(const SaveCase &c, std::ostream *os) { *os << c.name; }

ResultEncoder::Settings settingsOf(const char *format, QSize pixels = {}, int dpm = 0, int quality = 90, int tiff = 1)
{
    ResultEncoder::Settings s;
    s.format = format;
    s.pixelSize = pixels;
    s.dotsPerMeter = dpm;
    s.quality = quality;
    s.tiffCompression = tiff;
    return s;
}

class ResultSave : public ::testing::TestWithParam<SaveCase> {};

// Every format reads back as itself at the size asked for, and with the print resolution where
// the format stores one.
TEST_P(ResultSave, ReadsBackAtTheRightSizeTypeAndResolution)
{
    const SaveCase &c = GetParam();
    if (!ResultFormat::isWritable(c.settings.format))
        GTEST_SKIP() << "no writer for " << c.settings.format.constData() << " here";
    QTemporaryDir dir;
    const QString path = dir.filePath(ResultFormat::withSuffix(QStringLiteral("result"), c.settings.format));
    std::vector<int> steps;
    QString error;
    ASSERT_TRUE(ResultEncoder::writeFile(collage(QSize(300, 200)), path, c.settings, &error,
                                         [&steps](int done, int total) { steps.push_back(done * 100 / total); }))
        << qPrintable(error);
    ASSERT_FALSE(steps.empty());
    EXPECT_EQ(steps.back(), 100);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));

    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    EXPECT_EQ(reader.format(), c.settings.format);
    const QImage back = reader.read();
    ASSERT_FALSE(back.isNull()) << qPrintable(reader.errorString());
    EXPECT_EQ(back.size(), c.expectedSize);
    if (c.expectedDotsPerMeter > 0) {
        EXPECT_NEAR(back.dotsPerMeterX(), c.expectedDotsPerMeter, 1);
        EXPECT_NEAR(back.dotsPerMeterY(), c.expectedDotsPerMeter, 1);
    }
    // The red quarter is still at the top left, the blue at the bottom right.
    EXPECT_GT(back.pixelColor(back.width() / 8, back.height() / 8).red(), 150);
    EXPECT_GT(back.pixelColor(back.width() * 7 / 8, back.height() * 7 / 8).blue(), 150);
}

const int k300 = PrintSize(1, 1, PrintSize::Unit::Inches, 300).dotsPerMeter();
const int k150 = PrintSize(1, 1, PrintSize::Unit::Inches, 150).dotsPerMeter();

INSTANTIATE_TEST_SUITE_P(
    Table, ResultSave,
    ::testing::Values(SaveCase{"Png", settingsOf("png"), QSize(300, 200), 0},
                      SaveCase{"Jpeg", settingsOf("jpeg", {}, 0, 60), QSize(300, 200), 0},
                      SaveCase{"TiffLzw", settingsOf("tiff"), QSize(300, 200), 0},
                      SaveCase{"TiffPlain", settingsOf("tiff", {}, 0, 90, 0), QSize(300, 200), 0},
                      SaveCase{"Webp", settingsOf("webp", {}, 0, 80), QSize(300, 200), 0},
                      SaveCase{"Bmp", settingsOf("bmp"), QSize(300, 200), 0},
                      SaveCase{"PngPrint", settingsOf("png", QSize(600, 400), k300), QSize(600, 400), k300},
                      SaveCase{"JpegPrint", settingsOf("jpeg", QSize(150, 100), k150), QSize(150, 100), k150},
                      SaveCase{"TiffPrint", settingsOf("tiff", QSize(450, 300), k300), QSize(450, 300), k300},
                      SaveCase{"BmpPrint", settingsOf("bmp", QSize(450, 300), k300), QSize(450, 300), k300},
                      // Other proportions: filled, centred, the overflow cut.
                      SaveCase{"PngSquarePrint", settingsOf("png", QSize(200, 200), k300), QSize(200, 200), k300}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(ResultEncoder, LzwTiffAndCompressionChoice)
{
    const QImage image = collage(QSize(64, 48));
    const QByteArray lzw = ResultEncoder::lzwTiff(image);
    EXPECT_EQ(tiffTag(lzw, 259), 5); // Compression: LZW
    EXPECT_EQ(QImage::fromData(lzw, "tiff").size(), QSize(64, 48));
    EXPECT_EQ(tiffTag(ResultEncoder::encode(image, settingsOf("tiff", {}, 0, 90, 0)), 259), 1); // none
    EXPECT_TRUE(ResultEncoder::png(image).startsWith("\x89PNG"));
    // PNG's level: a quality of 100 stores, 0 compresses most.
    ResultEncoder::Settings stored, smallest;
    stored.pngLevel = ResultEncoder::pngLevel(100);
    smallest.pngLevel = ResultEncoder::pngLevel(0);
    smallest.threads = 1;
    EXPECT_GT(ResultEncoder::encode(image, stored).size(), 2 * ResultEncoder::encode(image, smallest).size());
}

// Noise: a picture that compresses badly, so its file is far larger than 64 KiB.
QImage noise(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    quint32 x = 12345;
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int i = 0; i < size.width(); ++i) {
            x = x * 1664525u + 1013904223u;
            line[i] = 0xff000000u | (x >> 8);
        }
    }
    return image;
}

// A write that fails says why in the system's words (never "Unknown error", which is all the
// encoders say after a short write), and leaves the file that was there before.
TEST(ResultEncoder, FailuresSayWhyInTheSystemsWordsAndLeaveTheOldFile)
{
    QTemporaryDir dir;
    const QString kept = dir.filePath(QStringLiteral("kept.png"));
    ASSERT_TRUE(ResultEncoder::writeFile(collage(QSize(10, 10)), kept, settingsOf("png")));
    QFile(dir.filePath(QStringLiteral("plain-file"))).open(QIODevice::WriteOnly);
    FaultFolder readOnly(dir.path(), FaultFolder::Kind::ReadOnly);
    std::unique_ptr<FaultFolder> full; // made last: its fallback limits every write of the process

    struct Case {
        const char *name;
        QString path;
        QByteArray format;
        QString reason; // empty: any words but "Unknown error"
        QImage image = noise(QSize(400, 300));
    };
    QList<Case> cases{
        {"no picture", kept, "png", QString(), QImage()},
        {"format not written here", kept, "gif", QString()},
        {"missing folder", dir.filePath(QStringLiteral("no/such/x.png")), "png", QStringLiteral("No such file or directory")},
        {"folder is a file", dir.filePath(QStringLiteral("plain-file/x.jpg")), "jpeg", QStringLiteral("Not a directory")},
    };
    if (readOnly.usable())
        cases.append({"read-only", readOnly.filePath(QStringLiteral("x.png")), "png", readOnly.reason()});
    full = std::make_unique<FaultFolder>(dir.path(), FaultFolder::Kind::Full);
    if (full->usable()) {
        for (const char *format : {"png", "jpeg", "tiff"})
            cases.append({"full disk", full->filePath(QStringLiteral("x.") + ResultFormat::suffix(format)), format, full->reason()});
    }
    for (const Case &c : cases) {
        QString error;
        EXPECT_FALSE(ResultEncoder::writeFile(c.image, c.path, settingsOf(c.format.constData()), &error)) << c.name;
        if (c.reason.isEmpty()) {
            EXPECT_FALSE(error.isEmpty()) << c.name;
            EXPECT_NE(error, QStringLiteral("Unknown error")) << c.name;
        } else {
            EXPECT_EQ(error, c.reason) << c.name << " " << c.format.constData();
        }
        EXPECT_FALSE(QFile::exists(c.path) && c.path != kept) << c.name;
    }
    full.reset();
    QImageReader back(kept);
    EXPECT_EQ(back.read().size(), QSize(10, 10));
}

// Quitting gives a write up half way, in every format: the encoder is stopped where it stands
// (PNG between bands, JPEG, TIFF and BMP at their next write, WebP from its progress), the write
// says so, and the folder holds neither the file nor any piece of it; the file there before
// stays. Given up before it starts, nothing is encoded at all. Nothing is said on the terminal.
TEST(ResultEncoder, AGivenUpWriteLeavesNoFileInEveryFormat)
{
    const QImage image = noise(QSize(1600, 1200));
    for (const QByteArray &format : ResultFormat::writableFormats()) {
        testing::internal::CaptureStderr();
        const auto quiet = qScopeGuard([] { EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string()); });
        SCOPED_TRACE(format.constData());
        for (const int askedBeforeGivingUp : {0, 3}) {
            SCOPED_TRACE(askedBeforeGivingUp);
            QTemporaryDir dir;
            const QString path = dir.filePath(ResultFormat::withSuffix(QStringLiteral("result"), format));
            int asked = 0;
            const ResultEncoder::Canceled canceled = [&asked, askedBeforeGivingUp] {
                return asked++ >= askedBeforeGivingUp;
            };
            QString error;
            EXPECT_FALSE(ResultEncoder::writeFile(image, path, settingsOf(format.constData()), &error, {}, canceled));
            EXPECT_EQ(error, ResultEncoder::canceledReason());
            EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());
            EXPECT_TRUE(ResultEncoder::encode(image, settingsOf(format.constData()), nullptr, {}, canceled).isEmpty());
        }
        // Not given up: the same write goes through whole.
        QTemporaryDir dir;
        const QString path = dir.filePath(ResultFormat::withSuffix(QStringLiteral("result"), format));
        EXPECT_TRUE(ResultEncoder::writeFile(image, path, settingsOf(format.constData()), nullptr, {}, [] { return false; }));
        EXPECT_EQ(QImageReader(path).read().size(), image.size());
    }
}

// WebP is written by libwebp itself, as Qt's plug-in writes it: lossy below quality 100,
// lossless at 100, with the picture's colour profile.
TEST(ResultEncoder, WebpAsQtWritesIt)
{
    if (!ResultFormat::isWritable("webp"))
        GTEST_SKIP() << "no WebP here";
    QImage image = noise(QSize(64, 48));
    image.setColorSpace(QColorSpace::DisplayP3);
    const QByteArray lossy = ResultEncoder::encode(image, settingsOf("webp", {}, 0, 80));
    const QByteArray lossless = ResultEncoder::encode(image, settingsOf("webp", {}, 0, 100));
    EXPECT_TRUE(lossy.contains("VP8 "));
    EXPECT_TRUE(lossless.contains("VP8L"));
    const QImage back = QImage::fromData(lossless, "webp");
    EXPECT_EQ(back.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    EXPECT_EQ(back.convertToFormat(QImage::Format_RGB32), image);
}

// A transparent collage keeps its transparency where the format can, and lies on white where
// it cannot (never on black).
TEST(ResultEncoder, TransparencyKeptOrFlattenedOnWhite)
{
    const QImage image = collage(QSize(40, 40), true);
    for (const char *format : {"png", "tiff", "jpeg", "bmp"}) {
        const QImage back = QImage::fromData(ResultEncoder::encode(image, settingsOf(format)), format);
        ASSERT_FALSE(back.isNull()) << format;
        const QColor corner = back.pixelColor(35, 5);
        if (ResultFormat::keepsAlpha(format)) {
            EXPECT_EQ(corner.alpha(), 0) << format;
        } else {
            EXPECT_GT(corner.lightness(), 240) << format;
        }
    }
}

TEST(ResultEncoder, ResampledFillsCentred)
{
    QImage wide(400, 100, QImage::Format_RGB32);
    wide.fill(Qt::black);
    QPainter(&wide).fillRect(150, 0, 100, 100, Qt::green);
    const QImage square = ResultEncoder::resampled(wide, QSize(50, 50));
    ASSERT_EQ(square.size(), QSize(50, 50));
    EXPECT_GT(square.pixelColor(25, 25).green(), 200); // the middle stays in the middle
    EXPECT_EQ(ResultEncoder::resampled(wide, QSize()).size(), wide.size());
}

struct SharpCase {
    const char *name;
    QSize photo;
    QSize tile;
    int method;
    double expected;
};

void PrintTo(const SharpCase &c, std::ostream *os) { *os << c.name; }

class Sharpness : public ::testing::TestWithParam<SharpCase> {};

TEST_P(Sharpness, PhotoPixelsPerPicturePixel)
{
    const SharpCase &c = GetParam();
    EXPECT_NEAR(PhotoSharpness::photoPixelsPerPixel(c.photo, c.tile, c.method), c.expected, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Sharpness,
    ::testing::Values(SharpCase{"CropCoversWithTheTighterSide", QSize(4000, 3000), QSize(1000, 1000), 0, 3.0},
                      SharpCase{"CropKeepStartSame", QSize(4000, 3000), QSize(1000, 1000), 1, 3.0},
                      SharpCase{"FitInsideUsesTheLooserSide", QSize(4000, 3000), QSize(1000, 1000), 3, 4.0},
                      SharpCase{"SmallPhotoIsEnlargedAlready", QSize(500, 500), QSize(1000, 1000), 0, 0.5},
                      SharpCase{"NoPhoto", QSize(), QSize(1000, 1000), 0, 0.0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(PhotoSharpness, SharpestPhotoOfTheCollageSkipsPlaceholders)
{
    CollageLayout layout;
    const auto tile = [](QRectF frame, QString path, bool placeholder) {
        TileLayout t;
        t.frame = frame;
        t.imagePath = path;
        t.placeholder = placeholder;
        return t;
    };
    layout.tiles = {tile(QRectF(0, 0, 100, 100), "a", false), tile(QRectF(100, 0, 100, 100), "b", false),
                    tile(QRectF(0, 100, 200, 100), "placeholder", true)};
    const std::map<QString, QSize> sizes{{"a", QSize(1000, 1000)}, {"b", QSize(3000, 2000)},
                                         {"placeholder", QSize(90000, 90000)}};
    const auto photoSize = [&sizes](const QString &p) { return sizes.at(p); };
    // At scale 5 the tiles are 500 pixels: a gives 2, b gives 4 (its 2000-pixel side covers).
    EXPECT_NEAR(PhotoSharpness::sharpest(layout, 5, photoSize), 4.0, 1e-9);
    EXPECT_NEAR(PhotoSharpness::sharpest(layout, 10, photoSize), 2.0, 1e-9);
    layout.tiles.resize(0);
    EXPECT_EQ(PhotoSharpness::sharpest(layout, 1, photoSize), 0.0);
}

} // namespace
