#include "app/photos/ImageBrowserListView.h"

#include "app/photos/ImageBrowserDelegate.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/templates/TemplateTableView.h"
#include "widgets/DropIndicator.h"

#include <QCoreApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

namespace {

// The outer quarters of a photo are "between" (before it, or before the next one); the middle
// half is "on" it.
constexpr double kBetweenFraction = 0.25;

} // namespace

ImageBrowserListView::ImageBrowserListView(ImageBrowserController &controller, QWidget *parent)
    : QListView(parent)
    , m_controller(controller)
{
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setFlow(QListView::LeftToRight);
    setWrapping(true);
    setUniformItemSizes(true);
    setSpacing(6);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDropIndicatorShown(false); // drawn here, in the grid's own way
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new ImageBrowserDelegate(this));
}

int ImageBrowserListView::draggedRow(const QMimeData *data)
{
    if (!data || !data->hasFormat(kItemMimeType))
        return -1;
    const QList<QByteArray> parts = data->data(kItemMimeType).split(' ');
    bool ok = false;
    const int row = parts.size() == 2 ? parts[1].toInt(&ok) : -1;
    // Another Tessary's photo is a file from elsewhere.
    if (!ok || parts[0].toLongLong() != QCoreApplication::applicationPid())
        return -1;
    return row;
}

bool ImageBrowserListView::accepts(const QMimeData *data) const
{
    // A template row dragged from the template tables carries its templates file, not a photo.
    if (!data || data->hasFormat(TemplateTableView::kRowMimeType))
        return false;
    if (draggedRow(data) >= 0 || data->hasImage())
        return true;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            return true;
    }
    const QStringList formats = data->formats();
    return std::any_of(formats.begin(), formats.end(),
                       [](const QString &f) { return f.startsWith(QLatin1String("image/")); });
}

QItemSelectionModel::SelectionFlags ImageBrowserListView::selectionCommand(const QModelIndex &index,
                                                                           const QEvent *event) const
{
    // One photo stays selected: clicks on empty space and Ctrl-clicks do not clear it.
    const QItemSelectionModel::SelectionFlags command = QListView::selectionCommand(index, event);
    if (!index.isValid() || command.testFlag(QItemSelectionModel::Deselect) ||
        command.testFlag(QItemSelectionModel::Toggle))
        return QItemSelectionModel::NoUpdate;
    return command;
}

ImageBrowserListView::DropTarget ImageBrowserListView::dropTargetAt(const QPoint &position) const
{
    const int n = model() ? model()->rowCount() : 0;
    if (n == 0)
        return {0, ImageBrowserController::DropBefore};
    const QModelIndex under = indexAt(position);
    if (under.isValid()) {
        const QRect r = visualRect(under);
        const double x = double(position.x() - r.left()) / std::max(1, r.width());
        if (x < kBetweenFraction)
            return {under.row(), ImageBrowserController::DropBefore};
        if (x > 1.0 - kBetweenFraction)
            return {under.row() + 1, ImageBrowserController::DropBefore};
        return {under.row(), ImageBrowserController::DropOn};
    }
    // In a gap: before the first photo of that line to the right of the point, or after the
    // last photo of the line; below every line, after the last photo.
    const int reach = spacing() + 1;
    int lastInLine = -1;
    for (int row = 0; row < n; ++row) {
        const QRect r = visualRect(model()->index(row, 0));
        if (position.y() < r.top() - reach || position.y() > r.bottom() + reach) {
            if (lastInLine >= 0)
                break; // past the line
            continue;
        }
        if (position.x() < r.center().x())
            return {row, ImageBrowserController::DropBefore};
        lastInLine = row;
    }
    if (lastInLine >= 0)
        return {lastInLine + 1, ImageBrowserController::DropBefore};
    const QRect first = visualRect(model()->index(0, 0));
    return {position.y() < first.top() ? 0 : n, ImageBrowserController::DropBefore};
}

bool ImageBrowserListView::changesNothing(int draggedRow, const DropTarget &target)
{
    if (target.operation == ImageBrowserController::DropOn)
        return target.row == draggedRow;
    return target.row == draggedRow || target.row == draggedRow + 1;
}

QMimeData *ImageBrowserListView::dragData(int row) const
{
    auto *data = new QMimeData;
    data->setData(kItemMimeType,
                  QByteArray::number(QCoreApplication::applicationPid()) + ' ' + QByteArray::number(row));
    // Dragged out of the window, the photo is its file.
    const QString path = model() ? model()->index(row, 0).data(ImageBrowserModel::PathRole).toString() : QString();
    if (!path.isEmpty())
        data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

void ImageBrowserListView::startDrag(Qt::DropActions)
{
    const QModelIndexList selected = selectedIndexes();
    if (selected.isEmpty())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(dragData(selected.first().row()));
    const QPixmap thumbnail = qvariant_cast<QPixmap>(selected.first().data(Qt::DecorationRole));
    if (!thumbnail.isNull()) {
        const QPixmap small = thumbnail.scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        drag->setPixmap(small);
        drag->setHotSpot(QPoint(small.width() / 2, small.height() / 2));
    }
    // Copy for other programs, so a file manager never moves the photo's file away.
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

void ImageBrowserListView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!accepts(event->mimeData())) {
        event->ignore();
        return;
    }
    event->setDropAction(draggedRow(event->mimeData()) >= 0 ? Qt::MoveAction : Qt::CopyAction);
    event->accept();
}

void ImageBrowserListView::dragMoveEvent(QDragMoveEvent *event)
{
    if (!accepts(event->mimeData())) {
        event->ignore();
        showDropTarget(std::nullopt);
        return;
    }
    const QPoint position = event->position().toPoint();
    const DropTarget target = dropTargetAt(position);
    const int dragged = draggedRow(event->mimeData());
    event->setDropAction(dragged >= 0 ? Qt::MoveAction : Qt::CopyAction);
    event->accept();
    showDropTarget(dragged >= 0 && changesNothing(dragged, target) ? std::nullopt : std::optional(target));
    const QRect inner = viewport()->rect().adjusted(autoScrollMargin(), autoScrollMargin(), -autoScrollMargin(),
                                                    -autoScrollMargin());
    if (hasAutoScroll() && !inner.contains(position))
        startAutoScroll();
}

void ImageBrowserListView::dragLeaveEvent(QDragLeaveEvent *event)
{
    stopAutoScroll();
    showDropTarget(std::nullopt);
    event->accept();
}

void ImageBrowserListView::dropEvent(QDropEvent *event)
{
    stopAutoScroll();
    showDropTarget(std::nullopt);
    const QMimeData *data = event->mimeData();
    if (!accepts(data)) {
        event->ignore();
        return;
    }
    const DropTarget target = dropTargetAt(event->position().toPoint());
    const int dragged = draggedRow(data);
    if (dragged >= 0) {
        event->setDropAction(Qt::MoveAction);
        event->accept();
        if (!changesNothing(dragged, target))
            m_controller.moveItemsAtIndexes({dragged}, target.row, target.operation);
        return;
    }
    if (m_controller.performDragOperation(*data, target.row, target.operation)) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void ImageBrowserListView::showDropTarget(std::optional<DropTarget> target)
{
    if (target == m_dropTarget)
        return;
    m_dropTarget = target;
    viewport()->update();
}

QRect ImageBrowserListView::dropIndicatorRect(const DropTarget &target) const
{
    const int n = model() ? model()->rowCount() : 0;
    if (n == 0)
        return {};
    if (target.operation == ImageBrowserController::DropOn)
        return visualRect(model()->index(std::min(target.row, n - 1), 0));
    // A line in the gap before the photo, or after the last one.
    const bool after = target.row >= n;
    const QRect r = visualRect(model()->index(after ? n - 1 : target.row, 0));
    const int x = after ? r.right() + spacing() : r.left() - spacing();
    return QRect(x - DropIndicator::kLineWidth / 2, r.top() + 4, DropIndicator::kLineWidth, r.height() - 8);
}

void ImageBrowserListView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (m_dropTarget)
        DropIndicator::paint(viewport(), dropIndicatorRect(*m_dropTarget),
                             m_dropTarget->operation == ImageBrowserController::DropOn,
                             ImageBrowserDelegate::selectionColor());
}
