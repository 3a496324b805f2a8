#include "FeaturePatterns.h"

#include <QList>

namespace {

// The grid filled with single slots around the given large blocks.
SlotPattern around(const QString &name, int columns, int rows, const std::vector<QRect> &large)
{
    std::vector<QRect> blocks = large;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            bool taken = false;
            for (const QRect &b : large)
                taken = taken || b.contains(x, y);
            if (!taken)
                blocks.emplace_back(x, y, 1, 1);
        }
    }
    return SlotPattern(QStringLiteral("feature"), name, columns, rows, std::move(blocks));
}

} // namespace

std::vector<SlotPattern> FeaturePatterns::make()
{
    std::vector<SlotPattern> patterns;
    for (int columns = 2; columns <= 8; ++columns) {
        for (int rows = 2; rows <= 8; ++rows) {
            for (int bw = 1; bw <= columns; ++bw) {
                for (int bh = 1; bh <= rows; ++bh) {
                    const int area = bw * bh;
                    // The large tile must dominate: at least a quarter of the collage, or a
                    // full 2 x 2 on bigger grids, and never the whole collage.
                    if (area < 2 || (bw == columns && bh == rows))
                        continue;
                    if (area * 4 < columns * rows && !(bw >= 2 && bh >= 2))
                        continue;
                    if (bw * 2 < columns && bh * 2 < rows && columns * rows > 16)
                        continue;
                    // Corners, side middles and the centre where they fall on whole slots.
                    const QList<QPoint> anchors = {
                        {0, 0},
                        {columns - bw, 0},
                        {0, rows - bh},
                        {columns - bw, rows - bh},
                        {(columns - bw) / 2, (rows - bh) / 2},
                        {0, (rows - bh) / 2},
                        {(columns - bw) / 2, 0},
                    };
                    QList<QPoint> used;
                    for (int a = 0; a < anchors.size(); ++a) {
                        const QPoint p = anchors[a];
                        const bool centredX = (columns - bw) % 2 == 0, centredY = (rows - bh) % 2 == 0;
                        if ((a == 4 && !(centredX && centredY)) || (a == 5 && !centredY) || (a == 6 && !centredX))
                            continue;
                        if (used.contains(p))
                            continue;
                        used.append(p);
                        patterns.push_back(around(QStringLiteral("%1x%2 large %3x%4 at %5,%6")
                                                      .arg(columns).arg(rows).arg(bw).arg(bh).arg(p.x()).arg(p.y()),
                                                  columns, rows, {QRect(p.x(), p.y(), bw, bh)}));
                    }
                }
            }
            // Two large squares in opposite corners.
            for (int b = 2; b * 2 <= columns && b * 2 <= rows; ++b) {
                patterns.push_back(around(QStringLiteral("%1x%2 twin %3").arg(columns).arg(rows).arg(b), columns, rows,
                                          {QRect(0, 0, b, b), QRect(columns - b, rows - b, b, b)}));
                patterns.push_back(around(QStringLiteral("%1x%2 twin %3 crossed").arg(columns).arg(rows).arg(b), columns,
                                          rows, {QRect(columns - b, 0, b, b), QRect(0, rows - b, b, b)}));
            }
        }
    }
    return patterns;
}
