#pragma once

#include "TemplateDesign.h"

#include <QString>

#include <map>
#include <vector>

// Chooses the built-in templates: every pattern of every family is tried in every collage
// shape it suits, and for each module count a quota of designs is picked so that families,
// patterns and shapes take turns.
//
// The application shows row 297 of the built-in list (sorted by module count) at first start.
// The quotas of the counts below 49 add up to exactly 297 and the first-start design is the
// first 49-module template, so it lands on that row.
class DesignCatalogue
{
public:
    static constexpr int kFirstStartRow = 297;
    static constexpr int kFirstStartModules = 49;

    // Module count -> number of templates with that count.
    static const std::map<int, int> &quotas();
    // The 7 x 7 square grid that greets the 49 factory photos.
    static TemplateDesign firstStartDesign();

    // Every template, ordered by module count, the first-start design first among its count.
    // On failure (a quota that cannot be met) returns nothing and explains in *error.
    static std::vector<TemplateDesign> build(QString *error);

    // Every candidate design with the given module count, in the order the families offer them.
    static std::vector<TemplateDesign> candidates(int moduleCount);
};
