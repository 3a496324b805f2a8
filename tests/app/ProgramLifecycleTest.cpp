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

// Logout sends SIGTERM: the program quits through its event loop and saves what Quit saves.
TEST_F(ProgramLifecycleTest, TerminationSignalSavesLikeQuit)
{
    defaults.reset(); // the program owns the store while it runs
    QProcess tessary;
    tessary.setProcessEnvironment(environment(QStringLiteral("offscreen")));
    tessary.setProcessChannelMode(QProcess::MergedChannels);
    tessary.start(program(), {});
    ASSERT_TRUE(tessary.waitForStarted(10000));
    // The launch has run once the documents folder is logged.
    QByteArray output;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        tessary.waitForReadyRead(100);
        output += tessary.readAll();
        return output.contains("documentsPath = ");
    }, 30000)) << output.toStdString();
    ::kill(pid_t(tessary.processId()), SIGTERM);
    ASSERT_TRUE(tessary.waitForFinished(30000));
    output += tessary.readAll();
    EXPECT_EQ(tessary.exitStatus(), QProcess::NormalExit) << output.toStdString();
    EXPECT_EQ(tessary.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("Finished saving image cache.")) << output.toStdString();

    UserDefaults after(storePath());
    EXPECT_TRUE(after.hasObject(Preferences::TessaryBackgroundColor));
    EXPECT_TRUE(after.hasObject(Preferences::ImageBrowserSeletion));
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
