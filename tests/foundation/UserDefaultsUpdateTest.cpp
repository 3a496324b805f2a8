#include "foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

const QString a = QStringLiteral("a");
const QString b = QStringLiteral("b");
const QString c = QStringLiteral("c");

// What update() hands to the change, what it writes back, and what it refuses.
TEST(UserDefaultsUpdate, WritesWhatTheChangeLeavesAndNothingOnRefusal)
{
    const struct Case {
        const char *name;
        QVariantMap before;
        QStringList keys;
        std::function<bool(QVariantMap &)> change;
        bool committed;
        QVariantMap after;
    } cases[] = {
        {"absent keys are missing, added ones are written", {}, {a},
         [](QVariantMap &v) { return !v.contains(a) && (v.insert(a, qint64(1)), true); }, true, {{a, qint64(1)}}},
        {"a list is read, extended and written back", {{a, QVariantList{qint64(1)}}}, {a},
         [](QVariantMap &v) {
             QVariantList list = v.value(a).toList();
             list.append(qint64(2));
             v.insert(a, list);
             return true;
         },
         true, {{a, QVariantList{qint64(1), qint64(2)}}}},
        {"a removed key is removed, others stay", {{a, qint64(1)}, {b, qint64(2)}}, {a, b},
         [](QVariantMap &v) { return v.remove(a) == 1; }, true, {{b, qint64(2)}}},
        {"an abandoned change writes nothing", {{a, qint64(1)}}, {a},
         [](QVariantMap &v) { v.insert(a, qint64(9)); return false; }, false, {{a, qint64(1)}}},
        {"a key that was not read is refused", {{a, qint64(1)}}, {a},
         [](QVariantMap &v) { v.insert(a, qint64(2)); v.insert(c, qint64(3)); return true; }, false, {{a, qint64(1)}}},
        {"one value XML cannot carry refuses all", {{a, qint64(1)}}, {a, b},
         [](QVariantMap &v) { v.insert(a, qint64(2)); v.insert(b, QStringLiteral("x\u0001")); return true; }, false, {{a, qint64(1)}}},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(test.name);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.sqlite"));
        UserDefaults d(path);
        ASSERT_TRUE(d.setValuesForKeys(test.before));
        EXPECT_EQ(d.update(test.keys, test.change), test.committed) << d.errorString().toStdString();
        // Another connection to the file sees the same: the change committed, or nothing did.
        EXPECT_EQ(UserDefaults(path).dictionaryRepresentation(), test.after);
    }
}

} // namespace
