#pragma once

#include "TemplateDesign.h"

#include <QString>

#include <vector>

// The themed template sets of the shipped gallery. None of them is among the built-in
// templates: each set has a look of its own (frames, rounded corners, dark film edges) that the
// built-in library does not use.
class GallerySets
{
public:
    struct Set
    {
        // Used in file names: "Tessary-Template-<slug>.plist", "<slug>.png".
        QString slug;
        QString title;
        QString blurb;
        std::vector<TemplateDesign> designs;

        QString fileName() const { return QStringLiteral("Tessary-Template-%1.plist").arg(slug); }
    };

    static std::vector<Set> all();
};
