#pragma once

#include <QMetaType>
#include <QtGlobal>

// One change of the photo list, told in the rows that show it, so that a view follows the list
// exactly (a photo listed twice, a new alignment or framing, a swap) without comparing lists.
struct PhotoListChange {
    enum Kind {
        Insert, // rows first..last are new
        Remove, // rows first..last (counted before the removal) are gone
        Move,   // row `first` moved before the row `last` (counted before the move; the count: to the end)
        Update, // rows first..last show something else: another photo, alignment, framing or title
        Reset,  // anything else (the list was read again from the store)
    };
    Kind kind = Reset;
    qsizetype first = 0;
    qsizetype last = 0;

    bool operator==(const PhotoListChange &) const = default;
};

Q_DECLARE_METATYPE(PhotoListChange)
