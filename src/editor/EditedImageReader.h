#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

// Reads the photo the editor opens, with what a save of the edit starts from: the format the
// file really is (by its content, not its name) and, for a JPEG, the quality it was written
// with. Thread-safe: the editor reads off the main thread.
class EditedImageReader
{
public:
    // What the edited file is, for saving.
    struct Properties {
        QByteArray format;
        int quality = -1; // a JPEG's estimated quality (its default when unknown); -1 for others
        QSize size;
    };
    struct Photo {
        QImage image;
        Properties properties;
        bool ok = false; // false: unreadable, not a picture, or not decodable
    };

    static Photo read(const QString &path);
};
