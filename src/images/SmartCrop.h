#pragma once

#include <QImage>
#include <QPointF>
#include <QString>

// Where the subject of a photo is, for the Smart alignment: the point libvips' smartcrop finds
// most interesting by attention (edges, skin tones and saturation), in fractions of the photo's
// width and height from its top-left corner. A tile of any shape is then filled with the part of
// the photo centred on that point, as far as the photo reaches.
//
// The point is found on the reduced copy of the photo (what the image cache holds), so every
// tile, render and command that asks gets the same answer for the same file. Safe on any thread.
class SmartCrop
{
public:
    // The photo's centre (0.5, 0.5) when the picture is empty or libvips fails.
    static QPointF subjectOf(const QImage &image);
};
