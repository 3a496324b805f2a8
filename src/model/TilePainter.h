#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>
#include <QSizeF>

class QPainter;
struct TileLayout;

// Draws one tile as the collage window shows it: the photo (inset for the selected tile),
// clipped to the rounded corners, the border, the title along the bottom edge, the photo's
// 1-based number in the bottom-left corner and the blue selection outline; the whole tile at the
// module's opacity. Shared by the window and the unscaled render, so both look the same.
class TilePainter
{
public:
    // Colour of the outline around the tile of the selected photo.
    static QColor selectionColor() { return QColor(48, 140, 255); }

    // Paints the tile into `painter` at `target` (whole pixels, top-left origin). `photo` is the
    // picture already fitted to the tile's size (may be null: nothing shown). `collageBorderWidth`
    // and `turned` (a rotation transform) decide the title's width as the window does.
    static void paint(QPainter &painter, const QRect &target, const TileLayout &tile, const QImage &photo,
                      double collageBorderWidth, bool turned);
};
