#pragma once

#include "images/UIImage.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>

class QThreadPool;
class TessaryViewDelegate;
class UserDefaults;

// Reduced copies of the input photos (at most half a megapixel each), so laying out and drawing
// the collage does not decode full-size photos again and again. Entries are keyed by the full
// path and remember the file's modification date when they were made.
//
// Before every lookup the cache is brought in line with the photo list (entries of photos no
// longer listed are dropped) and with the files (entries whose file is newer are rebuilt). It
// is kept in the user defaults under "image cache", each image as TIFF bytes: saved when the
// application ends, restored when the collage view is made.
//
// Photos missing from the cache are decoded several at a time on a thread pool, so a cold
// cache of many large photos fills in a fraction of the time one-by-one decoding takes.
class ImageCache
{
public:
    static constexpr double kMegaPixels = 0.5;
    // The stored record is kept below what the defaults store reads back as one value (64 MB),
    // with room to spare: about 29 photos of half a megapixel. Entries beyond it are left out
    // (the listed photos go first, in list order) and rebuilt when next needed.
    static constexpr qint64 kStoreBudgetBytes = 56LL * 1024 * 1024;

    struct Entry {
        UIImage image;
        QDateTime date; // the file's modification date when the entry was made
    };

    // The delegate supplies the listed photo paths (pickedPhotos); without one, updateCache
    // leaves the cache alone. The pool decodes photos in parallel; null: the global pool.
    explicit ImageCache(const TessaryViewDelegate *delegate = nullptr, QThreadPool *pool = nullptr);

    void setDelegate(const TessaryViewDelegate *delegate) { m_delegate = delegate; }
    // The most bytes of images the stored record may hold.
    void setStoreBudgetBytes(qint64 bytes) { m_storeBudgetBytes = bytes; }

    void restoreImageCacheFromUserDefaults(const UserDefaults &defaults);
    // Writes every entry that can be encoded; the cache in memory stays usable afterwards.
    bool saveImageCacheToUserDefaults(UserDefaults &defaults) const;

    // The photo to show for the file: the cached copy, else a fresh reduced copy, else the file
    // at full size (uncached), else the empty image.
    UIImage getImageForPath(const QString &path);
    // Makes or remakes the entry; the empty image (and no entry) when the file cannot be read
    // or dated.
    UIImage addPathToCache(const QString &path);
    // Drops entries of unlisted photos, rebuilds entries of changed files, and decodes the
    // listed photos not cached yet.
    void updateCache();
    // Makes entries for the paths that have none, decoding in parallel. Files that failed
    // before and have not changed since are not tried again here.
    void fillCache(const QStringList &paths);

    static UIImage compressedImageForPath(const QString &path);
    // Invalid when the file's attributes cannot be read.
    static QDateTime modificationDateForPath(const QString &path);
    QDateTime cacheDateForPath(const QString &path) const;

    const QHash<QString, Entry> &imageCacheDictionary() const { return m_imageCacheDictionary; }
    bool contains(const QString &path) const { return m_imageCacheDictionary.contains(path); }
    qsizetype count() const { return m_imageCacheDictionary.size(); }
    void clear() { m_imageCacheDictionary.clear(); m_failed.clear(); }

private:
    void storeEntry(const QString &path, const Entry &entry);

    const TessaryViewDelegate *m_delegate;
    QThreadPool *m_pool;
    qint64 m_storeBudgetBytes = kStoreBudgetBytes;
    QHash<QString, Entry> m_imageCacheDictionary;
    // Files whose reduced copy could not be made, with their date at the time.
    QHash<QString, QDateTime> m_failed;
};
