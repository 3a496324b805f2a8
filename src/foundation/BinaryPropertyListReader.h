#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Parses binary property lists ("bplist00") into the QVariant value model of PropertyList.
// Every offset, length and object reference is checked against the input before use; reference
// cycles, excessive nesting and inputs that would expand into too many values are refused.
class BinaryPropertyListReader
{
public:
    // Objects shared by several containers are expanded into each; past this many values in
    // the expanded tree the input is refused.
    static constexpr qint64 kMaxExpandedValues = 4'000'000;

    // Returns the value, or an invalid QVariant with *error set.
    static QVariant read(const QByteArray &bytes, QString *error);
};
