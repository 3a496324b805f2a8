#pragma once

#include <QSize>
#include <QString>

#include <functional>

struct CollageLayout;

// How much detail a rendered collage holds: for each photo, how many of its own pixels fall on
// one pixel of its tile in the picture (fitted as its alignment says: covering the tile for the
// crops, inside it for the whole-picture fit). The sharpest photo is the one with the most; a
// print that enlarges the collage further than that only magnifies pixels.
class PhotoSharpness
{
public:
    using PhotoSize = std::function<QSize(const QString &path)>;

    // Photo pixels per picture pixel of one photo of `photo` pixels fitted by `method` into a
    // tile of `tile` pixels; 0 when either is empty.
    static double photoPixelsPerPixel(const QSize &photo, const QSize &tile, int method);
    // The largest of these over the collage's photos (placeholders not counted) rendered
    // `scale` times enlarged; 0 when no photo could be measured. Photo sizes come from
    // `photoSize` (the files' headers by default).
    static double sharpest(const CollageLayout &layout, qint64 scale, const PhotoSize &photoSize = {});
};
