#pragma once

#include "templates/TemplateTable.h"

#include <QMenu>

class TemplateActions;

// The contextual menu of one template table. It remembers the row under the click (-1 for
// empty space) and hands it to the action chosen. The user table's items that act on a store
// or a row are enabled by the core's menu rule; the built-in table's menu offers what can be
// done with a built-in template (cut, copy, exporting), its single-template items enabled
// when a row was clicked.
class TemplateContextMenu : public QMenu
{
    Q_OBJECT
public:
    TemplateContextMenu(TemplateTable table, TemplateActions &actions, QWidget *parent = nullptr);

    // Sets the items for a click on clickedRow and shows the menu at the global position.
    void popupForRow(qsizetype clickedRow, const QPoint &globalPos);
    // Sets the items' enabled state for a click on clickedRow without showing the menu.
    void updateForRow(qsizetype clickedRow);
    qsizetype clickedRow() const { return m_clickedRow; }
    // The item by its object name ("pasteTemplate", "deleteTemplate", ...), or null.
    QAction *item(const QString &name) const;

private:
    QAction *add(const char *name, const QString &text, const QString &toolTip);

    TemplateTable m_table;
    TemplateActions &m_actions;
    qsizetype m_clickedRow = -1;
};
