#include "app/templates/TemplateTableView.h"

#include "templates/TemplateEditor.h"
#include "widgets/DropIndicator.h"

#include <QCoreApplication>
#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QUrl>

namespace {

// On a row that a drop may land on, its upper and lower quarters are "between" (before it, or
// before the next row) and its middle half is "on" it; on other rows each half is "between".
constexpr double kBetweenFraction = 0.25;
constexpr int kDragPixmapSide = 120;

QByteArray tableName(TemplateTable table)
{
    return table == TemplateTable::User ? QByteArrayLiteral("user") : QByteArrayLiteral("builtin");
}

// Every line of the text is a link with a scheme (a web address, a file URL): nothing else
// in plain text is taken for a link.
QList<QUrl> linksInText(const QString &text)
{
    QList<QUrl> links;
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty())
            continue;
        const QUrl url(trimmed, QUrl::StrictMode);
        if (!url.isValid() || url.isRelative() || (url.host().isEmpty() && !url.isLocalFile()))
            return {};
        links.append(url);
    }
    return links;
}

} // namespace

TemplateTableView::TemplateTableView(TemplateTable table, QWidget *parent)
    : QListView(parent)
    , m_table(table)
{
    setDragEnabled(true);
    // Both tables take drags in, so the built-in one can refuse them where the pointer shows it.
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::CopyAction);
    setDropIndicatorShown(false); // drawn here, as a line between rows or a highlighted row
}

std::optional<TemplateDrop> TemplateTableView::dropFromMimeData(const QMimeData *data)
{
    if (!data)
        return std::nullopt;
    if (data->hasFormat(kRowMimeType)) {
        const QList<QByteArray> parts = data->data(kRowMimeType).split(' ');
        bool pidOk = false;
        bool rowOk = false;
        const qint64 pid = parts.size() == 3 ? parts[0].toLongLong(&pidOk) : -1;
        const qsizetype row = parts.size() == 3 ? parts[2].toLongLong(&rowOk) : -1;
        // A row from another Tessary is the file it carries, read below.
        if (pidOk && rowOk && row >= 0 && pid == QCoreApplication::applicationPid()
            && (parts[1] == tableName(TemplateTable::User) || parts[1] == tableName(TemplateTable::BuiltIn))) {
            TemplateDrop drop;
            drop.source = parts[1] == tableName(TemplateTable::User) ? TemplateDrop::Source::UserTable
                                                                    : TemplateDrop::Source::BuiltInTable;
            drop.sourceRow = row;
            return drop;
        }
    }
    QList<QUrl> urls;
    if (data->hasUrls()) {
        for (const QUrl &url : data->urls()) {
            if (url.isValid() && !url.isEmpty())
                urls.append(url);
        }
    }
    if (urls.isEmpty() && data->hasText())
        urls = linksInText(data->text());
    if (urls.isEmpty())
        return std::nullopt;
    TemplateDrop drop;
    // Local files are files; a list with anything else in it is a list of links (the file
    // links among them are fetched like the others).
    const bool allFiles = std::all_of(urls.begin(), urls.end(), [](const QUrl &u) { return u.isLocalFile(); });
    if (allFiles) {
        drop.hasFileNames = true;
        for (const QUrl &url : std::as_const(urls))
            drop.fileNames.append(url.toLocalFile());
    } else {
        drop.links = urls;
    }
    return drop;
}

std::optional<TemplateDrop> TemplateTableView::allowedDrop(const QMimeData *data) const
{
    std::optional<TemplateDrop> drop = dropFromMimeData(data);
    if (!drop || !m_editor || !m_editor->validateDrop(m_table, *drop))
        return std::nullopt;
    return drop;
}

Qt::DropAction TemplateTableView::dropAction(const TemplateDrop &drop) const
{
    // A row moves within its own table; everything else is copied in.
    return drop.source == TemplateDrop::Source::UserTable && m_table == TemplateTable::User ? Qt::MoveAction
                                                                                            : Qt::CopyAction;
}

TemplateTableView::DropTarget TemplateTableView::dropTargetAt(const QPoint &position, const TemplateDrop &drop) const
{
    const int n = model() ? model()->rowCount() : 0;
    const double between = drop.landsOnRows() ? kBetweenFraction : 0.5;
    for (int row = 0; row < n; ++row) {
        const QRect r = visualRect(model()->index(row, 0));
        if (position.y() < r.top())
            return {row, TemplateDrop::Operation::Above}; // in the gap above the row
        if (position.y() > r.bottom())
            continue;
        const double y = double(position.y() - r.top()) / std::max(1, r.height());
        if (y < between)
            return {row, TemplateDrop::Operation::Above};
        if (y >= 1.0 - between)
            return {row + 1, TemplateDrop::Operation::Above};
        return {row, TemplateDrop::Operation::On};
    }
    return {n, TemplateDrop::Operation::Above};
}

QString TemplateTableView::newDragFolder() const
{
    // Each drag has a folder of its own, so a file manager still copying an earlier file never
    // sees it replaced by a later drag made within the same second.
    QTemporaryDir folder(QDir(m_dragFolder).filePath(QStringLiteral("drag-XXXXXX")));
    if (!folder.isValid())
        return QString();
    folder.setAutoRemove(false); // removed with the drag folder when the program ends
    return folder.path();
}

QMimeData *TemplateTableView::dragData(int row) const
{
    auto *data = new QMimeData;
    data->setData(kRowMimeType, QByteArray::number(QCoreApplication::applicationPid()) + ' ' + tableName(m_table) + ' '
                                    + QByteArray::number(row));
    if (!m_editor || m_dragFolder.isEmpty())
        return data;
    const QString folder = newDragFolder();
    if (folder.isEmpty())
        return data;
    const QString name = m_editor->writeRowAsFile(m_table, row, folder);
    const QString path = QDir(folder).filePath(name);
    if (!name.isEmpty() && QFileInfo::exists(path))
        data->setUrls({QUrl::fromLocalFile(path)});
    return data;
}

void TemplateTableView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        event->accept(); // the contextual menu event follows
        return;
    }
    QListView::mousePressEvent(event);
}

void TemplateTableView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        event->accept();
        return;
    }
    QListView::mouseReleaseEvent(event);
}

void TemplateTableView::startDrag(Qt::DropActions)
{
    const QModelIndexList selected = selectedIndexes();
    const QModelIndex index = selected.isEmpty() ? currentIndex() : selected.first();
    if (!index.isValid())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(dragData(index.row()));
    const QImage thumbnail = qvariant_cast<QImage>(index.data(Qt::DecorationRole));
    if (!thumbnail.isNull()) {
        const QPixmap small = QPixmap::fromImage(
            thumbnail.scaled(kDragPixmapSide, kDragPixmapSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        drag->setPixmap(small);
        drag->setHotSpot(QPoint(small.width() / 2, small.height() / 2));
    }
    // Copy for other programs: a file manager copies the written file.
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

void TemplateTableView::dragEnterEvent(QDragEnterEvent *event)
{
    const std::optional<TemplateDrop> drop = allowedDrop(event->mimeData());
    if (!drop) {
        event->ignore();
        return;
    }
    const Qt::DropAction action = dropAction(*drop);
    if (event->possibleActions() & action)
        event->setDropAction(action);
    event->accept();
}

void TemplateTableView::dragMoveEvent(QDragMoveEvent *event)
{
    const std::optional<TemplateDrop> drop = allowedDrop(event->mimeData());
    if (!drop) {
        event->ignore();
        showDropTarget(std::nullopt);
        return;
    }
    const QPoint position = event->position().toPoint();
    const Qt::DropAction action = dropAction(*drop);
    if (event->possibleActions() & action)
        event->setDropAction(action);
    event->accept();
    showDropTarget(dropTargetAt(position, *drop));
    const int margin = autoScrollMargin();
    if (hasAutoScroll() && !viewport()->rect().adjusted(margin, margin, -margin, -margin).contains(position))
        startAutoScroll();
}

void TemplateTableView::dragLeaveEvent(QDragLeaveEvent *event)
{
    stopAutoScroll();
    showDropTarget(std::nullopt);
    event->accept();
}

void TemplateTableView::dropEvent(QDropEvent *event)
{
    stopAutoScroll();
    showDropTarget(std::nullopt);
    const std::optional<TemplateDrop> drop = allowedDrop(event->mimeData());
    if (!drop) {
        event->ignore();
        return;
    }
    const DropTarget target = dropTargetAt(event->position().toPoint(), *drop);
    const Qt::DropAction action = dropAction(*drop);
    if (event->possibleActions() & action)
        event->setDropAction(action);
    if (TemplateEditor::isLinkDrop(*drop)) {
        const QList<QUrl> links = TemplateEditor::linksToFetch(*drop);
        if (links.isEmpty()) {
            event->ignore();
            return;
        }
        // Taken: the templates arrive later, fetched without stopping the window.
        event->accept();
        emit linksDropped(links, target.row);
        return;
    }
    if (m_editor->acceptDrop(m_table, *drop, target.row, target.operation))
        event->accept();
    else
        event->ignore();
}

void TemplateTableView::showDropTarget(std::optional<DropTarget> target)
{
    if (target == m_dropTarget)
        return;
    m_dropTarget = target;
    viewport()->update();
}

QRect TemplateTableView::dropIndicatorRect(const DropTarget &target) const
{
    const int n = model() ? model()->rowCount() : 0;
    const int left = 3;
    const int width = viewport()->width() - 2 * left;
    if (n == 0)
        return QRect(left, 2, width, DropIndicator::kLineWidth);
    if (target.operation == TemplateDrop::Operation::On)
        return visualRect(model()->index(int(std::min<qsizetype>(target.row, n - 1)), 0));
    // A line in the gap above the row, or under the last one.
    const bool after = target.row >= n;
    const QRect r = visualRect(model()->index(after ? n - 1 : int(target.row), 0));
    const int y = after ? r.bottom() + 1 + spacing() / 2 : r.top() - 1 - spacing() / 2;
    return QRect(left, y - DropIndicator::kLineWidth / 2, width, DropIndicator::kLineWidth);
}

void TemplateTableView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (m_dropTarget)
        DropIndicator::paint(viewport(), dropIndicatorRect(*m_dropTarget),
                             m_dropTarget->operation == TemplateDrop::Operation::On,
                             palette().color(QPalette::Highlight));
}
