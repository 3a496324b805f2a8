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
        // Text libplist passes on as bytes that are not UTF-8 (shown as U+FFFD) matches any
        // text, and so does any text for UTF-16 holding a lone surrogate (libplist garbles it);
        // libplist drops a leading U+FEFF from UTF-16 text.
        bool undecodableText = false;
        // XML readers turn a carriage return (and CR LF) in text into a line feed; libplist's
        // XML reader keeps it. The expected side's text is compared with its line ends so turned.
        bool xmlLineEnds = false;
        // libplist's XML writer writes -0.0 as 0.0.
        bool signOfZero = false;
        // Dates may differ by this much (libplist's XML keeps whole seconds).
        qint64 dateSlackMs = 0;
        // Dates 2^31 seconds or more from 2001 match any date: libplist 2.2 hands dates out in
        // 32-bit seconds.
        bool narrowDates = false;
    };

    // Empty when `actual` equals `expected`, else "path: expected … but read …".
    static QString between(const QVariant &expected, const QVariant &actual, const Leniency &leniency);
    static QString between(const QVariant &expected, const QVariant &actual) { return between(expected, actual, Leniency()); }
};
