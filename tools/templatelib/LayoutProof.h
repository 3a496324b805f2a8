#pragma once

#include "TemplateDesign.h"

#include <QString>

// Proves a template before it ships: the design covers its collage exactly, and the layout
// engine, given the template as the application would, places every module where the design
// drew it, skips none, and the placed tiles neither overlap nor leave holes.
class LayoutProof
{
public:
    // Empty when the template is sound, otherwise what is wrong with it.
    static QString check(const TemplateDesign &design);
};
