#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "templates/TemplateTestData.h"
#include "app/templates/TemplateListModel.h"
#include "app/templates/TemplateTabView.h"
#include "AppFixture.h"
#include "ScreenshotFolder.h"

#include <QLabel>
#include <QListView>
#include <QSignalSpy>
#include <QTest>

using namespace TemplateTestData;

namespace {

class TemplateTabViewTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        store = std::make_unique<TemplateStore>(*defaults);
        store->loadBuiltInTemplates(Paths::resourcesFolder());
        ASSERT_GT(store->builtInTemplates().size(), TemplateSelection::kDefaultBuiltInRow);
        selection = std::make_unique<TemplateSelection>(*store, *defaults);
    }
    void TearDown() override
    {
        view.reset();
        selection.reset();
        store.reset();
        AppFixture::TearDown();
    }
    // The tab view on screen, at the size of the main window's side panel.
    TemplateTabView &show()
    {
        view = std::make_unique<TemplateTabView>(*store, *selection, *defaults);
        view->resize(240, 640);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        spy = std::make_unique<QSignalSpy>(view.get(), &TemplateTabView::templateChosen);
        return *view;
    }
    void addUserTemplates(const QVariantList &templates) { store->addTemplatesFromDictionary(file(templates)); }
    void click(TemplateTable table, int row, Qt::MouseButton button = Qt::LeftButton)
    {
        QListView *list = view->tableView(table);
        const QModelIndex index = list->model()->index(row, 0);
        list->scrollTo(index);
        QTest::mouseClick(list->viewport(), button, {}, list->visualRect(index).center());
    }
    QString label(TemplateTable table) const { return view->rowLabel(table)->text(); }
    std::pair<TemplateTable, qsizetype> lastChosen() const
    {
        const QList<QVariant> args = spy->last();
        return {args.at(0).value<TemplateTable>(), args.at(1).value<qsizetype>()};
    }
    bool waitForThumbnails(TemplateTable table)
    {
        return QTest::qWaitFor([&] { return view->model(table)->pendingThumbnails() == 0; }, 5000);
    }

    std::unique_ptr<TemplateStore> store;
    std::unique_ptr<TemplateSelection> selection;
    std::unique_ptr<TemplateTabView> view;
    std::unique_ptr<QSignalSpy> spy;
};

// First start: the built-in row 297 is selected, applied and in view, its label reads "298",
// and only the rows on screen were decoded. The picture is saved for people to look at.
TEST_F(TemplateTabViewTest, FirstStartSelectsTheDefaultRowAndDecodesOnlyVisibleRows)
{
    TemplateTabView &tabs = show();
    EXPECT_EQ(label(TemplateTable::BuiltIn), QStringLiteral(" "));
    tabs.setFirstTemplate();
    EXPECT_EQ(tabs.currentTable(), TemplateTable::BuiltIn);
    EXPECT_EQ(tabs.selectedRow(TemplateTable::BuiltIn), 297);
    EXPECT_EQ(label(TemplateTable::BuiltIn), QStringLiteral("298"));
    ASSERT_EQ(spy->count(), 1);
    EXPECT_EQ(lastChosen(), std::make_pair(TemplateTable::BuiltIn, qsizetype(297)));
    EXPECT_EQ(defaults->integerForKey(Preferences::SelectedTemplateTableRow), 297);

    QListView *list = tabs.tableView(TemplateTable::BuiltIn);
    const QModelIndex row297 = list->model()->index(297, 0);
    EXPECT_TRUE(list->viewport()->rect().intersects(list->visualRect(row297)));
    QTest::qWait(0);
    ASSERT_TRUE(waitForThumbnails(TemplateTable::BuiltIn));
    // The decoded thumbnail is the row's picture; rows far off screen were never decoded.
    TemplateListModel *model = tabs.model(TemplateTable::BuiltIn);
    list->viewport()->repaint();
    ASSERT_TRUE(waitForThumbnails(TemplateTable::BuiltIn));
    EXPECT_FALSE(row297.data(Qt::DecorationRole).value<QImage>().isNull());
    EXPECT_GT(model->decodedThumbnails(), 0);
    EXPECT_LT(model->decodedThumbnails(), model->rowCount() / 4);
    saveScreenshot(tabs, "template-tabs");
}

// Each selection change is stored under its table's key and applied with the tab in front;
// a cleared selection stores -1 and shows a blank.
TEST_F(TemplateTabViewTest, SelectionChangesAreStoredAndApplied)
{
    addUserTemplates({makeTemplate(2, 1), makeTemplate(3, 2), makeTemplate(4, 3)});
    TemplateTabView &tabs = show();
    struct Step {
        const char *name;
        TemplateTable tab;
        int clickRow; // -1: clear the table's selection
        const QString &key;
        qint64 stored;
        const char *label;
        int chosen; // the row applied, -1: nothing applied
        Qt::MouseButton button;
    } steps[] = {
        {"built-in click", TemplateTable::BuiltIn, 5, Preferences::SelectedTemplateTableRow, 5, "6", 5, Qt::LeftButton},
        // A right click is for the row's menu: it changes neither the selection nor the collage.
        {"built-in right click", TemplateTable::BuiltIn, 9, Preferences::SelectedTemplateTableRow, 5, "6", -1, Qt::RightButton},
        {"built-in cleared", TemplateTable::BuiltIn, -1, Preferences::SelectedTemplateTableRow, -1, " ", -1, Qt::LeftButton},
        {"user click", TemplateTable::User, 2, Preferences::SelectedUserTemplateTableRow, 2, "3", 2, Qt::LeftButton},
        {"user cleared", TemplateTable::User, -1, Preferences::SelectedUserTemplateTableRow, -1, " ", -1, Qt::LeftButton},
    };
    for (const Step &s : steps) {
        tabs.setCurrentTable(s.tab);
        spy->clear();
        if (s.clickRow >= 0)
            click(s.tab, s.clickRow, s.button);
        else
            tabs.tableView(s.tab)->clearSelection();
        EXPECT_EQ(defaults->integerForKey(s.key), s.stored) << s.name;
        EXPECT_EQ(label(s.tab), QString::fromLatin1(s.label)) << s.name;
        if (s.chosen < 0) {
            EXPECT_TRUE(spy->isEmpty()) << s.name;
        } else {
            ASSERT_EQ(spy->count(), 1) << s.name;
            EXPECT_EQ(lastChosen(), std::make_pair(s.tab, qsizetype(s.chosen))) << s.name;
        }
    }
}

// Switching tabs restores the tab's saved row and applies it (again, even when the restoring
// selection already did).
TEST_F(TemplateTabViewTest, SwitchingTabsRestoresAndAppliesTheSavedRow)
{
    addUserTemplates({makeTemplate(2, 1), makeTemplate(3, 2)});
    defaults->setInteger(1, Preferences::SelectedUserTemplateTableRow);
    TemplateTabView &tabs = show();
    tabs.setCurrentTable(TemplateTable::User);
    EXPECT_EQ(tabs.selectedRow(TemplateTable::User), 1);
    EXPECT_EQ(label(TemplateTable::User), QStringLiteral("2"));
    ASSERT_EQ(spy->count(), 2);
    EXPECT_EQ(lastChosen(), std::make_pair(TemplateTable::User, qsizetype(1)));

    // Show Default Template from the user tab brings the built-in row 297 to the front.
    tabs.showDefaultTemplate();
    EXPECT_EQ(tabs.currentTable(), TemplateTable::BuiltIn);
    EXPECT_EQ(tabs.selectedRow(TemplateTable::BuiltIn), 297);
    EXPECT_EQ(label(TemplateTable::BuiltIn), QStringLiteral("298"));
    EXPECT_EQ(lastChosen(), std::make_pair(TemplateTable::BuiltIn, qsizetype(297)));
}

// The slider sets every row's height to its thumbnail's height at the slider's percent; the
// selection stays where it was.
TEST_F(TemplateTabViewTest, SliderScalesRowHeights)
{
    TemplateTabView &tabs = show();
    tabs.setFirstTemplate();
    QListView *list = tabs.tableView(TemplateTable::BuiltIn);
    for (int percent : {100, 50, 200, 25}) {
        tabs.slider(TemplateTable::BuiltIn)->setValue(percent);
        QTest::qWait(0);
        for (int row : {0, 1, 297}) {
            const QModelIndex index = list->model()->index(row, 0);
            list->scrollTo(index);
            const double expected = TemplateTables::rowHeight(store->builtInTemplateAt(row), percent, TemplateTable::BuiltIn);
            ASSERT_GT(expected, 0.0);
            EXPECT_NEAR(list->visualRect(index).height(), expected, 1.0) << percent << " " << row;
        }
        EXPECT_EQ(tabs.selectedRow(TemplateTable::BuiltIn), 297) << percent;
    }
}

} // namespace
