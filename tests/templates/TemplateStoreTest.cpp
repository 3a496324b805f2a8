#include "templates/TemplateStore.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/LayoutEngine.h"
#include "model/TessaryData.h"
#include "TemplateTestData.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

class TemplateStoreTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("defaults.sqlite"))};
    TemplateStore store{defaults};

    // A user store holding templates with ids 0 .. n-1 and module counts from `counts`.
    void fill(const std::vector<qint64> &counts)
    {
        QVariantList list;
        for (size_t i = 0; i < counts.size(); ++i)
            list << makeTemplate(counts[i], double(i));
        ASSERT_TRUE(store.addTemplatesFromDictionary(file(list)));
    }
    std::vector<double> storedIds()
    {
        TemplateStore reread(defaults);
        reread.restoreUserTemplates();
        return ids(reread.userTemplates());
    }
};

TEST_F(TemplateStoreTest, BuiltInStoreReadsAllThreePlacesSortedStably)
{
    const QString res = dir.filePath(QStringLiteral("res"));
    QDir().mkpath(res + QStringLiteral("/Templates/sub"));
    ASSERT_TRUE(writePlist(res + QStringLiteral("/templates.plist"), file({makeTemplate(3, 1), makeTemplate(1, 2)})));
    ASSERT_TRUE(writePlist(res + QStringLiteral("/templates_additional.plist"), file({makeTemplate(2, 3)}), PropertyList::Format::Binary));
    ASSERT_TRUE(writePlist(res + QStringLiteral("/Templates/b.plist"), file({makeTemplate(1, 5)})));
    ASSERT_TRUE(writePlist(res + QStringLiteral("/Templates/a-no-extension"), file({makeTemplate(3, 4)})));
    ASSERT_TRUE(writePlist(res + QStringLiteral("/Templates/c.plist"), QVariantMap{{QStringLiteral("other"), 1}}));
    QFile garbage(res + QStringLiteral("/Templates/d.plist"));
    ASSERT_TRUE(garbage.open(QIODevice::WriteOnly));
    garbage.write("not a property list");
    garbage.close();

    store.loadBuiltInTemplates(res);
    // Load order 1, 2, 3, 4 (a-...), 5 (b); stable among equal module counts.
    EXPECT_EQ(ids(store.builtInTemplates()), (std::vector<double>{2, 5, 3, 1, 4}));
    EXPECT_TRUE(TemplateStore::readBuiltInTemplates(dir.filePath(QStringLiteral("missing"))).isEmpty());
}

TEST_F(TemplateStoreTest, InsertRefusesFilesWithoutTemplates)
{
    fill({1});
    QSignalSpy changed(&store, &TemplateStore::userTemplatesChanged);
    for (const QVariant &bad : {QVariant(), QVariant(QVariantMap{}), QVariant(file({})),
                                QVariant(QVariantMap{{QStringLiteral("templates"), QStringLiteral("x")}}),
                                QVariant(QVariantList{makeTemplate(1, 9)}), QVariant(file({QStringLiteral("not a dict")}))}) {
        EXPECT_FALSE(store.insertTemplatesFromDictionary(bad, 0));
    }
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(storedIds(), std::vector<double>{0});
}

TEST_F(TemplateStoreTest, InsertLandsAsOneBlockAndPersists)
{
    fill({1, 1, 1});
    EXPECT_TRUE(store.insertTemplatesFromDictionary(file({makeTemplate(1, 10), makeTemplate(1, 11)}), 1));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{0, 10, 11, 1, 2}));
    EXPECT_TRUE(store.insertTemplatesFromDictionary(file({makeTemplate(1, 12)}), 99));
    EXPECT_EQ(ids(store.userTemplates()).back(), 12);
    EXPECT_EQ(storedIds(), ids(store.userTemplates()));
}

// Every change keeps the selection on the template it was on, found by identity.
struct SelectionCase {
    const char *name;
    qsizetype selectedBefore;
    std::function<void(TemplateStore &)> change;
    std::vector<double> expectedIds;
    qsizetype selectedAfter;
};

void PrintTo(const SelectionCase &c, std::ostream *os) { *os << c.name; }

class KeepSelection : public TemplateStoreTest, public ::testing::WithParamInterface<SelectionCase> {};

TEST_P(KeepSelection, FollowsTheSameTemplate)
{
    const SelectionCase &c = GetParam();
    fill({3, 1, 2, 1});
    // As a click on the row does: the row is saved, then the store told.
    defaults.setInteger(c.selectedBefore, Preferences::SelectedUserTemplateTableRow);
    store.setSelectedUserRow(c.selectedBefore);
    const TemplateStore::Template selected = store.selectedUserTemplate();
    QSignalSpy moved(&store, &TemplateStore::userSelectionChanged);
    c.change(store);
    EXPECT_EQ(ids(store.userTemplates()), c.expectedIds);
    EXPECT_EQ(store.selectedUserRow(), c.selectedAfter);
    if (c.selectedAfter >= 0 && selected && store.userTemplates().contains(selected)) {
        EXPECT_EQ(store.selectedUserTemplate(), selected);
    }
    EXPECT_EQ(moved.count(), c.selectedAfter == c.selectedBefore ? 0 : 1);
    // What is stored says the same: a store read back selects the same row.
    TemplateStore reread(defaults);
    reread.restoreUserTemplates();
    reread.restoreSelectedUserRow();
    EXPECT_EQ(ids(reread.userTemplates()), c.expectedIds);
    EXPECT_EQ(reread.selectedUserRow(), c.selectedAfter);
}

INSTANTIATE_TEST_SUITE_P(
    TemplateStore, KeepSelection,
    ::testing::Values(
        SelectionCase{"InsertBefore", 2, [](TemplateStore &s) { s.insertTemplatesFromDictionary(file({makeTemplate(1, 9)}), 0); },
                      {9, 0, 1, 2, 3}, 3},
        SelectionCase{"InsertAfter", 1, [](TemplateStore &s) { s.addTemplatesFromDictionary(file({makeTemplate(1, 9)})); },
                      {0, 1, 2, 3, 9}, 1},
        SelectionCase{"DeleteBefore", 2, [](TemplateStore &s) { s.removeTemplateAtRow(0); }, {1, 2, 3}, 1},
        SelectionCase{"DeleteAfter", 1, [](TemplateStore &s) { s.removeTemplateAtRow(3); }, {0, 1, 2}, 1},
        // The selected template itself is gone: the row number stays while it is a row.
        SelectionCase{"DeleteSelected", 1, [](TemplateStore &s) { s.removeTemplateAtRow(1); }, {0, 2, 3}, 1},
        SelectionCase{"DeleteSelectedLast", 3, [](TemplateStore &s) { s.removeTemplateAtRow(3); }, {0, 1, 2}, -1},
        SelectionCase{"SortMovesSelection", 0, [](TemplateStore &s) { s.sortUserTemplates(); }, {1, 3, 2, 0}, 3},
        SelectionCase{"SortIsStable", 3, [](TemplateStore &s) { s.sortUserTemplates(); }, {1, 3, 2, 0}, 1},
        // Row 0 dropped above row 3 lands at index 2.
        SelectionCase{"MoveDown", 0, [](TemplateStore &s) { s.moveTemplate(0, 3); }, {1, 2, 0, 3}, 2},
        SelectionCase{"MoveUp", 1, [](TemplateStore &s) { s.moveTemplate(3, 0); }, {3, 0, 1, 2}, 2},
        SelectionCase{"MoveToEnd", 0, [](TemplateStore &s) { s.moveTemplate(0, 4); }, {1, 2, 3, 0}, 3},
        SelectionCase{"Swap", 3, [](TemplateStore &s) { s.swapTemplates(0, 3); }, {3, 1, 2, 0}, 0},
        SelectionCase{"OutOfRangeChangesNothing", 2, [](TemplateStore &s) {
                          s.removeTemplateAtRow(4); s.moveTemplate(-1, 0); s.swapTemplates(0, 7); },
                      {0, 1, 2, 3}, 2},
        SelectionCase{"Clear", 2, [](TemplateStore &s) { s.clearUserTemplates(); }, {}, -1},
        SelectionCase{"NoSelection", -1, [](TemplateStore &s) { s.removeTemplateAtRow(0); }, {1, 2, 3}, -1}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(TemplateStoreTest, RestoreKeepsEveryTemplate)
{
    fill({2, 5, 1});
    TemplateStore reread(defaults);
    reread.restoreUserTemplates();
    ASSERT_EQ(reread.userTemplates().size(), 3);
    for (qsizetype i = 0; i < 3; ++i)
        EXPECT_EQ(*reread.userTemplates()[i], *store.userTemplates()[i]);

    // Only a saved row that is still a row selects one.
    for (const auto &[saved, restored] : std::vector<std::pair<QVariant, qsizetype>>{
             {QVariant(), -1}, {qint64(2), 2}, {qint64(3), -1}, {qint64(-1), -1}, {qint64(0), 0}}) {
        defaults.setObject(saved, Preferences::SelectedUserTemplateTableRow);
        reread.restoreSelectedUserRow();
        EXPECT_EQ(reread.selectedUserRow(), restored) << saved.toString().toStdString();
    }
}

TEST_F(TemplateStoreTest, ApplyingWritesLayoutValuesInOrder)
{
    defaults.setObject(QStringLiteral("old colour"), Preferences::BackgroundColor);
    defaults.setInteger(7, Preferences::BorderWidth);

    struct Case {
        QVariantMap extra;
        bool dropBorderWidth;
        QVariant expectedColor, expectedImage;
    };
    const QVariant oldColor(QStringLiteral("old colour"));
    for (const Case &c : {Case{{}, false, oldColor, QVariant()},
                          Case{{{QStringLiteral("backgroundColor"), QStringLiteral("blue")}}, true, QStringLiteral("blue"), QVariant()},
                          Case{{{QStringLiteral("backgroundColor"), QStringLiteral("blue")}, {QStringLiteral("backgroundImage"), QStringLiteral("img")}},
                               false, QVariant(), QStringLiteral("img")}}) {
        defaults.setObject(QStringLiteral("old colour"), Preferences::BackgroundColor);
        defaults.removeObject(Preferences::BackgroundImage);
        QVariantMap t = makeTemplate(2, 300);
        for (auto it = c.extra.cbegin(); it != c.extra.cend(); ++it)
            t.insert(it.key(), it.value());
        if (c.dropBorderWidth)
            t.remove(QStringLiteral("borderWidth"));
        LayoutEngine engine;
        TemplateStore::setUserDefaultsFromDataDictionary(defaults, t, &engine);

        EXPECT_EQ(engine.tessaryDataModules().size(), 2u);
        EXPECT_TRUE(engine.tessaryDataModules()[0]->empty());
        EXPECT_EQ(defaults.objectForKey(Preferences::SavedTessaryDataModules), t.value(QStringLiteral("savedTessaryDataModules")));
        EXPECT_EQ(Preferences(defaults).contentSizeWidth(), 300.0f);
        EXPECT_EQ(Preferences(defaults).moduleSizeInPoints(), 100);
        EXPECT_EQ(defaults.hasObject(Preferences::BorderWidth), !c.dropBorderWidth);
        EXPECT_EQ(defaults.objectForKey(Preferences::BackgroundColor), c.expectedColor);
        EXPECT_EQ(defaults.objectForKey(Preferences::BackgroundImage), c.expectedImage);
    }
}

TEST_F(TemplateStoreTest, ApplyingByRowIgnoresMissingRows)
{
    fill({4});
    store.setBuiltInTemplates({TemplateStore::makeTemplate(makeTemplate(1, 50))});
    EXPECT_TRUE(store.setUserDefaultsFromUserTemplateData(0));
    EXPECT_EQ(Preferences(defaults).contentSizeWidth(), 0.0f); // id 0
    EXPECT_TRUE(store.setUserDefaultsFromBuiltInTemplateData(0));
    EXPECT_EQ(Preferences(defaults).contentSizeWidth(), 50.0f);
    EXPECT_FALSE(store.setUserDefaultsFromUserTemplateData(1));
    EXPECT_FALSE(store.setUserDefaultsFromBuiltInTemplateData(-1));
    EXPECT_EQ(Preferences(defaults).contentSizeWidth(), 50.0f);
}

} // namespace
