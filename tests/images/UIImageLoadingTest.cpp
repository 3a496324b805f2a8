#include "support/MultiPageTiff.h"
#include "support/TestImages.h"

#include "images/ImageFileReader.h"
#include "images/UIImage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace testimages;

namespace {

class UIImageLoading : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    QString path(const QString &name) const { return dir.filePath(name); }
    QString write(const QString &name, const QByteArray &bytes) const
    {
        const QString p = path(name);
        EXPECT_TRUE(writeFile(p, bytes));
        return p;
    }
};

// A GIF header and logical screen claiming w x h, with one tiny image and the trailer.
QByteArray gifClaiming(int w, int h)
{
    QByteArray g("GIF89a");
    g.append(char(w & 0xff)).append(char(w >> 8)).append(char(h & 0xff)).append(char(h >> 8));
    g.append(QByteArray("\x00\x00\x00", 3));
    g.append(QByteArray("\x2C\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02\x44\x01\x00\x3B", 16));
    return g;
}

} // namespace

TEST_F(UIImageLoading, ReadablePicturesLoadAtPixelSizeWhateverTheirName)
{
    const struct {
        const char *name;
        QByteArray bytes;
        QSize size;
    } cases[] = {
        {"photo.jpg", encode(gradient(64, 48), "jpeg", 90), {64, 48}},
        {"photo.png", encode(gradient(30, 70), "png"), {30, 70}},
        {"photo.tiff", encode(gradient(17, 9), "tiff"), {17, 9}},
        {"photo.webp", encode(gradient(20, 10), "webp"), {20, 10}},
        // Mislabelled: decided by content, not by the extension.
        {"really-a-png.jpg", encode(gradient(12, 34), "png"), {12, 34}},
        {"no-extension", encode(gradient(5, 6), "jpeg"), {5, 6}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const UIImage img = UIImage::initWithContentsOfFile(write(QString::fromLatin1(c.name), c.bytes));
        ASSERT_TRUE(img.isValid());
        EXPECT_EQ(img.size(), QSizeF(c.size));
        EXPECT_EQ(img.pixelSize(), c.size);
        EXPECT_EQ(img.frameCount(), 1);
    }
}

TEST_F(UIImageLoading, BrokenAndHostileFilesGiveTheEmptyImageAndANamedError)
{
    const QByteArray jpeg = encode(gradient(200, 150), "jpeg", 90);
    const QByteArray png = encode(gradient(200, 150), "png");
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("folder.jpg")));
    const QString unreadable = write(QStringLiteral("unreadable.png"), png);
    QFile::setPermissions(unreadable, QFileDevice::Permissions());
    const bool root = QFile(unreadable).open(QIODevice::ReadOnly); // root reads anything

    const struct {
        const char *name;
        QString file;
        const char *errorWords;
    } cases[] = {
        {"missing", path(QStringLiteral("nothing-here.jpg")), "no such file"},
        {"device", QStringLiteral("/dev/zero"), "not a regular file"},
        {"folder", path(QStringLiteral("folder.jpg")), "folder"},
        {"empty", write(QStringLiteral("empty.jpg"), QByteArray()), "empty"},
        {"text named as a picture", write(QStringLiteral("notes.png"), "just some words\n"), "not a picture"},
        {"JPEG cut inside the header", write(QStringLiteral("stub.jpg"), jpeg.left(40)), "\u201c"},
        {"JPEG claiming 60000 x 60000", write(QStringLiteral("huge.jpg"), jpegClaiming(60000, 60000)), "megapixel limit"},
        // Qt's GIF reader gives no size before decoding; the allocation limit refuses it.
        {"GIF claiming 65535 x 65535", write(QStringLiteral("huge.gif"), gifClaiming(65535, 65535)), "\u201c"},
        {"unreadable", root ? QString() : unreadable, "cannot read"},
    };
    for (const auto &c : cases) {
        if (c.file.isEmpty())
            continue;
        SCOPED_TRACE(c.name);
        const UIImage::LoadResult r = UIImage::loadFile(c.file);
        EXPECT_FALSE(r.ok());
        EXPECT_FALSE(r.image.isValid());
        EXPECT_EQ(r.image.size(), QSizeF(0, 0));
        EXPECT_TRUE(r.error.contains(c.file)) << r.error.toStdString();
        EXPECT_TRUE(r.error.contains(QString::fromUtf8(c.errorWords))) << r.error.toStdString();
        EXPECT_EQ(UIImage::initWithContentsOfFile(c.file).size(), QSizeF(0, 0));
        EXPECT_EQ(UIImage::initWithContentsOfFileUnderMegaPixels(c.file, 0.5).size(), QSizeF(0, 0));
    }
}

TEST_F(UIImageLoading, MultiPageTiffTakesTheLargestWidthAndTheLargestHeight)
{
    const QString file = write(QStringLiteral("pages.tif"), multiPageTiff({{40, 10}, {20, 60}, {30, 30}}));
    const UIImage img = UIImage::initWithContentsOfFile(file);
    EXPECT_EQ(img.frameCount(), 3);
    EXPECT_EQ(img.size(), QSizeF(40, 60));
    // The frame drawn is the largest by area: 20 x 60.
    EXPECT_EQ(img.pixelSize(), QSize(20, 60));
}

TEST_F(UIImageLoading, ScaledLoadingMatchesLoadingThenScaling)
{
    // Sizes that exercise every reduced JPEG scale, odd dimensions, a picture already under the
    // limit, and a format that cannot be decoded at a reduced scale.
    const struct {
        const char *format;
        QSize size;
        double limit;
    } cases[] = {
        {"jpeg", {3001, 2001}, 0.5}, // 1/2 decoding
        {"jpeg", {4000, 3000}, 0.5}, // 1/4
        {"jpeg", {4003, 1999}, 0.1}, // 1/8
        {"jpeg", {1001, 500}, 0.5},  // barely over: full decoding
        {"jpeg", {800, 600}, 0.5},   // under the limit: the file itself
        {"png", {1500, 1000}, 0.5},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.format << " " << c.size.width() << "x" << c.size.height());
        const QString file = write(QStringLiteral("scaled.") + QLatin1String(c.format), encode(ramps(c.size.width(), c.size.height()), c.format, 95));
        const UIImage full = UIImage::initWithContentsOfFile(file).scaleToUnderMegaPixels(c.limit);
        const UIImage scaled = UIImage::initWithContentsOfFileUnderMegaPixels(file, c.limit);
        EXPECT_EQ(scaled.size(), full.size());
        EXPECT_EQ(scaled.pixelSize(), full.pixelSize());
        EXPECT_LT(meanDifference(scaled.bestRepresentation(), full.bestRepresentation()), 1.0);
    }
}

TEST_F(UIImageLoading, ScaledFittingMatchesLoadingThenFitting)
{
    const QString jpeg = write(QStringLiteral("fit.jpg"), encode(ramps(3203, 2101), "jpeg", 95));
    const QString png = write(QStringLiteral("fit.png"), encode(ramps(1203, 801), "png"));
    const struct {
        const QString &file;
        QSizeF size;
        int method;
    } cases[] = {
        {jpeg, {300, 300}, 0}, {jpeg, {300, 300}, 1}, {jpeg, {300, 300}, 2}, {jpeg, {300, 300}, 3},
        {jpeg, {100, 700}, 0},  // tall target: the crop needs more pixels, a smaller reduction
        {jpeg, {2000, 1500}, 0}, // close to full size: decoded in full
        {jpeg, {0, 100}, 0},     // nothing to fit: the picture itself
        {png, {200, 100}, 2},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.size.width() << "x" << c.size.height() << " method " << c.method);
        const UIImage full = UIImage::initWithContentsOfFile(c.file).imageToFitSize(c.size, c.method);
        const UIImage quick = UIImage::initWithContentsOfFileFittedToSize(c.file, c.size, c.method);
        EXPECT_EQ(quick.size(), full.size());
        EXPECT_EQ(quick.pixelSize(), full.pixelSize());
        EXPECT_LT(meanDifference(quick.bestRepresentation(), full.bestRepresentation()), 1.0);
    }
    EXPECT_FALSE(UIImage::initWithContentsOfFileFittedToSize(path(QStringLiteral("missing.jpg")), {10, 10}, 0).isValid());
}

TEST_F(UIImageLoading, TiffRepresentationRoundTripsThePixels)
{
    const QImage source = gradient(33, 21);
    const UIImage img(source);
    const QByteArray tiff = img.TIFFRepresentation();
    ASSERT_FALSE(tiff.isEmpty());
    const UIImage back = UIImage::initWithTIFFRepresentation(tiff);
    EXPECT_EQ(back.size(), QSizeF(33, 21));
    EXPECT_EQ(meanDifference(back.bestRepresentation(), source), 0.0);
    EXPECT_EQ(img.CGImage().size(), QSize(33, 21));
    EXPECT_TRUE(UIImage().CGImage().isNull());
    EXPECT_TRUE(UIImage().TIFFRepresentation().isEmpty());
    EXPECT_FALSE(UIImage::initWithTIFFRepresentation("not a tiff").isValid());
}
