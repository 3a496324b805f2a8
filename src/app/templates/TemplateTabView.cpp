#include "app/templates/TemplateTabView.h"

#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateContextMenu.h"
#include "app/templates/TemplateDownloadDialog.h"
#include "app/templates/TemplateListModel.h"
#include "app/templates/TemplateTablePane.h"
#include "app/templates/TemplateTableView.h"

#include <QDir>
#include <QListView>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>

struct TemplateTabView::Private {
    Private(TemplateStore &s, TemplateSelection &sel)
        : store(s)
        , selection(sel)
        , dragFolder(QDir(QDir::tempPath()).filePath(QStringLiteral("tessary-dragged-templates-XXXXXX")))
    {
    }
    TemplateStore &store;
    TemplateSelection &selection;
    QTabWidget *tabs = nullptr;
    TemplateTablePane *builtIn = nullptr;
    TemplateTablePane *user = nullptr;
    TemplateContextMenu *builtInMenu = nullptr;
    TemplateContextMenu *userMenu = nullptr;
    // Rows dragged out to a file manager are written here; it goes when the window goes.
    QTemporaryDir dragFolder;
};

TemplateTabView::TemplateTabView(TemplateStore &store, TemplateSelection &selection, UserDefaults &, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(store, selection))
{
    setObjectName(QStringLiteral("builtInUserTabView"));
    d->builtIn = new TemplateTablePane(store, TemplateTable::BuiltIn);
    d->user = new TemplateTablePane(store, TemplateTable::User);
    d->tabs = new QTabWidget;
    d->tabs->setDocumentMode(true);
    d->tabs->addTab(d->builtIn, tr("Templates"));
    d->tabs->addTab(d->user, tr("My Templates"));
    d->tabs->setTabToolTip(0, tr("The templates that come with Tessary"));
    d->tabs->setTabToolTip(1, tr("Your own templates"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(d->tabs);
    setMinimumWidth(180);

    for (TemplateTablePane *pane : {d->builtIn, d->user}) {
        const TemplateTable table = pane->table();
        connect(pane, &TemplateTablePane::selectionDidChange, this,
                [this, table](qsizetype row) { tableSelectionDidChange(table, row); });
    }
    connect(d->tabs, &QTabWidget::currentChanged, this, [this] { didSelectTab(); });
    // A row dragged over the other tab's title brings that tab up, so a built-in template can be
    // dropped on "My Templates".
    d->tabs->tabBar()->setChangeCurrentOnDrag(true);
    d->tabs->tabBar()->setAcceptDrops(true);
    for (TemplateTablePane *pane : {d->builtIn, d->user})
        pane->templateTableView()->setDragFolder(d->dragFolder.isValid() ? d->dragFolder.path() : QString());
    connect(&store, &TemplateStore::userTemplatesChanged, this, [this] { d->user->reload(); });
    connect(&store, &TemplateStore::userSelectionChanged, this, [this](qsizetype row) { d->user->selectRow(row); });
}

TemplateTabView::~TemplateTabView() = default;

TemplateTable TemplateTabView::currentTable() const
{
    return d->tabs->currentIndex() == 0 ? TemplateTable::BuiltIn : TemplateTable::User;
}

qsizetype TemplateTabView::selectedRow(TemplateTable table) const
{
    return pane(table)->selectedRow();
}

void TemplateTabView::setCurrentTable(TemplateTable table)
{
    d->tabs->setCurrentIndex(table == TemplateTable::BuiltIn ? 0 : 1);
}

void TemplateTabView::tableSelectionDidChange(TemplateTable table, qsizetype row)
{
    TemplateTablePane *p = pane(table);
    const QString label = d->selection.selectionDidChange(table, row);
    if (row >= 0)
        emit templateChosen(currentTable(), row);
    p->setRowLabel(label);
}

void TemplateTabView::didSelectTab()
{
    setFirstTemplate();
    // The tab's template is applied again even when the selection above already did.
    const TemplateTable table = currentTable();
    const qsizetype row = selectedRow(table);
    if (row >= 0)
        emit templateChosen(table, row);
    pane(table)->setRowLabel(TemplateTables::selectedRowLabel(row));
}

void TemplateTabView::setFirstTemplate()
{
    const TemplateTable table = currentTable();
    TemplateTablePane *p = pane(table);
    // A saved row that is no longer a row (or -1) selects nothing.
    const qsizetype row = d->selection.savedRow(table);
    p->scrollToRow(row);
    p->selectRow(row);
    if (table == TemplateTable::BuiltIn)
        showCurrentTemplate();
    else
        showCurrentUserTemplate();
}

void TemplateTabView::showDefaultTemplate()
{
    // The menu item means the built-in default: show it where it lives.
    if (currentTable() != TemplateTable::BuiltIn)
        setCurrentTable(TemplateTable::BuiltIn);
    d->builtIn->selectRow(TemplateSelection::kDefaultBuiltInRow);
    d->builtIn->scrollToRow(TemplateSelection::kDefaultBuiltInRow);
}

void TemplateTabView::showCurrentTemplate()
{
    d->builtIn->scrollToRow(d->builtIn->selectedRow());
}

void TemplateTabView::showCurrentUserTemplate()
{
    d->user->scrollToRow(d->user->selectedRow());
}

void TemplateTabView::showCurrentTessaryViewTemplate()
{
    if (currentTable() == TemplateTable::BuiltIn)
        showCurrentTemplate();
    else
        showCurrentUserTemplate();
}

void TemplateTabView::setTemplateActions(TemplateActions &actions)
{
    d->builtInMenu = new TemplateContextMenu(TemplateTable::BuiltIn, actions, d->builtIn->tableView());
    d->userMenu = new TemplateContextMenu(TemplateTable::User, actions, d->user->tableView());
    for (TemplateTablePane *pane : {d->builtIn, d->user}) {
        TemplateContextMenu *menu = contextMenu(pane->table());
        connect(pane, &TemplateTablePane::contextMenuRequested, menu, &TemplateContextMenu::popupForRow);
    }
    connect(d->user, &TemplateTablePane::deleteRequested, &actions,
            [&actions] { actions.deleteTemplate(TemplateEditor::DeleteSender::DeleteButton, -1); });
    connect(&actions, &TemplateActions::selectionAfterDelete, this, &TemplateTabView::selectionAfterDelete);
    // Drops are the editor's to decide; dropped links are fetched behind a progress sheet.
    for (TemplateTablePane *pane : {d->builtIn, d->user}) {
        TemplateTableView *view = pane->templateTableView();
        view->setEditor(&actions.editor());
        connect(view, &TemplateTableView::linksDropped, this, [this, &actions](const QList<QUrl> &links, qsizetype row) {
            TemplateDownloadDialog::download(actions.editor(), links, row, window());
        });
    }
}

TemplateContextMenu *TemplateTabView::contextMenu(TemplateTable table) const
{
    return table == TemplateTable::BuiltIn ? d->builtInMenu : d->userMenu;
}

void TemplateTabView::selectionAfterDelete(qsizetype row)
{
    // The selected template was deleted: the one that slid into its row is applied as choosing
    // it would be, and labelled.
    if (row >= 0)
        emit templateChosen(currentTable(), row);
    d->user->setRowLabel(TemplateTables::selectedRowLabel(row));
}

TemplateTablePane *TemplateTabView::pane(TemplateTable table) const
{
    return table == TemplateTable::BuiltIn ? d->builtIn : d->user;
}

QListView *TemplateTabView::tableView(TemplateTable table) const { return pane(table)->tableView(); }
QSlider *TemplateTabView::slider(TemplateTable table) const { return pane(table)->slider(); }
QLabel *TemplateTabView::rowLabel(TemplateTable table) const { return pane(table)->rowLabel(); }
TemplateListModel *TemplateTabView::model(TemplateTable table) const { return pane(table)->model(); }
QTabWidget *TemplateTabView::tabWidget() const { return d->tabs; }
