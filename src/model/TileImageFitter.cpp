#include "model/TileImageFitter.h"

#include "photos/ImageCache.h"

#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

QList<UIImage> TileImageFitter::fitAll(const CollageLayout &layout, ImageCache &cache, const UIImage &placeholder,
                                       QThreadPool *pool)
{
    struct Job {
        UIImage image;
        QSizeF size;
        int method;
        PhotoFraming framing;
    };
    QList<Job> jobs;
    jobs.reserve(qsizetype(layout.tiles.size()));
    for (const TileLayout &tile : layout.tiles) {
        TileLayout shown = tile;
        const UIImage image = tile.placeholder ? placeholder : cache.getImageForPath(tile.imagePath);
        if (shown.needsSubject())
            shown.subject = cache.subjectForPath(tile.imagePath);
        jobs.append({image, tile.imageSize, tile.imageAlignment, shown.shownFraming()});
    }
    return QtConcurrent::blockingMapped<QList<UIImage>>(
        pool ? pool : QThreadPool::globalInstance(), jobs,
        [](const Job &job) { return job.image.imageToFitSize(job.size, job.method, job.framing); });
}
