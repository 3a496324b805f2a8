#pragma once

#include "images/PhotoFraming.h"
#include "model/TessaryData.h"

#include <QColor>
#include <QPoint>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>

// One placed module of a collage layout: where its tile sits, what it shows and how it looks.
// Frames are in the collage's points with y growing downward (row 0 is the top row).
struct TileLayout {
    // Index of the module in the template, which is also the index of the photo it shows.
    qsizetype tag = 0;
    std::shared_ptr<TessaryData> module;
    // Top-left grid cell the module occupies (column, row).
    QPoint cell;
    // The module's grid rectangle before spacing; border width and corner radius come from it.
    QRectF cellFrame;
    // The tile's frame: the grid rectangle inset (or outset) by the spacing.
    QRectF frame;
    // The size the photo is fitted to: the frame's size, swapped for the two rotations because
    // the tile is turned afterwards.
    QSizeF imageSize;
    // The photo shown, or the placeholder picture when there are fewer photos than modules.
    QString imagePath;
    bool placeholder = false;
    // How the photo is fitted (0 centred crop, 1 keep start, 2 keep end, 3 fit whole, 4 Smart).
    int imageAlignment = 0;
    // The photo's hand framing (none when it has none), which wins over the alignment.
    PhotoFraming framing;
    // Where the photo's subject is (see SmartCrop), when whoever fits the photo already knows it.
    std::optional<QPointF> subject;
    // The photo selected in the photo list is shown in this tile.
    bool selected = false;
    double alpha = 1.0;
    double borderWidth = 0.0;  // points
    double cornerRadius = 0.0; // points
    QColor borderColor = Qt::white;

    // What the tile shows of its photo beyond the alignment: the hand framing, or for the Smart
    // alignment the photo filled around its subject; none otherwise.
    PhotoFraming shownFraming() const { return PhotoFraming::forAlignment(imageAlignment, framing, subject); }
    // The Smart alignment still needs the photo's subject found.
    bool needsSubject() const { return !placeholder && framing.isNull() && imageAlignment == 4 && !subject; }
};
