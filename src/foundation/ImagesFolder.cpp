#include "foundation/ImagesFolder.h"

#include "foundation/AtomicFileWriter.h"
#include "foundation/Paths.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QUuid>

#include <algorithm>

QString ImagesFolder::path()
{
    if (!Paths::ensureImagesFolder())
        return QString();
    return Paths::imagesFolder();
}

QString ImagesFolder::newUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

QString ImagesFolder::newFileName(const QString &extension)
{
    return QStringLiteral("%1.%2").arg(newUuid(), extension);
}

QString ImagesFolder::newFilePath(const QString &extension)
{
    const QString folder = path();
    if (folder.isEmpty())
        return QString();
    return QDir(folder).filePath(newFileName(extension));
}

QString ImagesFolder::write(const QByteArray &bytes, const QString &extension, QString *error)
{
    const QString target = newFilePath(extension);
    if (target.isEmpty()) {
        if (error)
            *error = QStringLiteral("The folder %1 cannot be made.").arg(Paths::imagesFolder());
        return QString();
    }
    QString reason;
    if (!AtomicFileWriter::write(target, bytes, &reason)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(target, reason);
        return QString();
    }
    return target;
}

QString ImagesFolder::writePng(const QImage &image, QString *error)
{
    if (image.isNull())
        return QString();
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, "PNG")) {
            if (error)
                *error = QStringLiteral("The image could not be encoded as PNG.");
            return QString();
        }
    }
    return write(png, QStringLiteral("png"), error);
}

QString ImagesFolder::copy(const QString &source, const QString &extension)
{
    const QString target = newFilePath(extension);
    if (source.isEmpty() || target.isEmpty() || !QFile::copy(source, target))
        return QString();
    return target;
}

bool ImagesFolder::isOwned(const QString &path)
{
    // Anything else in the folder (a person's own pictures in a folder that happens to have that
    // common name, whatever lies in subfolders, links) belongs to someone else.
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (info.isSymLink() || !info.isFile())
        return false;
    const QString name = info.fileName();
    constexpr qsizetype uuidLength = 36;
    if (name.size() <= uuidLength + 1 || name.at(uuidLength) != QLatin1Char('.'))
        return false;
    const QString stem = name.left(uuidLength);
    const QUuid uuid = QUuid::fromString(stem);
    if (uuid.isNull() || uuid.toString(QUuid::WithoutBraces) != stem)
        return false;
    const QStringView extension = QStringView(name).mid(uuidLength + 1);
    const bool plainExtension =
        std::all_of(extension.begin(), extension.end(), [](QChar c) { return c.unicode() < 128 && c.isLetterOrNumber(); });
    if (!plainExtension)
        return false;
    const QString folder = QFileInfo(Paths::imagesFolder()).canonicalFilePath();
    return !folder.isEmpty() && QFileInfo(info.absolutePath()).canonicalFilePath() == folder;
}
