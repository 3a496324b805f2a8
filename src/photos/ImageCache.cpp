#include "photos/ImageCache.h"

#include "images/SmartCrop.h"

#include <sys/stat.h>

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "images/CompressedTiff.h"
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

qint64 pixelBytes(const UIImage &image)
{
    qint64 bytes = 0;
    for (const QImage &frame : image.representations())
        bytes += frame.sizeInBytes();
    return bytes;
}

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

// One photo's entry made off the calling thread. From kept or stored bytes when they decode
// and the file is not newer; otherwise from the file, whose date is read first: a file that
// changes while it is decoded then looks newer than its entry and is rebuilt at the next lookup.
ImageCache::Decoded ImageCache::decode(const Source &source)
{
    Decoded d{source.path, {}};
    std::optional<Entry> kept;
    if (!source.tiff.isEmpty()) {
        Entry e;
        e.tiff = source.tiff;
        e.date = source.date;
        e.subject = source.subject;
        e.image = UIImage::initWithTIFFRepresentation(source.tiff);
        if (e.image.isValid())
            kept = e;
    } else if (!source.storePath.isEmpty()) {
        kept = entryFromStored(UserDefaults::entriesInFile(source.storePath, Preferences::ImageCache, {source.path}).value(source.path));
    }
    if (kept) {
        const QDateTime fileDate = modificationDateForPath(source.path);
        if (!isNewer(fileDate, kept->date)) {
            d.entry = *kept;
            // A copy stored before subjects were kept has it found now.
            if (!d.entry.subject) {
                d.entry.subject = SmartCrop::subjectOf(d.entry.image.bestRepresentation());
                d.entry.fresh = true;
            }
            // A copy kept uncompressed (by an earlier version) is stored again compressed.
            if (!CompressedTiff::isCompressed(d.entry.tiff)) {
                d.entry.tiff = CompressedTiff::encode(d.entry.image.bestRepresentation());
                d.entry.fresh = true;
            }
            return d;
        }
        d.entry.rebuilt = true;
    }
    d.entry.date = modificationDateForPath(source.path);
    // A file that cannot be dated is not cached even when it decodes; one that is gone gets the
    // reader's words for that.
    const UIImage::LoadResult loaded = UIImage::loadFileUnderMegaPixels(source.path, kMegaPixels);
    d.entry.image = loaded.image;
    d.entry.error = loaded.error;
    if (loaded.image.isValid()) {
        d.entry.tiff = CompressedTiff::encode(loaded.image.bestRepresentation());
        d.entry.subject = SmartCrop::subjectOf(loaded.image.bestRepresentation());
    }
    d.entry.fresh = true;
    return d;
}

ImageCache::Entry ImageCache::makeEntry(const Source &source)
{
    return decode(source).entry;
}

ImageCache::Source ImageCache::sourceFor(const QString &path) const
{
    const auto it = m_imageCacheDictionary.constFind(path);
    if (it != m_imageCacheDictionary.constEnd())
        return {path, it->tiff, it->date, {}, it->subject};
    if (m_stored.contains(path))
        return {path, {}, {}, m_storePath, {}};
    return {path, {}, {}, {}, {}};
}

void ImageCache::clear()
{
    waitForAll();
    m_inFlight.clear();
    m_imageCacheDictionary.clear();
    m_failed.clear();
    m_stored.clear();
    m_inStore.clear();
    m_decodedBytes = 0;
}

void ImageCache::setDecodedBudgetBytes(qint64 bytes)
{
    m_decodedBudgetBytes = bytes;
    trim();
}

void ImageCache::setShownPaths(const QStringList &paths)
{
    m_shown = QSet<QString>(paths.cbegin(), paths.cend());
    trim();
}

bool ImageCache::isDecoded(const QString &path) const
{
    const auto it = m_imageCacheDictionary.constFind(path);
    return it != m_imageCacheDictionary.constEnd() && it->image.isValid();
}

UIImage ImageCache::use(Entry &entry)
{
    entry.lastUse = ++m_clock;
    return handOut(entry.image);
}

void ImageCache::trim(const QString &keep)
{
    if (m_decodedBytes <= m_decodedBudgetBytes)
        return;
    // Copies that can be let go: decoded, with bytes to come back from, not shown.
    QList<std::pair<quint64, QString>> candidates;
    for (auto it = m_imageCacheDictionary.cbegin(); it != m_imageCacheDictionary.cend(); ++it) {
        if (it->image.isValid() && !it->tiff.isEmpty() && !m_shown.contains(it.key()) && it.key() != keep)
            candidates.append({it->lastUse, it.key()});
    }
    std::sort(candidates.begin(), candidates.end());
    for (const auto &[lastUse, path] : std::as_const(candidates)) {
        if (m_decodedBytes <= m_decodedBudgetBytes)
            break;
        Entry &entry = m_imageCacheDictionary[path];
        m_decodedBytes -= pixelBytes(entry.image);
        entry.image = UIImage();
    }
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

void ImageCache::removeEntry(const QString &path)
{
    const auto it = m_imageCacheDictionary.constFind(path);
    if (it != m_imageCacheDictionary.constEnd()) {
        m_decodedBytes -= pixelBytes(it->image);
        m_imageCacheDictionary.erase(it);
    }
    m_stored.remove(path);
}

void ImageCache::storeEntry(const QString &path, const Entry &entry)
{
    removeEntry(path);
    Entry &stored = m_imageCacheDictionary.insert(path, entry).value();
    stored.lastUse = ++m_clock;
    m_decodedBytes += pixelBytes(stored.image);
    m_failed.remove(path);
    if (entry.fresh)
        logPath("Added path to cache: %1", path);
    if (entry.rebuilt)
        logPath("Updated path for cache: %1", path);
    trim(path);
}

UIImage ImageCache::addPathToCache(const QString &path)
{
    const Decoded d = decode(Source{path, {}, {}, {}, {}});
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
    if (d.entry.image.isValid() && d.entry.date.isValid()) {
        storeEntry(d.path, d.entry);
    } else {
        removeEntry(d.path);
        m_failed.insert(d.path, {d.entry.date, d.entry.error});
    }
}

void ImageCache::startDecoding(const QString &path)
{
    if (path.isEmpty() || isDecoded(path))
        return;
    for (const auto &flight : std::as_const(m_inFlight)) {
        if (flight.first == path)
            return;
    }
    m_inFlight.append({path, QtConcurrent::run(m_pool, &ImageCache::decode, sourceFor(path))});
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
        if (path.isEmpty() || isDecoded(path) || wanted.contains(path) || failedUnchanged(path))
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
            removeEntry(path);
            logPath("Removed path from cache: %1", path);
            continue;
        }
        // An entry whose file cannot be dated any more is kept as it is.
        if (isNewer(modificationDateForPath(path), m_imageCacheDictionary.value(path).date)) {
            removeEntry(path);
            changed.append(path);
        }
    }
    // Entries still in the store only: their dates are checked when they are read.
    for (auto it = m_stored.begin(); it != m_stored.end();) {
        if (!listedSet.contains(it.key())) {
            logPath("Removed path from cache: %1", it.key());
            it = m_stored.erase(it);
        } else {
            ++it;
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
    const auto it = m_imageCacheDictionary.find(path);
    if (it == m_imageCacheDictionary.end())
        return std::nullopt;
    // A file that is newer is decoded anew; so is one that is gone, so that the window tells it
    // cannot be read rather than showing a photo that is no longer there.
    const QDateTime fileDate = modificationDateForPath(path);
    if (!fileDate.isValid() || isNewer(fileDate, it->date)) {
        removeEntry(path);
        return std::nullopt;
    }
    if (!it->image.isValid())
        return std::nullopt; // let go: decoded again from its bytes
    return use(*it);
}

void ImageCache::removeUnlistedEntries()
{
    if (!m_delegate)
        return;
    const QStringList listed = m_delegate->pickedPhotos();
    const QSet<QString> listedSet(listed.cbegin(), listed.cend());
    const QStringList keys = m_imageCacheDictionary.keys();
    for (const QString &path : keys) {
        if (!listedSet.contains(path))
            removeEntry(path);
    }
    m_stored.removeIf([&](const auto &entry) { return !listedSet.contains(entry.key()); });
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
    if (!isDecoded(path)) {
        startDecoding(path);
        readAhead();
        finishDecoding(path);
        if (!isDecoded(path))
            return UIImage::initWithContentsOfFile(path); // not reducible: full size, uncached
    }
    readAhead();
    return use(m_imageCacheDictionary[path]);
}

bool ImageCache::saveImageCacheToUserDefaults(UserDefaults &defaults)
{
    waitForAll();
    harvest();
    qCInfo(lcTessary, "Saving image cache...");
    // The listed photos first, in list order, so that when the record is full it is the
    // photos of the current collage that come back at the next start.
    QStringList order;
    QSet<QString> ordered;
    const auto add = [&](const QString &path) {
        if (!ordered.contains(path) && contains(path)) {
            ordered.insert(path);
            order.append(path);
        }
    };
    if (m_delegate) {
        for (const QString &path : m_delegate->pickedPhotos())
            add(path);
    }
    for (const QString &path : m_imageCacheDictionary.keys())
        add(path);
    for (const QString &path : m_stored.keys())
        add(path);

    // Only what is new or remade is written; what the store holds and the cache no longer
    // keeps is removed.
    QVariantMap changed;
    QSet<QString> kept;
    qint64 total = 0;
    for (const QString &path : std::as_const(order)) {
        const auto it = m_imageCacheDictionary.constFind(path);
        const bool inMemory = it != m_imageCacheDictionary.constEnd();
        if (inMemory && (it->tiff.isEmpty() || !it->date.isValid()))
            continue; // nothing that could be read back
        const qint64 size = (inMemory ? it->tiff.size() : m_stored.value(path)) + path.size() + 64;
        // The record stays within its budget.
        if (total + size > m_storeBudgetBytes)
            continue;
        total += size;
        kept.insert(path);
        if (!inMemory || (!it->fresh && m_inStore.contains(path)))
            continue;
        QVariantMap entry;
        entry.insert(QStringLiteral("image"), it->tiff);
        entry.insert(QStringLiteral("date"), it->date);
        entry.insert(kUprightKey, true);
        if (it->subject)
            entry.insert(kSubjectKey, QVariantList{it->subject->x(), it->subject->y()});
        changed.insert(path, entry);
        qCInfo(lcTessary, "Saved image cache path: %s", qUtf8Printable(QFileInfo(path).fileName()));
    }
    const QSet<QString> dropped = m_inStore - kept;
    const bool ok = defaults.setEntriesForKey(Preferences::ImageCache, changed, QStringList(dropped.cbegin(), dropped.cend()));
    if (ok) {
        m_inStore = kept;
        for (auto it = changed.cbegin(); it != changed.cend(); ++it)
            m_imageCacheDictionary[it.key()].fresh = false;
        m_storePath = defaults.filePath();
    }
    defaults.synchronize();
    qCInfo(lcTessary, "Finished saving image cache.");
    return ok;
}

std::optional<ImageCache::Entry> ImageCache::entryFromStored(const QVariant &stored)
{
    const QVariantMap entry = stored.toMap();
    const QVariant image = entry.value(QStringLiteral("image"));
    const QVariant date = entry.value(QStringLiteral("date"));
    // Entries without a date could never be refreshed, and copies saved before photos were
    // turned upright by their orientation tag may lie on their side: the photo is simply
    // decoded again when it is needed.
    if (image.typeId() != QMetaType::QByteArray || date.typeId() != QMetaType::QDateTime || !entry.value(kUprightKey).toBool())
        return std::nullopt;
    Entry e;
    e.tiff = image.toByteArray();
    e.date = date.toDateTime();
    e.image = UIImage::initWithTIFFRepresentation(e.tiff);
    if (!e.image.isValid())
        return std::nullopt;
    const QVariantList subject = entry.value(kSubjectKey).toList();
    if (subject.size() == 2) {
        const double x = subject.at(0).toDouble(), y = subject.at(1).toDouble();
        if (x >= 0 && x <= 1 && y >= 0 && y <= 1)
            e.subject = QPointF(x, y);
    }
    return e;
}

void ImageCache::restoreImageCacheFromUserDefaults(UserDefaults &defaults)
{
    clear();
    qCInfo(lcTessary, "Restoring image cache...");
    // A record kept whole by an earlier version becomes one row per photo.
    if (!defaults.splitIntoEntries(Preferences::ImageCache))
        qCWarning(lcTessary, "The image cache could not be converted: %s", qPrintable(defaults.errorString()));
    m_storePath = defaults.filePath();
    m_stored = defaults.entrySizesForKey(Preferences::ImageCache);
    for (auto it = m_stored.cbegin(); it != m_stored.cend(); ++it) {
        m_inStore.insert(it.key());
        logPath("Added path to cache: %1", it.key());
    }
    qCInfo(lcTessary, "Finished restoring image cache.");
}

std::optional<QPointF> ImageCache::subjectForPath(const QString &path) const
{
    const auto it = m_imageCacheDictionary.constFind(path);
    return it == m_imageCacheDictionary.constEnd() ? std::nullopt : it->subject;
}
