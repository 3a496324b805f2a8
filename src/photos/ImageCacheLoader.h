#pragma once

#include "photos/ImageCache.h"
#include "images/UIImage.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>
#include <optional>


class UserDefaults;
class QThreadPool;

// The face of the image cache for a window, which must never wait for a decode. A lookup
// answers at once with the cached copy, or with nothing while the photo is decoded on a thread
// pool; imageReady follows on the caller's thread when the copy has joined the cache (or
// imageFailed when the photo could not be read). The blocking face (ImageCache::getImageForPath)
// stays for the command line and the renderer.
class ImageCacheLoader : public QObject
{
    Q_OBJECT
public:
    // pool: where photos are decoded; null for a pool of the loader's own. Not the global pool:
    // Qt's raster painting hands parts of large fills to the global pool and waits for them,
    // so long decodes queued there would stall the window's painting.
    explicit ImageCacheLoader(ImageCache &cache, QThreadPool *pool = nullptr, QObject *parent = nullptr);
    ~ImageCacheLoader() override;

    ImageCache &cache() const { return m_cache; }
    // The pool photos are decoded on (others that decode photos for the window share it, so
    // the decoding never takes more threads than the cores).
    QThreadPool *pool() const { return m_pool; }

    // The cached copy, or nothing: then the photo is being decoded (unless it failed before and
    // has not changed) and imageReady or imageFailed follows.
    std::optional<UIImage> imageForPath(const QString &path);
    // Starts decoding every path that is neither decoded, on its way, nor known to fail, in the
    // order given (the pool takes them first come, first served).
    void request(const QStringList &paths);
    // Learns which copies the last quit saved (ImageCache::restoreImageCacheFromUserDefaults):
    // nothing is decoded until a photo is asked for, and then its stored copy is read and
    // decoded on the pool rather than the photo file. A stored copy that no longer decodes is
    // made again from its file.
    void restoreFromUserDefaults(UserDefaults &defaults);

    // Drops the decodings of the paths: one not started yet never runs, one running is let
    // finish unseen; no signal follows for them (for rows scrolled out of view).
    void cancel(const QStringList &paths);
    // Drops every decoding under way, for quitting: nothing is waited for.
    void cancelAll() { cancel(m_loading.keys()); }

    bool isLoading(const QString &path) const { return m_loading.contains(path); }
    qsizetype loadingCount() const { return m_loading.size(); }
    // Blocks until every decoding under way has finished and been taken into the cache (for
    // quitting, which saves the cache, and for tests).
    void waitForAll();

signals:
    void imageReady(const QString &path);
    void imageFailed(const QString &path);
    // Every requested photo has been decoded (or failed).
    void idle();

private:
    void start(const QString &path);
    // Runs `make` on the pool for the path and takes its entry in when it is done.
    template <typename Make>
    void launch(const QString &path, Make make);
    // A finished entry joins the cache.
    void take(const QString &path, const ImageCache::Entry &entry);

    ImageCache &m_cache;
    std::unique_ptr<QThreadPool> m_ownPool;
    QThreadPool *m_pool;
    // Decodings under way, each with the watcher that brings its result back.
    QHash<QString, QObject *> m_loading;
    // Set to drop a decoding: the job looks at it when it starts.
    QHash<QString, std::shared_ptr<std::atomic_bool>> m_dropped;
};
