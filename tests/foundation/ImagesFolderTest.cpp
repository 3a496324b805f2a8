#include "foundation/ImagesFolder.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class ImagesFolderTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.path())); }
    void TearDown() override { qunsetenv("TESSARY_DOCUMENTS"); }
    QString at(const QString &relative) const { return dir.filePath(relative); }

    QTemporaryDir dir;
};

// Only a file Tessary made may be deleted with its entry: a UUID name with its extension,
// directly in the images folder. A person's own files are never Tessary's.
TEST_F(ImagesFolderTest, OwnsOnlyUuidNamedFilesDirectlyInTheFolder)
{
    const QString uuid = ImagesFolder::newUuid();
    const struct {
        const char *what;
        QString relative; // under the Documents folder
        bool owned;
        bool link = false; // a link there to a file of the person's own
    } cases[] = {
        {"made by Tessary", QStringLiteral("Images/%1.png").arg(uuid), true},
        {"made by Tessary, path spelled through a subfolder", QStringLiteral("Images/sub/../%1.jpg").arg(uuid), true},
        {"the person's own picture", QStringLiteral("Images/holiday.jpg"), false},
        {"a UUID name in a subfolder", QStringLiteral("Images/sub/%1.png").arg(uuid), false},
        {"a UUID name in a lookalike folder", QStringLiteral("Images2/%1.png").arg(uuid), false},
        {"a UUID name beside the images folder", QStringLiteral("%1.png").arg(uuid), false},
        {"a UUID name without extension", QStringLiteral("Images/%1").arg(uuid), false},
        {"a UUID name with two extensions", QStringLiteral("Images/%1.png.bak").arg(uuid), false},
        {"an upper-case UUID name", QStringLiteral("Images/%1.png").arg(uuid.toUpper()), false},
        {"a UUID name with a prefix", QStringLiteral("Images/x%1.png").arg(uuid), false},
        {"a link with a UUID name", QStringLiteral("Images/%1.png").arg(uuid), false, true},
    };
    QDir().mkpath(at(QStringLiteral("Images/sub")));
    QDir().mkpath(at(QStringLiteral("Images2")));
    const QString own = at(QStringLiteral("own.jpg"));
    ASSERT_TRUE(QFile(own).open(QIODevice::WriteOnly));
    for (const auto &k : cases) {
        const QString path = at(k.relative);
        if (k.link)
            ASSERT_TRUE(QFile::link(own, path));
        else
            ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
        EXPECT_EQ(ImagesFolder::isOwned(path), k.owned) << k.what;
        QFile::remove(path);
    }
    EXPECT_FALSE(ImagesFolder::isOwned(QString()));
}

// Whatever is made here gets a new name of Tessary's own in the folder, created on demand.
TEST_F(ImagesFolderTest, MakesNewOwnedFiles)
{
    const QString name = ImagesFolder::newFileName(QStringLiteral("png"));
    EXPECT_EQ(name.size(), 36 + 4);
    EXPECT_NE(name, ImagesFolder::newFileName(QStringLiteral("png")));

    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString written = ImagesFolder::writePng(image);
    ASSERT_TRUE(ImagesFolder::isOwned(written)) << qPrintable(written);
    EXPECT_TRUE(written.endsWith(QStringLiteral(".png")));
    EXPECT_EQ(QImage(written).pixel(0, 0), QColor(Qt::red).rgb());

    const QString copied = ImagesFolder::copy(written, QStringLiteral("jpg"));
    ASSERT_TRUE(ImagesFolder::isOwned(copied));
    EXPECT_NE(copied, written);
    EXPECT_TRUE(copied.endsWith(QStringLiteral(".jpg")));
    EXPECT_TRUE(ImagesFolder::copy(at(QStringLiteral("missing.png")), QStringLiteral("png")).isEmpty());
    EXPECT_TRUE(ImagesFolder::writePng(QImage()).isEmpty());
}

// A folder that cannot be made (a file stands in its place) is said so, not written into.
TEST_F(ImagesFolderTest, AFolderThatCannotBeMadeIsSaid)
{
    ASSERT_TRUE(QFile(at(QStringLiteral("Images"))).open(QIODevice::WriteOnly));
    EXPECT_TRUE(ImagesFolder::path().isEmpty());
    QString error;
    EXPECT_TRUE(ImagesFolder::write("x", QStringLiteral("png"), &error).isEmpty());
    EXPECT_TRUE(error.contains(QStringLiteral("cannot be made"))) << qPrintable(error);
}

} // namespace
