#pragma once

#include <QRectF>
#include <QSizeF>

// Where a tile's title label goes: along the tile's bottom edge, inside its border, a quarter
// of the inner size high. Rectangles here are in the tile's own coordinates with the origin at
// its bottom-left corner and y growing upward, as the label was designed; toTopDown converts
// for a painter whose y grows downward.
class TileLabelGeometry
{
public:
    // The smallest font size a title is drawn at.
    static constexpr double kMinimumFontSize = 6.0;

    // The label when a tile is made. tileSize is the tile's frame size, swapped by the caller
    // for an on-screen tile of a rotated collage; borderWidth is the tile's border in points,
    // collageBorderWidth the collage's (scaled) border width, which shortens the label when the
    // tile is narrower than the label plus that margin.
    static QRectF titleLabelFrame(const QSizeF &tileSize, double borderWidth, double collageBorderWidth);
    // The label laid out again for the tile's current frame (after a transform): the same rule
    // with a fixed margin of 6 points in place of the collage's border width.
    static QRectF updatedLabelFrame(const QSizeF &tileSize, double borderWidth)
    {
        return titleLabelFrame(tileSize, borderWidth, 6.0);
    }
    // The font size for a label of that frame: its height, but never below 6.
    static double fontSize(const QRectF &labelFrame);
    // The dimension label's y: stacked above the index label while the tile is tall enough,
    // pushed down by the shortfall otherwise.
    static double dimensionLabelY(const QRectF &indexLabel, double dimensionLabelHeight, double tileHeight);
    // A label rectangle in top-down coordinates of a tile of that height.
    static QRectF toTopDown(const QRectF &label, double tileHeight);
};
