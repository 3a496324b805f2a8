#include "images/PhotoMetadata.h"

#include "foundation/AtomicFileWriter.h"

#include <QFile>
#include <QImageReader>
#include <QtEndian>

#include <exiv2/exiv2.hpp>

#include <mutex>

#include <zlib.h>

namespace {

// The XMP toolkit must be set up once before threads use it.
void initialiseExiv2()
{
    static std::once_flag once;
    std::call_once(once, [] { Exiv2::XmpParser::initialize(); });
}

// The formats whose metadata is rewritten: JPEG, PNG and TIFF take all of it. WebP is left
// alone: the metadata library turns a plain WebP into an extended one that decoders refuse.
bool rewritable(int imageType)
{
    return imageType == Exiv2::ImageType::jpeg || imageType == Exiv2::ImageType::png || imageType == Exiv2::ImageType::tiff;
}

bool canWrite(int imageType, Exiv2::MetadataId kind)
{
    const Exiv2::AccessMode mode = Exiv2::ImageFactory::checkMode(imageType, kind);
    return mode == Exiv2::amWrite || mode == Exiv2::amReadWrite;
}

// The metadata library writes a PNG's colour profile chunk (iCCP) with an empty name, which
// PNG readers reject as a bad keyword and then ignore the profile; the chunk gets a name here.
QByteArray withNamedPngProfile(const QByteArray &png)
{
    constexpr qsizetype kSignature = 8;
    QByteArray out = png.left(kSignature);
    qsizetype at = kSignature;
    while (at + 12 <= png.size()) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - 12)
            return png; // not a chunk structure it understands: leave it as the library wrote it
        const QByteArray type = png.mid(at + 4, 4);
        const QByteArray data = png.mid(at + 8, length);
        if (type == "iCCP" && data.startsWith('\0')) {
            const QByteArray named = QByteArray("ICC Profile") + data;
            char header[4];
            qToBigEndian<quint32>(quint32(named.size()), header);
            const QByteArray body = type + named;
            char crc[4];
            qToBigEndian<quint32>(quint32(crc32(0, reinterpret_cast<const Bytef *>(body.constData()), uInt(body.size()))), crc);
            out += QByteArray(header, 4) + body + QByteArray(crc, 4);
        } else {
            out += png.mid(at, length + 12);
        }
        at += length + 12;
    }
    out += png.mid(at);
    return out;
}

// The source's metadata with what no longer holds for the written pixels corrected.
struct Carried {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    QByteArray icc;

    bool empty() const { return exif.empty() && iptc.empty() && xmp.empty() && icc.isEmpty(); }

    void fitTo(int width, int height)
    {
        if (!exif.empty()) {
            Exiv2::ExifThumb(exif).erase();
            exif["Exif.Image.Orientation"] = uint16_t(1);
            if (width > 0 && height > 0) {
                exif["Exif.Photo.PixelXDimension"] = uint32_t(width);
                exif["Exif.Photo.PixelYDimension"] = uint32_t(height);
                // Only some writers put the size in the main directory too; keep it true there.
                if (exif.findKey(Exiv2::ExifKey("Exif.Image.ImageWidth")) != exif.end())
                    exif["Exif.Image.ImageWidth"] = uint32_t(width);
                if (exif.findKey(Exiv2::ExifKey("Exif.Image.ImageLength")) != exif.end())
                    exif["Exif.Image.ImageLength"] = uint32_t(height);
            }
        }
        if (!xmp.empty()) {
            const auto setIfPresent = [&](const char *key, const std::string &value) {
                if (xmp.findKey(Exiv2::XmpKey(key)) != xmp.end())
                    xmp[key] = value;
            };
            setIfPresent("Xmp.tiff.Orientation", "1");
            if (width > 0 && height > 0) {
                setIfPresent("Xmp.exif.PixelXDimension", std::to_string(width));
                setIfPresent("Xmp.exif.PixelYDimension", std::to_string(height));
                setIfPresent("Xmp.tiff.ImageWidth", std::to_string(width));
                setIfPresent("Xmp.tiff.ImageLength", std::to_string(height));
            }
        }
    }
};

// What the source carries; empty when it cannot be read or holds nothing.
Carried readSource(const QString &sourcePath)
{
    Carried carried;
    const std::string path = QFile::encodeName(sourcePath).toStdString();
    if (!QFile::exists(sourcePath) || Exiv2::ImageFactory::getType(path) == Exiv2::ImageType::none)
        return carried;
    Exiv2::Image::AutoPtr source = Exiv2::ImageFactory::open(path);
    source->readMetadata();
    carried.exif = source->exifData();
    carried.iptc = source->iptcData();
    carried.xmp = source->xmpData();
    if (source->iccProfileDefined()) {
        const Exiv2::DataBuf *icc = source->iccProfile();
        carried.icc = QByteArray(reinterpret_cast<const char *>(icc->pData_), int(icc->size_));
    }
    return carried;
}

} // namespace

bool PhotoMetadata::copy(const QString &sourcePath, const QString &targetPath, QString *error)
{
    const auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        return false;
    };
    initialiseExiv2();

    Carried carried;
    try {
        carried = readSource(sourcePath);
    } catch (const std::exception &) {
        return true; // an unreadable source has nothing to carry
    }
    if (carried.empty())
        return true;

    QFile file(targetPath);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("%1: %2").arg(targetPath, file.errorString()));
    const QByteArray original = file.readAll();
    file.close();

    // The target is rewritten in memory and then replaced whole, never edited in place.
    QByteArray rewritten;
    try {
        const auto *bytes = reinterpret_cast<const Exiv2::byte *>(original.constData());
        const int type = Exiv2::ImageFactory::getType(bytes, long(original.size()));
        if (!rewritable(type))
            return true; // BMP and the like hold none
        Exiv2::Image::AutoPtr target = Exiv2::ImageFactory::open(bytes, long(original.size()));
        target->readMetadata();
        int width = target->pixelWidth(), height = target->pixelHeight();
        if (width <= 0 || height <= 0) {
            const QSize size = QImageReader(targetPath).size();
            width = size.width();
            height = size.height();
        }
        carried.fitTo(width, height);

        bool changed = false;
        if (!carried.exif.empty() && canWrite(type, Exiv2::mdExif)) {
            target->setExifData(carried.exif);
            changed = true;
        }
        if (!carried.iptc.empty() && canWrite(type, Exiv2::mdIptc)) {
            target->setIptcData(carried.iptc);
            changed = true;
        }
        if (!carried.xmp.empty() && canWrite(type, Exiv2::mdXmp)) {
            target->setXmpData(carried.xmp);
            changed = true;
        }
        if (!carried.icc.isEmpty()) {
            // A profile that does not look like one is left behind rather than failing the
            // whole copy.
            Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(carried.icc.constData()), long(carried.icc.size()));
            try {
                target->setIccProfile(icc, true);
                changed = true;
            } catch (const Exiv2::AnyError &) {
            }
        }
        if (!changed)
            return true;
        target->writeMetadata();

        Exiv2::BasicIo &io = target->io();
        if (io.open() != 0)
            return fail(QStringLiteral("%1: the rewritten file could not be read back").arg(targetPath));
        const long size = io.size();
        rewritten.resize(size);
        const long read = io.read(reinterpret_cast<Exiv2::byte *>(rewritten.data()), size);
        io.close();
        if (read != size)
            return fail(QStringLiteral("%1: the rewritten file could not be read back").arg(targetPath));
        if (type == Exiv2::ImageType::png)
            rewritten = withNamedPngProfile(rewritten);
    } catch (const std::exception &e) {
        return fail(QStringLiteral("%1: %2").arg(targetPath, QString::fromLocal8Bit(e.what())));
    }
    return AtomicFileWriter::write(targetPath, rewritten, error);
}
