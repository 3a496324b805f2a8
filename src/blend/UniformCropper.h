#pragma once

#include <QSizeF>
#include <QString>
#include <QStringList>

// Brings a set of photos to one common size before they are blended: the smallest width and
// the smallest height among them (taken separately), each photo scaled to fit inside that size
// (`fit`) or cropped to cover it, centred. Each result is written as TIFF into the temporary
// folder under the source's own file name, extension included, and the list of those paths,
// in input order, is returned. Paths whose files do not exist drop out.
class UniformCropper
{
public:
    // The common size of the files that exist (their upright pixel sizes); the largest finite
    // float in both directions when none exists.
    static QSizeF commonSize(const QStringList &files);
    // With `uniformlyCrop` off the list comes back as it is. tempFolder: where the copies go.
    static QStringList uniformlyCropImages(const QStringList &files, bool uniformlyCrop, bool fit,
                                           const QString &tempFolder);
};
