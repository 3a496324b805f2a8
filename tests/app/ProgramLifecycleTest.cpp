#include "AppFixture.h"

#include "app/ProgramIdentity.h"
#include "foundation/Preferences.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <csignal>
#include <cstdio>

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

// A virtual X server of the test's own (no window manager), and a person's keyboard and close
// button on it (tool_x11_input).
class XServer
{
public:
    XServer()
    {
        const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (xvfb.isEmpty() || !QFileInfo::exists(tool()))
            return;
        // The server picks a free display and says which on its standard output.
        m_server.start(xvfb, {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                              QStringLiteral("tcp"), QStringLiteral("-screen"), QStringLiteral("0"),
                              QStringLiteral("1600x1000x24")});
        if (!m_server.waitForStarted(10000))
            return;
        QByteArray number;
        const bool told = QTest::qWaitFor([&] {
            m_server.waitForReadyRead(100);
            number += m_server.readAllStandardOutput();
            return number.contains('\n');
        }, 10000);
        if (!told || number.trimmed().isEmpty())
            return;
        m_display = QStringLiteral(":") + QString::fromLatin1(number.trimmed());
    }
    ~XServer()
    {
        m_server.terminate();
        m_server.waitForFinished(5000);
    }
    QString display() const { return m_display; }
    // Keys typed into the shown window of that title ("ctrl+q", "9 Tab 9 Return"), or "close"
    // (its close button).
    bool act(const QString &title, const QString &action) const
    {
        return QProcess::execute(tool(), {m_display, title, action}) == 0;
    }

private:
    static QString tool() { return QStringLiteral(TESSARY_BINARY_DIR "/bin/tool_x11_input"); }
    QProcess m_server;
    QString m_display;
};

// Quit (Ctrl+Q in the window in front), closing the main window, and the signals of a logout
// (SIGTERM), Ctrl+C (SIGINT) and a closed terminal (SIGHUP), when idle and in the middle of a
// blend, a cut into tiles, a collage render and a save: the work is given up (the program's log
// says so), the program quits at once through its event loop with what Quit saves saved, and a
// result being written leaves no file, not even a part. A blend's window cannot be closed under
// its progress sheet (closing the sheet is its Abort): Quit and the signals are the ways out there.
TEST_F(ProgramLifecycleTest, QuittingInEveryWayDuringLongWorkGivesItUp)
{
    XServer x;
    if (x.display().isEmpty())
        GTEST_SKIP() << "no Xvfb or no tool_x11_input";
    // Grainy photos, slow enough to decode that a render or a blend of them takes a while.
    QStringList photos;
    for (int i = 0; i < 8; ++i) {
        QImage photo(3000, 2000, QImage::Format_RGB32);
        quint32 seed = 2654435761u * quint32(i + 1);
        for (int y = 0; y < photo.height(); ++y) {
            auto *line = reinterpret_cast<quint32 *>(photo.scanLine(y));
            for (int x = 0; x < photo.width(); ++x) {
                seed = seed * 1664525u + 1013904223u;
                line[x] = 0xff000000u | (seed >> 8);
            }
        }
        photos.append(dir.filePath(QStringLiteral("photo-%1.jpg").arg(i)));
        ASSERT_TRUE(photo.save(photos.last(), "JPEG", 90));
    }
    const QString results = dir.filePath(QStringLiteral("results"));
    ASSERT_TRUE(QDir().mkpath(results));
    const QString result = QDir(results).filePath(QStringLiteral("blend.tif"));
    defaults.reset(); // the program owns the store while it runs

    const QStringList blend = QStringList{"--blend", "left-to-right"} + photos;
    // Half of them: the picture is made sooner, and writing it still takes a while.
    const QStringList save = QStringList{"--write-result", result, "--blend", "left-to-right"} + photos.mid(0, 4);
    struct Keys {
        const char *window = nullptr; // none: nothing typed
        const char *keys = nullptr;
    };
    // Make Collage, as a person asks for it; Cut Photo into Tiles of the first photo, 9 x 9.
    const Keys render{"Tessary", "ctrl+r"};
    const Keys tiles{"Tessary", "ctrl+t"};
    const Keys cut{"Tile Photo", "9 Tab 9 Return"};
    const char *const blending = "The blend was stopped before it was done";
    const char *const cutting = "The cut was stopped before it was done";
    const char *const rendering = "The render was stopped before it was done";
    const char *const saving = "The result was not written to";
    const struct {
        const char *name;
        QStringList arguments;
        Keys start[2];       // what starts the work, once the window is up
        const char *running; // logged once the work is under way
        Keys quit;           // Ctrl+Q or "close" in a window; none: `signal`
        int signal;
        const char *given;   // logged when the work was given up (none: idle)
    } cases[] = {
        {"SIGTERM when idle", photos, {}, "documentsPath = ", {}, SIGTERM, nullptr},
        {"Ctrl+Q during a blend", blend, {}, "Blending ", {"Blending", "ctrl+q"}, 0, blending},
        {"SIGTERM during a blend", blend, {}, "Blending ", {}, SIGTERM, blending},
        {"SIGINT during a blend", blend, {}, "Blending ", {}, SIGINT, blending},
        {"SIGHUP during a blend", blend, {}, "Blending ", {}, SIGHUP, blending},
        {"Ctrl+Q during a cut", photos, {tiles, cut}, "Cutting ", {"Tessary", "ctrl+q"}, 0, cutting},
        {"closing the window during a cut", photos, {tiles, cut}, "Cutting ", {"Tessary", "close"}, 0, cutting},
        {"SIGHUP during a cut", photos, {tiles, cut}, "Cutting ", {}, SIGHUP, cutting},
        {"Ctrl+Q during a render", photos, {render}, "Rendering the collage", {"Making the Collage", "ctrl+q"}, 0,
         rendering},
        {"closing the window during a render", photos, {render}, "Rendering the collage", {"Tessary", "close"}, 0,
         rendering},
        {"SIGTERM during a render", photos, {render}, "Rendering the collage", {}, SIGTERM, rendering},
        {"SIGINT during a render", photos, {render}, "Rendering the collage", {}, SIGINT, rendering},
        {"Ctrl+Q during a save", save, {}, "Writing the result to", {"Collage", "ctrl+q"}, 0, saving},
        {"closing the window during a save", save, {}, "Writing the result to", {"Tessary", "close"}, 0, saving},
        {"SIGTERM during a save", save, {}, "Writing the result to", {}, SIGTERM, saving},
        {"SIGHUP during a save", save, {}, "Writing the result to", {}, SIGHUP, saving},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        // A store of its own: no welcome sheet in front of the window, and no factory photos
        // (the list holds the photos given). Blends at full size, so writing one takes a while.
        QFile::remove(storePath());
        {
            UserDefaults store(storePath());
            store.setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
            store.setBool(false, Preferences::FirstRunLoadFactoryImages);
            store.setBool(false, Preferences::MegapixelLimit);
        }
        QProcessEnvironment env = environment(QStringLiteral("xcb"));
        env.insert(QStringLiteral("DISPLAY"), x.display());
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
        QProcess tessary;
        tessary.setProcessEnvironment(env);
        tessary.setProcessChannelMode(QProcess::MergedChannels);
        tessary.start(program(), c.arguments);
        ASSERT_TRUE(tessary.waitForStarted(10000));
        QByteArray output;
        const auto logged = [&](const char *line) {
            return QTest::qWaitFor([&] {
                tessary.waitForReadyRead(50);
                output += tessary.readAll();
                return output.contains(line);
            }, 60000);
        };
        if (c.start[0].window) {
            ASSERT_TRUE(logged("documentsPath = ")) << output.toStdString();
        }
        for (const Keys &keys : c.start) {
            if (keys.window) {
                ASSERT_TRUE(x.act(QString::fromLatin1(keys.window), QString::fromLatin1(keys.keys)));
            }
        }
        ASSERT_TRUE(logged(c.running)) << output.toStdString();
        QElapsedTimer quitting;
        quitting.start();
        if (c.quit.window)
            ASSERT_TRUE(x.act(QString::fromLatin1(c.quit.window), QString::fromLatin1(c.quit.keys)));
        else
            ::kill(pid_t(tessary.processId()), c.signal);
        const bool ended = tessary.waitForFinished(30000);
        const qint64 quitMs = quitting.elapsed();
        output += tessary.readAll();
        if (!ended)
            ::kill(pid_t(tessary.processId()), SIGKILL);
        ASSERT_TRUE(ended) << output.toStdString();
        EXPECT_EQ(tessary.exitStatus(), QProcess::NormalExit) << output.toStdString();
        EXPECT_EQ(tessary.exitCode(), 0) << output.toStdString();
        if (c.given) {
            EXPECT_TRUE(output.contains(c.given)) << output.toStdString();
        }
        EXPECT_TRUE(output.contains("Finished saving image cache.")) << output.toStdString();
        // Given up, not waited for: the log line above says so, and the figure shows it.
        std::printf("[ figure   ] %s: quit %lld ms after it\n", c.name, static_cast<long long>(quitMs));
        EXPECT_EQ(QDir(results).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());

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
