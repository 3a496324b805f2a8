#pragma once

#include "photos/ImageBrowserController.h"

#include <QListView>

// The browser's thumbnail grid: a list view in icon mode, one selected photo at most (a click
// on empty space keeps it), photos dragged within the grid to reorder them and files or image
// data dropped from other programs. Between two photos a drop goes before the second (an
// insertion line shows where); on the middle of a photo it goes on that photo (the photo is
// highlighted): a photo from the grid swaps with it, a file from elsewhere replaces it. Every
// drop is handed to the photo list's controller.
class ImageBrowserListView : public QListView
{
    Q_OBJECT
public:
    // Carried by drags that start in the grid: the process id and the dragged row.
    static inline const QString kItemMimeType = QStringLiteral("application/x-tessary-browser-item");

    struct DropTarget {
        int row = 0; // the item dropped on, or before
        ImageBrowserController::DropOperation operation = ImageBrowserController::DropBefore;
        friend bool operator==(const DropTarget &, const DropTarget &) = default;
    };

    explicit ImageBrowserListView(ImageBrowserController &controller, QWidget *parent = nullptr);

    // Where a drop at the viewport point would land.
    DropTarget dropTargetAt(const QPoint &position) const;
    // The drop target shown while a drag is over the grid, if any.
    std::optional<DropTarget> shownDropTarget() const { return m_dropTarget; }
    // The row a drag from this grid carries, or -1 when the data did not come from here.
    static int draggedRow(const QMimeData *data);
    // What a drag of the row carries: the row for this grid, the photo's file for others.
    QMimeData *dragData(int row) const;

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index, const QEvent *event) const override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool accepts(const QMimeData *data) const;
    // Whether the drop would leave the list as it is (a photo dropped on or next to itself).
    static bool changesNothing(int draggedRow, const DropTarget &target);
    void showDropTarget(std::optional<DropTarget> target);
    QRect dropIndicatorRect(const DropTarget &target) const;

    ImageBrowserController &m_controller;
    std::optional<DropTarget> m_dropTarget;
};
