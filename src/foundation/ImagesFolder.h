#pragma once

#include <QByteArray>
#include <QString>

class QImage;

// The images folder ("Images" in the Documents folder) as the place for files Tessary makes
// itself: pasted and dropped pictures, results put back into the list, duplicates, edited
// photos. Each gets a name of its own made from a new UUID, and only such files are Tessary's
// to delete with their entries.
class ImagesFolder
{
public:
    // The folder, created when missing; empty when it cannot be made.
    static QString path();
    // A new UUID in its lower-case textual form, without braces: the stem of every name made here.
    static QString newUuid();
    // "<uuid>.<extension>" for a new UUID.
    static QString newFileName(const QString &extension);
    // A new name with the extension inside the folder; empty when the folder cannot be made.
    static QString newFilePath(const QString &extension);
    // Writes the bytes atomically under a new name with the extension; the path, or empty when
    // nothing was written, with the reason in *error (may be null).
    static QString write(const QByteArray &bytes, const QString &extension, QString *error = nullptr);
    // Writes the image as PNG under a new ".png" name; the path, or empty as for write().
    static QString writePng(const QImage &image, QString *error = nullptr);
    // Copies the file under a new name with the extension; the path, or empty when it failed.
    static QString copy(const QString &source, const QString &extension);
    // Whether Tessary made the file, so that it may delete it with its entry: a regular file (not
    // a link) named "<uuid>.<extension>" directly in the folder, however the path spells it.
    static bool isOwned(const QString &path);
};
