#pragma once

#include "templates/TemplateTable.h"

#include <QWidget>

#include <memory>

class QLabel;
class QListView;
class QSlider;
class QTabWidget;
class TemplateActions;
class TemplateContextMenu;
class TemplateListModel;
class TemplateSelection;
class TemplateStore;
class TemplateTablePane;
class UserDefaults;

// The two template tables in their tabs (the built-in templates and "My Templates"), each a
// list of thumbnails with a row-height slider and the label of its selected row.
//
// Every selection change is stored at once and applied: templateChosen carries the tab in front
// and the row, and the collage applies that row of that tab's store. Which store a row belongs
// to is decided by the tab in front, not by the table that changed, the rule the collage has
// always followed. The user table follows the store: it reloads when "My Templates" change and
// moves its selection when the store moves it.
class TemplateTabView : public QWidget
{
    Q_OBJECT
public:
    TemplateTabView(TemplateStore &store, TemplateSelection &selection, UserDefaults &defaults,
                    QWidget *parent = nullptr);
    ~TemplateTabView() override;

    // The table of the tab in front, and a table's selected row (-1: none).
    TemplateTable currentTable() const;
    qsizetype selectedRow(TemplateTable table) const;

    // Brings a tab to the front (switching tabs restores and applies the tab's saved row).
    void setCurrentTable(TemplateTable table);

    // Selects the saved row of the tab in front (the built-in tab: 297 at the very first start)
    // and scrolls it into view; the selection applies its template. The start-up calls this
    // once the window is ready.
    void setFirstTemplate();
    // Selects built-in row 297 alone and scrolls to it, bringing the built-in tab to the front.
    void showDefaultTemplate();
    // Scroll a table to its selected row: the built-in one, the user one, the one in front.
    void showCurrentTemplate();
    void showCurrentUserTemplate();
    void showCurrentTessaryViewTemplate();

    // Gives both tables their contextual menus and the delete button its action, all done by
    // the actions given (which outlive this view).
    void setTemplateActions(TemplateActions &actions);
    // A table's contextual menu (null before setTemplateActions).
    TemplateContextMenu *contextMenu(TemplateTable table) const;

    // The parts of each tab, for the window's other panels and for tests.
    TemplateTablePane *pane(TemplateTable table) const;
    QListView *tableView(TemplateTable table) const;
    QSlider *slider(TemplateTable table) const;
    QLabel *rowLabel(TemplateTable table) const;
    TemplateListModel *model(TemplateTable table) const;
    QTabWidget *tabWidget() const;

signals:
    // The user chose a row: the collage applies that template.
    void templateChosen(TemplateTable table, qsizetype row);

private:
    void tableSelectionDidChange(TemplateTable table, qsizetype row);
    void didSelectTab();
    void selectionAfterDelete(qsizetype row);

    struct Private;
    std::unique_ptr<Private> d;
};
