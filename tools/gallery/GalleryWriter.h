#pragma once

#include "GallerySets.h"

#include <QString>

#include <vector>

// Writes the shipped template gallery into a folder: the page ("index.html" and its style
// sheet), a picture of each set ("thumbnails/<slug>.png") and each set as a templates file
// ("sets/Tessary-Template-<slug>.plist", every template proved with the layout engine and given
// its table thumbnail). Files are replaced atomically; the first failure stops the run.
class GalleryWriter
{
public:
    static bool write(const QString &folder, const std::vector<GallerySets::Set> &sets, QString *error);

    // The page itself, linking each set's file and picture by relative address.
    static QString indexHtml(const std::vector<GallerySets::Set> &sets);
    static QString styleSheet();
};
