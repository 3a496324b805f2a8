#pragma once

#include "templates/TemplateTable.h"

#include <QWidget>

#include <memory>

class TemplateSelection;
class TemplateStore;
class UserDefaults;

// The two template tables in their tabs (the built-in templates and "My Templates"), each a
// list of thumbnails with a row-height slider and the label of its selected row.
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

signals:
    // The user chose a row: the collage applies that template.
    void templateChosen(TemplateTable table, qsizetype row);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
