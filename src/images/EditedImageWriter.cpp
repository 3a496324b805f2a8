#include "images/EditedImageWriter.h"

#include "images/PhotoMetadata.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

bool EditedImageWriter::hasQuality(const QByteArray &format)
{
    return format == "jpeg" || format == "jpg" || format == "webp";
}

QString EditedImageWriter::suffixForFormat(const QByteArray &format)
{
    if (format == "jpeg")
        return QStringLiteral("jpg");
    if (format == "tiff")
        return QStringLiteral("tif");
    return QString::fromLatin1(format);
}

QByteArray EditedImageWriter::formatForSuffix(const QString &suffix)
{
    const QString s = suffix.toLower();
    if (s == QLatin1String("jpg") || s == QLatin1String("jpeg") || s == QLatin1String("jpe"))
        return "jpeg";
    if (s == QLatin1String("tif") || s == QLatin1String("tiff"))
        return "tiff";
    for (const QByteArray &format : saveFormats())
        if (s == QLatin1String(format))
            return format;
    return QByteArray();
}

QList<QByteArray> EditedImageWriter::saveFormats()
{
    QList<QByteArray> formats;
    const QList<QByteArray> supported = QImageWriter::supportedImageFormats();
    for (const char *format : {"jpeg", "png", "tiff", "webp", "bmp"})
        if (supported.contains(format))
            formats.append(format);
    return formats;
}

bool EditedImageWriter::write(const QImage &image, const QString &path, const QByteArray &format, int quality,
                              const QString &metadataSource, QString *error)
{
    const auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return false;
    };
    if (image.isNull())
        return fail(QStringLiteral("There is no picture to write."));
    const QFileInfo target(path);
    QTemporaryFile temporary(QDir(target.absolutePath()).filePath(QStringLiteral(".%1.XXXXXX").arg(target.fileName())));
    if (!temporary.open())
        return fail(QStringLiteral("%1 cannot be written: %2").arg(path, temporary.errorString()));
    QImageWriter writer(&temporary, format);
    if (quality >= 0 && hasQuality(format))
        writer.setQuality(quality);
    // A picture without transparency is written without an alpha channel.
    const QImage pixels = image.hasAlphaChannel() ? image : image.convertToFormat(QImage::Format_RGB32);
    if (!writer.write(pixels))
        return fail(QStringLiteral("%1 cannot be written: %2").arg(path, writer.errorString()));
    if (!temporary.flush())
        return fail(QStringLiteral("%1 cannot be written: %2").arg(path, temporary.errorString()));
    temporary.close();
    if (!metadataSource.isEmpty()) {
        QString reason;
        if (!PhotoMetadata::copy(metadataSource, temporary.fileName(), &reason))
            return fail(reason.isEmpty() ? QStringLiteral("The photo's metadata could not be kept.") : reason);
    }
    temporary.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                             QFileDevice::ReadOther);
    if (std::rename(QFile::encodeName(temporary.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        return fail(QStringLiteral("%1 cannot be written: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
    temporary.setAutoRemove(false);
    return true;
}
