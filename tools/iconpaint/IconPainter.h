#pragma once

#include <QImage>
#include <QList>

// Draws Tessary's application icon (a collage of five tiles on a slate plate) at any size, from
// the same shapes as data/icons/org.tessary.Tessary.svg, which Qt cannot read without its SVG
// module. The desktop looks for the PNG sizes in the hicolor theme.
class IconPainter
{
public:
    // The sizes a desktop asks the hicolor theme for.
    static QList<int> standardSizes() { return {16, 22, 24, 32, 48, 64, 128, 256, 512}; }
    // The icon as a square picture of size x size pixels with a transparent surround.
    static QImage paint(int size);
};
