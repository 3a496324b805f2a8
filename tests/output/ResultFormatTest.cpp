#include "output/ResultFormat.h"
#include "support/TestImages.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(ResultFormat, NamesAndSuffixes)
{
    const QList<QByteArray> formats = ResultFormat::writableFormats();
    ASSERT_FALSE(formats.isEmpty());
    EXPECT_EQ(formats.first(), "png");
    for (const char *expected : {"png", "jpeg", "tiff", "bmp"})
        EXPECT_TRUE(formats.contains(expected)) << expected;

    struct Case {
        QString path;
        QByteArray format;
        QString expected;
    };
    for (const Case &c : {Case{"/a/b/Untitled", "jpeg", "/a/b/Untitled.jpg"},
                          Case{"/a/b/pic.png", "jpeg", "/a/b/pic.jpg"},
                          Case{"/a/b/pic.JPEG", "jpeg", "/a/b/pic.JPEG"},
                          Case{"/a/b/pic.tiff", "tiff", "/a/b/pic.tiff"},
                          Case{"/a/b/my.holiday", "png", "/a/b/my.holiday.png"},
                          Case{"/a/b/pic.webp", "bmp", "/a/b/pic.bmp"}})
        EXPECT_EQ(ResultFormat::withSuffix(c.path, c.format), c.expected) << qPrintable(c.path);

    // The one table of extensions, for every save and the command line.
    for (const auto &[suffix, format] : std::initializer_list<std::pair<const char *, QByteArray>>{
             {"png", "png"}, {"JPG", "jpeg"}, {"jpeg", "jpeg"}, {"jpe", "jpeg"}, {"tif", "tiff"}, {"TIFF", "tiff"},
             {"bmp", "bmp"}, {"gif", ""}, {"holiday", ""}, {"", ""}})
        EXPECT_EQ(ResultFormat::formatForSuffix(QString::fromLatin1(suffix)), format) << suffix;
}

// The file a save writes: a typed extension of a format written here chooses the format and
// keeps the name; any other name gets the chosen format's extension. The typed name and the
// written one never differ in anything but an added extension.
TEST(ResultFormat, SaveTargetFollowsTheTypedExtension)
{
    struct Case {
        const char *typed;
        QByteArray chosen;
        ResultFormat::Target expected;
    };
    for (const Case &c : {Case{"/d/victim.png", "jpeg", {"/d/victim.png", "png"}},
                          Case{"/d/victim.JPG", "png", {"/d/victim.JPG", "jpeg"}},
                          Case{"/d/victim", "jpeg", {"/d/victim.jpg", "jpeg"}},
                          Case{"/d/my.holiday", "tiff", {"/d/my.holiday.tif", "tiff"}},
                          Case{"/d/scan.tiff", "tiff", {"/d/scan.tiff", "tiff"}},
                          Case{"/d/anim.gif", "png", {"/d/anim.gif.png", "png"}}}) {
        const ResultFormat::Target target = ResultFormat::saveTarget(QString::fromLatin1(c.typed), c.chosen);
        EXPECT_EQ(target.path, c.expected.path) << c.typed;
        EXPECT_EQ(target.format, c.expected.format) << c.typed;
    }
}

// The choice starts at the reference photo's own format when it can be written, at PNG for a
// readable picture that cannot, and nowhere for a file that is not a picture.
TEST(ResultFormat, StartingFormatFollowsTheFirstPhoto)
{
    QTemporaryDir dir;
    QImage image(8, 6, QImage::Format_RGB32);
    image.fill(Qt::red);
    struct Case {
        const char *file;
        const char *writeAs;
        QByteArray expected;
    };
    for (const Case &c : {Case{"a.jpg", "jpeg", "jpeg"}, Case{"b.tif", "tiff", "tiff"}, Case{"c.png", "png", "png"},
                          Case{"d.bmp", "bmp", "bmp"}, Case{"jpeg-named.png", "jpeg", "jpeg"},
                          Case{"e.ppm", "ppm", "png"}, Case{"f.txt", nullptr, ""}, Case{"missing.jpg", "", ""}}) {
        const QString path = dir.filePath(QString::fromLatin1(c.file));
        if (c.writeAs == nullptr) {
            ASSERT_TRUE(testimages::writeFile(path, "not a picture"));
        } else if (*c.writeAs) {
            ASSERT_TRUE(image.save(path, c.writeAs));
        }
        EXPECT_EQ(ResultFormat::startingFormat(path), c.expected) << c.file;
    }
    EXPECT_EQ(ResultFormat::startingFormat(QString()), QByteArray());
}

} // namespace
