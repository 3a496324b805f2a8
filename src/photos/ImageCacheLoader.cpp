#include "photos/ImageCacheLoader.h"

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageCache.h"

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

using Watcher = QFutureWatcher<ImageCache::Entry>;

ImageCacheLoader::ImageCacheLoader(ImageCache &cache, QThreadPool *pool, QObject *parent)
    : QObject(parent)
    , m_cache(cache)
    , m_ownPool(pool ? nullptr : std::make_unique<QThreadPool>())
    , m_pool(pool ? pool : m_ownPool.get())
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
        if (!m_cache.isDecoded(path))
            start(path);
    }
}

void ImageCacheLoader::start(const QString &path)
{
    if (path.isEmpty() || m_loading.contains(path) || m_cache.hasFailedUnchanged(path))
        return;
    // From the copy's bytes when the cache keeps them or the store has them, else from the file.
    auto dropped = std::make_shared<std::atomic_bool>(false);
    m_dropped.insert(path, dropped);
    launch(path, [source = m_cache.sourceFor(path), dropped] {
        return *dropped ? ImageCache::Entry() : ImageCache::makeEntry(source);
    });
}

void ImageCacheLoader::cancel(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (const auto dropped = m_dropped.take(path))
            *dropped = true;
        m_loading.remove(path); // its watcher finds itself gone and only cleans up
    }
}

void ImageCacheLoader::restoreFromUserDefaults(UserDefaults &defaults)
{
    waitForAll();
    m_cache.restoreImageCacheFromUserDefaults(defaults);
}

template <typename Make>
void ImageCacheLoader::launch(const QString &path, Make make)
{
    auto *watcher = new Watcher(this);
    m_loading.insert(path, watcher);
    connect(watcher, &Watcher::finished, this, [this, watcher, path] {
        // A decoding that waitForAll already took in has no watcher entry any more.
        watcher->deleteLater();
        if (m_loading.value(path) != watcher)
            return;
        m_loading.remove(path);
        m_dropped.remove(path);
        take(path, watcher->result());
        if (m_loading.isEmpty())
            emit idle();
    });
    watcher->setFuture(QtConcurrent::run(m_pool, std::move(make)));
}

void ImageCacheLoader::take(const QString &path, const ImageCache::Entry &entry)
{
    m_cache.insertEntry(path, entry);
    if (m_cache.isDecoded(path))
        emit imageReady(path);
    else
        emit imageFailed(path);
}

void ImageCacheLoader::waitForAll()
{
    bool tookAny = false;
    while (!m_loading.isEmpty()) {
        const auto loading = m_loading;
        m_loading.clear();
        for (auto it = loading.constBegin(); it != loading.constEnd(); ++it) {
            auto *watcher = static_cast<Watcher *>(it.value());
            watcher->waitForFinished();
            watcher->deleteLater();
            m_dropped.remove(it.key());
            take(it.key(), watcher->result());
        }
        tookAny = true;
    }
    if (tookAny)
        emit idle();
}
