#include "ImageFileReader.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <mutex>

namespace {

QString quoted(const QString &name)
{
    return QStringLiteral("\u201c%1\u201d").arg(name);
}

void prepare(QImageReader &reader)
{
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
}

QString oversized(const QString &name, const QSize &size)
{
    return QStringLiteral("%1 is %2 x %3 pixels, more than the %4-megapixel limit")
        .arg(quoted(name)).arg(size.width()).arg(size.height()).arg(ImageFileReader::MaxPixels / 1000000);
}

// Qt's TIFF handler reopens the file for every query and page and reads its header from the
// device's current position, so the device goes back to the start before each of them.
bool isTiff(const QImageReader &reader)
{
    return reader.format() == "tiff";
}

void rewindTiff(QImageReader &reader, QBuffer &buffer)
{
    if (isTiff(reader))
        buffer.seek(0);
}

bool nextPage(QImageReader &reader, QBuffer &buffer)
{
    rewindTiff(reader, buffer);
    if (!reader.jumpToNextImage())
        return false;
    rewindTiff(reader, buffer);
    return true;
}

bool tooLarge(const QSize &size)
{
    return qint64(size.width()) * qint64(size.height()) > ImageFileReader::MaxPixels;
}

} // namespace

void ImageFileReader::raiseAllocationLimit()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const int needed = int(MaxPixels * 8 / (1024 * 1024)) + 64;
        if (QImageReader::allocationLimit() < needed)
            QImageReader::setAllocationLimit(needed);
    });
}

bool ImageFileReader::readFile(const QString &path, QByteArray *bytes, QString *error)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists()) {
        *error = QStringLiteral("%1: no such file").arg(quoted(path));
        return false;
    }
    if (info.isDir()) {
        *error = QStringLiteral("%1 is a folder, not a picture").arg(quoted(path));
        return false;
    }
    if (!info.isFile()) {
        // Devices, pipes and sockets could block or never end.
        *error = QStringLiteral("%1 is not a regular file").arg(quoted(path));
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1: %2").arg(quoted(path), file.errorString());
        return false;
    }
    // Sequential files (pipes, devices) report no size; read them up to the limit.
    if (!file.isSequential() && file.size() > MaxFileBytes) {
        *error = QStringLiteral("%1 is too large to be a picture (%2 bytes)").arg(quoted(path)).arg(file.size());
        return false;
    }
    *bytes = file.read(MaxFileBytes + 1);
    if (bytes->size() > MaxFileBytes) {
        *error = QStringLiteral("%1 is too large to be a picture").arg(quoted(path));
        bytes->clear();
        return false;
    }
    if (file.error() != QFileDevice::NoError) {
        *error = QStringLiteral("cannot read %1: %2").arg(quoted(path), file.errorString());
        return false;
    }
    if (bytes->isEmpty()) {
        *error = QStringLiteral("%1 is empty").arg(quoted(path));
        return false;
    }
    return true;
}

bool ImageFileReader::jpegIsComplete(const QByteArray &bytes)
{
    // Inside entropy-coded data every 0xFF byte is followed by 0x00 or a restart marker, so the
    // last start-of-scan marker begins the final scan, and a complete file has an end-of-image
    // marker after it. (An embedded thumbnail ends earlier, before the main image's scans.)
    // Searched from the cheap ends: the end-of-image marker of a complete file sits at its very
    // end, and the first start-of-scan near its beginning, so no search crosses the scan data.
    const QByteArrayView startOfScan("\xFF\xDA", 2);
    const qsizetype lastEnd = bytes.lastIndexOf(QByteArrayView("\xFF\xD9", 2));
    if (lastEnd < 0)
        return false;
    const qsizetype firstScan = bytes.indexOf(startOfScan);
    return firstScan >= 0 && firstScan < lastEnd && bytes.indexOf(startOfScan, lastEnd + 2) < 0;
}

ImageFileReader::Header ImageFileReader::readHeader(const QByteArray &bytes, const QString &name)
{
    Header h;
    if (bytes.isEmpty()) {
        h.error = QStringLiteral("%1 is empty").arg(quoted(name));
        return h;
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    prepare(reader);
    if (!reader.canRead()) {
        h.error = QStringLiteral("%1 is not a picture that can be read").arg(quoted(name));
        return h;
    }
    h.format = reader.format();
    // Only TIFF pages are separate pictures; the frames of an animation are one picture.
    rewindTiff(reader, buffer);
    h.frameCount = isTiff(reader) ? qBound(1, reader.imageCount(), MaxFrames) : 1;
    rewindTiff(reader, buffer);
    for (int i = 0; i < h.frameCount; ++i) {
        if (i > 0 && !nextPage(reader, buffer)) {
            h.frameCount = i;
            break;
        }
        const QSize s = reader.size();
        rewindTiff(reader, buffer);
        if (s.isValid() && tooLarge(s)) {
            h.error = oversized(name, s);
            return h;
        }
        h.size = h.size.expandedTo(s.isValid() ? s : QSize(0, 0));
    }
    return h;
}

ImageFileReader::Frames ImageFileReader::decode(const QByteArray &bytes, const QString &name)
{
    Frames result;
    const Header header = readHeader(bytes, name);
    if (!header.ok()) {
        result.error = header.error;
        return result;
    }
    if (header.format == "jpeg" && !jpegIsComplete(bytes)) {
        result.error = QStringLiteral("%1 is a truncated JPEG").arg(quoted(name));
        return result;
    }
    raiseAllocationLimit();
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, header.format);
    prepare(reader);
    qint64 totalPixels = 0;
    for (int i = 0; i < header.frameCount; ++i) {
        if (i > 0 && !nextPage(reader, buffer))
            break;
        const QSize claimed = reader.size();
        if (claimed.isValid() && tooLarge(claimed)) {
            result.error = oversized(name, claimed);
            break;
        }
        // Later pages only while all pages together stay within the pixel limit.
        if (i > 0 && claimed.isValid() && totalPixels + qint64(claimed.width()) * claimed.height() > MaxPixels)
            break;
        rewindTiff(reader, buffer);
        QImage frame;
        if (!reader.read(&frame) || frame.isNull()) {
            // A broken later page does not spoil the pages already read.
            if (result.frames.isEmpty())
                result.error = QStringLiteral("cannot decode %1: %2").arg(quoted(name), reader.errorString());
            break;
        }
        if (tooLarge(frame.size())) {
            result.error = oversized(name, frame.size());
            break;
        }
        result.size = result.size.expandedTo(frame.size());
        result.frames.append(frame);
        totalPixels += qint64(frame.width()) * frame.height();
    }
    if (!result.error.isEmpty()) {
        result.frames.clear();
        result.size = QSize();
    }
    return result;
}

ImageFileReader::Frames ImageFileReader::decodeReducedJpeg(const QByteArray &bytes, const QString &name, const QSize &atLeast)
{
    Frames result;
    const Header header = readHeader(bytes, name);
    if (!header.ok()) {
        result.error = header.error;
        return result;
    }
    if (header.format != "jpeg" || header.frameCount != 1 || header.size.isEmpty() || atLeast.isEmpty()) {
        result.error = QStringLiteral("%1 cannot be decoded at a reduced scale").arg(quoted(name));
        return result;
    }
    if (!jpegIsComplete(bytes)) {
        result.error = QStringLiteral("%1 is a truncated JPEG").arg(quoted(name));
        return result;
    }
    int divisor = 1;
    for (int d : {8, 4, 2}) {
        if (header.size.width() / d >= atLeast.width() && header.size.height() / d >= atLeast.height()) {
            divisor = d;
            break;
        }
    }
    raiseAllocationLimit();
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, header.format);
    prepare(reader);
    if (divisor > 1)
        reader.setScaledSize(QSize(header.size.width() / divisor, header.size.height() / divisor));
    QImage frame;
    if (!reader.read(&frame) || frame.isNull()) {
        result.error = QStringLiteral("cannot decode %1: %2").arg(quoted(name), reader.errorString());
        return result;
    }
    result.frames.append(frame);
    result.size = header.size;
    return result;
}
