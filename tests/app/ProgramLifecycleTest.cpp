#include "AppFixture.h"

#include "foundation/Preferences.h"

#include <QProcess>
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

} // namespace
