#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// Writes an edited photo to a file the user chose: encoded in the format and quality asked for,
// the metadata of the photo it came from carried over (orientation made normal), and put in
// place in one rename, so the target is either the old file or the whole new one. Thread-safe.
class EditedImageWriter
{
public:
    // The formats offered when saving that this Qt can write, most common first (names,
    // extensions and qualities as in ResultFormat).
    static QList<QByteArray> saveFormats();

    // quality -1 keeps the encoder's default; metadataSource may be empty.
    static bool write(const QImage &image, const QString &path, const QByteArray &format, int quality,
                      const QString &metadataSource, QString *error = nullptr);
};
