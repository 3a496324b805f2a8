#pragma once

#include "foundation/UserDefaults.h"
#include "images/UIImage.h"

#include <QDateTime>
#include <QPointF>
#include <QFuture>
#include <QList>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

class QThreadPool;
class TessaryViewDelegate;

// Reduced copies of the input photos (at most half a megapixel each), so laying out and drawing
// the collage does not decode full-size photos again and again. Entries are keyed by the full
// path and remember the file's modification date when they were made.
//
// Before every lookup the cache is brought in line with the photo list (entries of photos no
// longer listed are dropped) and with the files (entries whose file is newer are rebuilt). It
// is kept in the user defaults under "image cache", each image as TIFF bytes: saved when the
// application ends, restored when the collage view is made.
//
// Photos are decoded ahead on a thread pool: while a layout takes photo i, the next few listed
// photos are already being decoded, so a cold cache of many large photos fills in a fraction
// of the time one-by-one decoding takes. Decoded photos join the cache on the calling thread,
// at the next lookup.
class ImageCache
{
public:
    static constexpr double kMegaPixels = 0.5;
    // The stored record is kept below what the defaults store keeps as one value, with room to
    // spare: about 250 photos of half a megapixel. Entries beyond it are left out (the listed
    // photos go first, in list order) and rebuilt when next needed.
    static constexpr qint64 kStoreBudgetBytes = 512LL * 1024 * 1024;
    static_assert(kStoreBudgetBytes < UserDefaults::kMaxValueBytes);

    struct Entry {
        UIImage image;
        QDateTime date; // the file's modification date when the entry was made
        QString error;  // why there is no image, in the decoder's words (empty when there is one)
        // Where the photo's subject is (SmartCrop), found on the reduced copy when it was made.
        std::optional<QPointF> subject;
    };

    // The delegate supplies the listed photo paths (pickedPhotos); without one, updateCache
    // leaves the cache alone. The pool decodes photos in parallel; null: the global pool.
    explicit ImageCache(const TessaryViewDelegate *delegate = nullptr, QThreadPool *pool = nullptr);
    ~ImageCache();
    ImageCache(const ImageCache &) = delete;
    ImageCache &operator=(const ImageCache &) = delete;

    void setDelegate(const TessaryViewDelegate *delegate) { m_delegate = delegate; }
    // The most bytes of images the stored record may hold.
    void setStoreBudgetBytes(qint64 bytes) { m_storeBudgetBytes = bytes; }

    void restoreImageCacheFromUserDefaults(const UserDefaults &defaults);
    // One entry of the stored record, before its picture is decoded.
    struct StoredEntry {
        QString path;
        QByteArray tiff;
        QDateTime date;
        std::optional<QPointF> subject;
    };
    // The entries of the stored record (the value under "image cache") that can come back: a
    // picture and a date, saved upright.
    static QList<StoredEntry> storedEntries(const QVariantMap &record);
    // The stored entry decoded (safe on any thread); its image is empty when the bytes are no
    // picture. A record saved without the subject has it found again here.
    static Entry entryFromStored(const StoredEntry &stored);
    // Writes every entry that can be encoded; the cache in memory stays usable afterwards.
    bool saveImageCacheToUserDefaults(UserDefaults &defaults);

    // The photo to show for the file: the cached copy, else a fresh reduced copy, else the file
    // at full size (uncached), else the empty image.
    UIImage getImageForPath(const QString &path);
    // Makes or remakes the entry; the empty image (and no entry) when the file cannot be read
    // or dated.
    UIImage addPathToCache(const QString &path);
    // Drops entries of unlisted photos and rebuilds entries of changed files.
    void updateCache();
    // Makes entries for the paths that have none, decoding in parallel (for a caller that knows
    // which photos it is about to show). Files that failed before and have not changed since
    // are not tried again here.
    void fillCache(const QStringList &paths);
    // How many photos are decoded ahead at most: twice the decoding threads.
    qsizetype readAheadCount() const;

    // --- For callers that must never wait (the window, through ImageCacheLoader)
    // The cached copy when there is one and its file has not changed since; never decodes and
    // never waits. An entry whose file is newer or gone is dropped, so the caller decodes it
    // anew (and learns why it cannot be read).
    std::optional<UIImage> cachedImageForPath(const QString &path);
    // Whether the file failed to decode before and has not changed since.
    bool hasFailedUnchanged(const QString &path) const { return failedUnchanged(path); }
    // Why the file could not be read at its last decoding, for a person
    // (UnreadablePhotos::reason); empty when it did not fail.
    QString failureReason(const QString &path) const;
    // One photo's entry made off the calling thread (safe on any thread): dated, then decoded.
    static Entry makeEntry(const QString &path) { return decode(path).entry; }
    // Takes an entry made by makeEntry into the cache (or records the failure).
    void insertEntry(const QString &path, const Entry &entry) { take({path, entry}); }
    // Drops the entries of photos that are no longer listed, without touching the others.
    void removeUnlistedEntries();

    static UIImage compressedImageForPath(const QString &path);
    // Invalid when the file's attributes cannot be read.
    static QDateTime modificationDateForPath(const QString &path);
    QDateTime cacheDateForPath(const QString &path) const;
    // The subject of the cached copy of the photo, when it is cached.
    std::optional<QPointF> subjectForPath(const QString &path) const;

    const QHash<QString, Entry> &imageCacheDictionary() const { return m_imageCacheDictionary; }
    bool contains(const QString &path) const { return m_imageCacheDictionary.contains(path); }
    qsizetype count() const { return m_imageCacheDictionary.size(); }
    // Photos being decoded ahead, not in the cache yet.
    qsizetype pendingCount() const { return m_inFlight.size(); }
    void clear();

private:
    struct Decoded {
        QString path;
        Entry entry;
    };
    static Decoded decode(const QString &path);

    // updateCache, answering the listed paths.
    QStringList refresh();
    // Starts decoding the path on the pool unless it is cached or on its way.
    void startDecoding(const QString &path);
    // Waits for the path's decoding, when it is on its way.
    void finishDecoding(const QString &path);
    // Takes every finished decoding into the cache.
    void harvest();
    void waitForAll();
    void take(const Decoded &decoded);
    bool failedUnchanged(const QString &path) const;
    void storeEntry(const QString &path, const Entry &entry);

    const TessaryViewDelegate *m_delegate;
    QThreadPool *m_pool;
    qint64 m_storeBudgetBytes = kStoreBudgetBytes;
    QHash<QString, Entry> m_imageCacheDictionary;
    // Files whose reduced copy could not be made: their date at the time, and why.
    struct Failure {
        QDateTime date;
        QString error;
    };
    QHash<QString, Failure> m_failed;
    // Decodings under way, in the order they were started.
    QList<std::pair<QString, QFuture<Decoded>>> m_inFlight;
};
