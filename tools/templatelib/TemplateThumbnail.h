#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRectF>
#include <QSize>

#include <vector>

// The small schematic picture of a template shown in the template tables: the tiles as soft
// rounded rectangles with gaps between them, in a calm palette on a light ground, with the
// proportions of the collage.
class TemplateThumbnail
{
public:
    static constexpr int kLongSide = 160;

    // The picture size for a collage of the given proportions.
    static QSize sizeFor(double contentWidth, double contentHeight);
    // tiles are in the collage's own units (cells), on a grid of columns x rows;
    // cornerRadius is the tiles' radius as a fraction of half their smaller side.
    // colourSeed picks where the palette starts.
    static QImage render(int columns, int rows, const std::vector<QRect> &tiles, double cornerRadius = 0.0,
                         int colourSeed = 0);
    static QByteArray png(const QImage &image);

    // Palette entries for the tiles, chosen so that tiles sharing an edge differ.
    static std::vector<int> colourIndices(const std::vector<QRect> &tiles, int colourSeed = 0);
    static const std::vector<QColor> &palette();
};
