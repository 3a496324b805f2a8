#include "support/TestImages.h"

#include "blend/UniformCropper.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {

class UniformCropperTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        ASSERT_TRUE(QDir().mkpath(temp()));
        // A landscape photo, red at its centre and blue at its sides; a portrait one, green.
        QImage wide(4000, 3000, QImage::Format_RGB32);
        wide.fill(Qt::blue);
        QPainter(&wide).fillRect(500, 0, 3000, 3000, Qt::red);
        QImage tall(3000, 4000, QImage::Format_RGB32);
        tall.fill(Qt::green);
        ASSERT_TRUE(wide.save(landscape(), "PNG"));
        ASSERT_TRUE(tall.save(portrait(), "JPG"));
    }
    QString landscape() const { return dir.filePath(QStringLiteral("wide.png")); }
    QString portrait() const { return dir.filePath(QStringLiteral("tall.jpg")); }
    QString temp() const { return dir.filePath(QStringLiteral("tmp")); }
    QTemporaryDir dir;
};

TEST_F(UniformCropperTest, BringsEveryPhotoToTheSmallestWidthAndHeight)
{
    const QString missing = dir.filePath(QStringLiteral("gone.png"));
    struct Case {
        const char *name;
        bool fit;
        QColor landscapeCentre, landscapeTop; // colours of the landscape copy
    } cases[] = {
        // Scaled to fit: 3000 x 2250 in the middle, empty bands above and below.
        {"scaled to fit", true, Qt::red, Qt::transparent},
        // Cropped to fit: the middle 3000 x 3000, all red.
        {"cropped to fit", false, Qt::red, Qt::red},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QStringList out = UniformCropper::uniformlyCropImages({landscape(), missing, portrait()}, true, c.fit, temp());
        // Same names in the temporary folder, the missing file left out, the order kept.
        ASSERT_EQ(out, (QStringList{QDir(temp()).filePath(QStringLiteral("wide.png")),
                                    QDir(temp()).filePath(QStringLiteral("tall.jpg"))}));
        for (const QString &path : out) {
            QFile f(path);
            ASSERT_TRUE(f.open(QIODevice::ReadOnly));
            const QByteArray head = f.read(4);
            EXPECT_TRUE(head == QByteArray("II*\0", 4) || head == QByteArray("MM\0*", 4)) << "TIFF content";
        }
        const QImage wide(out[0], "TIFF"), tall(out[1], "TIFF");
        EXPECT_EQ(wide.size(), QSize(3000, 3000));
        EXPECT_EQ(tall.size(), QSize(3000, 3000));
        EXPECT_EQ(wide.pixelColor(1500, 1500), c.landscapeCentre);
        EXPECT_EQ(wide.pixelColor(1500, 10).alpha(), c.landscapeTop.alpha());
    }
}

TEST_F(UniformCropperTest, SwitchedOffOrWithNothingToReadLeavesTheList)
{
    const QStringList in{landscape(), portrait()};
    EXPECT_EQ(UniformCropper::uniformlyCropImages(in, false, true, temp()), in);
    EXPECT_TRUE(QDir(temp()).isEmpty());
    EXPECT_EQ(UniformCropper::commonSize({dir.filePath(QStringLiteral("none"))}),
              QSizeF(std::numeric_limits<float>::max(), std::numeric_limits<float>::max()));
    EXPECT_EQ(UniformCropper::commonSize(in), QSizeF(3000, 3000));
}

} // namespace
