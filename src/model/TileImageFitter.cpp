#include "model/TileImageFitter.h"

#include "images/ResizeGeometry.h"
#include "photos/ImageCache.h"

#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

QList<UIImage> TileImageFitter::fitAll(const CollageLayout &layout, ImageCache &cache, const UIImage &placeholder,
                                       QThreadPool *pool)
{
    struct Job {
        UIImage image;
        TileLayout tile;
        PhotoFraming framing;
    };
    QList<Job> jobs;
    jobs.reserve(qsizetype(layout.tiles.size()));
    for (const TileLayout &tile : layout.tiles)
        jobs.append({tile.placeholder ? placeholder : cache.getImageForPath(tile.imagePath), tile, framingFor(tile, cache)});
    return QtConcurrent::blockingMapped<QList<UIImage>>(pool ? pool : QThreadPool::globalInstance(), jobs,
                                                        [](const Job &job) { return fit(job.image, job.tile, job.framing); });
}

PhotoFraming TileImageFitter::framingFor(const TileLayout &tile, ImageCache &cache)
{
    if (!tile.needsSubject())
        return tile.shownFraming();
    TileLayout shown = tile;
    shown.subject = cache.subjectForPath(tile.imagePath);
    return shown.shownFraming();
}

UIImage TileImageFitter::fit(const UIImage &image, const TileLayout &tile, const PhotoFraming &framing)
{
    return image.imageToFitSize(tile.imageSize, tile.imageAlignment, framing);
}

QString TileImageFitter::fitKey(const TileLayout &tile, const UIImage &source, const PhotoFraming &framing)
{
    const qint64 pixels = tile.placeholder ? 0 : source.bestRepresentation().cacheKey();
    const QString framed = framing.isNull()
        ? QString()
        : QStringLiteral("%1,%2,%3").arg(framing.center().x()).arg(framing.center().y()).arg(framing.zoom());
    return QStringLiteral("%1|%2x%3|%4|%5|%6")
        .arg(tile.imagePath, QString::number(tile.imageSize.width(), 'f', 2), QString::number(tile.imageSize.height(), 'f', 2))
        .arg(tile.imageAlignment)
        .arg(pixels)
        .arg(framed);
}

PhotoFraming TileImageFitter::gestureStart(const QSizeF &photo, const TileLayout &tile, const PhotoFraming &shown)
{
    PhotoFraming start = shown;
    if (start.isNull()) {
        // What the alignment shows, as a crop measured from the photo's top.
        const int method = tile.imageAlignment == ResizeGeometry::ResizeScale ? ResizeGeometry::ResizeCrop : tile.imageAlignment;
        const ResizeGeometry::Plan plan = ResizeGeometry::plan(photo, QRectF(QPointF(0, 0), tile.imageSize), method);
        const QRectF fromTop(plan.source.x(), photo.height() - plan.source.bottom(), plan.source.width(), plan.source.height());
        start = PhotoFraming::fromCropRect(photo, tile.imageSize, fromTop);
    }
    return start.clamped(photo, tile.imageSize);
}
