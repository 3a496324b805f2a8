#include "foundation/MimeHandlers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace {

QStringList foldersOf(const char *variable, const QString &fallback)
{
    const QString value = qEnvironmentVariable(variable);
    QStringList folders;
    for (const QString &folder : (value.isEmpty() ? fallback : value).split(QLatin1Char(':'), Qt::SkipEmptyParts))
        folders << folder;
    return folders;
}

QString homeFolder(const char *variable, const QString &relative)
{
    const QString value = qEnvironmentVariable(variable);
    return value.isEmpty() ? QDir::home().filePath(relative) : value;
}

// The desktop ids listed for the type under any of the sections of a key file.
QStringList entriesFor(const QString &file, const QString &mimeType, const QStringList &sections)
{
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QStringList ids;
    bool inSection = false;
    QTextStream in(&f);
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inSection = sections.contains(line);
            continue;
        }
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (!inSection || eq < 0)
            continue;
        const QString key = line.left(eq).trimmed();
        if (key == mimeType || (sections.contains(QLatin1String("[Desktop Entry]")) && key == QLatin1String("MimeType")))
            ids << line.mid(eq + 1).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    }
    return ids;
}

bool desktopFileExists(const QStringList &applicationFolders, const QString &id)
{
    for (const QString &folder : applicationFolders) {
        const QDir dir(folder);
        // "kde-foo.desktop" may live as "kde/foo.desktop".
        if (dir.exists(id) || dir.exists(QString(id).replace(QLatin1Char('-'), QLatin1Char('/'))))
            return true;
    }
    return false;
}

} // namespace

QStringList MimeHandlers::applicationFolders()
{
    QStringList folders{QDir(homeFolder("XDG_DATA_HOME", QStringLiteral(".local/share"))).filePath(QStringLiteral("applications"))};
    for (const QString &data : foldersOf("XDG_DATA_DIRS", QStringLiteral("/usr/local/share:/usr/share")))
        folders << QDir(data).filePath(QStringLiteral("applications"));
    return folders;
}

bool MimeHandlers::hasHandler(const QString &mimeType)
{
    const QStringList applications = applicationFolders();
    QStringList lists{QDir(homeFolder("XDG_CONFIG_HOME", QStringLiteral(".config"))).filePath(QStringLiteral("mimeapps.list"))};
    for (const QString &config : foldersOf("XDG_CONFIG_DIRS", QStringLiteral("/etc/xdg")))
        lists << QDir(config).filePath(QStringLiteral("mimeapps.list"));
    for (const QString &folder : applications)
        lists << QDir(folder).filePath(QStringLiteral("mimeapps.list"));
    const QStringList listSections{QStringLiteral("[Default Applications]"), QStringLiteral("[Added Associations]")};
    for (const QString &list : lists)
        for (const QString &id : entriesFor(list, mimeType, listSections))
            if (desktopFileExists(applications, id))
                return true;
    for (const QString &folder : applications) {
        const QDir dir(folder);
        for (const QString &id : entriesFor(dir.filePath(QStringLiteral("mimeinfo.cache")), mimeType, {QStringLiteral("[MIME Cache]")}))
            if (desktopFileExists(applications, id))
                return true;
        for (const QString &entry : dir.entryList({QStringLiteral("*.desktop")}, QDir::Files))
            if (entriesFor(dir.filePath(entry), mimeType, {QStringLiteral("[Desktop Entry]")}).contains(mimeType))
                return true;
    }
    return false;
}
