#include "images/ImageCacheLoader.h"

#include "images/ImageCache.h"

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

using Watcher = QFutureWatcher<ImageCache::Entry>;

ImageCacheLoader::ImageCacheLoader(ImageCache &cache, QThreadPool *pool, QObject *parent)
    : QObject(parent)
    , m_cache(cache)
    , m_pool(pool ? pool : QThreadPool::globalInstance())
{
}

ImageCacheLoader::~ImageCacheLoader()
{
    // The decodings hold nothing of ours but their path: wait so none outlives the cache.
    for (QObject *object : std::as_const(m_loading))
        static_cast<Watcher *>(object)->waitForFinished();
}

std::optional<UIImage> ImageCacheLoader::imageForPath(const QString &path)
{
    if (std::optional<UIImage> cached = m_cache.cachedImageForPath(path))
        return cached;
    start(path);
    return std::nullopt;
}

void ImageCacheLoader::request(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (!m_cache.contains(path))
            start(path);
    }
}

void ImageCacheLoader::start(const QString &path)
{
    if (path.isEmpty() || m_loading.contains(path) || m_cache.hasFailedUnchanged(path))
        return;
    auto *watcher = new Watcher(this);
    m_loading.insert(path, watcher);
    connect(watcher, &Watcher::finished, this, [this, watcher, path] {
        // A decoding that waitForAll already took in has no watcher entry any more.
        if (m_loading.value(path) != watcher)
            return;
        m_loading.remove(path);
        const ImageCache::Entry entry = watcher->result();
        watcher->deleteLater();
        m_cache.insertEntry(path, entry);
        if (m_cache.contains(path))
            emit imageReady(path);
        else
            emit imageFailed(path);
        if (m_loading.isEmpty())
            emit idle();
    });
    watcher->setFuture(QtConcurrent::run(m_pool, &ImageCache::makeEntry, path));
}

void ImageCacheLoader::waitForAll()
{
    const auto loading = m_loading;
    m_loading.clear();
    for (auto it = loading.constBegin(); it != loading.constEnd(); ++it) {
        auto *watcher = static_cast<Watcher *>(it.value());
        watcher->waitForFinished();
        m_cache.insertEntry(it.key(), watcher->result());
        watcher->deleteLater();
        if (m_cache.contains(it.key()))
            emit imageReady(it.key());
        else
            emit imageFailed(it.key());
    }
    if (!loading.isEmpty())
        emit idle();
}
