#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

// Parses binary property lists ("bplist00") into the QVariant value model of PropertyList.
// Writers store a repeated value once and refer to it from every place it occurs, so the limits
// are on the tree as expanded, never on counts that sharing makes large: every offset, length and
// reference is checked against the input bytes before use, and reference cycles, nesting deeper
// than PropertyList::kMaxDepth and inputs expanding into too many values are refused.
class BinaryPropertyListReader
{
public:
    // Objects shared by several containers are expanded into each; past this many values in
    // the expanded tree the input is refused.
    static constexpr qint64 kMaxExpandedValues = 4'000'000;

    // Returns the value, or an invalid QVariant with *error set.
    static QVariant read(const QByteArray &bytes, QString *error);
};
