#pragma once

#include "model/CollageLayout.h"
#include "templates/TemplateTable.h"

#include <QSizeF>
#include <QString>

#include <optional>

class LayoutEngine;
class TemplateStore;
class TessaryViewDelegate;
class UserDefaults;

// The decisions behind the two template tables: which row each table shows selected across
// launches, what choosing a row does to the collage, and which contextual menu items are
// enabled. The window's tables and labels only display what this says.
class TemplateSelection
{
public:
    // The built-in row shown on the very first start.
    static constexpr qsizetype kDefaultBuiltInRow = 297;

    struct MenuState {
        bool paste = false;
        bool deleteAll = false;
        bool exportAll = false;
        // The items that act on the clicked row.
        bool deleteOne = false;
        bool exportOne = false;
        bool copyIcon = false;
        bool saveIcon = false;
        bool saveTemplateAndIcon = false;
    };

    TemplateSelection(TemplateStore &store, UserDefaults &defaults);

    // The row saved for the table ("SelectedTemplateTableRow", 297 when absent, or
    // "SelectedUserTemplateTableRow", 0 when absent); -1 when it is -1 or no longer a row.
    qsizetype savedRow(TemplateTable table) const;
    // A table's selection changed: the row is saved (-1 for none). Returns the label text: the
    // row counted from 1, or a blank.
    QString selectionDidChange(TemplateTable table, qsizetype row);

    // Applies the template at row of the current tab's store and lays the collage out again at
    // the available size: the template's values into the defaults, setup, reloadData. Nothing
    // when the row is not one.
    std::optional<CollageLayout> doChooseTemplate(TemplateTable currentTab, qsizetype row, LayoutEngine &engine,
                                                  const QSizeF &available, const TessaryViewDelegate *delegate);

    // A table's contextual menu for a click on clickedRow (-1: empty space). The built-in
    // table's menu pastes and deletes nothing and always exports; the user table's follows the
    // held template and its store.
    MenuState menuNeedsUpdate(TemplateTable table, bool templateHeld, qsizetype clickedRow) const;

private:
    TemplateStore &m_store;
    UserDefaults &m_defaults;
};
