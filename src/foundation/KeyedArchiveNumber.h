#pragma once

#include <QByteArray>

#include <optional>

// An integer number inside a keyed archive, as a collage tile puts its tag on the drag
// pasteboard: a binary property list whose "$top" "root" reference points at the integer in
// "$objects".
class KeyedArchiveNumber
{
public:
    // A binary keyed archive with the number as its root object.
    static QByteArray encode(qint64 number);
    // The number, or nothing when the data is not such an archive (or its root is no integer).
    static std::optional<qint64> decode(const QByteArray &archive);
};
