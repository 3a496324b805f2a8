#include "images/ImageCache.h"

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/TessaryViewDelegate.h"

#include <QFileInfo>
#include <QSet>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

namespace {

// The two lines logged for a path: `what` with the file name for %1, then the full path.
void logPath(const char *what, const QString &path)
{
    qCInfo(lcTessary, "%s", qUtf8Printable(QString::fromLatin1(what).arg(QFileInfo(path).fileName())));
    qCInfo(lcTessary, "Full path: %s", qUtf8Printable(path));
}

// Whether the file is newer than the date an entry was made with.
bool isNewer(const QDateTime &fileDate, const QDateTime &cacheDate)
{
    return fileDate.isValid() && cacheDate.isValid() && fileDate.toMSecsSinceEpoch() > cacheDate.toMSecsSinceEpoch();
}

// One photo decoded off the main thread. The date is read first: a file that changes while it
// is decoded then looks newer than its entry and is rebuilt at the next lookup.
struct Decoded {
    QString path;
    ImageCache::Entry entry;
};

Decoded decode(const QString &path)
{
    Decoded d{path, {}};
    d.entry.date = ImageCache::modificationDateForPath(path);
    if (d.entry.date.isValid())
        d.entry.image = ImageCache::compressedImageForPath(path);
    return d;
}

} // namespace

ImageCache::ImageCache(const TessaryViewDelegate *delegate, QThreadPool *pool)
    : m_delegate(delegate)
    , m_pool(pool ? pool : QThreadPool::globalInstance())
{
}

UIImage ImageCache::compressedImageForPath(const QString &path)
{
    // Large JPEGs are decoded at a reduced scale straight away; the result has the size and
    // crop of a full decode brought under the ceiling.
    return UIImage::initWithContentsOfFileUnderMegaPixels(path, kMegaPixels);
}

QDateTime ImageCache::modificationDateForPath(const QString &path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return QDateTime();
    return info.fileTime(QFileDevice::FileModificationTime).toUTC();
}

QDateTime ImageCache::cacheDateForPath(const QString &path) const
{
    const auto it = m_imageCacheDictionary.constFind(path);
    return it == m_imageCacheDictionary.constEnd() ? QDateTime() : it->date;
}

void ImageCache::storeEntry(const QString &path, const Entry &entry)
{
    m_imageCacheDictionary.insert(path, entry);
    m_failed.remove(path);
    logPath("Added path to cache: %1", path);
}

UIImage ImageCache::addPathToCache(const QString &path)
{
    const Decoded d = decode(path);
    if (!d.entry.image.isValid() || !d.entry.date.isValid()) {
        m_failed.insert(path, d.entry.date);
        return UIImage();
    }
    storeEntry(path, d.entry);
    return d.entry.image;
}

void ImageCache::fillCache(const QStringList &paths)
{
    QStringList missing;
    QSet<QString> seen;
    for (const QString &path : paths) {
        if (path.isEmpty() || m_imageCacheDictionary.contains(path) || seen.contains(path))
            continue;
        seen.insert(path);
        const auto failed = m_failed.constFind(path);
        if (failed != m_failed.constEnd() && *failed == modificationDateForPath(path))
            continue; // failed before and unchanged since: only a direct lookup tries again
        missing.append(path);
    }
    if (missing.isEmpty())
        return;
    QList<Decoded> results;
    if (missing.size() == 1)
        results.append(decode(missing.first()));
    else
        results = QtConcurrent::blockingMapped<QList<Decoded>>(m_pool, missing, decode);
    for (const Decoded &d : std::as_const(results)) {
        if (d.entry.image.isValid() && d.entry.date.isValid())
            storeEntry(d.path, d.entry);
        else
            m_failed.insert(d.path, d.entry.date);
    }
}

void ImageCache::updateCache()
{
    if (!m_delegate)
        return;
    const QStringList listed = m_delegate->pickedPhotos();
    const QSet<QString> listedSet(listed.cbegin(), listed.cend());
    QStringList changed;
    const QStringList keys = m_imageCacheDictionary.keys();
    for (const QString &path : keys) {
        if (!listedSet.contains(path)) {
            m_imageCacheDictionary.remove(path);
            logPath("Removed path from cache: %1", path);
            continue;
        }
        // An entry whose file cannot be dated any more is kept as it is.
        if (isNewer(modificationDateForPath(path), m_imageCacheDictionary.value(path).date)) {
            m_imageCacheDictionary.remove(path);
            changed.append(path);
        }
    }
    for (auto it = m_failed.begin(); it != m_failed.end();) {
        if (!listedSet.contains(it.key()))
            it = m_failed.erase(it);
        else
            ++it;
    }
    // Changed files and listed photos not cached yet are decoded together, in parallel.
    fillCache(changed + listed);
    for (const QString &path : std::as_const(changed))
        logPath("Updated path for cache: %1", path);
}

UIImage ImageCache::getImageForPath(const QString &path)
{
    updateCache();
    const auto it = m_imageCacheDictionary.constFind(path);
    if (it != m_imageCacheDictionary.constEnd())
        return it->image;
    const UIImage added = addPathToCache(path);
    if (added.isValid())
        return added;
    return UIImage::initWithContentsOfFile(path);
}

bool ImageCache::saveImageCacheToUserDefaults(UserDefaults &defaults) const
{
    qCInfo(lcTessary, "Saving image cache...");
    // The listed photos first, in list order, so that when the record is full it is the
    // photos of the current collage that come back at the next start.
    QStringList order;
    if (m_delegate) {
        for (const QString &path : m_delegate->pickedPhotos()) {
            if (m_imageCacheDictionary.contains(path) && !order.contains(path))
                order.append(path);
        }
    }
    const QStringList keys = m_imageCacheDictionary.keys();
    for (const QString &path : keys) {
        if (!order.contains(path))
            order.append(path);
    }
    const QList<QByteArray> encoded = QtConcurrent::blockingMapped<QList<QByteArray>>(
        m_pool, order, [this](const QString &path) { return m_imageCacheDictionary.value(path).image.TIFFRepresentation(); });

    QVariantMap stored;
    qint64 total = 0;
    for (qsizetype i = 0; i < order.size(); ++i) {
        const QString &path = order.at(i);
        const QByteArray &tiff = encoded.at(i);
        const QDateTime date = m_imageCacheDictionary.value(path).date;
        if (tiff.isEmpty() || !date.isValid())
            continue; // nothing that could be read back
        // The store reads values up to a fixed size; a record beyond it would never load.
        if (total + tiff.size() + path.size() + 64 > m_storeBudgetBytes)
            continue;
        total += tiff.size() + path.size() + 64;
        QVariantMap entry;
        entry.insert(QStringLiteral("image"), tiff);
        entry.insert(QStringLiteral("date"), date);
        stored.insert(path, entry);
        qCInfo(lcTessary, "Saved image cache path: %s", qUtf8Printable(QFileInfo(path).fileName()));
    }
    const bool ok = defaults.setObject(stored, Preferences::ImageCache);
    defaults.synchronize();
    qCInfo(lcTessary, "Finished saving image cache.");
    return ok;
}

void ImageCache::restoreImageCacheFromUserDefaults(const UserDefaults &defaults)
{
    m_imageCacheDictionary.clear();
    m_failed.clear();
    qCInfo(lcTessary, "Restoring image cache...");
    const QVariant stored = defaults.objectForKey(Preferences::ImageCache);
    if (!stored.isValid()) {
        qCInfo(lcTessary, "Finished restoring image cache.");
        return;
    }
    const QVariantMap map = stored.toMap();
    // Undecodable images (and entries without a date, which could never be refreshed) are
    // left out: the photo is simply decoded again when it is needed.
    QStringList paths;
    QList<QByteArray> tiffs;
    QList<QDateTime> dates;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        const QVariantMap entry = it.value().toMap();
        const QVariant image = entry.value(QStringLiteral("image"));
        const QVariant date = entry.value(QStringLiteral("date"));
        if (image.typeId() == QMetaType::QByteArray && date.typeId() == QMetaType::QDateTime) {
            paths.append(it.key());
            tiffs.append(image.toByteArray());
            dates.append(date.toDateTime());
        }
    }
    const QList<UIImage> images = QtConcurrent::blockingMapped<QList<UIImage>>(
        m_pool, tiffs, [](const QByteArray &tiff) { return UIImage::initWithTIFFRepresentation(tiff); });
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (images.at(i).isValid())
            m_imageCacheDictionary.insert(paths.at(i), Entry{images.at(i), dates.at(i)});
    }
    for (auto it = map.constBegin(); it != map.constEnd(); ++it)
        logPath("Added path to cache: %1", it.key());
    qCInfo(lcTessary, "Finished restoring image cache.");
}
