#include "LayoutProof.h"

#include <vector>

QString LayoutProof::check(const TemplateDesign &design)
{
    if (design.moduleCount() == 0)
        return QStringLiteral("has no modules");
    const int columns = design.columns(), rows = design.rows();
    std::vector<int> cover(size_t(columns) * size_t(rows), 0);
    for (const QRect &t : design.tiles()) {
        if (t.x() < 0 || t.y() < 0 || t.x() + t.width() > columns || t.y() + t.height() > rows)
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
