#include "foundation/OpenedFiles.h"

#include <QFileInfo>

OpenedFiles OpenedFiles::sort(const QStringList &paths)
{
    OpenedFiles sorted;
    for (const QString &path : paths) {
        const QFileInfo info(path);
        // A folder is passed over; only what is not there at all is named as missing.
        if (!info.exists())
            sorted.missing.append(info.absoluteFilePath());
        if (!info.isFile())
            continue;
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
