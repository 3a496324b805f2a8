#include "app/TessaryLinks.h"

#include <QDir>

QUrl TessaryLinks::helpPage(const QString &resourcesFolder)
{
    return QUrl::fromLocalFile(QDir(resourcesFolder).filePath(QStringLiteral("help/index.html")));
}
