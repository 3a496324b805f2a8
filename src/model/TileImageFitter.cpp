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
    };
    QList<Job> jobs;
    jobs.reserve(qsizetype(layout.tiles.size()));
    for (const TileLayout &tile : layout.tiles)
        jobs.append({tile.placeholder ? placeholder : cache.getImageForPath(tile.imagePath), tile.imageSize, tile.imageAlignment});
    return QtConcurrent::blockingMapped<QList<UIImage>>(pool ? pool : QThreadPool::globalInstance(), jobs,
                                                        [](const Job &job) { return job.image.imageToFitSize(job.size, job.method); });
}
