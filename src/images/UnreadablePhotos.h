#pragma once

#include "foundation/AlertPresenter.h"

#include <QList>
#include <QString>

// What a person is told about photos that cannot be read (cut short, not a picture, over the
// size limit, gone): the short label a tile or thumbnail shows, the reason in words for the
// preview, and the one alert after a collage that had to leave photos out.
class UnreadablePhotos
{
public:
    // One photo left out of a collage: its 1-based number in the list, its file and why.
    struct Photo {
        qint64 number = 0;
        QString path;
        QString reason;
    };

    // The words on a tile or thumbnail whose photo cannot be read.
    static QString label();
    // The decoder's message about the file at `path`, with the file's name in place of its full
    // path (the full path is long and says little on screen); "cannot be read" when the decoder
    // gave no message.
    static QString reason(const QString &path, const QString &error);
    // The one alert for a collage that left photos empty: how many, then each photo's number,
    // name and reason on a line of its own.
    static AlertPresenter::Alert leftEmptyAlert(const QList<Photo> &photos);
};
