#pragma once

#include <QByteArray>
#include <QColor>

#include <optional>

// The stored form of the collage background colour: the text "RGBA r g b a" with components
// from 0 to 1, stable across versions and readable by eye.
class PlainColorArchive
{
public:
    static QByteArray encode(const QColor &color);
    static std::optional<QColor> decode(const QByteArray &data);
};
