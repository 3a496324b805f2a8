#pragma once

#include <QVariant>

// Reads property-list scalars the way the stored numbers are meant to be read: a number is read
// by its integer, float or boolean value whatever type it was stored as, and text holding a
// number reads as that number. Anything else reads as 0 / false.
class PlistValue
{
public:
    static bool isNumber(const QVariant &v);
    // Truncates towards zero, as an integer reading of a real does.
    static qint64 integerValue(const QVariant &v);
    static double doubleValue(const QVariant &v);
    // The value rounded to single precision and widened again.
    static double floatValue(const QVariant &v) { return double(float(doubleValue(v))); }
    static bool boolValue(const QVariant &v);
};
