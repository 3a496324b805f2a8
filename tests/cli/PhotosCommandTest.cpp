#include "CliRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Runs tessary-cli photos in-process over a private store, resources and Documents folder.
class PhotosCommandTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        for (const char *sub : {"resources", "documents", "photos"})
            QDir(dir.path()).mkpath(QLatin1String(sub));
        qputenv("TESSARY_DEFAULTS", QFile::encodeName(dir.filePath(QStringLiteral("defaults.sqlite"))));
        qputenv("TESSARY_RESOURCES", QFile::encodeName(dir.filePath(QStringLiteral("resources"))));
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("documents"))));
    }
    void TearDown() override
    {
        qunsetenv("TESSARY_DEFAULTS");
        qunsetenv("TESSARY_RESOURCES");
        qunsetenv("TESSARY_DOCUMENTS");
    }
    int run(const QStringList &args)
    {
        const CliRun r = CliRun::of(QStringList{QStringLiteral("photos")} + args);
        out = r.out;
        err = r.err;
        return r.code;
    }
    QString file(const QString &name)
    {
        const QString path = dir.filePath(QStringLiteral("photos/") + name);
        QFile f(path);
        if (!f.exists()) {
            EXPECT_TRUE(f.open(QIODevice::WriteOnly));
            f.write("jpeg");
        }
        return path;
    }
    // The base names in list order, with the alignment after each: "a0 b3".
    QString listed()
    {
        EXPECT_EQ(run({QStringLiteral("list")}), 0) << err.toStdString();
        QStringList items;
        for (const QString &line : out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            const QStringList fields = line.split(QLatin1Char('\t'));
            EXPECT_EQ(fields.size(), 3) << line.toStdString();
            EXPECT_EQ(fields.value(0).toInt(), items.size());
            items.append(QFileInfo(fields.value(2)).completeBaseName() + fields.value(1));
        }
        return items.join(QLatin1Char(' '));
    }

    QTemporaryDir dir;
    QString out;
    QString err;
};

TEST_F(PhotosCommandTest, EditsAreStoredBetweenRuns)
{
    // First run: the factory photos come first.
    QFile(dir.filePath(QStringLiteral("resources/images-0.jpg"))).open(QIODevice::WriteOnly);
    EXPECT_EQ(listed(), QStringLiteral("images-00"));

    struct Step { QStringList args; const char *expected; };
    const Step steps[] = {
        {{QStringLiteral("add"), file(QStringLiteral("a.jpg")), file(QStringLiteral("b.jpg")), file(QStringLiteral("c.jpg"))},
         "images-00 a0 b0 c0"},
        {{QStringLiteral("move"), QStringLiteral("0"), QStringLiteral("2")}, "a0 b0 images-00 c0"},
        {{QStringLiteral("move"), QStringLiteral("3"), QStringLiteral("0")}, "c0 a0 b0 images-00"},
        {{QStringLiteral("swap"), QStringLiteral("0"), QStringLiteral("3")}, "images-00 a0 b0 c0"},
        {{QStringLiteral("align"), QStringLiteral("2"), QStringLiteral("end")}, "images-00 a0 b2 c0"},
        {{QStringLiteral("align"), QStringLiteral("1"), QStringLiteral("3")}, "images-00 a3 b2 c0"},
        {{QStringLiteral("align"), QStringLiteral("all"), QStringLiteral("fit")}, "images-00 a3 b3 c3"}, // a factory photo is read back centred
        {{QStringLiteral("remove"), QStringLiteral("3"), QStringLiteral("0")}, "a3 b3"},
        {{QStringLiteral("clear")}, ""},
    };
    for (const Step &s : steps) {
        EXPECT_EQ(run(s.args), 0) << s.args.join(' ').toStdString() << err.toStdString();
        EXPECT_EQ(listed().toStdString(), s.expected) << s.args.join(' ').toStdString();
    }
}

TEST_F(PhotosCommandTest, BadInputIsRefusedAndChangesNothing)
{
    QFile(dir.filePath(QStringLiteral(".skip"))).open(QIODevice::WriteOnly);
    EXPECT_EQ(run({QStringLiteral("add"), file(QStringLiteral("a.jpg")), file(QStringLiteral("b.jpg"))}), 0);
    struct Case { QStringList args; int code; const char *message; };
    const Case cases[] = {
        {{}, 2, "Usage:"},
        {{QStringLiteral("shuffle")}, 2, "unknown action 'shuffle'"},
        {{QStringLiteral("add")}, 2, "name at least one file"},
        {{QStringLiteral("add"), file(QStringLiteral("c.jpg")), dir.filePath(QStringLiteral("nope.jpg"))}, 1, "does not exist"},
        {{QStringLiteral("add"), dir.filePath(QStringLiteral("photos"))}, 1, "is a folder"},
        {{QStringLiteral("add"), dir.filePath(QStringLiteral(".skip"))}, 1, "is a hidden file"},
        {{QStringLiteral("remove"), QStringLiteral("2")}, 1, "'2' is not the index of a photo (valid: 0 to 1)"},
        {{QStringLiteral("remove"), QStringLiteral("0"), QStringLiteral("-1")}, 1, "'-1' is not the index"},
        {{QStringLiteral("remove"), QStringLiteral("x")}, 1, "'x' is not the index"},
        {{QStringLiteral("move"), QStringLiteral("0")}, 2, "expected FROM and TO"},
        {{QStringLiteral("move"), QStringLiteral("0"), QStringLiteral("2")}, 1, "'2' is not the index"},
        {{QStringLiteral("swap"), QStringLiteral("1"), QStringLiteral("5")}, 1, "'5' is not the index"},
        {{QStringLiteral("align"), QStringLiteral("0"), QStringLiteral("sideways")}, 2, "'sideways' is not an alignment"},
        {{QStringLiteral("align"), QStringLiteral("0"), QStringLiteral("5")}, 2, "'5' is not an alignment"},
        {{QStringLiteral("align"), QStringLiteral("all"), QStringLiteral("start")}, 2, "center, fit or smart only"},
        {{QStringLiteral("list"), QStringLiteral("extra")}, 2, "takes no arguments"},
    };
    for (const Case &k : cases) {
        EXPECT_EQ(run(k.args), k.code) << k.args.join(' ').toStdString();
        EXPECT_TRUE(err.contains(QLatin1String(k.message))) << err.toStdString();
        EXPECT_EQ(listed(), QStringLiteral("a0 b0")) << k.args.join(' ').toStdString();
    }
}

// Every photo stays on one line of the listing, whatever its name holds.
TEST_F(PhotosCommandTest, ListEscapesPathsSoEachPhotoIsOneLine)
{
    struct Case {
        QString name, listedAs;
    };
    const std::vector<Case> cases{{QStringLiteral("new\nline.jpg"), QStringLiteral("new\\nline.jpg")},
                                  {QStringLiteral("tab\there.jpg"), QStringLiteral("tab\\there.jpg")},
                                  {QStringLiteral("cr\rhere.jpg"), QStringLiteral("cr\\rhere.jpg")},
                                  {QStringLiteral("back\\n.jpg"), QStringLiteral("back\\\\n.jpg")},
                                  {QStringLiteral("plain.jpg"), QStringLiteral("plain.jpg")}};
    QStringList add{QStringLiteral("add")};
    for (const Case &c : cases)
        add << file(c.name);
    ASSERT_EQ(run(add), 0) << err.toStdString();
    ASSERT_EQ(run({QStringLiteral("list")}), 0);
    const QStringList lines = out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), qsizetype(cases.size())) << out.toStdString();
    const QString folder = QDir(dir.filePath(QStringLiteral("photos"))).absolutePath() + QLatin1Char('/');
    for (size_t i = 0; i < cases.size(); ++i) {
        const QStringList fields = lines[qsizetype(i)].split(QLatin1Char('\t'));
        ASSERT_EQ(fields.size(), 3) << lines[qsizetype(i)].toStdString();
        EXPECT_EQ(fields[2], folder + cases[i].listedAs);
    }
}

TEST_F(PhotosCommandTest, EveryActionHasHelp)
{
    for (const char *verb : {"list", "add", "remove", "move", "swap", "align", "clear"}) {
        EXPECT_EQ(run({QLatin1String(verb), QStringLiteral("--help")}), 0) << verb;
        EXPECT_TRUE(out.startsWith(QStringLiteral("Usage: tessary-cli photos %1").arg(QLatin1String(verb)))) << out.toStdString();
    }
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    EXPECT_TRUE(out.contains(QStringLiteral("align INDEX METHOD")));
    // Help never opens or changes the store.
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("defaults.sqlite"))));
}

} // namespace
