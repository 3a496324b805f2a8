#pragma once

#include <QString>

// A number with its noun in the right form, as people write counts: "1 photo", "2 photos",
// "0 photos". Never "photo(s)".
class CountedNoun
{
public:
    static QString text(qint64 count, const QString &one, const QString &many);
};
