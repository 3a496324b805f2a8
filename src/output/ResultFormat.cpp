#include "output/ResultFormat.h"

#include "foundation/ImagesFolder.h"
#include "images/ImageFileReader.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>

namespace {

struct FormatInfo {
    const char *format;
    const char *name;
    const char *suffix;
    const char *patterns;
};

constexpr FormatInfo kFormats[] = {
    {"png", "PNG", "png", "*.png"},
    {"jpeg", "JPEG", "jpg", "*.jpg *.jpeg"},
    {"tiff", "TIFF", "tif", "*.tif *.tiff"},
    {"webp", "WebP", "webp", "*.webp"},
    {"bmp", "BMP", "bmp", "*.bmp"},
};

const FormatInfo *infoOf(const QByteArray &format)
{
    for (const FormatInfo &info : kFormats)
        if (format == info.format)
            return &info;
    return nullptr;
}

QByteArray canonical(QByteArray format)
{
    format = format.toLower();
    if (format == "jpg" || format == "jpe")
        return "jpeg";
    if (format == "tif")
        return "tiff";
    return format;
}

} // namespace

QList<QByteArray> ResultFormat::writableFormats()
{
    const QList<QByteArray> supported = QImageWriter::supportedImageFormats();
    QList<QByteArray> formats;
    for (const FormatInfo &info : kFormats)
        if (supported.contains(QByteArray(info.format)))
            formats.append(info.format);
    return formats;
}

bool ResultFormat::isWritable(const QByteArray &format)
{
    return writableFormats().contains(format);
}

QByteArray ResultFormat::startingFormat(const QString &referencePath)
{
    if (referencePath.isEmpty())
        return QByteArray();
    const ImageFileReader::Header header = ImageFileReader::readHeaderOfFile(referencePath);
    if (!header.ok() || header.format.isEmpty())
        return QByteArray();
    const QByteArray format = canonical(header.format);
    return isWritable(format) ? format : QByteArray("png");
}

QString ResultFormat::displayName(const QByteArray &format)
{
    const FormatInfo *info = infoOf(format);
    return info ? QString::fromLatin1(info->name) : QString::fromLatin1(format.toUpper());
}

QString ResultFormat::suffix(const QByteArray &format)
{
    const FormatInfo *info = infoOf(format);
    return info ? QString::fromLatin1(info->suffix) : QString::fromLatin1(format);
}

QString ResultFormat::nameFilter(const QByteArray &format)
{
    const FormatInfo *info = infoOf(format);
    const QString patterns = info ? QString::fromLatin1(info->patterns) : QStringLiteral("*.") + suffix(format);
    return QStringLiteral("%1 (%2)").arg(displayName(format), patterns);
}

bool ResultFormat::hasQuality(const QByteArray &format)
{
    return format == "jpeg" || format == "webp";
}

bool ResultFormat::hasCompression(const QByteArray &format)
{
    return format == "tiff";
}

bool ResultFormat::keepsAlpha(const QByteArray &format)
{
    return format == "png" || format == "tiff" || format == "webp";
}

QByteArray ResultFormat::formatForSuffix(const QString &suffix)
{
    if (suffix.isEmpty())
        return QByteArray();
    const QByteArray format = canonical(suffix.toLatin1());
    return infoOf(format) && isWritable(format) ? format : QByteArray();
}

ResultFormat::Target ResultFormat::saveTarget(const QString &typedPath, const QByteArray &chosenFormat)
{
    const QByteArray typed = formatForSuffix(QFileInfo(typedPath).suffix());
    if (!typed.isEmpty())
        return {typedPath, typed};
    return {typedPath + QLatin1Char('.') + suffix(chosenFormat), chosenFormat};
}

QString ResultFormat::withSuffix(const QString &path, const QByteArray &format)
{
    const QFileInfo info(path);
    const QByteArray current = formatForSuffix(info.suffix());
    if (current == format)
        return path;
    const QString base = current.isEmpty() ? path : path.left(path.size() - info.suffix().size() - 1);
    return base + QLatin1Char('.') + suffix(format);
}

QString ResultFormat::defaultFileName(const QByteArray &format)
{
    return QStringLiteral("Untitled.") + suffix(format);
}

QString ResultFormat::temporaryPngPath(const QString &folder)
{
    return QDir(folder).filePath(ImagesFolder::newFileName(QStringLiteral("png")));
}
