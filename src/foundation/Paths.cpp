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
    // Installed: bin/ beside share/tessary (any prefix); built: bin/ beside resources/. A folder
    // holding the built-in templates wins over one that merely exists.
    const QStringList candidates{programFolder + QStringLiteral("/../share/tessary"), programFolder + QStringLiteral("/../resources")};
    for (const auto &holds : {QStringLiteral("/templates.plist"), QString()}) {
        for (const QString &candidate : candidates) {
            if (QFileInfo::exists(candidate + holds))
                return QDir(candidate).canonicalPath();
        }
    }
    return QDir::cleanPath(candidates.first());
}
