#include "LayoutProof.h"

#include "model/LayoutEngine.h"

#include <vector>

QString LayoutProof::checkDesign(const TemplateDesign &design)
{
    if (design.moduleCount() == 0)
        return QStringLiteral("has no modules");
    const int columns = design.columns(), rows = design.rows();
    std::vector<int> cover(size_t(columns) * size_t(rows), 0);
    for (const QRect &t : design.tiles()) {
        if (t.width() <= 0 || t.height() <= 0 || t.x() < 0 || t.y() < 0 || t.x() + t.width() > columns
            || t.y() + t.height() > rows)
            return QStringLiteral("a %1 x %2 tile at %3,%4 leaves the %5 x %6 grid")
                .arg(t.width()).arg(t.height()).arg(t.x()).arg(t.y()).arg(columns).arg(rows);
        for (int y = t.y(); y < t.y() + t.height(); ++y) {
            for (int x = t.x(); x < t.x() + t.width(); ++x) {
                if (++cover[size_t(y) * size_t(columns) + size_t(x)] > 1)
                    return QStringLiteral("tiles overlap at cell %1,%2").arg(x).arg(y);
            }
        }
    }
    for (size_t i = 0; i < cover.size(); ++i) {
        if (cover[i] == 0)
            return QStringLiteral("cell %1,%2 is not covered").arg(int(i) % columns).arg(int(i) / columns);
    }
    return {};
}

QString LayoutProof::check(const TemplateDesign &design, const QVariantMap &templateData)
{
    if (QString problem = checkDesign(design); !problem.isEmpty())
        return problem;

    // At its own size the collage is not scaled, so frames are cells times the module size.
    LayoutEngine engine;
    const QSizeF own(design.contentWidth(), design.contentHeight());
    const CollageLayout layout = engine.layoutTemplate(templateData, own);
    if (layout.columns != quint64(design.columns()) || layout.rows != quint64(design.rows()))
        return QStringLiteral("the engine sees a %1 x %2 grid, not %3 x %4")
            .arg(layout.columns).arg(layout.rows).arg(design.columns()).arg(design.rows());
    if (!layout.skippedModules.empty())
        return QStringLiteral("module %1 fits nowhere").arg(layout.skippedModules.front());
    if (layout.moduleCount != design.moduleCount() || qsizetype(layout.tiles.size()) != layout.moduleCount)
        return QStringLiteral("the engine places %1 of %2 modules").arg(layout.tiles.size()).arg(design.moduleCount());
    const double u = design.moduleSizeInPoints();
    for (qsizetype i = 0; i < layout.moduleCount; ++i) {
        const TileLayout *tile = layout.tileForModule(i);
        const QRect &want = design.tiles()[size_t(i)];
        if (!tile)
            return QStringLiteral("module %1 has no tile").arg(i);
        if (tile->cell != want.topLeft())
            return QStringLiteral("module %1 lands at cell %2,%3 instead of %4,%5")
                .arg(i).arg(tile->cell.x()).arg(tile->cell.y()).arg(want.x()).arg(want.y());
        const QRectF frame(want.x() * u, want.y() * u, want.width() * u, want.height() * u);
        if (tile->cellFrame != frame)
            return QStringLiteral("module %1 is framed %2,%3 %4 x %5 instead of %6,%7 %8 x %9")
                .arg(i).arg(tile->cellFrame.x()).arg(tile->cellFrame.y()).arg(tile->cellFrame.width())
                .arg(tile->cellFrame.height()).arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
    }
    // Every cell of the engine's own grid is taken; with every module where it belongs this
    // also rules out overlap.
    const TwoDimentionalArray &grid = engine.tessaryDataModules2DArray();
    for (quint64 r = 0; r < grid.rows(); ++r) {
        for (quint64 c = 0; c < grid.columns(); ++c) {
            if (!grid.objectAtColumn(c, r))
                return QStringLiteral("the engine leaves cell %1,%2 empty").arg(c).arg(r);
        }
    }
    if (layout.extent != own)
        return QStringLiteral("the tiles reach %1 x %2, not the collage's %3 x %4")
            .arg(layout.extent.width()).arg(layout.extent.height()).arg(own.width()).arg(own.height());

    // In a small window the cell size is truncated to whole points; no tile may vanish.
    const CollageLayout small = engine.layoutTemplate(templateData, QSizeF(640, 480));
    if (!small.skippedModules.empty() || qsizetype(small.tiles.size()) != design.moduleCount())
        return QStringLiteral("in a 640 x 480 view modules are skipped");
    for (const TileLayout &t : small.tiles) {
        if (t.cellFrame.width() < kMinTileSideInSmallView || t.cellFrame.height() < kMinTileSideInSmallView)
            return QStringLiteral("in a 640 x 480 view module %1 is only %2 x %3 points")
                .arg(t.tag).arg(t.cellFrame.width()).arg(t.cellFrame.height());
    }
    return {};
}
