#include "CliRunner.h"

#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class DefaultsCommandTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    void SetUp() override { qputenv("TESSARY_DEFAULTS", dir.filePath(QStringLiteral("defaults.sqlite")).toLocal8Bit()); }
    void TearDown() override { qunsetenv("TESSARY_DEFAULTS"); }

    CliRun run(const QStringList &args) { return CliRun::of(args); }
    QString file(const QString &name, const QVariant &value, PropertyList::Format format = PropertyList::Format::Xml)
    {
        const QString path = dir.filePath(name);
        PropertyList::writeFile(path, value, format);
        return path;
    }
};

TEST_F(DefaultsCommandTest, WriteReadDeleteOneKey)
{
    // (How the store keeps every kind of value is the store's own test.)
    const QVariant expected = QVariantList{qint64(1), 2.5, QStringLiteral("three")};
    const QString value = file(QStringLiteral("v.plist"), expected, PropertyList::Format::Binary);
    EXPECT_EQ(run({"defaults", "write", "Bookmarks", value}).code, 0);
    const CliRun read = run({"defaults", "read", "Bookmarks"});
    ASSERT_EQ(read.code, 0) << read.err.toStdString();
    const auto parsed = PropertyList::fromBytes(read.out.toUtf8(), QStringLiteral("out"));
    ASSERT_TRUE(parsed.ok()) << parsed.error.toStdString();
    EXPECT_EQ(parsed.value, expected);
    EXPECT_EQ(run({"defaults", "delete", "Bookmarks"}).code, 0);
    const CliRun missing = run({"defaults", "read", "Bookmarks"});
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("\"Bookmarks\""))) << missing.err.toStdString();
    EXPECT_EQ(run({"defaults", "delete", "Bookmarks"}).code, 1);
}

TEST_F(DefaultsCommandTest, BadArgumentsAndInputsFailWithAMessage)
{
    QFile junk(dir.filePath(QStringLiteral("junk.plist")));
    junk.open(QIODevice::WriteOnly);
    junk.write("not a plist");
    junk.close();
    const QString array = file(QStringLiteral("array.plist"), QVariantList{qint64(1)});
    const std::vector<std::pair<QStringList, int>> cases{
        {{"defaults"}, 2},
        {{"defaults", "frobnicate"}, 2},
        {{"defaults", "write", "K"}, 2},
        {{"defaults", "write", "K", dir.filePath(QStringLiteral("absent.plist"))}, 1},
        {{"defaults", "write", "K", junk.fileName()}, 1},
        {{"defaults", "import", array}, 1},
        {{"defaults", "export", dir.filePath(QStringLiteral("no/such/dir/out.plist"))}, 1},
        {{"nonsense"}, 2},
    };
    for (const auto &[args, code] : cases) {
        SCOPED_TRACE(args.join(' ').toStdString());
        const CliRun r = run(args);
        EXPECT_EQ(r.code, code);
        EXPECT_FALSE(r.err.isEmpty());
    }
    EXPECT_EQ(run({"defaults", "--help"}).code, 0);
}

TEST_F(DefaultsCommandTest, TemplateInfoDescribesEachTemplateAndRefusesOtherFiles)
{
    const QVariantMap t{{QStringLiteral("nbrModules"), qint64(4)}, {QStringLiteral("contentSizeWidth"), 800.0},
                        {QStringLiteral("contentSizeHeight"), 600.0}, {QStringLiteral("moduleSizeInPoints"), qint64(100)},
                        {QStringLiteral("borderWidth"), qint64(2)},
                        {QStringLiteral("savedTessaryDataModules"), QVariantList{QVariantMap{}, QVariantMap{}, QVariantMap{}, QVariantMap{}}},
                        {QStringLiteral("thumbnail"), QByteArray("png")}};
    const QString good = file(QStringLiteral("t.plist"), QVariantMap{{QStringLiteral("templates"), QVariantList{t, QVariantMap{}}}},
                              PropertyList::Format::Binary);
    const CliRun r = run({"template", "info", good});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QStringList lines = r.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0], QStringLiteral("1\tnbrModules=4\tcontent=800x600\tmodule=100\tborder=2\tmodules=4\tthumbnail=yes"));
    EXPECT_TRUE(lines[1].endsWith(QStringLiteral("modules=0\tthumbnail=no")));

    const QString notTemplates = file(QStringLiteral("n.plist"), QVariantMap{{QStringLiteral("other"), qint64(1)}});
    const CliRun bad = run({"template", "info", notTemplates});
    EXPECT_EQ(bad.code, 1);
    EXPECT_TRUE(bad.err.contains(QStringLiteral("not a templates file"))) << bad.err.toStdString();
}

// Rows an older version let in: a key holding NUL, a string holding U+0001, and a value that no
// longer reads (written by something else, or damaged). Each is left out of read and of export
// (to a file or to standard output) with a warning that names it, the keys that do read are
// exported all the same, and each is deleted by the name it is shown by.
TEST_F(DefaultsCommandTest, ValuesThatCannotBeExportedAreLeftOutNamedAndDeletable)
{
    const QString store = dir.filePath(QStringLiteral("defaults.sqlite"));
    ASSERT_EQ(run({"defaults", "import", file(QStringLiteral("in.plist"), QVariantMap{{QStringLiteral("kept"), qint64(1)}})}).code, 0);
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("old-version"));
        db.setDatabaseName(store);
        ASSERT_TRUE(db.open());
        const std::pair<QString, QByteArray> rows[] = {
            {QStringLiteral("bad") + QChar(0) + QStringLiteral("key"), PropertyList::toBinary(qint64(2))},
            {QStringLiteral("control"), PropertyList::toBinary(QStringLiteral("a\u0001b"))},
            {QStringLiteral("unreadable"), QByteArray("not a property list")},
        };
        for (const auto &[key, value] : rows) {
            QSqlQuery q(db);
            q.prepare(QStringLiteral("INSERT INTO defaults (key, value) VALUES (?, ?)"));
            q.addBindValue(key);
            q.addBindValue(value);
            ASSERT_TRUE(q.exec());
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("old-version"));

    const QString out = dir.filePath(QStringLiteral("out.plist"));
    for (const QStringList &args : {QStringList{"defaults", "export", "-"}, QStringList{"defaults", "export", out},
                                    QStringList{"defaults", "read"}}) {
        const CliRun r = CliRun::of(args);
        EXPECT_EQ(r.code, 0) << args.join(' ').toStdString();
        EXPECT_TRUE(r.err.contains(QStringLiteral("defaults delete 'bad\\u{0000}key'"))) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QStringLiteral("defaults delete 'control'"))) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QStringLiteral("\"unreadable\" left out"))) << r.err.toStdString();
        const PropertyList::ReadResult back = args.last() == out ? PropertyList::fromFile(out)
                                                                 : PropertyList::fromBytes(r.out.toUtf8(), QStringLiteral("export"));
        ASSERT_TRUE(back.ok()) << back.error.toStdString();
        EXPECT_EQ(back.value, QVariant(QVariantMap{{QStringLiteral("kept"), qint64(1)}}));
    }
    EXPECT_EQ(CliRun::of({"defaults", "delete", "bad\\u{0000}key"}).code, 0);
    EXPECT_EQ(CliRun::of({"defaults", "delete", "control"}).code, 0);
    EXPECT_EQ(CliRun::of({"defaults", "delete", "unreadable"}).code, 0);
    const CliRun clean = CliRun::of({"defaults", "export", "-"});
    EXPECT_EQ(clean.code, 0) << clean.err.toStdString();
    EXPECT_EQ(UserDefaults(store).allKeys(), QStringList{QStringLiteral("kept")});
}

} // namespace
