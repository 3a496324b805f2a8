#pragma once

#include "photos/PhotoListChange.h"

#include <QAbstractListModel>
#include <QCache>
#include <QHash>
#include <QPixmap>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

class ImageBrowserController;
class ImageCacheLoader;

// The photo list as rows for the browser's grid: row i is photo i, with its number, its file
// name and its thumbnail. The rows follow the photo list change by change, as it tells them
// (insert, remove, move, changed rows; a reset when it was read again from the store).
//
// Thumbnails come from the image cache's copies when it holds them decoded, asked for only when
// a row is painted; otherwise the file itself is decoded at thumbnail size (a JPEG at its
// smallest reduced scale, on the loader's threads) once the row has stayed on screen for a moment
// (so a fast scroll through a long list does not queue every photo it passed), and the row is
// updated when it arrives; rows scrolled out of view meanwhile are dropped. A file that cannot
// be decoded so is handed to the cache's loader, which tells why. Copies are scaled down to
// thumbnail size on a worker thread, never on this one.
class ImageBrowserModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role {
        PathRole = Qt::UserRole + 1,
        // ThumbnailState: whether the thumbnail is there, on its way, or cannot be made.
        ThumbnailStateRole,
        // The title under the thumbnail (the photo list's title for the photo).
        TitleRole,
        // Whether the photo is framed by hand in its tile (the thumbnail carries a mark).
        FramedRole,
    };
    enum ThumbnailState { ThumbnailLoading, ThumbnailReady, ThumbnailFailed };
    // Thumbnails are made this large (the longer side) and drawn smaller at lower zoom.
    static constexpr int kThumbnailSide = 256;

    ImageBrowserModel(ImageBrowserController &controller, ImageCacheLoader &loader, QObject *parent = nullptr);
    ~ImageBrowserModel() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // The thumbnail of the row, or a null pixmap while it is on its way; asks for it.
    QPixmap thumbnail(int row) const;
    QString pathAtRow(int row) const { return m_paths.value(row); }
    // While the rows follow a change of the list (the view's selection moves with them).
    bool isFollowing() const { return m_following; }
    // Thumbnails being scaled (for tests and benchmarks).
    int pendingThumbnails() const { return int(m_scaling.size()); }
    // Tells which rows are on screen when the decodings are asked for; without it, all are.
    void setRowVisibility(std::function<bool(int row)> isVisible) { m_isRowVisible = std::move(isVisible); }
    // How long a row must stay on screen before its photo is decoded.
    static constexpr int kRequestDelayMilliseconds = 60;

signals:
    // A reset is about to drop and rebuild every row (the view keeps its scroll position).
    void aboutToReset();
    void didReset();

private:
    void follow(const PhotoListChange &change);
    void imageArrived(const QString &path);
    void imageFailed(const QString &path);
    void scale(const QString &path, const QImage &image) const;
    void thumbnailScaled(const QString &path, const QImage &thumbnail);
    void rowsOfPathChanged(const QString &path);
    // The photo's file changed on disk: its thumbnail is made again (or found unreadable).
    void photoChanged(const QString &path);
    void requestWanted();
    // Makes the thumbnail straight from the file, at the reduced-decode floor.
    void decodeThumbnail(const QString &path);
    // Drops the thumbnails being made from files for rows no longer on screen.
    void dropScrolledPast();

    ImageBrowserController &m_controller;
    ImageCacheLoader &m_loader;
    QStringList m_paths;
    bool m_following = false;
    // Thumbnails by path, at most about 128 MB of them; the least recently used go first and
    // are scaled again from the cache's copy when they are shown again.
    mutable QCache<QString, QPixmap> m_thumbnails;
    mutable QSet<QString> m_scaling;
    mutable QSet<QString> m_waiting; // asked of the loader, not arrived yet
    mutable QSet<int> m_wantedRows;  // painted without a thumbnail, to be asked for
    mutable QTimer m_requestTimer;
    QSet<QString> m_failed;
    std::function<bool(int row)> m_isRowVisible;
    // Thumbnails made from files (on the loader's pool, one thread per core), each with the
    // flag that drops it.
    QHash<QString, std::shared_ptr<std::atomic_bool>> m_fromFile;
};
