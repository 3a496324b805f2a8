#include "foundation/OpenedFiles.h"

#include <QFileInfo>

OpenedFiles OpenedFiles::sort(const QStringList &paths)
{
    OpenedFiles sorted;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if (!info.isFile()) {
            sorted.missing.append(info.absoluteFilePath());
            continue;
        }
        const QString suffix = info.suffix().toLower();
        if (suffix == QLatin1String("tessary"))
            sorted.collages.append(info.absoluteFilePath());
        else if (suffix == QLatin1String("plist"))
            sorted.templateFiles.append(info.absoluteFilePath());
        else
            sorted.photos.append(info.absoluteFilePath());
    }
    return sorted;
}
