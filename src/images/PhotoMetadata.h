#pragma once

#include <QString>

// A photo's metadata carried into a file written from it: EXIF, IPTC, XMP and the colour
// profile of the source are copied into the target, with the orientation set to normal because
// the written pixels are already upright.
class PhotoMetadata
{
public:
    // False (with *error saying why) when the target could not be rewritten; a source without
    // metadata is not an error.
    static bool copy(const QString &sourcePath, const QString &targetPath, QString *error = nullptr);
};
