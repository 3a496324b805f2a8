#include "DesignCatalogue.h"

#include "ColumnPatterns.h"
#include "FeaturePatterns.h"
#include "FramePatterns.h"
#include "GridPatterns.h"
#include "MosaicPatterns.h"

#include <QHash>

#include <numeric>
#include <set>

namespace {

// Tiles narrower or wider than this crop photos too hard to look good.
constexpr double kMinTileRatio = 0.5;
constexpr double kMaxTileRatio = 2.0;
constexpr int kMaxGridSide = 96;

// How gladly each shape is picked; strips and tall panoramas are for the few who want them.
double shapeWeight(const QString &shape)
{
    static const QHash<QString, double> weights = {
        {QStringLiteral("square"), 1.0}, {QStringLiteral("4:3"), 1.0}, {QStringLiteral("3:2"), 1.0},
        {QStringLiteral("16:9"), 0.9},   {QStringLiteral("3:4"), 0.8}, {QStringLiteral("2:3"), 0.8},
        {QStringLiteral("3:1"), 0.4},    {QStringLiteral("4:1"), 0.25}, {QStringLiteral("1:3"), 0.25},
    };
    return weights.value(shape, 0.5);
}

// The looks templates come in; most are plain tiles.
TileStyle styleFor(const TemplateDesign &d)
{
    TileStyle s;
    switch (d.stableHash() % 10) {
    case 6:
    case 7:
        s.cornerRadius = 0.12;
        break;
    case 8:
        s.borderWidth = 0.04;
        s.borderColor = Qt::white;
        s.collageBorderWidth = 2;
        break;
    case 9:
        s.cornerRadius = 0.25;
        s.borderWidth = 0.02;
        s.borderColor = QColor(0x44, 0x44, 0x44);
        break;
    default:
        break;
    }
    return s;
}

// Two designs with the same shape and the same tiles at the same relative places are one:
// the key is the tiles with each axis divided by the greatest common divisor of its numbers.
std::vector<int> geometryKey(const TemplateDesign &d, int shapeIndex)
{
    int gx = d.columns(), gy = d.rows();
    for (const QRect &t : d.tiles()) {
        gx = std::gcd(gx, std::gcd(t.x(), t.width()));
        gy = std::gcd(gy, std::gcd(t.y(), t.height()));
    }
    std::vector<int> key{shapeIndex, d.columns() / gx, d.rows() / gy};
    key.reserve(3 + 4 * d.tiles().size());
    for (const QRect &t : d.tiles()) {
        key.insert(key.end(), {t.x() / gx, t.y() / gy, t.width() / gx, t.height() / gy});
    }
    return key;
}

// Every pattern of every family.
const std::vector<SlotPattern> &allPatterns()
{
    static const std::vector<SlotPattern> patterns = [] {
        std::vector<SlotPattern> all;
        for (auto &&family : {GridPatterns::make(), FeaturePatterns::make(), FramePatterns::make(),
                              ColumnPatterns::columns(), ColumnPatterns::rows(), MosaicPatterns::make()}) {
            all.insert(all.end(), family.begin(), family.end());
        }
        return all;
    }();
    return patterns;
}

// Every sound pattern, by its number of blocks.
const std::map<int, std::vector<SlotPattern>> &patternsByCount()
{
    static const std::map<int, std::vector<SlotPattern>> byCount = [] {
        std::map<int, std::vector<SlotPattern>> m;
        for (const SlotPattern &p : allPatterns()) {
            if (p.tilesExactly())
                m[p.blockCount()].push_back(p);
        }
        return m;
    }();
    return byCount;
}

} // namespace

const std::map<int, int> &DesignCatalogue::quotas()
{
    static const std::map<int, int> q = [] {
        std::map<int, int> m = {{1, 7},  {2, 12}, {3, 13}, {4, 14},  {5, 13}, {6, 14},
                                {7, 12}, {8, 13}, {9, 13}, {10, 12}, {11, 10}, {12, 13}};
        for (int n = 13; n <= 24; ++n)
            m[n] = 6;
        for (int n = 25; n <= 48; ++n)
            m[n] = 3;
        for (int n : {25, 30, 32, 36, 40, 42, 48})
            m[n] = 4;
        m[kFirstStartModules] = 12;
        // Larger collages for those with more photos than the factory set.
        for (auto [n, count] : std::initializer_list<std::pair<int, int>>{
                 {50, 1}, {54, 2}, {56, 2}, {60, 2}, {63, 1}, {64, 2}, {70, 1}, {72, 2}, {80, 2}, {81, 1}, {90, 1}, {100, 2}})
            m[n] = count;
        return m;
    }();
    return q;
}

TemplateDesign DesignCatalogue::firstStartDesign()
{
    std::vector<QRect> blocks;
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 7; ++x)
            blocks.emplace_back(x, y, 1, 1);
    }
    const SlotPattern grid(QStringLiteral("grid"), QStringLiteral("7x7"), 7, 7, std::move(blocks));
    TemplateDesign d(grid, CollageShape::named(QStringLiteral("square")), QSize(1, 1));
    d.setStyle(TileStyle());
    return d;
}

std::vector<TemplateDesign> DesignCatalogue::candidates(int moduleCount)
{
    std::vector<TemplateDesign> out;
    std::set<std::vector<int>> seen;
    const auto found = patternsByCount().find(moduleCount);
    if (found == patternsByCount().end())
        return out;
    for (const SlotPattern &p : found->second) {
        for (size_t shapeIndex = 0; shapeIndex < CollageShape::all().size(); ++shapeIndex) {
            const CollageShape &shape = CollageShape::all()[shapeIndex];
            const auto slot = p.slotSizeFor(shape.ratio);
            if (!slot)
                continue;
            if (p.columns() * slot->width() > kMaxGridSide || p.rows() * slot->height() > kMaxGridSide)
                continue;
            if (moduleCount > 1) {
                bool suits = true;
                for (const QRect &b : p.blocks()) {
                    const double r = double(b.width() * slot->width()) / double(b.height() * slot->height());
                    suits = suits && r >= kMinTileRatio && r <= kMaxTileRatio;
                }
                if (!suits)
                    continue;
            }
            TemplateDesign d(p, shape, *slot);
            if (!seen.insert(geometryKey(d, int(shapeIndex))).second)
                continue;
            d.setStyle(styleFor(d));
            out.push_back(std::move(d));
        }
    }
    return out;
}

std::vector<TemplateDesign> DesignCatalogue::build(QString *error)
{
    int below = 0;
    for (const auto &[n, count] : quotas()) {
        if (n < kFirstStartModules)
            below += count;
    }
    if (below != kFirstStartRow) {
        if (error)
            *error = QStringLiteral("the templates below %1 modules number %2, not %3")
                         .arg(kFirstStartModules).arg(below).arg(kFirstStartRow);
        return {};
    }

    const TemplateDesign first = firstStartDesign();
    const auto shapeIndexOf = [](const TemplateDesign &d) {
        const auto &shapes = CollageShape::all();
        for (size_t i = 0; i < shapes.size(); ++i) {
            if (shapes[i].name == d.shape())
                return int(i);
        }
        return -1;
    };
    const std::vector<int> firstKey = geometryKey(first, shapeIndexOf(first));
    QHash<QString, int> globalShapeUse;
    std::vector<TemplateDesign> chosen;
    for (const auto &[n, quota] : quotas()) {
        std::vector<TemplateDesign> pool = candidates(n);
        std::vector<bool> taken(pool.size(), false);
        int picked = 0;
        if (n == kFirstStartModules) {
            chosen.push_back(first);
            ++picked;
            for (size_t i = 0; i < pool.size(); ++i)
                taken[i] = taken[i] || geometryKey(pool[i], shapeIndexOf(pool[i])) == firstKey;
        }
        QHash<QString, int> familyUse, patternUse, shapeUse;
        while (picked < quota) {
            // Least-used family first, then a pattern not yet shown in another shape, then a
            // shape this count has not had, then shapes the library has few of.
            size_t best = pool.size();
            std::tuple<int, int, double, double, size_t> bestKey;
            for (size_t i = 0; i < pool.size(); ++i) {
                if (taken[i])
                    continue;
                const TemplateDesign &d = pool[i];
                const QString pattern = d.name().section(QLatin1Char(' '), 0, -2);
                const double w = shapeWeight(d.shape());
                const auto key = std::make_tuple(familyUse.value(d.family()), patternUse.value(pattern),
                                                 (shapeUse.value(d.shape()) + 1) / w,
                                                 (globalShapeUse.value(d.shape()) + 1) / w, i);
                if (best == pool.size() || key < bestKey) {
                    best = i;
                    bestKey = key;
                }
            }
            if (best == pool.size()) {
                if (error)
                    *error = QStringLiteral("only %1 of %2 templates with %3 modules can be made")
                                 .arg(picked).arg(quota).arg(n);
                return {};
            }
            taken[best] = true;
            const TemplateDesign &d = pool[best];
            familyUse[d.family()]++;
            patternUse[d.name().section(QLatin1Char(' '), 0, -2)]++;
            shapeUse[d.shape()]++;
            globalShapeUse[d.shape()]++;
            chosen.push_back(d);
            ++picked;
        }
    }
    return chosen;
}
