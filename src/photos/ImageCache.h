#pragma once

#include "foundation/UserDefaults.h"
#include "images/UIImage.h"

#include <QDateTime>
#include <QPointF>
#include <QFuture>
#include <QList>
#include <QHash>
#include <QSet>
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
// longer listed are dropped) and with the files (entries whose file is newer are rebuilt).
//
// Each entry keeps its copy twice over: as compressed TIFF bytes (made once, off the calling
// thread, when the photo is decoded) and, while the photo is shown or was shown lately, as
// decoded pixels. Decoded copies beyond a budget are let go, least recently used first, except
// the photos the collage shows (setShownPaths): those never leave, so its tiles never wait. A
// copy let go is decoded again from its bytes when it is next needed.
//
// It is kept in the user defaults under "image cache", one row per photo (see UserDefaults:
// every reader still sees the dictionary of entries with "image" TIFF bytes and "date").
// Restoring reads only the names; an entry's row is read when its photo is first needed.
// Saving writes only what changed since the last restore or save, in one transaction.
//
// Photos are decoded ahead on a thread pool: while a layout takes photo i, the next few listed
// photos are already being decoded, so a cold cache of many large photos fills in a fraction
// of the time one-by-one decoding takes. Decoded photos join the cache on the calling thread,
// at the next lookup.
class ImageCache
{
public:
    static constexpr double kMegaPixels = 0.5;
    // The most bytes of photos the stored record keeps: some 10,000 compressed copies of about
    // 50 KB. Entries beyond it are left out (the listed photos go first, in list order) and
    // rebuilt when next needed.
    static constexpr qint64 kStoreBudgetBytes = 512LL * 1024 * 1024;
    // The most bytes of decoded copies kept beside the photos the collage shows: some 60 photos,
    // enough for a screenful of the browser and the way back.
    static constexpr qint64 kDecodedBudgetBytes = 128LL * 1024 * 1024;

    struct Entry {
        UIImage image;  // the decoded copy; empty while it is let go (the bytes remain)
        QDateTime date; // the file's modification date when the entry was made
        QString error;  // why there is no image, in the decoder's words (empty when there is one)
        // Where the photo's subject is (SmartCrop), found on the reduced copy when it was made.
        std::optional<QPointF> subject;
        QByteArray tiff; // the copy as compressed TIFF bytes
        // Made from the file (or recompressed) since the store was read: it is to be saved.
        bool fresh = false;
        // Made again because the file was newer than the stored copy.
        bool rebuilt = false;
        quint64 lastUse = 0;
    };
    // Where an entry comes from when it is made off the calling thread: the bytes kept in
    // memory, the row in the store, or the photo file.
    struct Source {
        QString path;
        QByteArray tiff;    // the bytes kept in memory, when there are any
        QDateTime date;     // their date
        QString storePath;  // the store to read the entry's row from, when it is only there
        std::optional<QPointF> subject; // the kept bytes' subject
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
    // The most bytes of decoded copies kept beside the shown photos.
    void setDecodedBudgetBytes(qint64 bytes);
    // The photos the collage shows: their decoded copies are never let go.
    void setShownPaths(const QStringList &paths);
    qint64 decodedBytes() const { return m_decodedBytes; }

    // Learns which entries the store holds (a store of an earlier version, with the record in
    // one value, is split into rows first); their rows are read when they are needed.
    void restoreImageCacheFromUserDefaults(UserDefaults &defaults);
    // The stored entry (the value of one row) as an entry, when it can come back: a picture
    // and a date, saved upright. Safe on any thread.
    static std::optional<Entry> entryFromStored(const QVariant &stored);
    // Writes the entries made or remade since the store was read and removes those dropped,
    // in one transaction; the cache in memory stays usable afterwards.
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
    // The decoded copy when there is one and its file has not changed since; never decodes and
    // never waits. An entry whose file is newer or gone is dropped, so the caller decodes it
    // anew (and learns why it cannot be read).
    std::optional<UIImage> cachedImageForPath(const QString &path);
    // Whether the file failed to decode before and has not changed since.
    bool hasFailedUnchanged(const QString &path) const { return failedUnchanged(path); }
    // Why the file could not be read at its last decoding, for a person
    // (UnreadablePhotos::reason); empty when it did not fail.
    QString failureReason(const QString &path) const;
    // Where the path's entry is to be made from off the calling thread.
    Source sourceFor(const QString &path) const;
    // One photo's entry made from its source (safe on any thread): from the kept bytes or the
    // stored row when they are still good, else from the file (dated, then decoded).
    static Entry makeEntry(const Source &source);
    static Entry makeEntry(const QString &path) { return makeEntry(Source{path, {}, {}, {}, {}}); }
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
    // Whether the path has an entry, in memory or in the store.
    bool contains(const QString &path) const { return m_imageCacheDictionary.contains(path) || m_stored.contains(path); }
    // Whether the path's copy is decoded in memory.
    bool isDecoded(const QString &path) const;
    qsizetype count() const { return m_imageCacheDictionary.size() + m_stored.size(); }
    // Photos being decoded ahead, not in the cache yet.
    qsizetype pendingCount() const { return m_inFlight.size(); }
    void clear();

private:
    struct Decoded {
        QString path;
        Entry entry;
    };
    static Decoded decode(const Source &source);

    // updateCache, answering the listed paths.
    QStringList refresh();
    // Starts decoding the path on the pool unless it is decoded or on its way.
    void startDecoding(const QString &path);
    // Waits for the path's decoding, when it is on its way.
    void finishDecoding(const QString &path);
    // Takes every finished decoding into the cache.
    void harvest();
    void waitForAll();
    void take(const Decoded &decoded);
    bool failedUnchanged(const QString &path) const;
    void storeEntry(const QString &path, const Entry &entry);
    void removeEntry(const QString &path);
    // The decoded copy handed out, marked as used now.
    UIImage use(Entry &entry);
    // Lets decoded copies go, least recently used first, until the budget holds; `keep` (the
    // copy just made) stays.
    void trim(const QString &keep = QString());

    const TessaryViewDelegate *m_delegate;
    QThreadPool *m_pool;
    qint64 m_storeBudgetBytes = kStoreBudgetBytes;
    qint64 m_decodedBudgetBytes = kDecodedBudgetBytes;
    qint64 m_decodedBytes = 0;
    quint64 m_clock = 0;
    QSet<QString> m_shown;
    QHash<QString, Entry> m_imageCacheDictionary;
    // The store the entries were restored from, and its entries not read yet, with the bytes
    // each row takes.
    QString m_storePath;
    QHash<QString, qint64> m_stored;
    // The entries the store holds as of the last restore or save.
    QSet<QString> m_inStore;
    // Files whose reduced copy could not be made: their date at the time, and why.
    struct Failure {
        QDateTime date;
        QString error;
    };
    QHash<QString, Failure> m_failed;
    // Decodings under way, in the order they were started.
    QList<std::pair<QString, QFuture<Decoded>>> m_inFlight;
};
