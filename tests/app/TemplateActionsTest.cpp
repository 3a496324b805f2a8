#include "app/HalvernDesktopController.h"
#include "app/templates/LoadFileSheet.h"
#include "app/MainWindow.h"
#include "app/MessageBoxAlertPresenter.h"
#include "app/TessaryLinks.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "templates/TemplatesFile.h"
#include "templates/TemplateTestData.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateContextMenu.h"
#include "app/templates/TemplateTabView.h"
#include "app/templates/TemplateTablePane.h"
#include "app/collage/TessaryView.h"
#include "AppFixture.h"
#include "support/Dialogs.h"
#include "FileDialogs.h"
#include "support/UrlRecorder.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace TemplateTestData;

namespace {

// The window's alerts, with the beeps counted.
class CountingAlertPresenter : public MessageBoxAlertPresenter
{
public:
    void beep() override { ++beeps; }
    int beeps = 0;
};

using Dialogs::answer;

class TemplateActionsTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        store = std::make_unique<TemplateStore>(*defaults);
        store->setBuiltInTemplates(TemplateStore::templatesFromDictionary(
            file({makeTemplate(2, 101), makeTemplate(3, 102), makeTemplate(4, 103, false)})));
        selection = std::make_unique<TemplateSelection>(*store, *defaults);
        window = std::make_unique<QMainWindow>();
        alerts.setParentWindow(window.get());
        tabs = new TemplateTabView(*store, *selection, *defaults);
        window->setCentralWidget(tabs);
        actions = new TemplateActions(*store, *defaults, alerts, window.get());
        tabs->setTemplateActions(*actions);
        window->resize(300, 640);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        QDir().mkpath(folder());
    }
    void TearDown() override
    {
        window.reset();
        selection.reset();
        store.reset();
        AppFixture::TearDown();
    }
    QString folder() const { return dir.filePath(QStringLiteral("files")); }
    void addUserTemplates(const QVariantList &templates) { store->addTemplatesFromDictionary(file(templates)); }

    // A right click on the row (-1: below the rows) of a table; the menu that opens.
    TemplateContextMenu *rightClick(TemplateTable table, int row)
    {
        tabs->setCurrentTable(table);
        QListView *list = tabs->tableView(table);
        // A table just brought to the front lays its rows out first.
        if (row >= 0) {
            EXPECT_TRUE(QTest::qWaitFor([&] { return list->visualRect(list->model()->index(row, 0)).isValid(); }, 2000));
        }
        const QPoint pos = row >= 0 ? list->visualRect(list->model()->index(row, 0)).center()
                                    : QPoint(list->viewport()->width() / 2, list->viewport()->height() - 5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, list->viewport()->mapToGlobal(pos));
        QApplication::sendEvent(list->viewport(), &event);
        TemplateContextMenu *menu = tabs->contextMenu(table);
        EXPECT_TRUE(QTest::qWaitFor([menu] { return menu->isVisible(); }, 2000));
        return menu;
    }
    // A right click, then the item chosen.
    void choose(TemplateTable table, int row, const char *item)
    {
        TemplateContextMenu *menu = rightClick(table, row);
        QAction *a = menu->item(QString::fromLatin1(item));
        ASSERT_NE(a, nullptr) << item;
        ASSERT_TRUE(a->isEnabled()) << item;
        menu->hide();
        a->trigger();
    }
    std::vector<double> userIds() const { return ids(store->userTemplates()); }
    QVariantList templatesIn(const QString &path) const
    {
        const TemplatesFile::ReadResult read = TemplatesFile::fromFile(path);
        EXPECT_TRUE(read.error.isEmpty()) << read.error.toStdString();
        return read.templates;
    }

    CountingAlertPresenter alerts;
    std::unique_ptr<TemplateStore> store;
    std::unique_ptr<TemplateSelection> selection;
    std::unique_ptr<QMainWindow> window;
    TemplateTabView *tabs = nullptr;
    TemplateActions *actions = nullptr;
};

// A right click sets its table's items as the selection's menu rule says for the clicked row
// (the rule's cases are the selection's own test): one row per table.
TEST_F(TemplateActionsTest, MenuItemsFollowTheClick)
{
    struct Case {
        const char *name;
        TemplateTable table;
        int userTemplates;
        bool held;
        int row;
        QStringList enabled;
    } cases[] = {
        {"user empty space, a template held", TemplateTable::User, 2, true, -1,
         {"cutTemplate", "copyTemplate", "pasteTemplate", "deleteAllTemplates", "sortUserTemplates", "exportAllTemplates"}},
        {"built-in row", TemplateTable::BuiltIn, 0, false, 1,
         {"cutTemplate", "copyTemplate", "exportAllTemplates", "exportTemplate", "copyTemplateIcon", "saveTemplateIcon",
          "saveTemplateAndIcon"}},
    };
    for (const Case &c : cases) {
        store->clearUserTemplates();
        if (c.userTemplates > 0)
            addUserTemplates({makeTemplate(2, 1), makeTemplate(3, 2)});
        actions->copyTemplate(TemplateTable::BuiltIn, c.held ? 0 : -1);
        TemplateContextMenu *menu = rightClick(c.table, c.row);
        EXPECT_EQ(menu->clickedRow(), c.row) << c.name;
        for (QAction *a : menu->actions()) {
            if (a->isSeparator())
                continue;
            EXPECT_EQ(a->isEnabled(), c.enabled.contains(a->objectName())) << c.name << ": " << a->objectName().toStdString();
        }
        if (c.table == TemplateTable::BuiltIn) {
            EXPECT_EQ(menu->item(QStringLiteral("pasteTemplate")), nullptr) << c.name;
        }
        menu->hide();
    }
}

// Copy and paste reach the clicked rows; the menu deletes the clicked row, the button the
// selected one, after which the template sliding into its place is chosen and labelled;
// deleting all and sorting ask too. (What each does to the store, and which answers keep what,
// is the editor's own test.)
TEST_F(TemplateActionsTest, CopyPasteDeleteDeleteAllAndSortAsk)
{
    addUserTemplates({makeTemplate(4, 1), makeTemplate(2, 2), makeTemplate(5, 4)});
    choose(TemplateTable::BuiltIn, 1, "copyTemplate");
    choose(TemplateTable::User, 2, "pasteTemplate");
    ASSERT_EQ(userIds(), (std::vector<double>{1, 2, 102, 4}));
    QSignalSpy chosen(tabs, &TemplateTabView::templateChosen);

    choose(TemplateTable::User, 1, "deleteTemplate");
    const auto texts = answer(QStringLiteral("Delete"));
    EXPECT_EQ(texts.first, QStringLiteral("Delete Template"));
    EXPECT_EQ(texts.second, QStringLiteral("Are you sure you want to delete the selected template?"));
    EXPECT_EQ(userIds(), (std::vector<double>{1, 102, 4}));

    tabs->pane(TemplateTable::User)->selectRow(1);
    chosen.clear();
    QTest::mouseClick(tabs->pane(TemplateTable::User)->deleteButton(), Qt::LeftButton);
    answer(QStringLiteral("Delete"));
    EXPECT_EQ(userIds(), (std::vector<double>{1, 4}));
    ASSERT_FALSE(chosen.isEmpty());
    EXPECT_EQ(chosen.last().at(1).value<qsizetype>(), 1);
    EXPECT_EQ(tabs->rowLabel(TemplateTable::User)->text(), QStringLiteral("2"));

    addUserTemplates({makeTemplate(3, 5)});
    choose(TemplateTable::User, -1, "sortUserTemplates");
    EXPECT_EQ(answer(QStringLiteral("OK")).first, QStringLiteral("Sort My Templates?"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return userIds() == std::vector<double>{5, 1, 4}; }, 2000));

    choose(TemplateTable::User, -1, "deleteAllTemplates");
    const auto all = answer(QStringLiteral("Delete All"));
    EXPECT_EQ(all.first, QStringLiteral("Delete All My Templates"));
    EXPECT_EQ(all.second, QStringLiteral("Are you sure you want to Delete all 'My Templates'?"));
    EXPECT_TRUE(store->userTemplates().isEmpty());
}

// Exporting: one file of the menu's own store, many files of "My Templates" (templates without
// a thumbnail leave gaps), the clicked template alone, its icon, and icon beside template.
TEST_F(TemplateActionsTest, Exports)
{
    addUserTemplates({makeTemplate(2, 1), makeTemplate(3, 2, false), makeTemplate(4, 3)});

    choose(TemplateTable::BuiltIn, -1, "exportAllTemplates");
    EXPECT_EQ(answer(QStringLiteral("Save One")).first, QStringLiteral("Save As One File Or Many?"));
    FileDialogs::choose(folder(), {QStringLiteral("Templates Export.plist")});
    EXPECT_EQ(templatesIn(QDir(folder()).filePath(QStringLiteral("Templates Export.plist"))).size(), 3);

    const QString spring = QDir(folder()).filePath(QStringLiteral("Spring"));
    QDir().mkpath(spring);
    choose(TemplateTable::BuiltIn, -1, "exportAllTemplates");
    answer(QStringLiteral("Many Files"));
    EXPECT_EQ(FileDialogs::choose(folder(), {QStringLiteral("Spring")}), QStringLiteral("Choose Destination:"));
    EXPECT_EQ(QDir(spring).entryList(QDir::Files),
              (QStringList{"Tessary-Icon-Spring-1.png", "Tessary-Icon-Spring-3.png", "Tessary-Template-Spring-1.plist",
                           "Tessary-Template-Spring-3.plist", "Tessary-Templates-Spring.html"}));

    const QString one = QDir(folder()).filePath(QStringLiteral("one"));
    QDir().mkpath(one);
    choose(TemplateTable::User, 2, "exportTemplate");
    QFileDialog *save = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(save, nullptr);
    EXPECT_TRUE(save->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->text().startsWith(QStringLiteral("Tessary-Template-")));
    FileDialogs::choose(one, {QStringLiteral("third.plist")});
    const QVariantList third = templatesIn(QDir(one).filePath(QStringLiteral("third.plist")));
    ASSERT_EQ(third.size(), 1);
    EXPECT_EQ(third[0].toMap().value(QStringLiteral("contentSizeWidth")).toDouble(), 3.0);

    choose(TemplateTable::BuiltIn, 0, "copyTemplateIcon");
    EXPECT_EQ(QApplication::clipboard()->image().size(), QSize(8, 6));

    choose(TemplateTable::User, 0, "saveTemplateIcon");
    FileDialogs::choose(one, {QStringLiteral("icon")});
    EXPECT_EQ(QImage(QDir(one).filePath(QStringLiteral("icon.png"))).size(), QSize(8, 6));

    const QString pair = QDir(folder()).filePath(QStringLiteral("pair"));
    QDir().mkpath(pair);
    choose(TemplateTable::User, 0, "saveTemplateAndIcon");
    FileDialogs::choose(folder(), {QStringLiteral("pair")});
    const QStringList written = QDir(pair).entryList(QDir::Files);
    ASSERT_EQ(written.size(), 2) << written.join(' ').toStdString();
    EXPECT_TRUE(written[0].startsWith(QStringLiteral("Tessary-Icon-")) && written[0].endsWith(QStringLiteral(".png")));
    EXPECT_TRUE(written[1].startsWith(QStringLiteral("Tessary-Template-")) && written[1].endsWith(QStringLiteral(".plist")));
    EXPECT_EQ(templatesIn(QDir(pair).filePath(written[1])).size(), 1);
    // A template without a thumbnail has no icon: its icon items do nothing.
    choose(TemplateTable::User, 1, "saveTemplateAndIcon");
    EXPECT_TRUE(Dialogs::noneShown<QFileDialog>());
}

// Importing: the open dialog as described, several files appended in order; with the load
// sheet switched off and templates there, "Append or Replace" is asked; a chosen file that held
// no templates beeps and is named in "Templates Not Loaded".
TEST_F(TemplateActionsTest, Import)
{
    const QString a = QDir(folder()).filePath(QStringLiteral("a.plist"));
    const QString b = QDir(folder()).filePath(QStringLiteral("b.plist"));
    const QString bad = QDir(folder()).filePath(QStringLiteral("bad.plist"));
    ASSERT_TRUE(writePlist(a, file({makeTemplate(2, 1), makeTemplate(3, 2)})));
    ASSERT_TRUE(writePlist(b, file({makeTemplate(4, 3)})));
    QFile garbage(bad);
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
    garbage.write("not a property list");
    garbage.close();

    actions->loadUserTemplates();
    QFileDialog *dialog = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Choose Template File"));
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), QStringLiteral("Choose"));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    EXPECT_TRUE(dialog->testOption(QFileDialog::DontUseNativeDialog));
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->nameFilters().join(' ').count(QStringLiteral("*.")), 1);
    EXPECT_TRUE(dialog->nameFilters().first().contains(QStringLiteral("*.plist")));
    EXPECT_EQ(dialog->findChild<QLabel *>(QStringLiteral("chooseTemplateFileMessage"))->text(),
              QStringLiteral("Pick template file created in Tessary iOS."));
    FileDialogs::choose(folder(), {QStringLiteral("b.plist"), QStringLiteral("a.plist")});
    EXPECT_EQ(userIds(), (std::vector<double>{3, 1, 2}));
    EXPECT_TRUE(Dialogs::noneShown<QMessageBox>());

    defaults->setBool(true, Preferences::DontShowAgain);
    const size_t before = userIds().size();
    actions->loadUserTemplates();
    const auto question = answer(QStringLiteral("Append"));
    EXPECT_EQ(question.first, QStringLiteral("Append or Replace"));
    EXPECT_EQ(question.second, QStringLiteral("Do you want to append or replace the existing templates?"));
    FileDialogs::choose(folder(), {QStringLiteral("b.plist")});
    EXPECT_EQ(userIds().size(), before + 1);

    // A file that holds no templates adds nothing and is named with the reason.
    const size_t count = userIds().size();
    actions->presentChooseFileTemplatesDialog(false);
    FileDialogs::choose(folder(), {QStringLiteral("bad.plist")});
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_EQ(userIds().size(), count);
    const auto texts = answer(QStringLiteral("OK"));
    EXPECT_EQ(texts.first, QStringLiteral("Templates Not Loaded"));
    EXPECT_TRUE(texts.second.contains(bad)) << texts.second.toStdString();
}

// The window's wiring: the load sheet's buttons and File > Import Templates… reach the import
// and the clearing.
TEST_F(TemplateActionsTest, ControllerWiring)
{
    window.reset();
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    MainWindow &w = controller.mainWindow();
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));

    emit controller.loadFileWindow().chooseTemplateFile();
    QFileDialog *dialog = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Choose Template File"));
    EXPECT_EQ(dialog->parentWidget(), &w);
    dialog->reject();

    w.templateActions().editor().copyTemplate(TemplateTable::BuiltIn, 0);
    w.templateActions().pasteTemplate(TemplateTable::User, -1);
    ASSERT_EQ(w.tessaryView().templateStore().userTemplates().size(), 1);
    emit controller.loadFileWindow().clearAllTemplates();
    EXPECT_EQ(answer(QStringLiteral("Delete All")).first, QStringLiteral("Delete All My Templates"));
    EXPECT_TRUE(w.tessaryView().templateStore().userTemplates().isEmpty());

    UrlRecorder browser({QStringLiteral("https")});
    emit controller.loadFileWindow().downloadWebsiteTemplateFile();
    EXPECT_EQ(browser.urls, QList<QUrl>{TessaryLinks::templatesPage()});

    // The menu item shows the load sheet, or with it switched off goes straight to the files.
    w.action(QStringLiteral("importTemplates"))->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.loadFileWindow().isVisible(); }, 2000));
    controller.loadFileWindow().reject();
    defaults->setBool(true, Preferences::DontShowAgain);
    w.action(QStringLiteral("importTemplates"))->trigger();
    dialog = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    dialog->reject();
}

} // namespace

