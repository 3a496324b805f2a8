#include "app/photos/ImageBrowserModel.h"

#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"

#include <QFileInfo>
#include <QFuture>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace {

constexpr int kThumbnailBudgetKilobytes = 128 * 1024;

QImage scaledThumbnail(const QImage &image)
{
    const int side = ImageBrowserModel::kThumbnailSide;
    if (image.width() <= side && image.height() <= side)
        return image;
    return image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace

ImageBrowserModel::ImageBrowserModel(ImageBrowserController &controller, ImageCacheLoader &loader, QObject *parent)
    : QAbstractListModel(parent)
    , m_controller(controller)
    , m_loader(loader)
    , m_paths(controller.images())
    , m_thumbnails(kThumbnailBudgetKilobytes)
{
    m_requestTimer.setSingleShot(true);
    m_requestTimer.setInterval(kRequestDelayMilliseconds);
    connect(&m_requestTimer, &QTimer::timeout, this, &ImageBrowserModel::requestWanted);
    connect(&m_loader, &ImageCacheLoader::imageReady, this, &ImageBrowserModel::imageArrived);
    connect(&m_loader, &ImageCacheLoader::imageFailed, this, &ImageBrowserModel::imageFailed);
    connect(&m_controller, &ImageBrowserController::photoChanged, this, &ImageBrowserModel::photoChanged);
    connect(&m_controller.imageBookmarks(), &ImageBookmarks::listChanged, this, &ImageBrowserModel::follow);
}

ImageBrowserModel::~ImageBrowserModel()
{
    // Thumbnails still queued return at once: nobody waits for them.
    for (const auto &dropped : std::as_const(m_fromFile))
        *dropped = true;
}

void ImageBrowserModel::photoChanged(const QString &path)
{
    if (const auto dropped = m_fromFile.take(path)) {
        *dropped = true; // made from the file as it was
        m_scaling.remove(path);
    }
    m_thumbnails.remove(path);
    m_failed.remove(path);
    m_waiting.remove(path);
    rowsOfPathChanged(path);
}

int ImageBrowserModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_paths.size());
}

Qt::ItemFlags ImageBrowserModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
}

QVariant ImageBrowserModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    if (!index.isValid() || row < 0 || row >= m_paths.size())
        return {};
    const QString &path = m_paths[row];
    switch (role) {
    case Qt::DisplayRole:
        return QString::number(row + 1);
    case Qt::ToolTipRole: {
        // The name, and for a photo that cannot be read, why.
        const QString name = path.isEmpty() ? QString::number(row + 1) : QFileInfo(path).fileName();
        const QString reason = m_failed.contains(path) ? m_loader.cache().failureReason(path) : QString();
        return reason.isEmpty() ? name : QStringLiteral("%1\n%2").arg(name, reason);
    }
    case TitleRole:
        return path.isEmpty() ? QString::number(row + 1) : m_controller.imageBookmarks().titleForPath(path);
    case PathRole:
        return path;
    case FramedRole:
        return !m_controller.framingAtIndex(row).isNull();
    case Qt::DecorationRole:
        return thumbnail(row);
    case ThumbnailStateRole:
        if (m_failed.contains(path))
            return ThumbnailFailed;
        return m_thumbnails.contains(path) ? ThumbnailReady : ThumbnailLoading;
    default:
        return {};
    }
}

QPixmap ImageBrowserModel::thumbnail(int row) const
{
    const QString path = m_paths.value(row);
    if (path.isEmpty() || m_failed.contains(path))
        return {};
    if (const QPixmap *pixmap = m_thumbnails.object(path))
        return *pixmap;
    if (m_scaling.contains(path) || m_waiting.contains(path))
        return {};
    // What the cache holds is scaled at once; a decoding waits until the row stayed in view.
    if (const std::optional<UIImage> image = m_loader.cache().cachedImageForPath(path)) {
        scale(path, image->bestRepresentation());
    } else {
        // Each row that comes into view starts the wait again: a scroll in progress asks for
        // nothing, repainting the same rows does not hold the request back.
        if (!m_wantedRows.contains(row)) {
            m_wantedRows.insert(row);
            m_requestTimer.start();
        }
    }
    return {};
}

void ImageBrowserModel::dropScrolledPast()
{
    if (!m_isRowVisible)
        return;
    for (auto it = m_fromFile.begin(); it != m_fromFile.end();) {
        bool shown = false;
        for (int row = 0; row < m_paths.size() && !shown; ++row)
            shown = m_paths[row] == it.key() && m_isRowVisible(row);
        if (shown) {
            ++it;
            continue;
        }
        *it.value() = true;
        m_scaling.remove(it.key());
        it = m_fromFile.erase(it);
    }
}

void ImageBrowserModel::decodeThumbnail(const QString &path)
{
    m_scaling.insert(path);
    auto dropped = std::make_shared<std::atomic_bool>(false);
    m_fromFile.insert(path, dropped);
    // The result comes back on this thread, and not at all once the model is gone.
    QtConcurrent::run(m_loader.pool(), [path, dropped] {
        return *dropped ? QImage() : UIImage::loadFileWithin(path, kThumbnailSide).image.bestRepresentation();
    }).then(this, [this, path, dropped](const QImage &thumbnail) {
        if (*dropped)
            return;
        m_fromFile.remove(path);
        if (!thumbnail.isNull()) {
            thumbnailScaled(path, thumbnail);
            return;
        }
        // The cache's loader decodes it the usual way and tells why it cannot be read.
        m_scaling.remove(path);
        if (const std::optional<UIImage> image = m_loader.imageForPath(path))
            scale(path, image->bestRepresentation());
        else
            m_waiting.insert(path);
    });
}

void ImageBrowserModel::requestWanted()
{
    dropScrolledPast();
    const QSet<int> rows = std::exchange(m_wantedRows, {});
    for (int row : rows) {
        const QString path = m_paths.value(row);
        if (path.isEmpty() || m_waiting.contains(path) || m_scaling.contains(path) || m_thumbnails.contains(path) ||
            m_failed.contains(path) || (m_isRowVisible && !m_isRowVisible(row)))
            continue;
        if (m_loader.cache().hasFailedUnchanged(path)) {
            imageFailed(path);
        } else if (const std::optional<UIImage> image = m_loader.cache().cachedImageForPath(path)) {
            scale(path, image->bestRepresentation());
        } else if (m_loader.isLoading(path)) {
            m_waiting.insert(path); // the loader is decoding it: imageArrived follows
        } else {
            decodeThumbnail(path);
        }
    }
}

void ImageBrowserModel::scale(const QString &path, const QImage &image) const
{
    m_scaling.insert(path);
    auto *self = const_cast<ImageBrowserModel *>(this);
    QtConcurrent::run(&scaledThumbnail, image).then(self, [self, path](const QImage &thumbnail) {
        self->thumbnailScaled(path, thumbnail);
    });
}

void ImageBrowserModel::thumbnailScaled(const QString &path, const QImage &thumbnail)
{
    m_scaling.remove(path);
    if (thumbnail.isNull()) {
        m_failed.insert(path);
    } else {
        auto *pixmap = new QPixmap(QPixmap::fromImage(thumbnail));
        const qint64 kilobytes = std::max<qint64>(1, qint64(pixmap->width()) * pixmap->height() * 4 / 1024);
        m_thumbnails.insert(path, pixmap, kilobytes);
    }
    rowsOfPathChanged(path);
}

void ImageBrowserModel::imageArrived(const QString &path)
{
    // Also a rebuilt copy of a changed file: its old thumbnail goes.
    const bool wanted = m_waiting.remove(path) || m_thumbnails.remove(path);
    m_failed.remove(path);
    if (wanted && m_paths.contains(path))
        rowsOfPathChanged(path); // painted again, the row asks for its thumbnail
}

void ImageBrowserModel::imageFailed(const QString &path)
{
    m_waiting.remove(path);
    m_thumbnails.remove(path);
    m_failed.insert(path);
    rowsOfPathChanged(path);
}

void ImageBrowserModel::rowsOfPathChanged(const QString &path)
{
    for (int row = 0; row < m_paths.size(); ++row) {
        if (m_paths[row] == path)
            emit dataChanged(index(row), index(row), {Qt::DecorationRole, ThumbnailStateRole});
    }
}

void ImageBrowserModel::follow(const PhotoListChange &change)
{
    const QStringList &next = m_controller.images();
    const int first = int(change.first);
    const int last = int(change.last);
    m_following = true;
    PhotoListChange::Kind kind = change.kind;
    // A move the rows cannot make (onto its own place, out of range) is followed as a reset.
    if (kind == PhotoListChange::Move && !beginMoveRows({}, first, first, {}, last))
        kind = PhotoListChange::Reset;
    switch (kind) {
    case PhotoListChange::Insert:
        beginInsertRows({}, first, last);
        m_paths = next;
        endInsertRows();
        break;
    case PhotoListChange::Remove:
        beginRemoveRows({}, first, last);
        m_paths = next;
        endRemoveRows();
        break;
    case PhotoListChange::Move:
        m_paths = next;
        endMoveRows();
        break;
    case PhotoListChange::Update:
        m_paths = next;
        emit dataChanged(index(first), index(last));
        m_following = false;
        return;
    case PhotoListChange::Reset:
        emit aboutToReset();
        beginResetModel();
        m_paths = next;
        endResetModel();
        m_following = false;
        emit didReset();
        return;
    }
    m_following = false;
    // The rows after the change show new numbers.
    const int from = std::min(first, last);
    if (from < m_paths.size())
        emit dataChanged(index(from), index(int(m_paths.size()) - 1), {Qt::DisplayRole});
}
