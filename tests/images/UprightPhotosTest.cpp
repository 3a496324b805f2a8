#include "support/ExifJpeg.h"
#include "support/TestImages.h"

#include "foundation/UserDefaults.h"
#include "photos/ImageCache.h"
#include "images/ImageFileReader.h"
#include "images/UIImage.h"
#include "support/FakePhotoList.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace testimages;

namespace {

// A photo stored sideways, mirrored or upside down, with the EXIF tag saying so, is read upright
// by every path that reads photos: the header size, full and reduced decoding, fitting, and the
// image cache (also after the cache is saved and restored).
TEST(UprightPhotos, EveryOrientationIsReadUprightByEveryPath)
{
    QTemporaryDir dir;
    const QSize upright(512, 256);
    // Big enough that a JPEG 0.04-megapixel ceiling is decoded at half scale.
    const QImage picture = quarters(upright.width(), upright.height());
    const auto fileFor = [&](int orientation) { return dir.filePath(QStringLiteral("o%1.jpg").arg(orientation)); };
    for (int orientation = 1; orientation <= 8; ++orientation)
        ASSERT_TRUE(writeFile(fileFor(orientation), orientedJpeg(picture, orientation)));

    FakePhotoList photos;
    ImageCache cache(&photos);
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    const struct {
        const char *path;
        std::function<UIImage(const QString &)> read;
        QSize size; // of the result
    } paths[] = {
        {"full decoding", [](const QString &f) { return UIImage::initWithContentsOfFile(f); }, upright},
        {"reduced decoding", [](const QString &f) { return UIImage::initWithContentsOfFileUnderMegaPixels(f, 0.04); },
         UIImage(picture).scaleToUnderMegaPixels(0.04).pixelSize()},
        {"reduced decoding, the decoder's own frame",
         [](const QString &f) {
             QByteArray bytes;
             QString error;
             ImageFileReader::readFile(f, &bytes, &error);
             const ImageFileReader::Frames frames = ImageFileReader::decodeReducedJpeg(bytes, f, QSize(100, 50));
             return frames.ok() ? UIImage(frames.frames.first()) : UIImage();
         },
         {128, 64}},
        {"fitted to a tile", [](const QString &f) { return UIImage::initWithContentsOfFileFittedToSize(f, {60, 60}, 0); }, {60, 60}},
        {"the image cache", [&](const QString &f) { photos = FakePhotoList({f}); return cache.getImageForPath(f); }, upright},
        {"the image cache, saved and restored",
         [&](const QString &f) {
             photos = FakePhotoList({f});
             cache.getImageForPath(f);
             cache.saveImageCacheToUserDefaults(defaults);
             ImageCache restored(&photos);
             restored.restoreImageCacheFromUserDefaults(defaults);
             return restored.getImageForPath(f);
         },
         upright},
    };
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(testing::Message() << "orientation " << orientation);
        const QString file = fileFor(orientation);
        QByteArray bytes;
        QString error;
        ASSERT_TRUE(ImageFileReader::readFile(file, &bytes, &error));
        EXPECT_EQ(ImageFileReader::readHeader(bytes, file).size, upright);
        EXPECT_EQ(ImageFileReader::readHeaderOfFile(file).size, upright);
        for (const auto &p : paths) {
            SCOPED_TRACE(p.path);
            const UIImage image = p.read(file);
            EXPECT_EQ(image.pixelSize(), p.size);
            EXPECT_EQ(quarterColours(image.bestRepresentation()), QStringLiteral("RGBW"));
        }
    }
}

// A TIFF page records its orientation in its own tag; it is applied too.
TEST(UprightPhotos, TiffOrientationIsApplied)
{
    const QImage picture = quarters(64, 32);
    for (int orientation : {3, 6, 8}) {
        SCOPED_TRACE(orientation);
        const QImage stored = storedForOrientation(picture, orientation);
        QByteArray tiff;
        QBuffer buffer(&tiff);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, "tiff");
        // Qt writes the tag for the turn that shows the stored pixels upright.
        writer.setTransformation(orientation == 3 ? QImageIOHandler::TransformationRotate180
                                 : orientation == 6 ? QImageIOHandler::TransformationRotate90
                                                    : QImageIOHandler::TransformationRotate270);
        ASSERT_TRUE(writer.write(stored));
        const UIImage::LoadResult loaded = UIImage::loadData(tiff);
        ASSERT_TRUE(loaded.ok()) << loaded.error.toStdString();
        EXPECT_EQ(loaded.image.pixelSize(), QSize(64, 32));
        EXPECT_EQ(quarterColours(loaded.image.bestRepresentation()), QStringLiteral("RGBW"));
        EXPECT_EQ(ImageFileReader::readHeader(tiff, QStringLiteral("t.tif")).size, QSize(64, 32));
    }
}

} // namespace
