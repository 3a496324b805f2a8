#pragma once

#include "TemplateDesign.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <vector>

// Writes the built-in templates into the three places the application loads them from:
// "templates.plist", "templates_additional.plist" and files in the folder "Templates".
//
// Even grids and strips go to "templates.plist", so the first-start design (the first
// 49-module template there) is the first of its count whatever order the folder is listed in;
// large-tile and framed layouts go to "templates_additional.plist"; columns, rows, mosaics and
// the collages of more than 49 tiles get a file each in "Templates". "templates.plist" is an
// XML property list, the others binary ones.
class LibraryWriter
{
public:
    struct Entry
    {
        TemplateDesign design;
        QByteArray thumbnail;
        // The template dictionary as it is written, thumbnail included.
        QVariantMap dictionary;
    };

    // The file, relative to the resources folder, that a design belongs in.
    static QString destinationFor(const TemplateDesign &design);
    // Writes every file; on failure returns false and names the file in *error.
    // Plist files in "Templates" that no design belongs in any more are removed.
    static bool write(const QString &resourcesFolder, const std::vector<Entry> &entries, QString *error);
    // The relative file names written, in the order the application loads them.
    static QStringList destinations(const std::vector<Entry> &entries);
};
