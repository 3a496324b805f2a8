#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include "images/PhotoFraming.h"
#include "photos/PhotoListChange.h"

#include <functional>
#include <memory>

class AlertPresenter;
class FileWatcher;
class UserDefaults;

// The persistent, ordered list of the collage's input photos: entry i is the photo of module i.
//
// Four parallel arrays describe the entries and always change together: what is stored to find
// the file again (the datum), its URL, its path and its alignment. A user file's datum is its
// absolute path as bytes; a factory photo's datum is its resource name as text, so the two kinds
// stay apart in the stored array. Every change is written at once under "Bookmarks" and
// "Aligments" (and each photo's hand framing under "Framings"), as one transaction that re-reads the stored list and applies the change to it,
// so that another process's changes made meanwhile are kept; the list here then follows what
// was stored. A change that could not be written is undone here and reported through the
// AlertPresenter. Every listed file is watched; when another program deletes, renames or modifies
// it, the user is told and the entries of that path are removed one second after the alert is
// dismissed.
class ImageBookmarks : public QObject
{
    Q_OBJECT
public:
    // How a photo is fitted into its module; the same numbers are the resize methods of the
    // image fitting code.
    enum Alignment {
        ResizeCrop = 0,      // fill, crop both sides equally
        ResizeCropStart = 1, // fill, keep the left or upper end
        ResizeCropEnd = 2,   // fill, keep the right or lower end
        ResizeScale = 3,     // show the whole photo
        ResizeSmart = 4,     // fill, centred on the photo's subject
    };
    static constexpr int kAlignmentCount = 5;
    // An alignment as stored or given: one this version does not know reads as ResizeCrop.
    static int validAlignment(qint64 alignment);
    static constexpr int kFactoryImageCount = 49;

    // URLs are shared objects so that a caller holding one can find its entry again by
    // identity, even when the same file is listed twice.
    using UrlRef = std::shared_ptr<const QUrl>;
    // Receives the indexes of the entries to remove after a watched file changed.
    using RemovalHandler = std::function<void(const QList<qsizetype> &indexes)>;

    // Loads the stored list at once (and the factory photos on the very first run).
    ImageBookmarks(UserDefaults &defaults, const QString &resourcesFolder, AlertPresenter &alerts,
                   QObject *parent = nullptr);
    ~ImageBookmarks() override;

    // Who removes entries whose file changed (the image browser controller). Without one, the
    // entries are removed here, highest index first.
    void setRemovalHandler(RemovalHandler handler) { m_removalHandler = std::move(handler); }

    // Holds back saving while it lives: edits made meanwhile are written once, when the
    // outermost batch ends. Loading, and editing many entries at once, go through one.
    class Batch
    {
    public:
        explicit Batch(ImageBookmarks &list) : m_list(list) { ++m_list.m_batchDepth; }
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;

    private:
        ImageBookmarks &m_list;
    };

    // --- Persistence
    void loadBookmarks();
    bool loadSecurityBookmarks();
    // Writes the changes made since the last write; on failure they are undone and reported.
    void saveSecurityBookmarks();
    // Whether the last write of the list committed (true before any write).
    bool lastSaveSucceeded() const { return m_lastSaveSucceeded; }
    // The datum stored for a user file: its absolute path as bytes; empty when there is none.
    static QByteArray createSecurityBookmarkForURL(const QUrl &url);
    void resolveAndInsertBookmark(const QByteArray &bookmark, int alignment);
    void loadFactoryImage(const QString &name);
    void loadFactoryImages();
    // Paths of the factory photos "images-0" .. "images-48" that exist, in order.
    QStringList builtInImages() const;
    // The file of a factory resource name ("blank" is a PNG, the others JPEGs).
    QString factoryImagePath(const QString &name) const;
    // The title a person sees for a listed photo: its file name; a factory photo, whose file
    // names say nothing and look alike when cut short, is "Sample N" (N from 1, its place in
    // the factory set) and the blank image "Blank".
    QString titleForPath(const QString &path) const;

    // --- Reading
    qsizetype count() const { return m_images.size(); }
    const QStringList &images() const { return m_images; }
    const QVariantList &datums() const { return m_datums; }
    const QList<int> &imageAlignments() const { return m_imageAlignments; }
    UrlRef urlAtIndex(qsizetype index) const;
    QString pathAtIndex(qsizetype index) const;
    // The index of that very URL object, or -1.
    qsizetype indexOfURL(const UrlRef &url) const;
    int alignmentIndexAtIndex(qsizetype index) const;
    const QList<PhotoFraming> &framings() const { return m_framings; }
    // The photo's hand framing; none when the index is out of range or it has none.
    PhotoFraming framingAtIndex(qsizetype index) const;
    // All indexes whose path equals the path, ascending.
    QList<qsizetype> bookmarksWithPath(const QString &path) const;

    // --- Editing; the indexes must be valid (insert: 0 .. count).
    void addBookmarkForPath(const QString &path, int alignment);
    void insertBookmarkForPath(const QString &path, int alignment, qsizetype index);
    void replaceBookmarkForPath(const QString &path, int alignment, qsizetype index);
    // datum: bytes or a resource name; an invalid QVariant stores the file name without its
    // extension. A null or empty URL is ignored.
    void insertURL(const UrlRef &url, const QVariant &datum, int alignment, qsizetype index);
    void replaceURL(const UrlRef &url, const QVariant &datum, int alignment, qsizetype index);
    void removeBookmarkAtIndex(qsizetype index);
    // Removes every entry of the path, without saving or ending its watch.
    void removeBookmarksWithPath(const QString &path);
    // to is the target index before the removal, as a list view reports a drop.
    void moveBookmarkAtIndex(qsizetype from, qsizetype to);
    void exchangeBookmarkAtIndex(qsizetype index, qsizetype withIndex);
    // Out-of-range indexes change nothing. Choosing an alignment ends the photo's hand framing.
    void setAligment(int alignment, qsizetype index);
    // Frames the photo by hand (a null framing ends it); out-of-range indexes change nothing.
    void setFraming(const PhotoFraming &framing, qsizetype index);
    // Every alignment to ResizeCrop / ResizeScale / ResizeSmart, ending every hand framing; an
    // empty list is left alone (not saved).
    void setAligmentCenterAll();
    void setAligmentFitAll();
    void setAligmentSmartAll();

    // --- Watching
    void stopAccessingSecurityScopedResources() {} // no sandbox here: nothing to give back
    bool startDispatchSource(const QString &path);
    void cancelDispatchSource(const QString &path);
    void cancelDispatchSources();
    bool isWatching(const QString &path) const;
    FileWatcher &fileWatcher() const { return *m_watcher; }

    // Moves the file to a fresh UUID name with the same extension in the same folder; returns
    // the new URL, or an empty one when the name has no extension or the move failed.
    static QUrl renameURLWithUUID(const QUrl &url);

    // The alert text for a changed file.
    static QString changeMessage(const QString &path, const QString &word);

signals:
    // The list was written to the store after a change.
    void changed();
    // The entries shown changed (at once, before the change is written).
    void listChanged(const PhotoListChange &change);

private:
    // One entry of the list, as the four arrays hold it.
    struct Entry {
        QVariant datum;
        UrlRef url;
        QString path;
        int alignment = ResizeCrop;
        PhotoFraming framing;
    };
    using Entries = QList<Entry>;
    // A change of the list that finds its entries by their URL objects, so that it applies as
    // well to the list read back from the store as to the list here.
    using Edit = std::function<void(Entries &entries)>;

    void fileChanged(const QString &path, unsigned changes);
    void setAllAlignments(int alignment);
    static QString nameWithoutExtension(const QUrl &url);
    // Applies the edit here at once, tells what it changed in the rows shown, and queues it for
    // the next write (made now unless a batch holds it back, or save is false).
    void edit(const Edit &change, const QList<PhotoListChange> &shown, bool save = true);
    Entries currentEntries() const;
    // Makes the entries the list, starting and ending watches for the paths that came and went;
    // false when they are what the list holds already.
    bool adopt(const Entries &entries);
    // Adopts a list that may differ from the one shown in any way (read from the store).
    void adoptStored(const Entries &entries);
    // The entries of a stored list. Resolving (loading) drops what cannot be found and brings
    // factory photos back centred; otherwise every entry is kept as stored. An entry that was
    // in the list at the last write keeps its URL object.
    Entries entriesFromStored(const QVariant &bookmarks, const QVariant &alignments, const QVariant &framings,
                              bool resolving) const;
    Entries factoryEntries() const;
    static void storeEntries(const Entries &entries, QVariantMap &values);
    static qsizetype indexIn(const Entries &entries, const UrlRef &url);

    UserDefaults &m_defaults;
    QString m_resourcesFolder;
    AlertPresenter &m_alerts;
    FileWatcher *m_watcher;
    RemovalHandler m_removalHandler;
    int m_batchDepth = 0;
    bool m_unsaved = false;
    bool m_lastSaveSucceeded = true;
    // The list as last read from or written to the store, and the edits made since.
    Entries m_committed;
    QList<Edit> m_pendingEdits;

    QVariantList m_datums;
    QList<UrlRef> m_urls;
    QStringList m_images;
    QList<int> m_imageAlignments;
    QList<PhotoFraming> m_framings;
};
