#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/blend/ProgressSheet.h"
#include "app/result/ResultWindow.h"
#include "app/StallMeter.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/blend/TileSheet.h"
#include "MainThreadBusyMeter.h"
#include "SyntheticPhoto.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "app/result/ResultImageView.h"
#include "app/collage/TessaryView.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QLoggingCategory>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

// Blending and tiling as a person meets them in the window (off-screen): the command given,
// the progress sheet with its moving bar, the work on its own thread, the picture shown in the
// result window (or the tiles added to the photo list and drawn into the collage). Each reports
// the longest time the main thread went without its 2 ms timer meanwhile ("stall_ms", goal:
// no stall over 100 ms) and the most CPU time the main thread spent on its own in one such gap
// ("busy_ms": a long stall with a small busy figure was the machine, not the window).
//
//   TESSARY_RESOURCES=build/resources build/bin/tessary-bench --benchmark_filter='Blend|Tile'

namespace {

// Photos of different scenes at 12 megapixels (4000 x 3000), written once per run.
QStringList benchPhotos(const QDir &folder, int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        QImage photo = syntheticPhoto(4000, 3000);
        QPainter p(&photo);
        p.setRenderHint(QPainter::Antialiasing);
        for (int k = 0; k < 12; ++k) {
            p.setBrush(QColor::fromHsv((i * 83 + 29 * k) % 360, 170, 210));
            p.setPen(QPen(Qt::black, 8));
            const int d = 3000 / (3 + k % 4);
            p.drawEllipse(QRect((k * 977 + i * 331) % (4000 - d), (k * 613 + i * 171) % (3000 - d), d, d));
        }
        p.end();
        paths.append(folder.filePath(QStringLiteral("photo-%1.jpg").arg(i)));
        QImageWriter writer(paths.last(), "jpeg");
        writer.setQuality(90);
        writer.write(photo);
    }
    return paths;
}

struct BlendWorld {
    QTemporaryDir dir;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<HalvernDesktopController> controller;
    QStringList photos;

    explicit BlendWorld(int photoCount)
    {
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        photos = benchPhotos(QDir(dir.path()), photoCount);
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        ImageBrowserController &browser = controller->imageBrowserController();
        browser.clearImages();
        browser.addImagesWithPaths(photos);
        settle();
    }
    ~BlendWorld()
    {
        controller.reset();
        qunsetenv("TESSARY_DOCUMENTS");
    }
    // The photo list and the collage drawn, so the work measured starts from a quiet window.
    void settle()
    {
        TessaryView &view = controller->mainWindow().tessaryView();
        waitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 60000);
        waitFor([] { return false; }, 300);
    }
    template <typename Pred>
    static bool waitFor(Pred pred, int ms)
    {
        const QDeadlineTimer deadline(ms);
        while (!pred() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        return pred();
    }
};

struct Meters {
    StallMeter stall{2};
    MainThreadBusyMeter busy;
    qint64 worstStall = 0;
    double worstBusy = 0;
    void start()
    {
        stall.start();
        busy.start();
    }
    void stop()
    {
        stall.stop();
        busy.stop();
        worstStall = std::max(worstStall, stall.longestGapMs());
        worstBusy = std::max(worstBusy, busy.longestMs());
    }
    void report(benchmark::State &state) const
    {
        state.counters["stall_ms"] = double(worstStall);
        state.counters["busy_ms"] = worstBusy;
    }
};

// A blend of four 12-megapixel photos from the command to the picture shown in the result
// window with its reduced copy ready to draw. Arguments: the arrangement (0 left to right,
// 1 bottom to top, 2 square), "MegapixelLimit" (1: on, as by default; 0: the whole picture,
// about 47 megapixels) and "MatchingMarginWidth" (0 by default: no frame).
void BM_BlendInWindow(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    BlendWorld world(4);
    UserDefaults &defaults = *world.defaults;
    defaults.setBool(state.range(1) != 0, Preferences::MegapixelLimit);
    defaults.setInteger(state.range(2), Preferences::MatchingMarginWidth);
    TileAndBlendActions &blend = world.controller->tileAndBlendActions();
    ResultWindow &window = world.controller->resultWindow();
    const auto arrangement = state.range(0);
    Meters meters;
    QSize size;
    for (auto _ : state) {
        QSignalSpy finished(&blend, &TileAndBlendActions::blendFinished);
        window.resultView().setImage(QImage());
        meters.start();
        if (arrangement == 0)
            blend.stitchLeftToRight();
        else if (arrangement == 1)
            blend.stitchBottomToTop();
        else
            blend.stitchSquare();
        const bool shown = BlendWorld::waitFor(
            [&] {
                return finished.count() == 1 && !blend.progressSheet().isVisible() && window.isVisible() &&
                       !window.image().isNull() && window.resultView().previewReady();
            },
            120000);
        // The picture's first paints, and the main window's nudge, on the next turns.
        BlendWorld::waitFor([] { return false; }, 100);
        meters.stop();
        if (!shown) {
            state.SkipWithError("no picture within two minutes");
            break;
        }
        size = window.image().size();
    }
    meters.report(state);
    state.counters["megapixels"] = double(size.width()) * size.height() / 1e6;
    static const char *const names[] = {"left to right", "bottom to top", "square"};
    state.SetLabel(QStringLiteral("%1%2%3")
                       .arg(QLatin1String(names[arrangement]),
                            state.range(1) ? QStringLiteral(", within the limit") : QString(),
                            state.range(2) ? QStringLiteral(", framed") : QString())
                       .toStdString());
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_BlendInWindow)
    ->Args({0, 1, 0})
    ->Args({0, 0, 0})
    ->Args({0, 0, 20})
    ->Args({1, 0, 0})
    ->Args({2, 0, 0})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(2);

// Cutting a 12-megapixel photo into 4 x 4 tiles from the sheet's button to the last tile in
// the photo list and every tile of the collage drawn again. Arguments: the pause before each
// tile, in milliseconds (250 as the program cuts; 0: the tiles arrive as fast as they are made),
// and whether the 49 factory photos stay in the list after the photo cut (each tile added lays
// out a collage of them all).
void BM_TileInWindow(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    BlendWorld world(1);
    TileAndBlendActions &tiling = world.controller->tileAndBlendActions();
    tiling.tiler().setPauseBeforeEachTile(std::chrono::milliseconds(state.range(0)));
    ImageBrowserController &browser = world.controller->imageBrowserController();
    TileSheet &sheet = tiling.tilePhotosWindow();
    TessaryView &view = world.controller->mainWindow().tessaryView();
    Meters meters;
    const bool factory = state.range(1) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        browser.clearImages();
        browser.addImagesWithPaths(world.photos);
        if (factory)
            browser.loadFactoryImages();
        const qsizetype listed = browser.count();
        world.settle();
        browser.selection().select(0);
        state.ResumeTiming();
        meters.start();
        tiling.showTilePhotosWindow();
        sheet.rowsPopUpButton()->setCurrentIndex(3);
        sheet.columnsPopUpButton()->setCurrentIndex(3);
        tiling.tilePhotoFiles();
        const bool done = BlendWorld::waitFor(
            [&] { return !tiling.tilingInProgress() && browser.count() == listed + 16; }, 120000);
        const bool drawn = done && BlendWorld::waitFor([&] { return view.allTilesFilled(); }, 60000);
        BlendWorld::waitFor([] { return false; }, 100);
        meters.stop();
        if (!drawn) {
            state.SkipWithError("the tiles did not all arrive and show within three minutes");
            break;
        }
    }
    meters.report(state);
    state.SetLabel(factory ? "with the 49 factory photos" : "alone");
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_TileInWindow)->Args({250, 0})->Args({0, 0})->Args({250, 1})->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

} // namespace
