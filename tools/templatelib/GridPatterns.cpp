#include "GridPatterns.h"

std::vector<SlotPattern> GridPatterns::make()
{
    std::vector<SlotPattern> patterns;
    for (int columns = 1; columns <= kMaxSide; ++columns) {
        for (int rows = 1; rows <= kMaxSide; ++rows) {
            std::vector<QRect> blocks;
            for (int y = 0; y < rows; ++y) {
                for (int x = 0; x < columns; ++x)
                    blocks.emplace_back(x, y, 1, 1);
            }
            const bool strip = (columns == 1 || rows == 1) && columns * rows >= 3;
            patterns.emplace_back(strip ? QStringLiteral("strip") : QStringLiteral("grid"),
                                  QStringLiteral("%1x%2").arg(columns).arg(rows), columns, rows, std::move(blocks));
        }
    }
    return patterns;
}
