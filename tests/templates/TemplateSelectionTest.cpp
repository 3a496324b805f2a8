#include "templates/TemplateSelection.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/LayoutEngine.h"
#include "support/FakePhotoList.h"
#include "templates/TemplateStore.h"
#include "TemplateTestData.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

class TemplateSelectionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TemplateStore::Templates builtIn;
        for (int i = 0; i < 300; ++i)
            builtIn << TemplateStore::makeTemplate(makeTemplate(1 + i / 10, 1000 + i));
        store.setBuiltInTemplates(builtIn);
        store.addTemplatesFromDictionary(file({makeTemplate(2, 1), makeTemplate(3, 2)}));
    }
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("defaults.sqlite"))};
    TemplateStore store{defaults};
    TemplateSelection selection{store, defaults};
};

TEST_F(TemplateSelectionTest, SavedRowsWithDefaultsAndRangeCheck)
{
    EXPECT_EQ(selection.savedRow(TemplateTable::BuiltIn), 297);
    EXPECT_EQ(selection.savedRow(TemplateTable::User), 0);
    EXPECT_EQ(selection.selectionDidChange(TemplateTable::BuiltIn, 297), QStringLiteral("298"));
    EXPECT_EQ(selection.selectionDidChange(TemplateTable::User, -1), QStringLiteral(" "));
    EXPECT_EQ(defaults.integerForKey(Preferences::SelectedUserTemplateTableRow), -1);
    EXPECT_EQ(selection.savedRow(TemplateTable::User), -1);
    selection.selectionDidChange(TemplateTable::User, 1);
    EXPECT_EQ(store.selectedUserRow(), 1);
    store.removeTemplateAtRow(1);
    EXPECT_EQ(selection.savedRow(TemplateTable::User), -1); // row 1 is gone
    defaults.setInteger(5000, Preferences::SelectedTemplateTableRow);
    EXPECT_EQ(selection.savedRow(TemplateTable::BuiltIn), -1);
}

TEST_F(TemplateSelectionTest, ChoosingAppliesToTheCurrentTabsStore)
{
    LayoutEngine engine;
    const FakePhotoList photos = FakePhotoList::numbered(3);
    // Built-in row 2 has id 1002 as its width: 10 columns of 100 points, one row.
    const auto layout = selection.doChooseTemplate(TemplateTable::BuiltIn, 2, engine, QSizeF(1002, 1000), &photos);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->tiles.size(), 1u);
    EXPECT_EQ(layout->columns, 10u);
    EXPECT_EQ(layout->tiles[0].imagePath, photos.pickedPhotos()[0]);
    const auto user = selection.doChooseTemplate(TemplateTable::User, 1, engine, QSizeF(1000, 1000), &photos);
    ASSERT_TRUE(user);
    EXPECT_EQ(user->tiles.size(), 0u); // a template 2 points wide has no whole cell
    EXPECT_EQ(defaults.floatForKey(Preferences::ContentSizeWidth), 2.0f);
    EXPECT_FALSE(selection.doChooseTemplate(TemplateTable::User, 2, engine, QSizeF(1000, 1000), &photos));
}

// Which contextual menu items a click enables: in the user table a held template for paste, a
// non-empty store for the whole-store items and a row of it under the click for the rest; in
// the built-in table exporting all always, the single-template items for any row.
TEST_F(TemplateSelectionTest, MenuItemsFollowTheClick)
{
    using M = TemplateSelection::MenuState;
    const auto row = [](bool paste, bool all) { return M{paste, all, all, true, true, true, true, true}; };
    const auto noRow = [](bool paste, bool all) { return M{paste, all, all, false, false, false, false, false}; };
    const struct {
        const char *name;
        TemplateTable table;
        bool emptyStore, held;
        qsizetype row;
        M expected;
    } cases[] = {
        {"user row", TemplateTable::User, false, false, 1, row(false, true)},
        {"user row, a template held", TemplateTable::User, false, true, 0, row(true, true)},
        {"user empty space", TemplateTable::User, false, false, -1, noRow(false, true)},
        {"user row past the store", TemplateTable::User, false, false, 2, noRow(false, true)},
        {"empty user store, a template held", TemplateTable::User, true, true, -1, noRow(true, false)},
        {"empty user store", TemplateTable::User, true, false, -1, noRow(false, false)},
        {"built-in row", TemplateTable::BuiltIn, false, true, 1, M{false, false, true, false, true, true, true, true}},
        {"built-in empty space", TemplateTable::BuiltIn, true, true, -1, M{false, false, true}},
    };
    for (const auto &c : cases) {
        if (c.emptyStore)
            store.clearUserTemplates();
        const M got = selection.menuNeedsUpdate(c.table, c.held, c.row);
        const auto fields = [](const M &m) {
            return std::vector<bool>{m.paste, m.deleteAll, m.exportAll, m.deleteOne, m.exportOne, m.copyIcon, m.saveIcon,
                                     m.saveTemplateAndIcon};
        };
        EXPECT_EQ(fields(got), fields(c.expected)) << c.name;
        if (c.emptyStore)
            store.addTemplatesFromDictionary(file({makeTemplate(2, 1), makeTemplate(3, 2)}));
    }
}

} // namespace
