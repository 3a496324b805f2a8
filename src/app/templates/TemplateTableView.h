#pragma once

#include "templates/TemplateDrop.h"
#include "templates/TemplateTable.h"

#include <QListView>

#include <optional>

class QMimeData;
class TemplateEditor;

// One template table's list of thumbnails as a drag source and a drop target. It only reads
// drags into a TemplateDrop and positions into a row and an operation; whether a drop is
// allowed and what it does are the editor's answers. Between two rows a drop goes before the
// second (an insertion line shows where); on the middle of a row of "My Templates" dragged
// within it the two rows swap (the row is highlighted). A table that refuses a drag ignores
// it, so the pointer shows that nothing can be dropped there.
//
// A row dragged out carries the row for the tables and, for a file manager, the template
// written as a templates file into the drag folder.
class TemplateTableView : public QListView
{
    Q_OBJECT
public:
    // Carried by rows dragged from a template table: the process id, the table and the row.
    static inline const QString kRowMimeType = QStringLiteral("application/x-tessary-template-row");

    struct DropTarget {
        qsizetype row = 0; // the row dropped on, or before
        TemplateDrop::Operation operation = TemplateDrop::Operation::Above;
        friend bool operator==(const DropTarget &, const DropTarget &) = default;
    };

    explicit TemplateTableView(TemplateTable table, QWidget *parent = nullptr);

    TemplateTable table() const { return m_table; }
    // Drops are decided, and rows written out, by the editor; without one (or without a drag
    // folder) rows are dragged without their file, and every drop is refused.
    void setEditor(TemplateEditor *editor) { m_editor = editor; }
    // Where rows dragged out are written, one new folder inside it per drag.
    void setDragFolder(const QString &folder) { m_dragFolder = folder; }
    QString dragFolder() const { return m_dragFolder; }

    // What a drag carries, read as a drop on a template table; nothing when it carries nothing
    // a template table takes (rows of a template table of this program, file and link lists,
    // or a link as plain text).
    static std::optional<TemplateDrop> dropFromMimeData(const QMimeData *data);
    // Where a drop at the viewport point lands.
    DropTarget dropTargetAt(const QPoint &position, const TemplateDrop &drop) const;
    // The drop target shown while an allowed drag is over the table, if any.
    std::optional<DropTarget> shownDropTarget() const { return m_dropTarget; }
    // What a drag of the row carries; the row's file is written now.
    QMimeData *dragData(int row) const;

signals:
    // Links were dropped: their templates are fetched without waiting and inserted at row.
    void linksDropped(const QList<QUrl> &links, qsizetype row);

protected:
    // A right click only opens the row's menu: it neither selects nor applies the row.
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The drop when the editor allows it on this table.
    std::optional<TemplateDrop> allowedDrop(const QMimeData *data) const;
    Qt::DropAction dropAction(const TemplateDrop &drop) const;
    void showDropTarget(std::optional<DropTarget> target);
    QRect dropIndicatorRect(const DropTarget &target) const;
    QString newDragFolder() const;

    TemplateTable m_table;
    TemplateEditor *m_editor = nullptr;
    QString m_dragFolder;
    std::optional<DropTarget> m_dropTarget;
};
