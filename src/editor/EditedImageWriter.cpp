#include "editor/EditedImageWriter.h"

#include "foundation/AtomicFileWriter.h"
#include "images/PhotoMetadata.h"
#include "output/ResultFormat.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

QList<QByteArray> EditedImageWriter::saveFormats()
{
    QList<QByteArray> formats;
    for (const char *format : {"jpeg", "png", "tiff", "webp", "bmp"})
        if (ResultFormat::isWritable(format))
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
        return fail(QStringLiteral("%1 cannot be written: %2").arg(path, AtomicFileWriter::failureReason(temporary)));
    QImageWriter writer(&temporary, format);
    if (quality >= 0 && ResultFormat::hasQuality(format))
        writer.setQuality(quality);
    // A picture without transparency is written without an alpha channel.
    const QImage pixels = image.hasAlphaChannel() ? image : image.convertToFormat(QImage::Format_RGB32);
    if (!writer.write(pixels) || !temporary.flush())
        return fail(QStringLiteral("%1 cannot be written: %2")
                        .arg(path, AtomicFileWriter::failureReason(temporary, writer.errorString())));
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
