#pragma once

#include <QString>

// A photo's metadata carried into a file written from it: EXIF, IPTC, XMP and the colour
// profile of the source are copied into the target, with the orientation set to normal because
// the written pixels are already upright, the EXIF pixel dimensions set to the target's, and
// the EXIF thumbnail dropped (it would show the photo before the edit).
class PhotoMetadata
{
public:
    // Copies into the already-written target. True when the target holds the metadata now, and
    // also when there was nothing to carry: a source that is missing, unreadable or holds no
    // metadata, or a target in a format other than JPEG, PNG and TIFF (BMP cannot hold metadata;
    // WebP is not rewritten); the target is then left exactly as it is. False (with *error saying why) when the target could not
    // be rewritten; the target is rewritten whole through a temporary file renamed over it, so
    // a failure never leaves a damaged file.
    static bool copy(const QString &sourcePath, const QString &targetPath, QString *error = nullptr);
};
