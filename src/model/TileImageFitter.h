#pragma once

#include "images/UIImage.h"
#include "model/CollageLayout.h"

#include <QList>
#include <QString>

class ImageCache;
class QThreadPool;

// Gives every tile of a layout its picture: the photo from the image cache, or the placeholder
// picture, fitted by the tile's alignment and framing to the tile's image size. The collage
// view fits tile by tile as photos arrive (framingFor, fit, fitKey); a render fits them all at
// once (fitAll). The lookups go through the cache on the calling thread, as the cache expects;
// the fitting, which is the costly part, runs on a worker.
class TileImageFitter
{
public:
    // One picture per tile of layout.tiles, in the same order. pool: null for the global pool.
    static QList<UIImage> fitAll(const CollageLayout &layout, ImageCache &cache, const UIImage &placeholder,
                                 QThreadPool *pool = nullptr);

    // How the tile shows its photo: its hand framing, else its alignment (a Smart one centred on
    // the subject the cache found in the photo).
    static PhotoFraming framingFor(const TileLayout &tile, ImageCache &cache);
    // The picture fitted to the tile (thread-safe: any worker).
    static UIImage fit(const UIImage &image, const TileLayout &tile, const PhotoFraming &framing);
    // What a fitted picture was made from: the photo, the size, the method and framing, and the
    // decoded copy (its pixels' identity), so a changed file is never shown from an old fit.
    static QString fitKey(const TileLayout &tile, const UIImage &source, const PhotoFraming &framing);
    // The framing a hand gesture on the tile starts from: what the tile shows (`shown`, from
    // framingFor), a whole-photo fit taken as filled, within the photo.
    static PhotoFraming gestureStart(const QSizeF &photo, const TileLayout &tile, const PhotoFraming &shown);
};
