#include "FramePatterns.h"

namespace {

// Single slots everywhere outside the centre block.
SlotPattern framed(const QString &name, int columns, int rows, QRect centre)
{
    std::vector<QRect> blocks{centre};
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            if (!centre.contains(x, y))
                blocks.emplace_back(x, y, 1, 1);
        }
    }
    return SlotPattern(QStringLiteral("frame"), name, columns, rows, std::move(blocks));
}

} // namespace

std::vector<SlotPattern> FramePatterns::make()
{
    std::vector<SlotPattern> patterns;
    for (int columns = 3; columns <= 12; ++columns) {
        for (int rows = 3; rows <= 12; ++rows) {
            patterns.push_back(framed(QStringLiteral("%1x%2 ring").arg(columns).arg(rows), columns, rows,
                                      QRect(1, 1, columns - 2, rows - 2)));
            if (rows <= 6)
                patterns.push_back(framed(QStringLiteral("%1x%2 bands").arg(columns).arg(rows), columns, rows,
                                          QRect(0, 1, columns, rows - 2)));
            if (columns <= 6)
                patterns.push_back(framed(QStringLiteral("%1x%2 sides").arg(columns).arg(rows), columns, rows,
                                          QRect(1, 0, columns - 2, rows)));
            // A thicker ring around a centre of 2 x 2 or more.
            if (columns >= 6 && rows >= 6)
                patterns.push_back(framed(QStringLiteral("%1x%2 wide ring").arg(columns).arg(rows), columns, rows,
                                          QRect(2, 2, columns - 4, rows - 4)));
        }
    }
    return patterns;
}
