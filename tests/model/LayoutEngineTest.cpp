#include "model/LayoutEngine.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "support/FakePhotoList.h"
#include "support/QtPrinters.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace {

QVariantMap moduleDict(qint64 w, qint64 h, double borderWidth = 0, double cornerRadius = 0)
{
    return QVariantMap{{QStringLiteral("widthFactor"), w},
                       {QStringLiteral("heightFactor"), h},
                       {QStringLiteral("borderWidth"), borderWidth},
                       {QStringLiteral("cornerRadius"), cornerRadius}};
}

// An engine with a grid of columns x rows cells of `unit` points, shown at its own size.
LayoutEngine engineWithGrid(int columns, int rows, int unit = 100)
{
    LayoutEngine engine(QStringLiteral("/res/defaultImage.png"));
    engine.setup(unit, 0, double(columns * unit), double(rows * unit), QSizeF(columns * unit, rows * unit));
    return engine;
}

CollageLayout layOut(LayoutEngine &engine, const std::vector<std::pair<qint64, qint64>> &sizes,
                     const TessaryViewDelegate *delegate = nullptr)
{
    QVariantList modules;
    for (const auto &[w, h] : sizes)
        modules << moduleDict(w, h);
    engine.loadTessaryDataModules(modules, true);
    return engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), delegate);
}

struct PlacementCase {
    const char *name;
    int columns, rows;
    std::vector<std::pair<qint64, qint64>> modules;
    std::vector<QPoint> expectedCells; // of the placed modules, in order
    std::vector<qsizetype> expectedSkipped;
    QSizeF expectedExtent;
};

void PrintTo(const PlacementCase &c, std::ostream *os) { *os << c.name; }

class Placement : public ::testing::TestWithParam<PlacementCase> {};

TEST_P(Placement, FirstFitRowMajor)
{
    const PlacementCase &c = GetParam();
    LayoutEngine engine = engineWithGrid(c.columns, c.rows);
    const CollageLayout layout = layOut(engine, c.modules);
    std::vector<QPoint> cells;
    for (const TileLayout &t : layout.tiles)
        cells.push_back(t.cell);
    EXPECT_EQ(cells, c.expectedCells);
    EXPECT_EQ(layout.skippedModules, c.expectedSkipped);
    EXPECT_EQ(layout.extent, c.expectedExtent);
    EXPECT_EQ(layout.contentSize, c.expectedExtent);
}

INSTANTIATE_TEST_SUITE_P(
    LayoutEngine, Placement,
    ::testing::Values(
        PlacementCase{"FourSquares", 4, 4, {{2, 2}, {2, 2}, {2, 2}, {2, 2}},
                      {{0, 0}, {2, 0}, {0, 2}, {2, 2}}, {}, {400, 400}},
        // The second 2x1 cannot take (2,0): it would need a fourth column.
        PlacementCase{"NoBacktracking", 3, 2, {{2, 1}, {2, 1}, {1, 2}, {2, 2}},
                      {{0, 0}, {0, 1}, {2, 0}}, {3}, {300, 200}},
        PlacementCase{"WiderThanGrid", 3, 3, {{4, 1}, {1, 1}}, {{0, 0}}, {0}, {100, 100}},
        PlacementCase{"TallerThanGrid", 3, 2, {{1, 3}, {3, 2}}, {{0, 0}}, {0}, {300, 200}},
        // Fills the gap left in the first row before going down.
        PlacementCase{"FillsGapsInReadingOrder", 3, 3, {{1, 1}, {2, 2}, {1, 1}, {1, 1}, {1, 1}},
                      {{0, 0}, {1, 0}, {0, 1}, {0, 2}, {1, 2}}, {}, {300, 300}},
        // A module without height fits anywhere and covers no cell, so the next one lands on it.
        PlacementCase{"ZeroHeightCoversNothing", 2, 2, {{1, 0}, {1, 1}}, {{0, 0}, {0, 0}}, {}, {100, 100}},
        PlacementCase{"ZeroWidthCoversNothing", 2, 2, {{0, 2}, {2, 2}}, {{0, 0}, {0, 0}}, {}, {200, 200}},
        // Without width the row count does not matter: placed at once, however many rows it claims.
        PlacementCase{"ZeroWidthOfAstronomicalHeight", 2, 2, {{0, qint64(1) << 40}, {1, 1}}, {{0, 0}, {0, 0}}, {},
                      {100, 100.0 * double(qint64(1) << 40)}},
        PlacementCase{"NegativeSizeCoversNothing", 2, 2, {{-3, 1}, {2, 2}}, {{0, 0}, {0, 0}}, {}, {200, 200}},
        PlacementCase{"FullGridSkipsTheRest", 2, 1, {{1, 1}, {1, 1}, {1, 1}}, {{0, 0}, {1, 0}}, {2}, {200, 100}},
        PlacementCase{"HugeFactorFitsNowhere", 2, 2, {{qint64(1) << 40, 1}, {1, qint64(1) << 40}}, {}, {0, 1}, {0, 0}}),
    [](const auto &info) { return std::string(info.param.name); });

struct ScalingCase {
    const char *name;
    qint64 moduleSize, borderWidth;
    double contentWidth, contentHeight;
    QSizeF available;
    quint64 columns, rows, scaledModuleSize, scaledBorderWidth;
    double scaledWidth, scaledHeight;
};

void PrintTo(const ScalingCase &c, std::ostream *os) { *os << c.name; }

class Scaling : public ::testing::TestWithParam<ScalingCase> {};

TEST_P(Scaling, GridFromTemplateSizesFittedToView)
{
    const ScalingCase &c = GetParam();
    LayoutEngine engine;
    engine.setup(c.moduleSize, c.borderWidth, c.contentWidth, c.contentHeight, c.available);
    EXPECT_EQ(engine.maxElementsX(), c.columns);
    EXPECT_EQ(engine.maxElementsY(), c.rows);
    EXPECT_EQ(engine.moduleSizeInPoints(), c.scaledModuleSize);
    EXPECT_EQ(engine.borderWidth(), c.scaledBorderWidth);
    EXPECT_NEAR(engine.contentSizeWidth(), c.scaledWidth, 1e-9);
    EXPECT_NEAR(engine.contentSizeHeight(), c.scaledHeight, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    LayoutEngine, Scaling,
    ::testing::Values(
        ScalingCase{"HalfWidth", 100, 10, 400, 300, {200, 1000}, 4, 3, 50, 5, 200, 150},
        ScalingCase{"GrowsToWidth", 100, 10, 400, 300, {800, 1000}, 4, 3, 200, 20, 800, 600},
        ScalingCase{"TooTallThenFittedToHeight", 100, 0, 300, 600, {300, 300}, 3, 6, 50, 0, 150, 300},
        // The grid is the unscaled template's, cells truncated: 300 / 70 = 4.28 -> 4.
        ScalingCase{"PartialCellsDropped", 70, 3, 300, 300, {100, 100}, 4, 4, 23, 1, 100, 100},
        // Truncation after each step: 33 x 1.5 = 49.5 -> 49, then 49 x 4/9 = 21.8 -> 21 (not 22).
        ScalingCase{"TruncatesAfterEachStep", 33, 0, 100, 300, {150, 200}, 3, 9, 21, 0, 200.0 / 3.0, 200},
        ScalingCase{"ZeroModuleSizeGivesNoGrid", 0, 0, 400, 300, {400, 300}, 0, 0, 0, 0, 400, 300},
        ScalingCase{"SmallerThanOneCell", 100, 0, 90, 300, {90, 300}, 0, 3, 100, 0, 90, 300},
        ScalingCase{"ZeroWidthTemplateIsNotScaled", 100, 5, 0, 300, {400, 300}, 0, 3, 100, 5, 0, 300},
        ScalingCase{"NegativeValuesReadAsNothing", -100, -5, 400, 300, {400, 300}, 0, 0, 0, 0, 400, 300}),
    [](const auto &info) { return std::string(info.param.name); });

struct SpacingCase {
    const char *name;
    int spacingType;
    double widthIncrement, heightIncrement;
    QRectF expectedFrame;
};

void PrintTo(const SpacingCase &c, std::ostream *os) { *os << c.name; }

class Spacing : public ::testing::TestWithParam<SpacingCase> {};

TEST_P(Spacing, InsetOrOutsetByIncrements)
{
    const SpacingCase &c = GetParam();
    LayoutEngine engine = engineWithGrid(2, 1);
    engine.setSpacingType(c.spacingType);
    engine.setIncrements(c.widthIncrement, c.heightIncrement);
    const CollageLayout layout = layOut(engine, {{2, 1}});
    ASSERT_EQ(layout.tiles.size(), 1u);
    const TileLayout &tile = layout.tiles[0];
    EXPECT_EQ(tile.cellFrame, QRectF(0, 0, 200, 100));
    EXPECT_NEAR(tile.frame.x(), c.expectedFrame.x(), 1e-9);
    EXPECT_NEAR(tile.frame.y(), c.expectedFrame.y(), 1e-9);
    EXPECT_NEAR(tile.frame.width(), c.expectedFrame.width(), 1e-9);
    EXPECT_NEAR(tile.frame.height(), c.expectedFrame.height(), 1e-9);
    EXPECT_EQ(tile.imageSize, tile.frame.size());
    // The extent comes from the grid rectangles, whatever the spacing.
    EXPECT_EQ(layout.extent, QSizeF(200, 100));
}

INSTANTIATE_TEST_SUITE_P(
    LayoutEngine, Spacing,
    ::testing::Values(SpacingCase{"DefaultInset", 0, 5, 5, {4.5, 2.25, 191, 95.5}},
                      SpacingCase{"OutsetGrowsBySameAmounts", 1, 5, 5, {-4.5, -2.25, 209, 104.5}},
                      SpacingCase{"AnyOtherTypeOutsets", 3, 5, 5, {-4.5, -2.25, 209, 104.5}},
                      SpacingCase{"NoSpacing", 0, 0, 0, {0, 0, 200, 100}},
                      SpacingCase{"WidthAndHeightIndependent", 0, 10, 0, {9, 0, 182, 100}},
                      // 45 % of the width on each side at 100 %.
                      SpacingCase{"LargeIncrement", 0, 100, 100, {90, 45, 20, 10}},
                      // Past the middle the tile collapses to nothing instead of turning inside out.
                      SpacingCase{"CollapsesPastTheMiddle", 0, 250, 5, {100, 2.25, 0, 95.5}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(LayoutEngine, PhotoOrPlaceholderPerModule)
{
    struct Case {
        int photos, modules;
        std::vector<bool> placeholders;
    };
    for (const Case &c : {Case{5, 3, {false, false, false}}, Case{3, 5, {false, false, false, true, true}},
                          Case{0, 2, {true, true}}}) {
        LayoutEngine engine = engineWithGrid(5, 1);
        const FakePhotoList photos = FakePhotoList::numbered(c.photos);
        const CollageLayout layout = layOut(engine, std::vector<std::pair<qint64, qint64>>(size_t(c.modules), {1, 1}), &photos);
        ASSERT_EQ(layout.tiles.size(), size_t(c.modules));
        for (int i = 0; i < c.modules; ++i) {
            const TileLayout &t = layout.tiles[size_t(i)];
            EXPECT_EQ(t.tag, i);
            EXPECT_EQ(t.placeholder, c.placeholders[size_t(i)]) << c.photos << " photos, module " << i;
            EXPECT_EQ(t.imagePath, t.placeholder ? QStringLiteral("/res/defaultImage.png") : photos.pickedPhotos()[i]);
        }
    }
}

TEST(LayoutEngine, SkippedModuleLeavesItsPhotoUnshown)
{
    LayoutEngine engine = engineWithGrid(3, 2);
    const FakePhotoList photos(FakePhotoList::numbered(5).pickedPhotos(), {3, 2, 1, 0, 2}, 2);
    const CollageLayout layout = layOut(engine, {{2, 1}, {2, 1}, {1, 2}, {2, 2}, {1, 1}}, &photos);
    ASSERT_EQ(layout.tiles.size(), 3u);
    EXPECT_EQ(layout.skippedModules, (std::vector<qsizetype>{3, 4}));
    EXPECT_EQ(layout.tileForModule(3), nullptr);
    // The placed tiles keep their own index: photo, alignment and selection follow it.
    for (const TileLayout &t : layout.tiles) {
        EXPECT_EQ(t.imagePath, photos.pickedPhotos()[t.tag]);
        EXPECT_EQ(t.imageAlignment, photos.alignmentIndexAtIndex(t.tag));
        EXPECT_EQ(t.selected, t.tag == 2);
    }
}

TEST(LayoutEngine, BorderAndCornerInPointsFromGridRectangle)
{
    struct Case {
        double borderFraction, cornerFraction, border, corner;
    };
    for (const Case &c : {Case{0.1, 0.2, 5, 10}, Case{0, 0.5, 0, 25}, Case{-0.1, 0, 0, 0}, Case{1, 1, 50, 50}}) {
        LayoutEngine engine = engineWithGrid(2, 1);
        engine.loadTessaryDataModules({moduleDict(2, 1, c.borderFraction, c.cornerFraction)}, true);
        const CollageLayout layout = engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), nullptr);
        ASSERT_EQ(layout.tiles.size(), 1u);
        EXPECT_NEAR(layout.tiles[0].borderWidth, c.border, 1e-6) << c.borderFraction;
        EXPECT_NEAR(layout.tiles[0].cornerRadius, c.corner, 1e-6) << c.cornerFraction;
    }
}

TEST(LayoutEngine, EmptyModuleListKeepsPreviousContentSize)
{
    LayoutEngine engine = engineWithGrid(3, 2);
    EXPECT_EQ(layOut(engine, {{1, 1}, {2, 2}}).contentSize, QSizeF(300, 200));
    const CollageLayout empty = layOut(engine, {});
    EXPECT_TRUE(empty.tiles.empty());
    EXPECT_TRUE(empty.skippedModules.empty());
    EXPECT_EQ(empty.contentSize, QSizeF(300, 200));
}

TEST(LayoutEngine, ZeroOrHugeGridGivesEmptyCollage)
{
    for (const auto &[contentWidth, unit] : std::vector<std::pair<double, qint64>>{{50, 100}, {1e9, 1}}) {
        LayoutEngine engine;
        engine.setup(unit, 0, contentWidth, contentWidth, QSizeF(contentWidth, contentWidth));
        engine.loadTessaryDataModules({moduleDict(1, 1), moduleDict(1, 1)}, true);
        const CollageLayout layout = engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), nullptr);
        EXPECT_TRUE(layout.tiles.empty());
        EXPECT_EQ(layout.skippedModules, (std::vector<qsizetype>{0, 1}));
        EXPECT_EQ(layout.contentSize, QSizeF(0, 0));
    }
}

TEST(LayoutEngine, ScaledCellsPlaceTilesOnWholePoints)
{
    // A 3 x 2 template of 100-point cells shown 250 points wide: cells of trunc(83.3) = 83.
    LayoutEngine engine;
    engine.setIncrements(0, 0);
    engine.setup(100, 0, 300, 200, QSizeF(250, 1000));
    const CollageLayout layout = layOut(engine, {{1, 1}, {2, 1}, {3, 1}});
    ASSERT_EQ(layout.tiles.size(), 3u);
    EXPECT_EQ(layout.tiles[1].frame, QRectF(83, 0, 166, 83));
    EXPECT_EQ(layout.tiles[2].frame, QRectF(0, 83, 249, 83));
    EXPECT_EQ(layout.extent, QSizeF(249, 166));
}

TEST(LayoutEngine, ReloadDataReadsDefaults)
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("d.sqlite")));
    defaults.setInteger(50, Preferences::ModuleSizeInPoints);
    defaults.setInteger(4, Preferences::BorderWidth);
    defaults.setDouble(200, Preferences::ContentSizeWidth);
    defaults.setDouble(100, Preferences::ContentSizeHeight);
    defaults.setObject(QVariantList{moduleDict(2, 2), moduleDict(2, 2)}, Preferences::SavedTessaryDataModules);

    LayoutEngine engine;
    engine.setup(defaults, QSizeF(400, 400));
    EXPECT_EQ(engine.moduleSizeInPoints(), 100u);
    EXPECT_EQ(engine.borderWidth(), 8u);

    // Absent increments read 5 %, a stored 0 reads 0.
    CollageLayout layout = engine.reloadData(defaults, nullptr);
    ASSERT_EQ(layout.tiles.size(), 2u);
    EXPECT_EQ(layout.tiles[1].frame, QRectF(204.5, 4.5, 191, 191));
    for (const auto &m : engine.tessaryDataModules())
        EXPECT_TRUE(m->empty());

    defaults.setInteger(0, Preferences::CollageWidthIncrement);
    layout = engine.reloadData(defaults, nullptr);
    EXPECT_EQ(layout.tiles[1].frame, QRectF(200, 4.5, 200, 191));
}

// The placement rule written as plainly as possible: scan every cell in reading order and test
// every covered cell. The engine's search must agree with it on any grid and module list.
std::vector<std::optional<QPoint>> referencePlacement(int columns, int rows, const std::vector<std::pair<qint64, qint64>> &modules)
{
    std::vector<bool> used(size_t(columns * rows), false);
    std::vector<std::optional<QPoint>> out;
    for (const auto &[w, h] : modules) {
        std::optional<QPoint> found;
        for (int r = 0; r < rows && !found; ++r) {
            for (int c = 0; c < columns && !found; ++c) {
                bool fits = true;
                for (qint64 j = 0; j < h && fits; ++j)
                    for (qint64 k = 0; k < w && fits; ++k)
                        fits = c + k < columns && r + j < rows && !used[size_t((r + j) * columns + c + k)];
                if (fits)
                    found = QPoint(c, r);
            }
        }
        if (found)
            for (qint64 j = 0; j < h; ++j)
                for (qint64 k = 0; k < w; ++k)
                    used[size_t((found->y() + j) * columns + found->x() + k)] = true;
        out.push_back(found);
    }
    return out;
}

TEST(LayoutEngine, SearchAgreesWithPlainScanOnRandomLayouts)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 300; ++round) {
        const int columns = 1 + int(random() % 9);
        const int rows = 1 + int(random() % 9);
        std::vector<std::pair<qint64, qint64>> modules(1 + random() % 30);
        for (auto &m : modules)
            m = {qint64(random() % 5) - (random() % 8 == 0 ? 1 : 0), qint64(random() % 5)};
        LayoutEngine engine = engineWithGrid(columns, rows, 10);
        const CollageLayout layout = layOut(engine, modules);
        const std::vector<std::optional<QPoint>> expected = referencePlacement(columns, rows, modules);
        for (size_t i = 0; i < modules.size(); ++i) {
            const TileLayout *tile = layout.tileForModule(qsizetype(i));
            ASSERT_EQ(tile != nullptr, expected[i].has_value()) << "round " << round << " module " << i;
            if (tile) {
                ASSERT_EQ(tile->cell, *expected[i]) << "round " << round << " module " << i;
            }
        }
    }
}

} // namespace
