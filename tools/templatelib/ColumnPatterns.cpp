#include "ColumnPatterns.h"

#include <QStringList>

namespace {

// Cut counts per column. Palindromes look balanced; a few rising runs add movement.
std::vector<std::vector<int>> countSequences()
{
    const std::vector<int> counts = {1, 2, 3, 4};
    std::vector<std::vector<int>> out;
    for (int k = 2; k <= 7; ++k) {
        const int half = (k + 1) / 2;
        std::vector<int> digits(static_cast<size_t>(half), 0);
        while (true) {
            std::vector<int> seq(static_cast<size_t>(k), 0);
            for (int i = 0; i < half; ++i) {
                seq[size_t(i)] = counts[size_t(digits[size_t(i)])];
                seq[size_t(k - 1 - i)] = seq[size_t(i)];
            }
            out.push_back(seq);
            int i = 0;
            while (i < half && ++digits[size_t(i)] == int(counts.size()))
                digits[size_t(i++)] = 0;
            if (i == half)
                break;
        }
    }
    out.push_back({1, 2, 3});
    out.push_back({1, 2, 3, 4});
    out.push_back({2, 3, 4, 6});
    out.push_back({1, 2, 4});
    out.push_back({1, 3, 6});
    out.push_back({2, 4, 6, 4, 2});
    out.push_back({6, 4, 3, 2, 1});
    return out;
}

QString describe(const std::vector<int> &seq)
{
    QStringList parts;
    for (int n : seq)
        parts << QString::number(n);
    return parts.join(QLatin1Char('-'));
}

} // namespace

std::vector<SlotPattern> ColumnPatterns::columns()
{
    const int h = kHeight;
    std::vector<SlotPattern> patterns;
    for (const std::vector<int> &seq : countSequences()) {
        const int k = int(seq.size());
        // Every column cut evenly.
        std::vector<QRect> even;
        for (int x = 0; x < k; ++x) {
            const int step = h / seq[size_t(x)];
            for (int y = 0; y < h; y += step)
                even.emplace_back(x, y, 1, step);
        }
        patterns.emplace_back(QStringLiteral("columns"), QStringLiteral("even %1").arg(describe(seq)), k, h,
                              std::move(even));
        // Odd columns shifted by half a tile, with half tiles at both ends.
        std::vector<QRect> staggered;
        bool shiftedAny = false;
        for (int x = 0; x < k; ++x) {
            const int step = h / seq[size_t(x)];
            if (x % 2 == 1 && step % 2 == 0 && step >= 4) {
                shiftedAny = true;
                staggered.emplace_back(x, 0, 1, step / 2);
                for (int y = step / 2; y + step <= h; y += step)
                    staggered.emplace_back(x, y, 1, step);
                staggered.emplace_back(x, h - step / 2, 1, step / 2);
            } else {
                for (int y = 0; y < h; y += step)
                    staggered.emplace_back(x, y, 1, step);
            }
        }
        if (shiftedAny)
            patterns.emplace_back(QStringLiteral("columns"), QStringLiteral("staggered %1").arg(describe(seq)), k, h,
                                  std::move(staggered));
    }
    return patterns;
}

std::vector<SlotPattern> ColumnPatterns::rows()
{
    std::vector<SlotPattern> patterns;
    for (const SlotPattern &p : columns())
        patterns.push_back(p.transposed(QStringLiteral("rows"), p.name()));
    return patterns;
}
