#include "cli/CliArguments.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

CliArguments parse(const std::vector<QByteArray> &args)
{
    std::vector<const char *> argv{"tessary-cli"};
    for (const QByteArray &a : args)
        argv.push_back(a.constData());
    return CliArguments(int(argv.size()), argv.data());
}

TEST(CliArguments, DecodesAsFileNamesAndNamesWhatDoesNotDecode)
{
    struct Case {
        QByteArray raw;
        QString decoded;
        QString undecodable; // empty: it decodes
    };
    for (const Case &c : {Case{"plain", QStringLiteral("plain"), {}},
                          Case{"caf\xc3\xa9.png", QStringLiteral("caf\u00e9.png"), {}},
                          Case{"/tmp/a\xff" "b.png", QString(), QStringLiteral("/tmp/a\\xFFb.png")},
                          Case{"\xc3(\n", QString(), QStringLiteral("\\xC3(\\x0A")}}) {
        const CliArguments args = parse({c.raw, "next"});
        ASSERT_EQ(args.arguments().size(), 2);
        EXPECT_EQ(args.arguments()[1], QStringLiteral("next"));
        if (c.undecodable.isEmpty()) {
            EXPECT_EQ(args.arguments()[0], c.decoded);
            EXPECT_TRUE(args.undecodable().isEmpty());
        } else {
            EXPECT_EQ(args.undecodable(), QStringList{c.undecodable});
        }
    }
}

// A file whose name holds the byte 0xFF exists, but Qt cannot name it: it is refused by its
// name up front rather than reported as missing (or, should Qt learn to name it, it is found).
TEST(CliArguments, NameThatIsNotUtf8IsRefusedByName)
{
    QTemporaryDir dir;
    qputenv("TESSARY_DEFAULTS", QFile::encodeName(dir.filePath(QStringLiteral("defaults.sqlite"))));
    qputenv("TESSARY_RESOURCES", QFile::encodeName(dir.filePath(QStringLiteral("resources"))));
    const QByteArray raw = QFile::encodeName(dir.path()) + "/photo-\xff.jpg";
    const int fd = ::open(raw.constData(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);

    QString out, err;
    CliContext context(&out, &err);
    const int code = parse({"photos", "add", raw}).dispatch(context);
    context.err.flush();
    if (QFile::encodeName(QFile::decodeName(raw)) == raw) {
        EXPECT_EQ(code, 0) << err.toStdString();
    } else {
        EXPECT_EQ(code, 2);
        EXPECT_TRUE(err.contains(QStringLiteral("photo-\\xFF.jpg' is not valid UTF-8"))) << err.toStdString();
    }
    ::unlink(raw.constData()); // the temporary folder cannot name it either
    qunsetenv("TESSARY_DEFAULTS");
    qunsetenv("TESSARY_RESOURCES");
}

} // namespace
