#include "photos/ImageCache.h"

#include "images/SmartCrop.h"

#include <sys/stat.h>

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "images/UnreadablePhotos.h"
#include "photos/TessaryViewDelegate.h"

#include <QFileInfo>
#include <QTimeZone>
#include <QSet>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

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

// A handle of its own on the same pixels: a caller that changes the point size of the image it
// was given (scaling sets it) must not change the cached copy for everyone else.
UIImage handOut(const UIImage &cached)
{
    return UIImage(cached.representations(), cached.size());
}

// Marks a saved copy as made upright (by the photo's orientation tag).
const QString kUprightKey = QStringLiteral("upright");
// The subject of the photo (SmartCrop), as [x, y] in fractions of the photo.
const QString kSubjectKey = QStringLiteral("subject");

} // namespace

ImageCache::ImageCache(const TessaryViewDelegate *delegate, QThreadPool *pool)
    : m_delegate(delegate)
    , m_pool(pool ? pool : QThreadPool::globalInstance())
{
}

ImageCache::~ImageCache()
{
    for (auto &[path, future] : m_inFlight)
        future.waitForFinished();
}

// One photo decoded off the calling thread. The date is read first: a file that changes while
// it is decoded then looks newer than its entry and is rebuilt at the next lookup.
ImageCache::Decoded ImageCache::decode(const QString &path)
{
    Decoded d{path, {}};
    d.entry.date = modificationDateForPath(path);
    // A file that cannot be dated is not cached even when it decodes; one that is gone gets the
    // reader's words for that.
    const UIImage::LoadResult loaded = UIImage::loadFileUnderMegaPixels(path, kMegaPixels);
    d.entry.image = loaded.image;
    d.entry.error = loaded.error;
    if (loaded.image.isValid())
        d.entry.subject = SmartCrop::subjectOf(loaded.image.bestRepresentation());
    return d;
}

void ImageCache::clear()
{
    waitForAll();
    m_inFlight.clear();
    m_imageCacheDictionary.clear();
    m_failed.clear();
}

UIImage ImageCache::compressedImageForPath(const QString &path)
{
    // Large JPEGs are decoded at a reduced scale straight away; the result has the size and
    // crop of a full decode brought under the ceiling.
    return UIImage::initWithContentsOfFileUnderMegaPixels(path, kMegaPixels);
}

QDateTime ImageCache::modificationDateForPath(const QString &path)
{
    // Every lookup dates every listed photo, so this is a hot path: one stat() and a UTC date,
    // without the local-time conversions a QFileInfo date goes through.
    if (path.isEmpty())
        return QDateTime();
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return QDateTime();
    const qint64 ms = qint64(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000;
    return QDateTime::fromMSecsSinceEpoch(ms, QTimeZone::utc());
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
        m_failed.insert(path, {d.entry.date, d.entry.error});
        return UIImage();
    }
    storeEntry(path, d.entry);
    return d.entry.image;
}

bool ImageCache::failedUnchanged(const QString &path) const
{
    const auto failed = m_failed.constFind(path);
    return failed != m_failed.constEnd() && failed->date == modificationDateForPath(path);
}

QString ImageCache::failureReason(const QString &path) const
{
    const auto failed = m_failed.constFind(path);
    return failed == m_failed.constEnd() ? QString() : UnreadablePhotos::reason(path, failed->error);
}

void ImageCache::take(const Decoded &d)
{
    if (d.entry.image.isValid() && d.entry.date.isValid())
        storeEntry(d.path, d.entry);
    else
        m_failed.insert(d.path, {d.entry.date, d.entry.error});
}

void ImageCache::startDecoding(const QString &path)
{
    if (path.isEmpty() || m_imageCacheDictionary.contains(path))
        return;
    for (const auto &flight : std::as_const(m_inFlight)) {
        if (flight.first == path)
            return;
    }
    m_inFlight.append({path, QtConcurrent::run(m_pool, &ImageCache::decode, path)});
}

void ImageCache::finishDecoding(const QString &path)
{
    for (qsizetype i = 0; i < m_inFlight.size(); ++i) {
        if (m_inFlight.at(i).first == path) {
            const QFuture<Decoded> future = m_inFlight.takeAt(i).second;
            take(future.result());
            return;
        }
    }
}

void ImageCache::harvest()
{
    for (qsizetype i = 0; i < m_inFlight.size();) {
        if (m_inFlight.at(i).second.isFinished())
            take(m_inFlight.takeAt(i).second.result());
        else
            ++i;
    }
}

void ImageCache::waitForAll()
{
    for (auto &[path, future] : m_inFlight)
        future.waitForFinished();
}

void ImageCache::fillCache(const QStringList &paths)
{
    harvest();
    QStringList wanted;
    for (const QString &path : paths) {
        if (path.isEmpty() || m_imageCacheDictionary.contains(path) || wanted.contains(path) || failedUnchanged(path))
            continue;
        wanted.append(path);
        startDecoding(path);
    }
    for (const QString &path : std::as_const(wanted))
        finishDecoding(path);
}

qsizetype ImageCache::readAheadCount() const
{
    return 2 * qMax(1, m_pool->maxThreadCount());
}

QStringList ImageCache::refresh()
{
    harvest();
    if (!m_delegate)
        return {};
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
    // Changed files are decoded again, in parallel.
    for (const QString &path : std::as_const(changed))
        startDecoding(path);
    for (const QString &path : std::as_const(changed)) {
        finishDecoding(path);
        logPath("Updated path for cache: %1", path);
    }
    return listed;
}

std::optional<UIImage> ImageCache::cachedImageForPath(const QString &path)
{
    harvest();
    const auto it = m_imageCacheDictionary.constFind(path);
    if (it == m_imageCacheDictionary.constEnd())
        return std::nullopt;
    // A file that is newer is decoded anew; so is one that is gone, so that the window tells it
    // cannot be read rather than showing a photo that is no longer there.
    const QDateTime fileDate = modificationDateForPath(path);
    if (!fileDate.isValid() || isNewer(fileDate, it->date)) {
        m_imageCacheDictionary.remove(path);
        return std::nullopt;
    }
    return handOut(it->image);
}

void ImageCache::removeUnlistedEntries()
{
    if (!m_delegate)
        return;
    const QStringList listed = m_delegate->pickedPhotos();
    const QSet<QString> listedSet(listed.cbegin(), listed.cend());
    m_imageCacheDictionary.removeIf([&](const auto &entry) { return !listedSet.contains(entry.key()); });
    m_failed.removeIf([&](const auto &entry) { return !listedSet.contains(entry.key()); });
}

void ImageCache::updateCache()
{
    refresh();
}

UIImage ImageCache::getImageForPath(const QString &path)
{
    const QStringList listed = refresh();
    // A layout asks for its photos in list order: keep the next few listed photos that are not
    // cached yet decoding meanwhile. Only a few, so a template with fewer tiles than photos
    // does not pay for photos it does not show.
    const auto readAhead = [&] {
        const qsizetype at = listed.indexOf(path);
        if (at < 0)
            return;
        // A fixed window after the photo: photos already cached or on their way do not push it
        // further, so the decoding never runs ahead of the layout by more than the window.
        const qsizetype end = std::min(listed.size(), at + 1 + readAheadCount());
        for (qsizetype i = at + 1; i < end && m_inFlight.size() < readAheadCount(); ++i) {
            if (!failedUnchanged(listed.at(i)))
                startDecoding(listed.at(i));
        }
    };
    auto it = m_imageCacheDictionary.constFind(path);
    if (it == m_imageCacheDictionary.constEnd()) {
        startDecoding(path);
        readAhead();
        finishDecoding(path);
        it = m_imageCacheDictionary.constFind(path);
        if (it == m_imageCacheDictionary.constEnd())
            return UIImage::initWithContentsOfFile(path); // not reducible: full size, uncached
    }
    readAhead();
    return handOut(it->image);
}

bool ImageCache::saveImageCacheToUserDefaults(UserDefaults &defaults)
{
    waitForAll();
    harvest();
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
        entry.insert(kUprightKey, true);
        if (const std::optional<QPointF> subject = m_imageCacheDictionary.value(path).subject)
            entry.insert(kSubjectKey, QVariantList{subject->x(), subject->y()});
        stored.insert(path, entry);
        qCInfo(lcTessary, "Saved image cache path: %s", qUtf8Printable(QFileInfo(path).fileName()));
    }
    const bool ok = defaults.setObject(stored, Preferences::ImageCache);
    defaults.synchronize();
    qCInfo(lcTessary, "Finished saving image cache.");
    return ok;
}

QList<ImageCache::StoredEntry> ImageCache::storedEntries(const QVariantMap &map)
{
    QList<StoredEntry> entries;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        const QVariantMap entry = it.value().toMap();
        const QVariant image = entry.value(QStringLiteral("image"));
        const QVariant date = entry.value(QStringLiteral("date"));
        // Entries without a date could never be refreshed, and copies saved before photos were
        // turned upright by their orientation tag may lie on their side: the photo is simply
        // decoded again when it is needed.
        if (image.typeId() == QMetaType::QByteArray && date.typeId() == QMetaType::QDateTime
            && entry.value(kUprightKey).toBool())
        {
            StoredEntry stored{it.key(), image.toByteArray(), date.toDateTime(), std::nullopt};
            const QVariantList subject = entry.value(kSubjectKey).toList();
            if (subject.size() == 2) {
                const double x = subject.at(0).toDouble(), y = subject.at(1).toDouble();
                if (x >= 0 && x <= 1 && y >= 0 && y <= 1)
                    stored.subject = QPointF(x, y);
            }
            entries.append(stored);
        }
    }
    return entries;
}

ImageCache::Entry ImageCache::entryFromStored(const StoredEntry &stored)
{
    Entry entry{UIImage::initWithTIFFRepresentation(stored.tiff), stored.date, QString(), stored.subject};
    if (!entry.subject && entry.image.isValid())
        entry.subject = SmartCrop::subjectOf(entry.image.bestRepresentation());
    return entry;
}

void ImageCache::restoreImageCacheFromUserDefaults(const UserDefaults &defaults)
{
    clear();
    qCInfo(lcTessary, "Restoring image cache...");
    const QVariantMap record = defaults.dictionaryForKey(Preferences::ImageCache);
    const QList<StoredEntry> stored = storedEntries(record);
    const QList<Entry> entries = QtConcurrent::blockingMapped<QList<Entry>>(m_pool, stored, &ImageCache::entryFromStored);
    for (qsizetype i = 0; i < stored.size(); ++i) {
        if (entries.at(i).image.isValid())
            m_imageCacheDictionary.insert(stored.at(i).path, entries.at(i));
    }
    for (const QString &path : record.keys())
        logPath("Added path to cache: %1", path);
    qCInfo(lcTessary, "Finished restoring image cache.");
}

std::optional<QPointF> ImageCache::subjectForPath(const QString &path) const
{
    const auto it = m_imageCacheDictionary.constFind(path);
    return it == m_imageCacheDictionary.constEnd() ? std::nullopt : it->subject;
}
