#include "model/CollageRenderer.h"

#include "images/ImageFileReader.h"
#include "images/PhotoFraming.h"
#include "images/SmartCrop.h"
#include "photos/ImageCache.h"
#include "model/CollageLayout.h"
#include "model/CoordinateTransform.h"
#include "model/RenderScale.h"
#include "model/TilePainter.h"

#include <QMutex>
#include <QPainter>
#include <QThread>
#include <QThreadPool>
#include <QWaitCondition>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

namespace {

// The size the whole picture must be decoded at so that, fitted by `method`, it still covers
// `target`: scaled to cover for the three crops, to fit inside for the whole-picture method.
QSize sizeCovering(const QSize &full, const QSize &target, int method, const PhotoFraming &framing)
{
    const double kx = double(target.width()) / full.width();
    const double ky = double(target.height()) / full.height();
    double k = method == 3 ? std::min(kx, ky) : std::max(kx, ky);
    // A framing shows a part of the photo, zoomed in up to its limit: as many pixels as that part needs.
    const QRectF crop = framing.cropRect(QSizeF(full), QSizeF(target));
    if (!crop.isEmpty())
        k = std::max(target.width() / crop.width(), target.height() / crop.height());
    return QSize(std::max(1, int(std::ceil(full.width() * k))), std::max(1, int(std::ceil(full.height() * k))));
}

// What the workers share: which tiles are drawn, and the messages. The canvas itself is only
// painted on while the mutex is held, each time by a painter of the thread that holds it.
struct Shared {
    QMutex mutex;
    QWaitCondition drawnOne;
    std::vector<char> drawn;
    int done = 0;
    std::vector<QString> warnings; // per tile, reported in tile order
};

} // namespace

QSize CollageRenderer::canvasSize(const QSizeF &contentSize, double scale)
{
    // The products are taken in single precision, then rounded to whole pixels.
    const float w = float(contentSize.width()) * float(scale);
    const float h = float(contentSize.height()) * float(scale);
    if (!std::isfinite(w) || !std::isfinite(h) || w < 0.5f || h < 0.5f || w > 1.0e9f || h > 1.0e9f)
        return QSize();
    return QSize(int(std::lround(w)), int(std::lround(h)));
}

QRect CollageRenderer::pixelRect(const QRectF &frame, double scale)
{
    const double s = scale;
    const long left = std::lround(frame.left() * s);
    const long top = std::lround(frame.top() * s);
    const long right = std::lround(frame.right() * s);
    const long bottom = std::lround(frame.bottom() * s);
    return QRect(QPoint(int(left), int(top)), QPoint(int(right) - 1, int(bottom) - 1));
}

UIImage CollageRenderer::loadFittedPhoto(const QString &path, const QSize &size, int method, QString *error)
{
    return loadFittedPhoto(path, size, method, PhotoFraming(), error);
}

PhotoFraming CollageRenderer::framingForTile(const TileLayout &tile)
{
    if (!tile.needsSubject())
        return tile.shownFraming();
    TileLayout found = tile;
    // Found in the photo's reduced copy, as the image cache finds it for the tile on screen.
    found.subject = SmartCrop::subjectOf(ImageCache::compressedImageForPath(tile.imagePath).bestRepresentation());
    return found.shownFraming();
}

UIImage CollageRenderer::loadFittedPhoto(const QString &path, const QSize &size, int method, const PhotoFraming &framing,
                                         QString *error)
{
    QString why;
    UIImage picture;
    QByteArray bytes;
    if (!ImageFileReader::readFile(path, &bytes, &why)) {
        if (error)
            *error = why;
        return UIImage();
    }
    const ImageFileReader::Header header = ImageFileReader::readHeader(bytes, path);
    if (!header.ok()) {
        if (error)
            *error = header.error;
        return UIImage();
    }
    if (header.format == "jpeg" && !size.isEmpty()) {
        const ImageFileReader::Frames reduced =
            ImageFileReader::decodeReducedJpeg(bytes, path, sizeCovering(header.size, size, method, framing));
        // The reduced pixels stand for the whole picture: the fitting works in the picture's
        // full point size and so crops exactly what a full decode would.
        if (reduced.ok())
            picture = UIImage(reduced.frames, QSizeF(header.size));
    }
    if (picture.isEmpty()) {
        UIImage::LoadResult loaded = UIImage::loadData(bytes, path);
        if (!loaded.ok()) {
            if (error)
                *error = loaded.error;
            return UIImage();
        }
        picture = loaded.image;
    }
    bytes.clear();
    if (size.isEmpty())
        return UIImage();
    return picture.imageToFitSize(QSizeF(size), method, framing);
}

CollageRenderer::Result CollageRenderer::imageCollage(const CollageLayout &layout, bool scaled, const Options &options)
{
    if (!scaled)
        return renderUnscaled(layout, options);
    const qint64 scale = RenderScale::scaleFactor(RenderScale::freeMemoryMB(), layout.contentSize,
                                                  RenderScale::largestScaleFactor(layout));
    return renderScaled(layout, scale, options);
}

CollageRenderer::Result CollageRenderer::renderScaled(const CollageLayout &layout, qint64 scaleFactor, const Options &options)
{
    return render(layout, std::max<qint64>(scaleFactor, 1), options, false);
}

CollageRenderer::Result CollageRenderer::renderAtScale(const CollageLayout &layout, double scale, const Options &options)
{
    if (!(scale > 0) || !std::isfinite(scale)) {
        Result result;
        result.error = QStringLiteral("the collage cannot be enlarged %1 times").arg(scale);
        return result;
    }
    return render(layout, scale, options, false);
}

CollageRenderer::Result CollageRenderer::renderUnscaled(const CollageLayout &layout, const Options &options)
{
    return render(layout, 1, options, true);
}

CollageRenderer::Result CollageRenderer::render(const CollageLayout &layout, double scale, const Options &options,
                                                bool decorated)
{
    Result result;
    if (!(layout.contentSize.width() >= 0.5 && layout.contentSize.height() >= 0.5)) {
        result.error = QStringLiteral("the collage is empty (%1 x %2 points)")
                           .arg(layout.contentSize.width())
                           .arg(layout.contentSize.height());
        return result;
    }
    const QSize size = canvasSize(layout.contentSize, scale);
    if (size.isEmpty() || qint64(size.width()) * size.height() > kMaxCanvasPixels) {
        result.error = QStringLiteral("a picture of %1 x %2 points enlarged %3 times is too large to render "
                                      "(at most %4 megapixels)")
                           .arg(layout.contentSize.width())
                           .arg(layout.contentSize.height())
                           .arg(scale)
                           .arg(kMaxCanvasPixels / 1000000);
        return result;
    }
    const bool opaque = options.background.alpha() == 255;
    QImage canvas(size, opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    if (canvas.isNull()) {
        result.error = QStringLiteral("not enough memory for a %1 x %2 picture").arg(size.width()).arg(size.height());
        return result;
    }
    canvas.fill(options.background.isValid() ? options.background : QColor(Qt::transparent));

    // The tiles to draw, in layout order (their stacking order: later tiles lie on top).
    std::vector<const TileLayout *> tiles;
    for (const TileLayout &t : layout.tiles) {
        if (!t.placeholder || options.renderEmptyTiles)
            tiles.push_back(&t);
    }
    // For each tile, the earlier tiles it overlaps: it is drawn only after them.
    std::vector<QRect> rects(tiles.size());
    for (size_t i = 0; i < tiles.size(); ++i)
        rects[i] = pixelRect(tiles[i]->frame, scale);
    std::vector<std::vector<size_t>> under(tiles.size());
    for (size_t i = 0; i < tiles.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (rects[i].intersects(rects[j]))
                under[i].push_back(j);

    const bool turned = CoordinateTransform::isRotation(layout.coordinateTransform);
    const double collageBorder = double(layout.borderWidth);
    Shared shared;
    shared.drawn.assign(tiles.size(), 0);
    shared.warnings.resize(tiles.size());
    std::atomic<size_t> next{0};
    std::atomic<bool> stopped{false};
    const int total = int(tiles.size());

    const auto work = [&]() {
        for (size_t i = next++; i < tiles.size(); i = next++) {
            const TileLayout &tile = *tiles[i];
            const QRect target = rects[i];
            if (!stopped && options.cancelled && options.cancelled())
                stopped = true;
            QString error;
            UIImage fitted;
            if (!target.isEmpty() && !stopped)
                fitted = loadFittedPhoto(tile.imagePath, target.size(), tile.imageAlignment, framingForTile(tile), &error);
            const QImage photo = fitted.bestRepresentation();

            QMutexLocker lock(&shared.mutex);
            while (std::any_of(under[i].begin(), under[i].end(), [&](size_t j) { return !shared.drawn[j]; }))
                shared.drawnOne.wait(&shared.mutex);
            shared.warnings[i] = error;
            if (decorated || !photo.isNull()) {
                QPainter painter(&canvas);
                if (decorated)
                    TilePainter::paint(painter, target, tile, photo, collageBorder, turned);
                else
                    painter.drawImage(target.topLeft(), photo);
            }
            shared.drawn[i] = 1;
            ++shared.done;
            if (options.progress)
                options.progress(shared.done, total);
            shared.drawnOne.wakeAll();
        }
    };

    const int threads = std::clamp(options.threads > 0 ? options.threads : QThread::idealThreadCount(), 1,
                                   std::max(1, total));
    QThreadPool pool;
    pool.setMaxThreadCount(threads);
    std::vector<QFuture<void>> workers;
    for (int t = 1; t < threads; ++t)
        workers.push_back(QtConcurrent::run(&pool, work));
    work(); // this thread is a worker too
    for (QFuture<void> &f : workers)
        f.waitForFinished();

    if (stopped) {
        result.error = QStringLiteral("cancelled");
        return result;
    }
    result.image = std::move(canvas);
    for (size_t i = 0; i < tiles.size(); ++i) {
        const QString &w = shared.warnings[i];
        if (w.isEmpty())
            continue;
        result.warnings << w;
        const QString &path = tiles[i]->imagePath;
        result.unreadable.append({tiles[i]->tag + 1, path, UnreadablePhotos::reason(path, w)});
    }
    return result;
}
