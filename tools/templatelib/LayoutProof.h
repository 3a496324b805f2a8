#pragma once

#include "TemplateDesign.h"

#include <QString>
#include <QVariantMap>

// Proves a template before it ships. The design must cover its collage exactly; then the
// layout engine is given the template dictionary as the application would apply it, and must
// place every module (none skipped) exactly where the design drew it, leaving no cell of the
// grid empty; and shown in a small window every tile must still be visible.
class LayoutProof
{
public:
    // Empty when the template is sound, otherwise what is wrong with it.
    static QString check(const TemplateDesign &design, const QVariantMap &templateData);
    // The design alone: every tile inside the grid, no overlap, no uncovered cell.
    static QString checkDesign(const TemplateDesign &design);

    // The smallest side, in points, a tile may have in a 640 x 480 view.
    static constexpr double kMinTileSideInSmallView = 4.0;
};
