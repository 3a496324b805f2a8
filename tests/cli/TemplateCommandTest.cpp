#include "CliRunner.h"

#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "templates/TemplateTables.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QVariantMap moduleDict(qint64 w, qint64 h)
{
    return {{QStringLiteral("widthFactor"), w}, {QStringLiteral("heightFactor"), h}};
}

QVariantMap makeTemplate(qint64 nbr, QVariantList modules, double width = 400, double height = 300)
{
    return {{QStringLiteral("nbrModules"), nbr},
            {QStringLiteral("contentSizeWidth"), width},
            {QStringLiteral("contentSizeHeight"), height},
            {QStringLiteral("moduleSizeInPoints"), qint64(100)},
            {QStringLiteral("borderWidth"), qint64(0)},
            {QStringLiteral("savedTessaryDataModules"), modules}};
}

class TemplateCommandTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    void SetUp() override
    {
        qputenv("TESSARY_DEFAULTS", dir.filePath(QStringLiteral("defaults.sqlite")).toLocal8Bit());
        qputenv("TESSARY_RESOURCES", dir.filePath(QStringLiteral("res")).toLocal8Bit());
        qputenv("TESSARY_DOCUMENTS", dir.filePath(QStringLiteral("docs")).toLocal8Bit());
        QDir().mkpath(dir.filePath(QStringLiteral("res/Templates")));
        // A user store that has a (empty) photo list already, so no factory photos are added.
        UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
        defaults.setObject(QVariantList{}, Preferences::Bookmarks);
        defaults.setObject(QVariantList{}, Preferences::Aligments);
        defaults.setBool(false, Preferences::FirstRunLoadFactoryImages);
    }
    void TearDown() override
    {
        for (const char *name : {"TESSARY_DEFAULTS", "TESSARY_RESOURCES", "TESSARY_DOCUMENTS"})
            qunsetenv(name);
    }
    QString write(const QString &name, const QVariant &value)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(PropertyList::writeFile(path, value, PropertyList::Format::Binary));
        return path;
    }
    static QVariantMap file(const QVariantList &templates) { return {{QStringLiteral("templates"), templates}}; }
};

TEST_F(TemplateCommandTest, ImportApplyAndLayOut)
{
    // Built-in store: two templates in the resources, listed sorted by module count.
    write(QStringLiteral("res/templates.plist"), file({makeTemplate(3, {}), makeTemplate(1, {})}));
    const QString mine = write(QStringLiteral("mine.plist"),
                               file({makeTemplate(4, {moduleDict(2, 2), moduleDict(2, 1), moduleDict(2, 2), moduleDict(4, 1)})}));
    EXPECT_EQ(CliRun::of({"template", "import", mine}).code, 0);

    const CliRun list = CliRun::of({"template", "list"});
    ASSERT_EQ(list.code, 0);
    const QStringList lines = list.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("builtin\t1\tnbrModules=1")));
    EXPECT_TRUE(lines[2].startsWith(QStringLiteral("user\t1\tnbrModules=4")));

    // Numbered from 1, as the window labels the selected row.
    ASSERT_EQ(CliRun::of({"template", "apply-user", "1"}).code, 0);
    const qint64 userRow = UserDefaults(dir.filePath(QStringLiteral("defaults.sqlite"))).integerForKey(Preferences::SelectedUserTemplateTableRow);
    EXPECT_EQ(userRow, 0);
    EXPECT_EQ(TemplateTables::selectedRowLabel(userRow), QStringLiteral("1"));
    const CliRun layout = CliRun::of({"template", "layout"});
    ASSERT_EQ(layout.code, 0) << layout.err.toStdString();
    EXPECT_TRUE(layout.out.startsWith(QStringLiteral("collage 400x300 grid 4x3 cell 100")));
    EXPECT_TRUE(layout.out.contains(QStringLiteral("\n0\t4.5,4.5 191x191\t(placeholder) ")));
    EXPECT_TRUE(layout.out.contains(QStringLiteral("\n1\t204.5,2.25 191x95.5\t")));
    EXPECT_TRUE(layout.out.contains(QStringLiteral("\n3\tfits nowhere\n")));

    // Fitted to half the width: cells of 50 points.
    const CliRun half = CliRun::of({"template", "layout", "--size", "200x1000", "--spacing", "1"});
    EXPECT_TRUE(half.out.startsWith(QStringLiteral("collage 200x150 grid 4x3 cell 50"))) << half.out.toStdString();
    EXPECT_TRUE(half.out.contains(QStringLiteral("\n0\t-2.25,-2.25 104.5x104.5\t")));

    ASSERT_EQ(CliRun::of({"template", "apply", "2"}).code, 0);
    const qint64 builtInRow = UserDefaults(dir.filePath(QStringLiteral("defaults.sqlite"))).integerForKey(Preferences::SelectedTemplateTableRow);
    EXPECT_EQ(TemplateTables::selectedRowLabel(builtInRow), QStringLiteral("2"));
    EXPECT_TRUE(CliRun::of({"template", "layout"}).out.contains(QStringLiteral("no modules")));
}

TEST_F(TemplateCommandTest, EditAndExportMyTemplates)
{
    const QString mine = write(QStringLiteral("mine.plist"), file({makeTemplate(5, {}), makeTemplate(2, {}), makeTemplate(3, {})}));
    ASSERT_EQ(CliRun::of({"template", "import", mine}).code, 0);
    const CliRun sorted = CliRun::of({"template", "sort"});
    EXPECT_TRUE(sorted.out.startsWith(QStringLiteral("user\t1\tnbrModules=2\t")));
    EXPECT_EQ(CliRun::of({"template", "delete", "1"}).code, 0);

    const QString out = dir.filePath(QStringLiteral("all.plist"));
    ASSERT_EQ(CliRun::of({"template", "export-one", out}).code, 0);
    const CliRun info = CliRun::of({"template", "info", out});
    EXPECT_EQ(info.out.count(QLatin1Char('\n')), 2);
    EXPECT_TRUE(info.out.startsWith(QStringLiteral("1\tnbrModules=3")));

    const QString folder = dir.filePath(QStringLiteral("Spring"));
    QDir().mkpath(folder);
    const CliRun many = CliRun::of({"template", "export-many", folder});
    EXPECT_EQ(many.code, 0);
    EXPECT_EQ(many.out, QStringLiteral("Tessary-Templates-Spring.html\n")); // no thumbnails: index only
}

// Four templates told apart by their widths 100-400; their module counts 5, 2, 3, 1 sort them
// as the rows 3, 1, 2, 0. Each change is a separate run over the store: the selection stored
// afterwards and the layout applied follow the template (every kind of change is the store's
// own test).
TEST_F(TemplateCommandTest, SelectionFollowsItsTemplateThroughDeleteAndSort)
{
    const QString mine = write(QStringLiteral("mine.plist"), file({makeTemplate(5, {}, 100), makeTemplate(2, {}, 200),
                                                                   makeTemplate(3, {}, 300), makeTemplate(1, {}, 400)}));
    struct Case {
        const char *name;
        const char *selected;
        QStringList edit;
        qint64 selectedAfter;
        double appliedWidth; // the layout in the store afterwards
    };
    for (const Case &c : {Case{"delete a row above", "3", {"delete", "1"}, 1, 300},
                          Case{"delete the selected row", "2", {"delete", "2"}, 1, 300},
                          Case{"delete the selected last row", "4", {"delete", "4"}, -1, 400},
                          Case{"sort moves it down", "1", {"sort"}, 3, 100}}) {
        SCOPED_TRACE(c.name);
        UserDefaults(dir.filePath(QStringLiteral("defaults.sqlite"))).removeObject(Preferences::UserTemplates);
        ASSERT_EQ(CliRun::of({"template", "import", mine}).code, 0);
        ASSERT_EQ(CliRun::of({"template", "apply-user", c.selected}).code, 0);
        const CliRun edit = CliRun::of(QStringList{"template"} + c.edit);
        EXPECT_EQ(edit.code, 0) << edit.err.toStdString();
        const UserDefaults after(dir.filePath(QStringLiteral("defaults.sqlite")));
        EXPECT_EQ(after.integerForKey(Preferences::SelectedUserTemplateTableRow), c.selectedAfter);
        EXPECT_EQ(after.doubleForKey(Preferences::ContentSizeWidth), c.appliedWidth);
    }
}

// The frames printed are those of the transformed collage, the very ones render lays out.
TEST_F(TemplateCommandTest, LayoutPrintsTheTransformedFramesThatRenderUses)
{
    const QVariantMap t = makeTemplate(4, {moduleDict(2, 2), moduleDict(2, 1), moduleDict(1, 1), moduleDict(1, 1)});
    const QString mine = write(QStringLiteral("mine.plist"), file({t}));
    ASSERT_EQ(CliRun::of({"template", "import", mine}).code, 0);
    ASSERT_EQ(CliRun::of({"template", "apply-user", "1"}).code, 0);
    // Each tile's frame as "x y w h" to a hundredth of a point, read from "i<TAB>x,y wxh<TAB>..."
    // (template layout) or "tile<TAB>i<TAB>x<TAB>y<TAB>w<TAB>h<TAB>..." (render).
    const auto frames = [](const QString &out, bool fromRender) {
        QStringList rects;
        for (const QString &line : out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            const QStringList f = line.split(QRegularExpression(QStringLiteral("[\t, x]")));
            if (fromRender ? f[0] != QLatin1String("tile") : f.size() < 5 || f[0] == QLatin1String("collage"))
                continue;
            QStringList numbers;
            for (const QString &n : f.mid(fromRender ? 2 : 1, 4))
                numbers << QString::number(n.toDouble(), 'f', 2);
            rects << numbers.join(QLatin1Char(' '));
        }
        return rects;
    };
    for (const char *transform : {"0", "1", "2", "3", "4"}) {
        SCOPED_TRACE(transform);
        const CliRun layout = CliRun::of({"template", "layout", "--transform", transform});
        const CliRun render = CliRun::of({"render", "--template", mine, "--increments", "5", "5", "--transform", transform,
                                          "--layout-only"});
        ASSERT_EQ(layout.code, 0) << layout.err.toStdString();
        EXPECT_EQ(frames(layout.out, false).size(), 4);
        EXPECT_EQ(frames(layout.out, false), frames(render.out, true)) << layout.out.toStdString() << render.out.toStdString();
    }
}

// The files that read go in; each one skipped is named with its reason and fails the command.
TEST_F(TemplateCommandTest, ImportNamesEachSkippedFileAndFails)
{
    const QString good = write(QStringLiteral("good.plist"), file({makeTemplate(2, {}), makeTemplate(3, {})}));
    const QString bad = write(QStringLiteral("bad.plist"), QVariantMap{{QStringLiteral("a"), 1}});
    const QString missing = dir.filePath(QStringLiteral("missing.plist"));
    const CliRun r = CliRun::of({"template", "import", missing, good, bad});
    EXPECT_EQ(r.code, 1);
    for (const QString &why : {missing + QStringLiteral(": no such file"), bad + QStringLiteral(": not a templates file")})
        EXPECT_TRUE(r.err.contains(QStringLiteral("template import: skipped ") + why)) << r.err.toStdString();
    EXPECT_EQ(CliRun::of({"template", "list", "user"}).out.count(QLatin1Char('\n')), 2);
    const CliRun none = CliRun::of({"template", "import", bad});
    EXPECT_EQ(none.code, 1);
    EXPECT_TRUE(none.err.contains(QStringLiteral("no templates found in the files given"))) << none.err.toStdString();
}

TEST_F(TemplateCommandTest, ErrorsAndHelp)
{
    struct Case {
        QStringList args;
        int code;
        const char *message;
    };
    for (const Case &c : {Case{{"template"}, 2, "Usage:"},
                          Case{{"template", "frobnicate"}, 2, "unknown action"},
                          Case{{"template", "apply", "1"}, 1, "the store is empty"},
                          Case{{"template", "apply-user", "x"}, 1, "'x' is not a template number"},
                          Case{{"template", "delete", "0"}, 1, "is not a template number"},
                          Case{{"template", "export-many", "/no/such/folder"}, 1, "is not a folder"},
                          Case{{"template", "layout", "--transform", "7"}, 2, "0 to 4"}}) {
        const CliRun r = CliRun::of(c.args);
        EXPECT_EQ(r.code, c.code) << c.args.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains(QLatin1String(c.message))) << r.err.toStdString();
    }
    const CliRun help = CliRun::of({"template", "layout", "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_TRUE(help.out.startsWith(QStringLiteral("Usage: tessary-cli template layout")));
}

} // namespace
