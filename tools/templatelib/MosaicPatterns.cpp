#include "MosaicPatterns.h"

#include <QSize>

#include <random>

namespace {

struct Mood
{
    const char *name;
    std::vector<std::pair<QSize, int>> weights;
};

const std::vector<Mood> &moods()
{
    static const std::vector<Mood> m = {
        {"blocks", {{{1, 1}, 5}, {{2, 2}, 4}, {{2, 1}, 1}, {{1, 2}, 1}}},
        {"dominoes", {{{1, 1}, 3}, {{2, 1}, 3}, {{1, 2}, 3}, {{2, 2}, 1}}},
        {"mixed", {{{1, 1}, 4}, {{2, 2}, 2}, {{2, 1}, 2}, {{1, 2}, 2}, {{3, 2}, 1}, {{2, 3}, 1}, {{3, 3}, 1}}},
    };
    return m;
}

} // namespace

std::vector<SlotPattern> MosaicPatterns::make()
{
    std::vector<SlotPattern> patterns;
    for (int columns = 3; columns <= 9; ++columns) {
        for (int rows = 3; rows <= 9; ++rows) {
            for (size_t m = 0; m < moods().size(); ++m) {
                const Mood &mood = moods()[m];
                int total = 0;
                for (const auto &w : mood.weights)
                    total += w.second;
                for (unsigned seed = 1; seed <= 6; ++seed) {
                    std::mt19937 rng(seed * 1000003u + unsigned(columns * 100 + rows * 10) + unsigned(m));
                    std::vector<bool> taken(size_t(columns * rows), false);
                    auto free = [&](int x, int y) { return x < columns && y < rows && !taken[size_t(y * columns + x)]; };
                    std::vector<QRect> blocks;
                    for (int y = 0; y < rows; ++y) {
                        for (int x = 0; x < columns; ++x) {
                            if (!free(x, y))
                                continue;
                            QSize size(1, 1);
                            for (int attempt = 0; attempt < 4; ++attempt) {
                                int pick = int(rng() % unsigned(total));
                                QSize wanted(1, 1);
                                for (const auto &w : mood.weights) {
                                    if ((pick -= w.second) < 0) {
                                        wanted = w.first;
                                        break;
                                    }
                                }
                                bool fits = true;
                                for (int dy = 0; dy < wanted.height() && fits; ++dy) {
                                    for (int dx = 0; dx < wanted.width() && fits; ++dx)
                                        fits = free(x + dx, y + dy);
                                }
                                if (fits) {
                                    size = wanted;
                                    break;
                                }
                            }
                            for (int dy = 0; dy < size.height(); ++dy) {
                                for (int dx = 0; dx < size.width(); ++dx)
                                    taken[size_t((y + dy) * columns + x + dx)] = true;
                            }
                            blocks.emplace_back(x, y, size.width(), size.height());
                        }
                    }
                    // A fill that drew only one size is an even grid, which the grids already give.
                    bool mixed = false;
                    for (const QRect &b : blocks)
                        mixed = mixed || b.size() != blocks.front().size();
                    if (!mixed)
                        continue;
                    patterns.emplace_back(QStringLiteral("mosaic"),
                                          QStringLiteral("%1x%2 %3 %4").arg(columns).arg(rows).arg(QLatin1String(mood.name)).arg(seed),
                                          columns, rows, std::move(blocks));
                }
            }
        }
    }
    return patterns;
}
