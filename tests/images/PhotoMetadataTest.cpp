#include "images/PhotoMetadata.h"
#include "support/TestImages.h"

#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>

#include <exiv2/exiv2.hpp>

#include <gtest/gtest.h>

#include <optional>

using namespace testimages;

namespace {

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray iccProfile()
{
    return QColorSpace(QColorSpace::AdobeRgb).iccProfile();
}

// A camera JPEG as it comes off the card: landscape pixels stored on their side (orientation
// 6), with EXIF (and a thumbnail), IPTC, XMP and a colour profile.
QString cameraJpeg(const QTemporaryDir &dir)
{
    const QString path = dir.filePath(QStringLiteral("camera.jpg"));
    EXPECT_TRUE(writeFile(path, encode(gradient(60, 40), "jpeg")));
    auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    Exiv2::ExifData &exif = image->exifData();
    exif["Exif.Image.Make"] = "Tessary Optics";
    exif["Exif.Image.Model"] = "TX-100";
    exif["Exif.Photo.DateTimeOriginal"] = "2024:05:17 10:20:30";
    exif["Exif.Image.Orientation"] = uint16_t(6);
    exif["Exif.Photo.PixelXDimension"] = uint32_t(60);
    exif["Exif.Photo.PixelYDimension"] = uint32_t(40);
    exif["Exif.Image.ImageWidth"] = uint32_t(60);
    const QByteArray thumbnail = encode(gradient(16, 12), "jpeg");
    Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(thumbnail.constData()), long(thumbnail.size()));
    image->iptcData()["Iptc.Application2.Caption"] = "Harbour at dawn";
    image->xmpData()["Xmp.xmp.Rating"] = "4";
    image->xmpData()["Xmp.tiff.Orientation"] = "6";
    const QByteArray icc = iccProfile();
    Exiv2::DataBuf profile(reinterpret_cast<const Exiv2::byte *>(icc.constData()), long(icc.size()));
    image->setIccProfile(profile);
    image->writeMetadata();
    return path;
}

struct Read {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    QByteArray icc;

    std::optional<std::string> exifValue(const char *key) const
    {
        const auto it = exif.findKey(Exiv2::ExifKey(key));
        return it == exif.end() ? std::nullopt : std::optional(it->toString());
    }
};

Read readMetadata(const QString &path)
{
    auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    Read r{image->exifData(), image->iptcData(), image->xmpData(), {}};
    if (image->iccProfileDefined())
        r.icc = QByteArray(reinterpret_cast<const char *>(image->iccProfile()->pData_), int(image->iccProfile()->size_));
    return r;
}

// The edited picture (upright, so portrait now) written in each format that holds metadata:
// it gets the camera's tags, the profile, orientation 1 and its own pixel dimensions.
TEST(PhotoMetadata, CopiesTheSourceMetadataIntoEveryFormatThatHoldsIt)
{
    const char *formats[] = {"jpeg", "png", "tiff"};
    QTemporaryDir dir;
    const QString source = cameraJpeg(dir);
    const QImage edited = gradient(40, 60);
    for (const char *format : formats) {
        SCOPED_TRACE(format);
        const QString target = dir.filePath(QStringLiteral("edited.") + QLatin1String(format));
        ASSERT_TRUE(writeFile(target, encode(edited, format)));
        QString error;
        ASSERT_TRUE(PhotoMetadata::copy(source, target, &error)) << error.toStdString();

        const Read r = readMetadata(target);
        EXPECT_EQ(r.exifValue("Exif.Image.Make"), "Tessary Optics");
        EXPECT_EQ(r.exifValue("Exif.Image.Model"), "TX-100");
        EXPECT_EQ(r.exifValue("Exif.Photo.DateTimeOriginal"), "2024:05:17 10:20:30");
        EXPECT_EQ(r.exifValue("Exif.Image.Orientation"), "1");
        EXPECT_EQ(r.exifValue("Exif.Photo.PixelXDimension"), "40");
        EXPECT_EQ(r.exifValue("Exif.Photo.PixelYDimension"), "60");
        EXPECT_EQ(r.exifValue("Exif.Image.ImageWidth"), "40");
        EXPECT_EQ(Exiv2::ExifThumbC(r.exif).copy().size_, 0) << "the thumbnail of the unedited photo is dropped";
        EXPECT_EQ(r.icc, iccProfile());
        const auto rating = r.xmp.findKey(Exiv2::XmpKey("Xmp.xmp.Rating"));
        ASSERT_NE(rating, r.xmp.end());
        EXPECT_EQ(rating->toString(), "4");
        const auto xmpOrientation = r.xmp.findKey(Exiv2::XmpKey("Xmp.tiff.Orientation"));
        ASSERT_NE(xmpOrientation, r.xmp.end());
        EXPECT_EQ(xmpOrientation->toString(), "1");
        const auto caption = r.iptc.findKey(Exiv2::IptcKey("Iptc.Application2.Caption"));
        ASSERT_NE(caption, r.iptc.end());
        EXPECT_EQ(caption->toString(), "Harbour at dawn");

        // Still the same picture, shown upright.
        QImageReader reader(target);
        reader.setAutoTransform(true);
        const QImage back = reader.read();
        ASSERT_EQ(back.size(), edited.size());
        EXPECT_NEAR(qRed(back.pixel(35, 5)), qRed(edited.pixel(35, 5)), 12);
        EXPECT_NEAR(qGreen(back.pixel(5, 55)), qGreen(edited.pixel(5, 55)), 12);
        EXPECT_EQ(back.colorSpace(), QColorSpace(QColorSpace::AdobeRgb)) << "the profile is readable by others";
    }
}

// Nothing to carry, or nowhere to put it: true, and the target is left byte for byte.
TEST(PhotoMetadata, NothingToCarryLeavesTheTargetAsItIs)
{
    QTemporaryDir dir;
    const QString camera = cameraJpeg(dir);
    const QString plain = dir.filePath(QStringLiteral("plain.jpg"));
    ASSERT_TRUE(writeFile(plain, encode(gradient(30, 20), "jpeg")));
    const QString notAPicture = dir.filePath(QStringLiteral("notes.txt"));
    ASSERT_TRUE(writeFile(notAPicture, "not a picture"));
    struct Case {
        const char *name;
        QString source;
        const char *targetFormat;
    } cases[] = {
        {"BMP cannot hold metadata", camera, "bmp"},
        {"WebP is not rewritten", camera, "webp"},
        {"source without metadata", plain, "jpeg"},
        {"missing source", dir.filePath(QStringLiteral("gone.jpg")), "jpeg"},
        {"source is not a picture", notAPicture, "png"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QString target = dir.filePath(QStringLiteral("target.") + QLatin1String(c.targetFormat));
        ASSERT_TRUE(writeFile(target, encode(gradient(40, 60), c.targetFormat)));
        const QByteArray before = readAll(target);
        QString error;
        EXPECT_TRUE(PhotoMetadata::copy(c.source, target, &error)) << error.toStdString();
        EXPECT_EQ(readAll(target), before);
    }
}

// A target that cannot be rewritten gives false with the reason, and a damaged one is left
// exactly as it was.
TEST(PhotoMetadata, FailuresSayWhyAndLeaveTheTargetIntact)
{
    QTemporaryDir dir;
    const QString camera = cameraJpeg(dir);
    QByteArray truncatedJpeg = readAll(camera).left(300);
    struct Case {
        const char *name;
        std::optional<QByteArray> targetBytes; // none: the target does not exist
    } cases[] = {
        {"missing target", std::nullopt},
        {"damaged JPEG", truncatedJpeg},
        {"JPEG marker then garbage", QByteArray("\xFF\xD8\xFF\xE1\xFF\xFF garbage", 16)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QString target = dir.filePath(QStringLiteral("broken-%1.jpg").arg(QLatin1String(c.name).size()));
        if (c.targetBytes) {
            ASSERT_TRUE(writeFile(target, *c.targetBytes));
        }
        QString error;
        EXPECT_FALSE(PhotoMetadata::copy(camera, target, &error));
        EXPECT_FALSE(error.isEmpty());
        if (c.targetBytes)
            EXPECT_EQ(readAll(target), *c.targetBytes);
        else
            EXPECT_FALSE(QFile::exists(target));
    }
}

} // namespace
