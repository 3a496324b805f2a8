#include "foundation/Paths.h"
#include "images/ImageCache.h"
#include "images/UIImage.h"
#include "model/LayoutEngine.h"
#include "model/TileImageFitter.h"
#include "images/TessaryViewDelegate.h"
#include "templates/TemplateStore.h"

#include <QDir>
#include <QFileInfo>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

// The photo list of the benchmarks: n photos, each with its own alignment.
class BenchPhotos : public TessaryViewDelegate
{
public:
    explicit BenchPhotos(int n)
    {
        for (int i = 0; i < n; ++i)
            m_photos << QStringLiteral("/photos/p%1.jpg").arg(i);
    }
    explicit BenchPhotos(QStringList paths) : m_photos(std::move(paths)) {}
    QStringList pickedPhotos() const override { return m_photos; }
    int alignmentIndexAtIndex(qsizetype index) const override { return int(index % 4); }
    qsizetype selectedItem() const override { return 0; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}

private:
    QStringList m_photos;
};

// A collage of 7 x 7 single cells with 49 modules, 100 points a cell.
QVariantMap fortyNineTileTemplate()
{
    QVariantList modules;
    for (int i = 0; i < 49; ++i)
        modules << QVariantMap{{QStringLiteral("widthFactor"), qint64(1)}, {QStringLiteral("heightFactor"), qint64(1)},
                               {QStringLiteral("borderWidth"), 0.05}, {QStringLiteral("cornerRadius"), 0.1}};
    return {{QStringLiteral("nbrModules"), qint64(49)},
            {QStringLiteral("contentSizeWidth"), 700.0},
            {QStringLiteral("contentSizeHeight"), 700.0},
            {QStringLiteral("moduleSizeInPoints"), qint64(100)},
            {QStringLiteral("borderWidth"), qint64(4)},
            {QStringLiteral("savedTessaryDataModules"), modules}};
}

// Placement and geometry of 49 tiles in a collage window of 1000 x 800 points.
void BM_LayoutFortyNineTiles(benchmark::State &state)
{
    const QVariantMap t = fortyNineTileTemplate();
    const BenchPhotos photos(49);
    LayoutEngine engine(QStringLiteral("/res/defaultImage.png"));
    for (auto _ : state) {
        const CollageLayout layout = engine.layoutTemplate(t, QSizeF(1000, 800), &photos);
        benchmark::DoNotOptimize(layout.tiles.data());
    }
}
BENCHMARK(BM_LayoutFortyNineTiles)->Unit(benchmark::kMillisecond);

// The whole layout pass of the collage view for 49 tiles: placement, then for every tile its
// photo from a warm image cache (the 49 factory photos of the resources) fitted to the tile.
void BM_LayoutFortyNineTilesWarmCache(benchmark::State &state)
{
    const QString resources = Paths::resourcesFolder();
    QStringList paths;
    for (int i = 0; i < 49; ++i)
        paths << QDir(resources).filePath(QStringLiteral("images-%1.jpg").arg(i));
    if (!QFileInfo::exists(paths.last())) {
        state.SkipWithError(qPrintable(QStringLiteral("no factory photos in %1").arg(resources)));
        return;
    }
    const QVariantMap t = fortyNineTileTemplate();
    const BenchPhotos photos(paths);
    ImageCache cache(&photos);
    cache.fillCache(paths);
    LayoutEngine engine(LayoutEngine::defaultImagePathInFolder(resources));
    const UIImage placeholder = UIImage::initWithContentsOfFile(engine.defaultImage());
    for (auto _ : state) {
        const CollageLayout layout = engine.layoutTemplate(t, QSizeF(1000, 800), &photos);
        benchmark::DoNotOptimize(TileImageFitter::fitAll(layout, cache, placeholder));
    }
}
// Wall-clock time: the fitting runs on every core.
BENCHMARK(BM_LayoutFortyNineTilesWarmCache)->Unit(benchmark::kMillisecond)->UseRealTime();

// Reading and sorting the whole built-in library from the resources folder.
void BM_LoadBuiltInLibrary(benchmark::State &state)
{
    const QString resources = Paths::resourcesFolder();
    qsizetype count = 0;
    for (auto _ : state) {
        const TemplateStore::Templates templates = TemplateStore::readBuiltInTemplates(resources);
        count = templates.size();
        benchmark::DoNotOptimize(templates.data());
    }
    state.counters["templates"] = double(count);
    if (count == 0)
        state.SkipWithError(qPrintable(QStringLiteral("no built-in templates in %1").arg(resources)));
}
BENCHMARK(BM_LoadBuiltInLibrary)->Unit(benchmark::kMillisecond);

} // namespace
