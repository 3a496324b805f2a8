#include "foundation/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
QString fromEnv(const char *name)
{
    const QByteArray v = qgetenv(name);
    return v.isEmpty() ? QString() : QString::fromLocal8Bit(v);
}
} // namespace

QString Paths::documentsFolder()
{
    const QString env = fromEnv("TESSARY_DOCUMENTS");
    if (!env.isEmpty())
        return env;
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

QString Paths::imagesFolder()
{
    return QDir(documentsFolder()).filePath(QStringLiteral("Images"));
}

bool Paths::ensureImagesFolder()
{
    return QDir().mkpath(imagesFolder());
}

QString Paths::documentsPathForFileName(const QString &fileName)
{
    return QDir(documentsFolder()).filePath(fileName);
}

QString Paths::resourcesFolder()
{
    const QString env = fromEnv("TESSARY_RESOURCES");
    if (!env.isEmpty())
        return env;
    const QString appDir = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
    return resourcesFolderBeside(appDir);
}

QString Paths::resourcesFolderBeside(const QString &programFolder)
{
    // Installed: bin/ beside share/tessary (any prefix); built: bin/ beside resources/.
    for (const QString &candidate : {programFolder + QStringLiteral("/../share/tessary"), programFolder + QStringLiteral("/../resources")}) {
        if (QFileInfo::exists(candidate + QStringLiteral("/templates.plist")))
            return QDir(candidate).canonicalPath();
    }
    for (const QString &candidate : {programFolder + QStringLiteral("/../share/tessary"), programFolder + QStringLiteral("/../resources")}) {
        if (QDir(candidate).exists())
            return QDir(candidate).canonicalPath();
    }
    return QDir::cleanPath(programFolder + QStringLiteral("/../share/tessary"));
}
