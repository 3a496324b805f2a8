#include "foundation/MimeHandlers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void writeText(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text);
}

// A program for a kind of file is found through each of the desktop's registers, and only when
// its desktop file exists; with none of them, there is none.
TEST(MimeHandlers, FoundThroughEachRegisterOnlyWhenTheProgramExists)
{
    struct Case {
        const char *name;
        const char *file;     // relative to the fake root
        QByteArray contents;
        bool withDesktopFile; // applications/viewer.desktop exists
        bool expected;
    };
    const QByteArray entry = "[Desktop Entry]\nType=Application\nExec=viewer %f\n";
    const Case cases[] = {
        {"nothing at all", nullptr, {}, false, false},
        {"a program for other files", "data/applications/viewer.desktop", entry + "MimeType=image/jpeg;\n", false, false},
        {"the program's own entry", "data/applications/viewer.desktop", entry + "MimeType=image/jpeg;image/png;\n", false, true},
        {"user default", "config/mimeapps.list", "[Default Applications]\nimage/png=viewer.desktop;\n", true, true},
        {"default of a missing program", "config/mimeapps.list", "[Default Applications]\nimage/png=gone.desktop;\n", true, false},
        {"added association", "data/applications/mimeapps.list", "[Added Associations]\nimage/png=viewer.desktop\n", true, true},
        {"system cache", "system/applications/mimeinfo.cache", "[MIME Cache]\nimage/png=viewer.desktop;\n", true, true},
        {"cache of another type", "system/applications/mimeinfo.cache", "[MIME Cache]\nimage/gif=viewer.desktop;\n", true, false},
    };
    for (const Case &c : cases) {
        QTemporaryDir root;
        const QDir r(root.path());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(r.filePath(QStringLiteral("config"))));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(r.filePath(QStringLiteral("etc"))));
        qputenv("XDG_DATA_HOME", QFile::encodeName(r.filePath(QStringLiteral("data"))));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(r.filePath(QStringLiteral("system"))));
        if (c.withDesktopFile)
            writeText(r.filePath(QStringLiteral("system/applications/viewer.desktop")), entry);
        if (c.file)
            writeText(r.filePath(QString::fromLatin1(c.file)), c.contents);
        EXPECT_EQ(MimeHandlers::hasHandler(QStringLiteral("image/png")), c.expected) << c.name;
    }
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
        qunsetenv(name);
}

} // namespace
