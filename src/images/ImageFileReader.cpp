#include "ImageFileReader.h"

#include "PictureCompleteness.h"

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

// Every reader decides the format by content and turns photos upright as it decodes them.
void prepare(QImageReader &reader)
{
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
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

void rewindTiff(QImageReader &reader, QIODevice &device)
{
    if (isTiff(reader))
        device.seek(0);
}

bool nextPage(QImageReader &reader, QIODevice &device)
{
    rewindTiff(reader, device);
    if (!reader.jumpToNextImage())
        return false;
    rewindTiff(reader, device);
    return true;
}

// The size of the current page as it is shown: the size stored in the header, with width and
// height swapped when the recorded orientation turns the picture by a quarter (EXIF
// orientations 5 to 8). Qt reports the stored size and applies the orientation only on reading.
QSize uprightSize(QImageReader &reader, QIODevice &device)
{
    rewindTiff(reader, device);
    const QSize stored = reader.size();
    rewindTiff(reader, device);
    const bool quarterTurn = reader.transformation() & QImageIOHandler::TransformationRotate90;
    rewindTiff(reader, device);
    return quarterTurn ? stored.transposed() : stored;
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

namespace {

ImageFileReader::Header headerFrom(QIODevice &device, const QString &name)
{
    ImageFileReader::Header h;
    QImageReader reader(&device);
    prepare(reader);
    if (!reader.canRead()) {
        h.error = QStringLiteral("%1 is not a picture that can be read").arg(quoted(name));
        return h;
    }
    h.format = reader.format();
    // Only TIFF pages are separate pictures; the frames of an animation are one picture.
    rewindTiff(reader, device);
    h.frameCount = isTiff(reader) ? qBound(1, reader.imageCount(), ImageFileReader::MaxFrames) : 1;
    rewindTiff(reader, device);
    for (int i = 0; i < h.frameCount; ++i) {
        if (i > 0 && !nextPage(reader, device)) {
            h.frameCount = i;
            break;
        }
        const QSize s = uprightSize(reader, device);
        if (s.isValid() && tooLarge(s)) {
            h.error = oversized(name, s);
            return h;
        }
        h.size = h.size.expandedTo(s.isValid() ? s : QSize(0, 0));
    }
    return h;
}

} // namespace

ImageFileReader::Header ImageFileReader::readHeader(const QByteArray &bytes, const QString &name)
{
    if (bytes.isEmpty()) {
        Header h;
        h.error = QStringLiteral("%1 is empty").arg(quoted(name));
        return h;
    }
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    Header h = headerFrom(buffer, name);
    // Decoders fill a picture cut short with black, or leave out its later pages, without an
    // error: the file's own structure tells. A file cut so short that its header cannot be read
    // is named truncated too, when its first bytes say what it was meant to be.
    const QByteArray format = h.ok() ? h.format : PictureCompleteness::formatOf(bytes);
    if (!format.isEmpty() && !PictureCompleteness::isComplete(bytes, format, MaxFrames))
        h.error = QStringLiteral("%1 is a truncated %2 (its data ends early)").arg(quoted(name), PictureCompleteness::displayName(format));
    return h;
}

ImageFileReader::Header ImageFileReader::readHeaderOfFile(const QString &path)
{
    Header h;
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile()) {
        h.error = QStringLiteral("%1 is not a picture file").arg(quoted(path));
        return h;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        h.error = QStringLiteral("cannot read %1: %2").arg(quoted(path), file.errorString());
        return h;
    }
    if (file.size() == 0) {
        h.error = QStringLiteral("%1 is empty").arg(quoted(path));
        return h;
    }
    return headerFrom(file, path);
}

ImageFileReader::Frames ImageFileReader::decode(const QByteArray &bytes, const QString &name)
{
    Frames result;
    const Header header = readHeader(bytes, name);
    if (!header.ok()) {
        result.error = header.error;
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
        const QSize claimed = uprightSize(reader, buffer);
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
    // The decoder scales the pixels as they are stored, before it turns them upright.
    const QSize stored = reader.size();
    if (divisor > 1 && stored.isValid())
        reader.setScaledSize(QSize(stored.width() / divisor, stored.height() / divisor));
    QImage frame;
    if (!reader.read(&frame) || frame.isNull()) {
        result.error = QStringLiteral("cannot decode %1: %2").arg(quoted(name), reader.errorString());
        return result;
    }
    result.frames.append(frame);
    result.size = header.size;
    return result;
}
