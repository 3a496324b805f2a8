#include "photos/FileWatcher.h"
#include "support/TestImages.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <sys/stat.h>
#include <utime.h>

namespace {

TEST(FileWatcherWords, DeletionThenRenameThenModification)
{
    using F = FileWatcher;
    const struct { unsigned changes; const char *word; } cases[] = {
        {F::Deleted, "deleted"},
        {F::Deleted | F::Written, "deleted"},
        {F::Deleted | F::Renamed, "deleted"},
        {F::Renamed | F::Written, "renamed"},
        {F::Renamed, "renamed"},
        {F::Written, "modified"},
        {0, ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(F::wordForChanges(c.changes), QLatin1String(c.word)) << c.changes;
}

// Real changes on disk, each reported exactly once with the right word, and the watch gone after.
TEST(FileWatcher, RealChangesAreReportedOnce)
{
    struct Case {
        const char *name;
        const char *word; // empty: no report expected
        std::function<void(const QString &path)> change;
    };
    const Case cases[] = {
        {"delete", "deleted", [](const QString &p) { QFile::remove(p); }},
        {"rename", "renamed", [](const QString &p) { QFile::rename(p, p + QStringLiteral(".moved")); }},
        {"rename into another folder", "renamed", [](const QString &p) {
             QDir().mkpath(p + QStringLiteral("-dir"));
             QFile::rename(p, p + QStringLiteral("-dir/x.jpg"));
         }},
        {"append", "modified", [](const QString &p) {
             QFile f(p);
             ASSERT_TRUE(f.open(QIODevice::Append));
             f.write("more");
         }},
        {"truncate and rewrite", "modified",
         [](const QString &p) { ASSERT_TRUE(testimages::writeFile(p, QByteArray(100000, 'x'))); }},
        // An editor's save: a new file renamed over the old one.
        {"atomic save", "modified", [](const QString &p) {
             ASSERT_TRUE(testimages::writeFile(p + QStringLiteral(".tmp"), "new content"));
             ::rename(QFile::encodeName(p + QStringLiteral(".tmp")).constData(), QFile::encodeName(p).constData());
         }},
        // An editor that moves the old file aside and writes a new one.
        {"backup then write", "modified", [](const QString &p) {
             QFile::rename(p, p + QStringLiteral("~"));
             ASSERT_TRUE(testimages::writeFile(p, "new content"));
         }},
        // The file is unlinked while a second name keeps it alive: only the link count changes.
        {"unlink with a hard link left", "deleted", [](const QString &p) {
             ::link(QFile::encodeName(p).constData(), QFile::encodeName(p + QStringLiteral(".link")).constData());
             QFile::remove(p);
         }},
        {"touch", "", [](const QString &p) { ::utime(QFile::encodeName(p).constData(), nullptr); }},
        {"chmod", "", [](const QString &p) { ::chmod(QFile::encodeName(p).constData(), 0600); }},
    };
    for (const Case &c : cases) {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("photo.jpg"));
        ASSERT_TRUE(testimages::writeFile(path, "jpeg"));
        FileWatcher watcher;
        ASSERT_TRUE(watcher.watch(path)) << c.name;
        QSignalSpy spy(&watcher, &FileWatcher::fileChanged);
        c.change(path);
        if (*c.word) {
            ASSERT_TRUE(spy.wait(3000)) << c.name;
            // Give a second report the chance to show up.
            QTest::qWait(100);
            ASSERT_EQ(spy.size(), 1) << c.name;
            EXPECT_EQ(spy.at(0).at(0).toString(), path) << c.name;
            EXPECT_EQ(FileWatcher::wordForChanges(spy.at(0).at(1).toUInt()), QLatin1String(c.word)) << c.name;
            EXPECT_FALSE(watcher.isWatching(path)) << c.name;
            // No dead watch is left behind: the path can be watched again and reports again.
            if (QFile::exists(path)) {
                ASSERT_TRUE(watcher.watch(path)) << c.name;
                QFile::remove(path);
                ASSERT_TRUE(spy.wait(3000)) << c.name;
                EXPECT_EQ(FileWatcher::wordForChanges(spy.at(1).at(1).toUInt()), QLatin1String("deleted")) << c.name;
            }
        } else {
            QTest::qWait(150);
            EXPECT_EQ(spy.size(), 0) << c.name;
            EXPECT_TRUE(watcher.isWatching(path)) << c.name;
        }
    }
}

TEST(FileWatcher, OneWatchPerPathAndUnwatchedPathsStayQuiet)
{
    QTemporaryDir dir;
    const QString a = dir.filePath(QStringLiteral("a.jpg"));
    const QString b = dir.filePath(QStringLiteral("b.jpg"));
    ASSERT_TRUE(testimages::writeFile(a, "a"));
    ASSERT_TRUE(testimages::writeFile(b, "b"));
    FileWatcher watcher;
    EXPECT_TRUE(watcher.watch(a));
    EXPECT_TRUE(watcher.watch(a));
    EXPECT_TRUE(watcher.watch(b));
    EXPECT_FALSE(watcher.watch(dir.filePath(QStringLiteral("missing.jpg"))));
    EXPECT_FALSE(watcher.watch(QString()));
    // A named pipe must not block the watcher waiting for a writer.
    const QString pipe = dir.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    watcher.watch(pipe);
    watcher.unwatch(pipe);
    EXPECT_EQ(watcher.watchedPaths().size(), 2);
    QSignalSpy spy(&watcher, &FileWatcher::fileChanged);
    watcher.unwatch(b);
    QFile::remove(b);
    QFile::remove(a);
    ASSERT_TRUE(spy.wait(3000));
    QTest::qWait(100);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_EQ(spy.at(0).at(0).toString(), a);
    EXPECT_TRUE(watcher.watchedPaths().isEmpty());
}

// Two names of one file share the kernel's watch: ending one must keep the other working.
TEST(FileWatcher, TwoNamesOfOneFile)
{
    QTemporaryDir dir;
    const QString a = dir.filePath(QStringLiteral("a.jpg"));
    const QString link = dir.filePath(QStringLiteral("link.jpg"));
    ASSERT_TRUE(testimages::writeFile(a, "a"));
    ASSERT_TRUE(QFile::link(a, link));
    FileWatcher watcher;
    ASSERT_TRUE(watcher.watch(a));
    ASSERT_TRUE(watcher.watch(link));
    watcher.unwatch(link);
    QSignalSpy spy(&watcher, &FileWatcher::fileChanged);
    ASSERT_TRUE(testimages::writeFile(a, "changed"));
    ASSERT_TRUE(spy.wait(3000));
    EXPECT_EQ(spy.at(0).at(0).toString(), a);
}

// With the inotify watch limit lowered (in a user namespace of its own, so nothing else on the
// machine is affected), photos beyond the limit are still listed, only unwatched.
TEST(FileWatcher, PhotosBeyondTheWatchLimitStayListed)
{
    const QString tool = QStringLiteral(TESSARY_BINARY_DIR "/bin/tool_watch_limit");
    ASSERT_TRUE(QFile::exists(tool));
    QTemporaryDir dir;
    QStringList args{QStringLiteral("-U"), QStringLiteral("-r"), QStringLiteral("sh"), QStringLiteral("-c"),
                     QStringLiteral("echo 2 > /proc/sys/user/max_inotify_watches && exec \"$0\" \"$@\""), tool};
    for (int i = 0; i < 4; ++i) {
        const QString path = dir.filePath(QStringLiteral("p%1.jpg").arg(i));
        ASSERT_TRUE(testimages::writeFile(path, "jpeg"));
        args.append(path);
    }
    QProcess process;
    process.start(QStringLiteral("unshare"), args);
    if (!process.waitForFinished(20000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        GTEST_SKIP() << "no user namespace with a lowered watch limit here: " << process.readAllStandardError().toStdString();
    EXPECT_EQ(QString::fromUtf8(process.readAllStandardOutput()).trimmed(), QStringLiteral("listed 4 watched 2"));
}

} // namespace
