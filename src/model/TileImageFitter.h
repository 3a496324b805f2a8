#pragma once

#include "images/UIImage.h"
#include "model/CollageLayout.h"

#include <QList>

class ImageCache;
class QThreadPool;

// Gives every tile of a layout its picture: the photo from the image cache, or the placeholder
// picture, fitted by the tile's alignment to the tile's image size. The lookups go through the
// cache on the calling thread, in tile order, as the cache expects; the fitting, which is the
// costly part, runs on a thread pool.
class TileImageFitter
{
public:
    // One picture per tile of layout.tiles, in the same order. pool: null for the global pool.
    static QList<UIImage> fitAll(const CollageLayout &layout, ImageCache &cache, const UIImage &placeholder,
                                 QThreadPool *pool = nullptr);
};
