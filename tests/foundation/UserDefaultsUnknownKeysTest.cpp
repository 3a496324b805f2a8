#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace {

// Rows as another (later) version of Tessary may have left them: keys this version never reads,
// values it can read, and a value it cannot read at all.
std::map<QString, QByteArray> foreignRows()
{
    const QVariantMap nested{{QStringLiteral("list"), QVariantList{qint64(1), QStringLiteral("two"), 3.5}},
                             {QStringLiteral("flag"), true}};
    return {
        {QStringLiteral("CollageFromTheFuture"), PropertyList::toBinary(nested)},
        {QStringLiteral("future.string"), PropertyList::toBinary(QStringLiteral("kept"))},
        {QStringLiteral("NotEvenAPropertyList"), QByteArray("\x00\x01\x02 not a plist", 17)},
    };
}

// Runs one statement on the store with a connection of its own, as another program would, and
// gives the first column of its first row, if it has one.
std::optional<QByteArray> raw(const QString &path, const QString &statement, const QVariantList &values)
{
    const QString name = QUuid::createUuid().toString();
    std::optional<QByteArray> first;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        QSqlQuery q(db);
        if (db.open() && q.prepare(statement)) {
            for (const QVariant &v : values)
                q.addBindValue(v);
            if (q.exec() && q.next())
                first = q.value(0).toByteArray();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return first;
}

struct Operation {
    const char *name;
    std::function<void(UserDefaults &)> run;
};

// What this version does to the store in everyday use leaves the rows it does not know as they
// were, byte for byte.
class UserDefaultsUnknownKeys : public ::testing::TestWithParam<Operation> {};

TEST_P(UserDefaultsUnknownKeys, AreKeptAsTheyAre)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("defaults.sqlite"));
    { UserDefaults create(path); ASSERT_TRUE(create.isOpen()); }
    for (const auto &[key, value] : foreignRows())
        raw(path, QStringLiteral("INSERT OR REPLACE INTO defaults (key, value) VALUES (?, ?)"), {key, value});
    {
        UserDefaults defaults(path);
        ASSERT_TRUE(defaults.isOpen());
        GetParam().run(defaults);
        EXPECT_TRUE(defaults.errorString().isEmpty()) << defaults.errorString().toStdString();
    }
    for (const auto &[key, value] : foreignRows()) {
        const std::optional<QByteArray> kept = raw(path, QStringLiteral("SELECT value FROM defaults WHERE key = ?"), {key});
        ASSERT_TRUE(kept.has_value()) << key.toStdString();
        EXPECT_EQ(*kept, value) << key.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UserDefaultsUnknownKeys,
    ::testing::Values(
        Operation{"OpenAndReadEverything", [](UserDefaults &d) {
                      for (const QString &key : d.allKeys())
                          (void)d.objectForKey(key);
                  }},
        Operation{"ResetPreferences", [](UserDefaults &d) { Preferences(d).resetPreferences(); }},
        Operation{"SetAndRemoveOtherKeys", [](UserDefaults &d) {
                      d.setObject(QStringLiteral("x"), QStringLiteral("Other"));
                      d.removeObject(QStringLiteral("Other"));
                  }},
        Operation{"ImportADictionary", [](UserDefaults &d) {
                      d.setValuesForKeys({{Preferences::IconSize, qint64(3)}, {Preferences::RenderEmptyTiles, true}});
                  }},
        Operation{"ReadModifyWriteTransaction", [](UserDefaults &d) {
                      d.update({Preferences::Bookmarks, Preferences::Aligments}, [](QVariantMap &values) {
                          values.insert(Preferences::Bookmarks, QVariantList{QByteArray("/a.jpg")});
                          values.insert(Preferences::Aligments, QVariantList{qint64(0)});
                          return true;
                      });
                  }}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
