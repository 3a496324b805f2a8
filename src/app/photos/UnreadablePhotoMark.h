#pragma once

#include <QRectF>
#include <QString>

class QPainter;

// The look of a photo that cannot be read, shared by the collage tiles and the browser's
// thumbnails: a dark rounded badge holding a crossed-out picture and, where there is room, a
// short label below it. The badge has its own dark ground and a light edge, so it reads on
// any photo, background colour or selection colour around it.
class UnreadablePhotoMark
{
public:
    // Paints the mark centred in `area`; nothing when the area is too small for even the glyph.
    static void paint(QPainter &painter, const QRectF &area, const QString &label);
    // The quiet field a tile shows beneath the mark (where the photo would be).
    static void paintField(QPainter &painter, const QRectF &area);
};
