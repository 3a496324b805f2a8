#include "AppFixture.h"

#include "app/ProgramIdentity.h"
#include "foundation/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <csignal>

namespace {

// The program as a person (or a desktop session) starts and ends it.
class ProgramLifecycleTest : public AppFixture
{
protected:
    QProcessEnvironment environment(const QString &platform) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TESSARY_DEFAULTS"), storePath());
        env.insert(QStringLiteral("TESSARY_DOCUMENTS"), dir.filePath(QStringLiteral("Documents")));
        env.insert(QStringLiteral("TESSARY_RESOURCES"), QStringLiteral(TESSARY_BINARY_DIR "/resources"));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
        env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("tessary.info=true"));
        // A session's own runtime folder (Qt warns where there is none).
        const QString runtime = dir.filePath(QStringLiteral("runtime"));
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        return env;
    }
    static QString program() { return QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary"); }
};

// Logout sends SIGTERM, a terminal SIGHUP, Ctrl+C SIGINT: the program quits through its event
// loop and saves what Quit saves, also in the middle of a long blend, which quitting cancels.
TEST_F(ProgramLifecycleTest, TerminationSignalsSaveLikeQuitEvenDuringABlend)
{
    // Photos large enough that blending them takes a while.
    QStringList photos;
    for (int i = 0; i < 10; ++i) {
        QImage photo(2000, 1500, QImage::Format_RGB32);
        photo.fill(QColor(40 + 15 * i, 110, 190 - 10 * i));
        photos.append(dir.filePath(QStringLiteral("photo-%1.png").arg(i)));
        ASSERT_TRUE(photo.save(photos.last(), "PNG", 100));
    }
    defaults.reset(); // the program owns the store while it runs
    const struct {
        const char *name;
        int signal;
        QStringList arguments;
        const char *running; // logged once the work is under way
    } cases[] = {
        {"SIGTERM when idle", SIGTERM, {}, "documentsPath = "},
        {"SIGTERM during a blend", SIGTERM, QStringList{"--blend", "left-to-right"} + photos, "Blending "},
        {"SIGINT during a blend", SIGINT, QStringList{"--blend", "bottom-to-top"} + photos, "Blending "},
        {"SIGHUP during a blend", SIGHUP, QStringList{"--blend", "square"} + photos, "Blending "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QProcess tessary;
        tessary.setProcessEnvironment(environment(QStringLiteral("offscreen")));
        tessary.setProcessChannelMode(QProcess::MergedChannels);
        tessary.start(program(), c.arguments);
        ASSERT_TRUE(tessary.waitForStarted(10000));
        QByteArray output;
        ASSERT_TRUE(QTest::qWaitFor([&] {
            tessary.waitForReadyRead(100);
            output += tessary.readAll();
            return output.contains(c.running);
        }, 30000)) << output.toStdString();
        QTest::qWait(300);
        ::kill(pid_t(tessary.processId()), c.signal);
        ASSERT_TRUE(tessary.waitForFinished(30000));
        output += tessary.readAll();
        EXPECT_EQ(tessary.exitStatus(), QProcess::NormalExit) << output.toStdString();
        EXPECT_EQ(tessary.exitCode(), 0) << output.toStdString();
        EXPECT_TRUE(output.contains("Finished saving image cache.")) << output.toStdString();

        UserDefaults after(storePath());
        EXPECT_TRUE(after.hasObject(Preferences::TessaryBackgroundColor));
        EXPECT_TRUE(after.hasObject(Preferences::ImageBrowserSeletion));
    }
}

// Without a display the program says so in one line and points at the command line.
TEST_F(ProgramLifecycleTest, NoDisplayIsOneClearLine)
{
    QProcess tessary;
    QProcessEnvironment env = environment(QStringLiteral("xcb"));
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    tessary.setProcessEnvironment(env);
    tessary.start(program(), {});
    ASSERT_TRUE(tessary.waitForFinished(30000));
    const QByteArray err = tessary.readAllStandardError();
    EXPECT_NE(tessary.exitCode(), 0);
    EXPECT_EQ(err.count('\n'), 1) << err.toStdString();
    EXPECT_TRUE(err.contains("tessary-cli render")) << err.toStdString();
}

// --help and --version (and -h, -v) answer on standard output and exit 0, without a display:
// no window is opened for them.
TEST_F(ProgramLifecycleTest, HelpAndVersionAnswerWithoutAWindow)
{
    const QString cli = QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-cli");
    const struct {
        QString program;
        const char *option;
        const char *answer; // a pattern
    } cases[] = {
        {program(), "--help", "--write-result"}, {program(), "-h", "--verbose"},
        {program(), "--version", "^Tessary \\d+\\.\\d+\\.\\d+\\n$"}, {program(), "-v", "^Tessary \\d+\\.\\d+"},
        {cli, "--version", "^tessary-cli \\d+\\.\\d+\\.\\d+\\n$"}, {cli, "-v", "^tessary-cli \\d+\\.\\d+"},
        {cli, "--help", "--version"},
    };
    QProcessEnvironment env = environment(QStringLiteral("xcb"));
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    for (const auto &c : cases) {
        SCOPED_TRACE(QStringLiteral("%1 %2").arg(QFileInfo(c.program).fileName(), QLatin1String(c.option)).toStdString());
        QProcess run;
        QProcessEnvironment own = env;
        if (c.program == cli)
            own.remove(QStringLiteral("QT_QPA_PLATFORM")); // the command line picks its own
        run.setProcessEnvironment(own);
        run.start(c.program, {QString::fromLatin1(c.option)});
        ASSERT_TRUE(run.waitForFinished(30000));
        const QByteArray out = run.readAllStandardOutput();
        EXPECT_EQ(run.exitCode(), 0);
        EXPECT_TRUE(QString::fromUtf8(out).contains(QRegularExpression(QString::fromLatin1(c.answer)))) << out.toStdString();
        EXPECT_EQ(run.readAllStandardError(), QByteArray());
    }
}

// The desktop entry names the class of the program's windows (on X11 the application's name)
// and its icon; where Tessary is not installed the icon is drawn, so windows still carry it.
TEST_F(ProgramLifecycleTest, DesktopEntryMatchesTheWindowsClassAndIcon)
{
    QFile entry(QStringLiteral(TESSARY_SOURCE_DIR "/data/") + ProgramIdentity::kDesktopEntry + QStringLiteral(".desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString text = QString::fromUtf8(entry.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("\nStartupWMClass=") + ProgramIdentity::kName + QLatin1Char('\n')));
    EXPECT_TRUE(text.contains(QStringLiteral("\nIcon=") + ProgramIdentity::kDesktopEntry + QLatin1Char('\n')));
    const QIcon icon = ProgramIdentity::icon();
    ASSERT_FALSE(icon.isNull());
    EXPECT_FALSE(icon.pixmap(32, 32).isNull());
}

// A plain start that fills the collage with the factory photos, then quits (the start probe
// quits once every tile shows its photo), says nothing on the terminal. On a real X server:
// the off-screen platform has warnings of its own.
TEST_F(ProgramLifecycleTest, PlainStartAndQuitPrintNothing)
{
    const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("xvfb-run"));
    if (xvfb.isEmpty())
        GTEST_SKIP() << "xvfb-run is not installed";
    defaults.reset();
    QProcessEnvironment env = environment(QStringLiteral("xcb"));
    env.remove(QStringLiteral("QT_LOGGING_RULES"));
    const QString probe = dir.filePath(QStringLiteral("probe.json"));
    env.insert(QStringLiteral("TESSARY_PROBE"), probe);
    QProcess tessary;
    tessary.setProcessEnvironment(env);
    tessary.start(xvfb, {QStringLiteral("-a"), QStringLiteral("-s"), QStringLiteral("-screen 0 1600x1000x24"), program()});
    ASSERT_TRUE(tessary.waitForFinished(90000));
    EXPECT_EQ(tessary.exitCode(), 0);
    EXPECT_TRUE(QFileInfo(probe).size() > 0) << "the collage was never filled";
    EXPECT_EQ(tessary.readAllStandardError(), QByteArray());
    EXPECT_EQ(tessary.readAllStandardOutput(), QByteArray());
}

} // namespace
