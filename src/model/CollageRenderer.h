#pragma once

#include "images/UIImage.h"
#include "images/UnreadablePhotos.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QStringList>

#include <functional>

struct CollageLayout;
struct TileLayout;

// Renders a collage layout into one picture, from the layout value and the photo files alone.
//
// The scaled render enlarges the collage by a whole-number factor and shows only the photos,
// each loaded afresh from its file and fitted by its alignment to its enlarged tile, over the
// background colour. The unscaled render shows the collage at its own size as the window does:
// with the tiles' opacity, borders, rounded corners, titles, numbers and the selection outline.
//
// Photos are decoded in parallel on all cores, each at the smallest reduced JPEG scale that
// still covers its tile, and drawn as soon as it is ready; at most one photo per worker is in
// memory at a time. Where tiles overlap, a tile waits until every earlier tile it overlaps has
// been drawn, so later tiles always lie on top, as in the window.
class CollageRenderer
{
public:
    struct Options {
        // Shows where no photo covers the collage; clear by default.
        QColor background = Qt::transparent;
        // Whether tiles without a photo of their own show the placeholder picture.
        bool renderEmptyTiles = false;
        // Worker threads; 0 means one per core.
        int threads = 0;
        // Called after each tile is drawn (from a worker thread, one call at a time).
        std::function<void(int done, int total)> progress;
        // Asked before each tile (from any worker); once it answers yes the remaining tiles are
        // skipped and the render gives no picture.
        std::function<bool()> cancelled;
    };

    struct Result {
        QImage image;         // null when the canvas could not be made
        QStringList warnings; // one per photo that could not be read (its tile stays empty)
        QList<UnreadablePhotos::Photo> unreadable; // the same photos, numbered, with the reason
        QString error;        // why there is no image
        bool ok() const { return !image.isNull(); }
    };

    // The largest canvas the renderer makes, in pixels (about 1 GB of memory).
    static constexpr qint64 kMaxCanvasPixels = 250'000'000;

    // What the result window asks for: with `scaled`, the collage enlarged by the factor chosen
    // from its photos and this machine's free memory; otherwise the collage as shown, at exactly
    // its own size.
    static Result imageCollage(const CollageLayout &layout, bool scaled, const Options &options);
    // The collage enlarged `scaleFactor` times (at least 1).
    static Result renderScaled(const CollageLayout &layout, qint64 scaleFactor, const Options &options);
    // The collage enlarged by any positive factor, e.g. the pixels per point a printed page
    // needs; the canvas is canvasSize() of that factor.
    static Result renderAtScale(const CollageLayout &layout, double scale, const Options &options);
    // The collage at its own size with every tile's decorations.
    static Result renderUnscaled(const CollageLayout &layout, const Options &options);

    // The canvas of a collage of `contentSize` points enlarged `scale` times, in whole pixels.
    static QSize canvasSize(const QSizeF &contentSize, double scale);
    // The whole pixels a tile frame covers on a canvas enlarged `scale` times: its edges
    // rounded, so neighbouring tiles meet without seams or overlaps of their own making.
    static QRect pixelRect(const QRectF &frame, double scale);

    // The photo at `path` fitted by `method` (an image alignment), or showing the framing's crop
    // when it is not null, to exactly `size` pixels, decoded at a reduced scale when that still
    // covers the size. The empty image with `error` set when the file cannot be read.
    static UIImage loadFittedPhoto(const QString &path, const QSize &size, int method, QString *error = nullptr);
    static UIImage loadFittedPhoto(const QString &path, const QSize &size, int method, const PhotoFraming &framing,
                                   QString *error = nullptr);
    // What the tile shows of its photo beyond the alignment (TileLayout::shownFraming), the
    // subject found from the photo's reduced copy when the layout does not know it yet.
    static PhotoFraming framingForTile(const TileLayout &tile);

private:
    static Result render(const CollageLayout &layout, double scale, const Options &options, bool decorated);
};
