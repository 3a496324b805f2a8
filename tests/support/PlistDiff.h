#pragma once

#include <QString>
#include <QVariant>

// Compares two values of PropertyList's value model and names the first difference, for the
// differential tests of the property-list readers. Exact by default: types, integer signedness,
// text, bytes, reals bit for bit (NaN equals NaN), dates to the millisecond.
class PlistDiff
{
public:
    struct Leniency {
        // XML spells a keyed-archive reference as {"CF$UID": n}; libplist reads that as a
        // dictionary, Tessary as a reference.
        bool uidAsDictionary = false;
        // Integers compare by their 64 bits: libplist reads a 16-byte -1 as 2^64 - 1.
        bool integerBits = false;
        // Text libplist passes on as bytes that are not UTF-8 (shown as U+FFFD) matches any text.
        bool undecodableText = false;
        // libplist rounds dates through microseconds held in 32-bit seconds.
        qint64 dateSlackMs = 0;
    };

    // Empty when `actual` equals `expected`, else "path: expected … but read …".
    static QString between(const QVariant &expected, const QVariant &actual, const Leniency &leniency);
    static QString between(const QVariant &expected, const QVariant &actual) { return between(expected, actual, Leniency()); }
};
