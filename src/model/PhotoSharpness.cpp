#include "model/PhotoSharpness.h"

#include "model/CollageLayout.h"
#include "model/CollageRenderer.h"
#include "model/RenderScale.h"

#include <algorithm>

double PhotoSharpness::photoPixelsPerPixel(const QSize &photo, const QSize &tile, int method)
{
    if (photo.isEmpty() || tile.isEmpty())
        return 0.0;
    const double kx = double(photo.width()) / tile.width();
    const double ky = double(photo.height()) / tile.height();
    // Covering the tile uses the photo's tighter direction; fitting inside, its looser one.
    return method == 3 ? std::max(kx, ky) : std::min(kx, ky);
}

double PhotoSharpness::sharpest(const CollageLayout &layout, qint64 scale, const PhotoSize &photoSize)
{
    double best = 0.0;
    for (const TileLayout &tile : layout.tiles) {
        if (tile.placeholder)
            continue;
        const QSize photo = photoSize ? photoSize(tile.imagePath) : RenderScale::photoPixelSize(tile.imagePath);
        const QSize target = CollageRenderer::pixelRect(tile.frame, std::max<qint64>(scale, 1)).size();
        best = std::max(best, photoPixelsPerPixel(photo, target, tile.imageAlignment));
    }
    return best;
}
