#include "images/ResizeGeometry.h"
#include "model/TileImageFitter.h"
#include "photos/ImageCache.h"
#include "support/FakePhotoList.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString solidPhoto(const QTemporaryDir &dir, const QString &name, QColor color, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const QString path = dir.filePath(name);
    image.save(path);
    return path;
}

// Each tile gets its own photo (or the placeholder) at its own size, in tile order, although
// the fitting runs in parallel.
TEST(TileImageFitter, EveryTileGetsItsPictureAtItsSizeInOrder)
{
    QTemporaryDir dir;
    const QString red = solidPhoto(dir, QStringLiteral("red.png"), Qt::red, QSize(300, 200));
    const QString blue = solidPhoto(dir, QStringLiteral("blue.png"), Qt::blue, QSize(200, 300));
    const FakePhotoList photos({red, blue});
    ImageCache cache(&photos);
    QImage grey(10, 10, QImage::Format_RGB32);
    grey.fill(Qt::gray);
    const UIImage placeholder(QList<QImage>{grey}, QSizeF(10, 10));

    CollageLayout layout;
    const struct {
        QString path;
        bool placeholder;
        QSizeF size;
    } tiles[] = {{red, false, {40, 30}}, {blue, false, {25, 50}}, {QString(), true, {20, 20}}, {red, false, {7, 9}}};
    for (const auto &t : tiles) {
        TileLayout tile;
        tile.imagePath = t.path;
        tile.placeholder = t.placeholder;
        tile.imageSize = t.size;
        layout.tiles.push_back(tile);
    }
    const QList<UIImage> fitted = TileImageFitter::fitAll(layout, cache, placeholder);
    ASSERT_EQ(fitted.size(), 4);
    const QColor expected[] = {Qt::red, Qt::blue, Qt::gray, Qt::red};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(fitted[i].size(), tiles[i].size);
        const QImage pixels = fitted[i].bestRepresentation();
        EXPECT_EQ(pixels.pixelColor(pixels.width() / 2, pixels.height() / 2).rgb(), expected[i].rgb());
    }
}

// A hand gesture starts from what the tile shows: the alignment's crop (the whole-photo fit as
// the centred crop), or the hand framing there is.
TEST(TileImageFitter, AGestureStartsFromWhatTheTileShows)
{
    const QSizeF photo(400, 200);
    TileLayout tile;
    tile.imageSize = QSizeF(100, 100);
    const struct {
        int alignment;
        PhotoFraming hand;
        double left, right; // of the crop shown, in photo pixels
    } cases[] = {
        {ResizeGeometry::ResizeCrop, PhotoFraming(), 100, 300},
        {ResizeGeometry::ResizeCropStart, PhotoFraming(), 0, 200},
        {ResizeGeometry::ResizeCropEnd, PhotoFraming(), 200, 400},
        {ResizeGeometry::ResizeScale, PhotoFraming(), 100, 300},
        {ResizeGeometry::ResizeCrop, PhotoFraming(QPointF(0.9, 0.5), 2), 300, 400}, // kept within the photo
    };
    for (const auto &k : cases) {
        SCOPED_TRACE(k.alignment);
        tile.imageAlignment = k.alignment;
        const QRectF crop = TileImageFitter::gestureStart(photo, tile, k.hand).cropRect(photo, tile.imageSize);
        EXPECT_NEAR(crop.left(), k.left, 0.5);
        EXPECT_NEAR(crop.right(), k.right, 0.5);
    }
}

} // namespace
