#include "CliProcess.h"
#include "CliRunner.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>

namespace {

class BlendCommandTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        qputenv("TESSARY_DEFAULTS", path("defaults.sqlite").toLocal8Bit());
        for (int i = 0; i < 4; ++i) {
            QImage photo(i % 2 ? 300 : 400, 300, QImage::Format_RGB32);
            photo.fill(QColor(60 + 40 * i, 120, 160));
            photos.append(path(QStringLiteral("p%1.jpg").arg(i)));
            ASSERT_TRUE(photo.save(photos.last()));
        }
    }
    void TearDown() override { qunsetenv("TESSARY_DEFAULTS"); }
    QString path(const QString &name) const { return dir.filePath(name); }

    QTemporaryDir dir;
    QStringList photos;
};

// What a person gets for each way of calling it: the picture's size, or the exit code and the
// reason, and never a file after a failure.
TEST_F(BlendCommandTest, BlendsOrSaysWhyNot)
{
    const QString out = path(QStringLiteral("out.png"));
    const QString text = path(QStringLiteral("notes.txt"));
    ASSERT_TRUE(QFile(text).open(QIODevice::WriteOnly));
    const struct {
        const char *name;
        QStringList args;
        int code;
        QSize size;          // of the picture written, when the code is 0
        const char *reason;  // in the messages otherwise
    } cases[] = {
        // Uniformly cropped by default: the 400 x 300 photos fitted into 300 x 300, then all at
        // one height; 50-pixel joins, a 10-pixel border around.
        {"left to right", {"--border", "10", "--background", "red", "-o", out, photos[0], photos[1], photos[2]}, 0,
         {300 + 225 + 300 - 2 * 50 + 20, 225 + 20}, ""},
        {"bottom to top, narrow joins", {"--direction", "bottom-to-top", "--feather", "10", "-o", out, photos[0], photos[1]}, 0,
         {300, 225 + 300 - 10}, ""},
        {"square of four", {"--direction", "square", "-o", out, photos[0], photos[1], photos[2], photos[3]}, 0, {}, ""},
        {"square of three", {"--direction", "square", "-o", out, photos[0], photos[1], photos[2]}, 2, {}, "4, 9 or 16"},
        {"no output", {photos[0]}, 2, {}, "-o OUT"},
        {"unknown format", {"-o", path("out.bmpx"), photos[0]}, 2, {}, "extension"},
        {"bad direction", {"--direction", "up", "-o", out, photos[0]}, 2, {}, "'up'"},
        {"missing photo", {"-o", out, path("gone.jpg")}, 2, {}, "gone.jpg"},
        {"nothing readable", {"-o", out, text}, 1, {}, "No photo could be read"},
        {"unwritable folder", {"-o", path("no/such/out.png"), photos[0]}, 1, {}, "blend:"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QFile::remove(out);
        const CliRun r = CliRun::of(QStringList{"blend"} + c.args);
        EXPECT_EQ(r.code, c.code) << r.err.toStdString();
        if (c.code != 0) {
            EXPECT_TRUE(r.err.contains(QLatin1String(c.reason))) << r.err.toStdString();
            EXPECT_FALSE(QFile::exists(out));
            continue;
        }
        const QImage picture(out);
        ASSERT_FALSE(picture.isNull());
        if (!c.size.isEmpty()) {
            EXPECT_EQ(picture.size(), c.size);
        }
    }
    // No partial files are left beside the pictures.
    EXPECT_TRUE(QDir(dir.path()).entryList({QStringLiteral(".*part*")}, QDir::Files | QDir::Hidden).isEmpty());
}

// Ctrl+C during a long blend stops the program at once, with no file written.
TEST_F(BlendCommandTest, InterruptLeavesNoFile)
{
    QStringList many;
    for (int i = 0; i < 24; ++i) {
        QImage photo(2000, 1500, QImage::Format_RGB32);
        photo.fill(QColor(40 + 8 * i, 100, 200 - 6 * i));
        many.append(path(QStringLiteral("big-%1.png").arg(i)));
        ASSERT_TRUE(photo.save(many.last(), "PNG", 100));
    }
    const QString out = path(QStringLiteral("panorama.tif"));
    QProcess *process = CliProcess::start(QStringList{"blend", "-o", out} + many,
                                          CliProcess::environment(path("defaults.sqlite"), dir.path()));
    ASSERT_TRUE(process->waitForStarted(10000));
    QTest::qWait(800);
    ::kill(pid_t(process->processId()), SIGINT);
    const CliProcess r = CliProcess::finish(process);
    EXPECT_FALSE(r.crashed);
    EXPECT_EQ(r.code, 130) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("interrupted"))) << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_TRUE(QDir(dir.path()).entryList({QStringLiteral(".*part*")}, QDir::Files | QDir::Hidden).isEmpty());
}

} // namespace
