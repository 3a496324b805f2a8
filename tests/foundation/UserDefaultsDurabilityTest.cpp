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

// A writer process is killed with SIGKILL at random moments, again and again. After every kill the
// store must open without being moved aside, pass its integrity check, and hold every value whose
// write had returned (the writer prints a number only after its write returned).
TEST(UserDefaultsDurability, SurvivesTwoHundredKillsMidWrite)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(QStringLiteral("defaults.sqlite"));
    const QString writer = QStringLiteral(TESSARY_BINARY_DIR "/bin/tool_defaults_writer");
    ASSERT_TRUE(QFile::exists(writer)) << writer.toStdString();
    QRandomGenerator random(20261121);
    qint64 next = 0;
    qint64 confirmed = -1;
    int kills = 0;
    for (int round = 0; round < 200; ++round) {
        QProcess process;
        process.start(writer, {store, QString::number(next)});
        ASSERT_TRUE(process.waitForStarted(10000));
        // Let it write for a random while, sometimes killing it before its first write.
        process.waitForReadyRead(int(random.bounded(1, 40)));
        QThread::msleep(random.bounded(0, 25));
        ::kill(pid_t(process.processId()), SIGKILL);
        ASSERT_TRUE(process.waitForFinished(10000));
        ++kills;
        const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
        for (const QByteArray &line : lines) {
            bool ok = false;
            const qint64 n = line.toLongLong(&ok);
            if (ok)
                confirmed = std::max(confirmed, n);
        }
        ASSERT_TRUE(integrityOk(store)) << "round " << round;
        UserDefaults defaults(store);
        ASSERT_TRUE(defaults.isOpen()) << defaults.errorString().toStdString();
        ASSERT_TRUE(defaults.movedAsidePath().isEmpty()) << "round " << round;
        // Every confirmed value is there; spot-check the newest ones and a few older ones fully.
        for (qint64 i = std::max<qint64>(0, confirmed - 3); i <= confirmed; ++i)
            ASSERT_EQ(defaults.objectForKey(QStringLiteral("key-%1").arg(i)), expectedValue(i)) << "key " << i << " round " << round;
        next = confirmed + 1;
        // A write that was under way when the kill came may or may not have landed; start after it.
        while (defaults.hasObject(QStringLiteral("key-%1").arg(next)))
            ++next;
    }
    EXPECT_EQ(kills, 200);
    UserDefaults defaults(store);
    for (qint64 i = 0; i <= confirmed; ++i)
        ASSERT_EQ(defaults.objectForKey(QStringLiteral("key-%1").arg(i)), expectedValue(i)) << "key " << i;
    EXPECT_GT(confirmed, 200) << "the writer barely wrote; the test proves little";
}

} // namespace
