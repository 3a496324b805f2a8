// The generator program's command line: what it refuses and what a partial run writes.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct GeneratorRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

GeneratorRun generator(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-resgen"), arguments);
    GeneratorRun run;
    if (!process.waitForFinished(60000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

class GeneratorProgram : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!QFile::exists(QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-resgen")))
            GTEST_SKIP() << "generator not built";
    }
};

TEST_F(GeneratorProgram, RefusesBadArguments)
{
    QTemporaryDir dir;
    const struct {
        QStringList arguments;
        const char *message;
    } cases[] = {
        {{}, "--out is required"},
        {{QStringLiteral("--out"), dir.path(), QStringLiteral("--only"), QStringLiteral("images-49.jpg")}, "unknown resource images-49.jpg"},
        {{QStringLiteral("--out"), dir.path(), QStringLiteral("--only"), QStringLiteral("harp.aif,nope.png")}, "unknown resource nope.png"},
    };
    for (const auto &c : cases) {
        const GeneratorRun run = generator(c.arguments);
        EXPECT_EQ(run.exitCode, 2) << qPrintable(c.arguments.join(QLatin1Char(' ')));
        EXPECT_TRUE(run.err.contains(QLatin1String(c.message))) << qPrintable(run.err);
    }
    // Nothing was written by the refused runs.
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files).isEmpty());
}

TEST_F(GeneratorProgram, ListsEveryResourceAndMakesOnlyWhatIsAsked)
{
    const GeneratorRun list = generator({QStringLiteral("--list")});
    ASSERT_EQ(list.exitCode, 0);
    EXPECT_EQ(list.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts).size(), 69);

    QTemporaryDir dir;
    const GeneratorRun run = generator({QStringLiteral("--out"), dir.path() + QStringLiteral("/new/folder"), QStringLiteral("--only"),
                               QStringLiteral("xcircle.tiff,blank.png")});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    QStringList written = QDir(dir.path() + QStringLiteral("/new/folder")).entryList(QDir::Files);
    written.sort();
    EXPECT_EQ(written, (QStringList{QStringLiteral("blank.png"), QStringLiteral("xcircle.tiff")}));
    EXPECT_TRUE(run.out.contains(QLatin1String("2 resources"))) << qPrintable(run.out);
}

TEST_F(GeneratorProgram, ReportsAFolderItCannotWrite)
{
    QTemporaryDir dir;
    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    // A path under a regular file cannot become a folder.
    const GeneratorRun run = generator({QStringLiteral("--out"), dir.filePath(QStringLiteral("file/sub")), QStringLiteral("--only"), QStringLiteral("blank.png")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(run.err.isEmpty());
}

} // namespace
