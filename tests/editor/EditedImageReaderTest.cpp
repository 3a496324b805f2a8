#include "editor/EditedImageReader.h"

#include "support/TestImages.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// A save of the edit starts from what the file really is: its format by content, whatever its
// name says, and a JPEG's own quality.
TEST(EditedImageReader, ReadsTheFormatAndQualityASaveStartsFrom)
{
    using namespace testimages;
    const struct {
        const char *name;
        QByteArray bytes;
        bool ok;
        QByteArray format;
        int quality;
    } cases[] = {
        {"harbour.jpg", encode(gradient(40, 30), "jpeg", 70), true, "jpeg", 70},
        {"named-wrongly.png", encode(gradient(40, 30), "jpeg", 70), true, "jpeg", 70},
        {"plain.png", encode(gradient(40, 30), "png"), true, "png", -1},
        {"broken.jpg", QByteArray("not a picture at all"), false, "", -1},
    };
    QTemporaryDir dir;
    for (const auto &k : cases) {
        const QString path = dir.filePath(QString::fromLatin1(k.name));
        ASSERT_TRUE(writeFile(path, k.bytes));
        const EditedImageReader::Photo photo = EditedImageReader::read(path);
        EXPECT_EQ(photo.ok, k.ok) << k.name;
        EXPECT_EQ(photo.properties.format, k.format) << k.name;
        EXPECT_EQ(photo.properties.quality, k.quality) << k.name;
        EXPECT_EQ(photo.properties.size, k.ok ? QSize(40, 30) : QSize()) << k.name;
    }
    EXPECT_FALSE(EditedImageReader::read(dir.filePath(QStringLiteral("missing.jpg"))).ok);
}

} // namespace
