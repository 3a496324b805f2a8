#pragma once

#include <QByteArray>
#include <QColor>

#include <optional>

// Colours inside keyed archives, as templates carry them under "borderColor".
//
// Reads archives whose root object is a desktop colour (an "NSColorSpace" number with "NSRGB",
// "NSWhite", "NSCMYK" or "NSComponents" text, or a named colour with a fallback colour) or a
// phone colour ("UIRed"/"UIGreen"/"UIBlue"/"UIAlpha" or "UIWhite"). Writes an archive that both
// kinds of reader accept.
class KeyedArchiveColor
{
public:
    // The colour, or nothing when the data is not such an archive.
    static std::optional<QColor> decode(const QByteArray &archive);
    // The colour, or white when the data cannot be read.
    static QColor decodeOrWhite(const QByteArray &archive) { return decode(archive).value_or(QColor(Qt::white)); }
    // A binary keyed archive with the colour as its root object.
    static QByteArray encode(const QColor &color);
};
