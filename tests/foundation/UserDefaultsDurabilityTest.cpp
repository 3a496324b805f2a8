#include "foundation/UserDefaults.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

namespace {

QVariant expectedValue(qint64 i)
{
    return (i % 7 == 0) ? QVariant(QByteArray(20000 + int(i % 5000), char('a' + i % 26)))
                        : QVariant(QVariantMap{{QStringLiteral("n"), i}});
}

bool integrityOk(const QString &path)
{
    const QString name = QStringLiteral("durability-check");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        if (db.open()) {
            QSqlQuery q(db);
            ok = q.exec(QStringLiteral("PRAGMA integrity_check")) && q.next() && q.value(0).toString() == QLatin1String("ok");
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

// Starts the writer on the store again and again, kills it with SIGKILL at a random moment each
// time, and hands `check` the highest number the writer confirmed so far (-1 before any); check
// answers the number to start the next writer at.
void killWriterRepeatedly(const QString &store, const QStringList &mode, int rounds,
                          const std::function<qint64(qint64 confirmed, int round)> &check)
{
    const QString writer = QStringLiteral(TESSARY_BINARY_DIR "/bin/tool_defaults_writer");
    ASSERT_TRUE(QFile::exists(writer)) << writer.toStdString();
    QRandomGenerator random(20261121);
    qint64 next = 0;
    qint64 confirmed = -1;
    for (int round = 0; round < rounds; ++round) {
        QProcess process;
        process.start(writer, QStringList{store, QString::number(next)} + mode);
        ASSERT_TRUE(process.waitForStarted(10000));
        // Let it write for a random while, sometimes killing it before its first write.
        process.waitForReadyRead(int(random.bounded(1, 40)));
        QThread::msleep(random.bounded(0, 25));
        ::kill(pid_t(process.processId()), SIGKILL);
        ASSERT_TRUE(process.waitForFinished(10000));
        const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
        for (const QByteArray &line : lines) {
            bool ok = false;
            const qint64 n = line.toLongLong(&ok);
            if (ok)
                confirmed = std::max(confirmed, n);
        }
        ASSERT_TRUE(integrityOk(store)) << "round " << round;
        next = check(confirmed, round);
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

// After every kill the store must open without being moved aside, pass its integrity check, and
// hold every value whose write had returned (the writer prints a number only after its write
// returned).
TEST(UserDefaultsDurability, SurvivesTwoHundredKillsMidWrite)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(QStringLiteral("defaults.sqlite"));
    qint64 last = -1;
    killWriterRepeatedly(store, {}, 200, [&](qint64 confirmed, int round) -> qint64 {
        last = confirmed;
        UserDefaults defaults(store);
        EXPECT_TRUE(defaults.isOpen()) << defaults.errorString().toStdString();
        EXPECT_TRUE(defaults.movedAsidePath().isEmpty()) << "round " << round;
        // Every confirmed value is there; spot-check the newest ones.
        for (qint64 i = std::max<qint64>(0, confirmed - 3); i <= confirmed; ++i)
            EXPECT_EQ(defaults.objectForKey(QStringLiteral("key-%1").arg(i)), expectedValue(i)) << "key " << i << " round " << round;
        qint64 next = confirmed + 1;
        // A write that was under way when the kill came may or may not have landed; start after it.
        while (defaults.hasObject(QStringLiteral("key-%1").arg(next)))
            ++next;
        return next;
    });
    UserDefaults defaults(store);
    for (qint64 i = 0; i <= last; ++i)
        ASSERT_EQ(defaults.objectForKey(QStringLiteral("key-%1").arg(i)), expectedValue(i)) << "key " << i;
    EXPECT_GT(last, 200) << "the writer barely wrote; the test proves little";
}

// A change of a dictionary kept as rows (the image cache's save at quit) lands whole or not at
// all: after every kill the rows are exactly those of one change, the confirmed one or the one
// under way, never a mix.
TEST(UserDefaultsDurability, KilledEntryWritesLeaveOneWholeChange)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(QStringLiteral("defaults.sqlite"));
    qint64 last = -1;
    qint64 landed = -1;
    killWriterRepeatedly(store, {QStringLiteral("entries")}, 40, [&](qint64 confirmed, int round) -> qint64 {
        last = confirmed;
        UserDefaults defaults(store);
        const QVariantMap rows = defaults.dictionaryForKey(QStringLiteral("image cache"));
        if (confirmed < 0 && rows.isEmpty())
            return 0;
        const qint64 n = rows.first().toMap().value(QStringLiteral("n")).toLongLong();
        // The confirmed change, or a later one that landed before its number was printed.
        EXPECT_GE(n, std::max(confirmed, landed)) << "round " << round;
        landed = n;
        QStringList names;
        for (int k = 0; k < 8; ++k)
            names.append(QStringLiteral("entry-%1").arg((n + k) % 16));
        names.sort();
        EXPECT_EQ(QStringList(rows.keys()), names) << "round " << round;
        for (const QVariant &row : rows) {
            EXPECT_EQ(row.toMap().value(QStringLiteral("n")).toLongLong(), n) << "round " << round;
            EXPECT_EQ(row.toMap().value(QStringLiteral("image")).toByteArray(), QByteArray(40000, char('a' + n % 26)));
        }
        return n + 1;
    });
    EXPECT_GT(last, 40) << "the writer barely wrote; the test proves little";
}

} // namespace
