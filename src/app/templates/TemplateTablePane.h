#pragma once

#include "templates/TemplateTable.h"

#include <QWidget>

class QLabel;
class QListView;
class QPushButton;
class QSlider;
class TemplateListModel;
class TemplateStore;
class TemplateTableView;

// The page of one template tab: the table of thumbnails, and under it the size slider and the
// label of the selected row. It reports the user's selection changes; selecting from code
// without a report (restoring a selection after a reload) goes through selectRowQuietly.
class TemplateTablePane : public QWidget
{
    Q_OBJECT
public:
    // The slider's range and start, in percent of each thumbnail's own height.
    static constexpr int kMinimumScale = 25;
    static constexpr int kMaximumScale = 200;
    static constexpr int kInitialScale = 100;

    TemplateTablePane(TemplateStore &store, TemplateTable table, QWidget *parent = nullptr);

    TemplateTable table() const { return m_table; }
    QListView *tableView() const;
    // The same list as a drag source and drop target.
    TemplateTableView *templateTableView() const { return m_view; }
    QSlider *slider() const { return m_slider; }
    QLabel *rowLabel() const { return m_label; }
    TemplateListModel *model() const { return m_model; }
    // The delete button under "My Templates" (null on the built-in tab).
    QPushButton *deleteButton() const { return m_deleteButton; }

    // The selected row, -1 when none.
    qsizetype selectedRow() const;
    // Selects the row alone (-1 clears the selection); a change is reported.
    void selectRow(qsizetype row);
    // The same without a report.
    void selectRowQuietly(qsizetype row);
    void scrollToRow(qsizetype row);
    void setRowLabel(const QString &text);
    // The store's list changed: the table reads it again, keeping the row number that was
    // selected quietly when it is still a row (the store reports moves of the selection itself);
    // when it is not, the emptied selection is reported.
    void reload();

signals:
    void selectionDidChange(qsizetype row);
    // A contextual click on the table: the row under it (-1 for empty space), where to show
    // the menu.
    void contextMenuRequested(qsizetype clickedRow, const QPoint &globalPos);
    // The delete button was pressed.
    void deleteRequested();

private:
    void sliderMoved(int value);

    TemplateTable m_table;
    TemplateListModel *m_model;
    TemplateTableView *m_view;
    QSlider *m_slider;
    QLabel *m_label;
    QPushButton *m_deleteButton = nullptr;
    bool m_quiet = false;
    // The selected row as last seen by the table.
    qsizetype m_shownRow = -1;
};
