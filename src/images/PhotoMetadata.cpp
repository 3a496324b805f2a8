#include "images/PhotoMetadata.h"

bool PhotoMetadata::copy(const QString &sourcePath, const QString &targetPath, QString *error)
{
    // Not built yet: the target keeps only what its writer put in it.
    Q_UNUSED(sourcePath);
    Q_UNUSED(targetPath);
    Q_UNUSED(error);
    return true;
}
