#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultWindow.h"
#include "app/StallMeter.h"
#include "MainThreadBusyMeter.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "app/result/ResultImageView.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>
#include <thread>

// The result window's work as a person meets it: Make Collage with the 49 factory photos from
// the key press to the picture shown (the one-second pause included), and saving a
// 26-megapixel result as PNG and as JPEG from the window. Each reports the longest time the main
// thread went without its timer meanwhile ("stall_ms"), and the most CPU time it spent on its
// own in one such interval ("busy_ms"): the windows must keep repainting.

namespace {

struct ResultWorld {
    QTemporaryDir dir;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<HalvernDesktopController> controller;

    ResultWorld()
    {
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->resultOutputs().setOpener([](const QUrl &) { return true; });
        controller->launch();
        TessaryView &view = controller->mainWindow().tessaryView();
        waitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 60000);
    }
    ~ResultWorld()
    {
        controller.reset();
        qunsetenv("TESSARY_DOCUMENTS");
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

// Key press to picture shown: the please-wait window, the pause (argument: 1000 ms as the program waits,
// or 0 to time the rest alone), the render on a worker, the picture in the result window with
// its reduced copy ready to draw.
void BM_MakeCollage49FactoryPhotos(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    ResultWorld world;
    TessaryView &view = world.controller->mainWindow().tessaryView();
    if (view.currentLayout().tiles.size() != 49 || !view.allTilesFilled()) {
        state.SkipWithError("the factory collage did not fill (is TESSARY_RESOURCES set?)");
        return;
    }
    world.controller->collageMaker().setDelay(int(state.range(0)));
    QAction *makeCollage = world.controller->mainWindow().action(QStringLiteral("imageCollage"));
    ResultWindow &window = world.controller->resultWindow();
    StallMeter meter(2);
    MainThreadBusyMeter busy;
    qint64 worstStall = 0;
    double worstBusy = 0;
    QSize size;
    for (auto _ : state) {
        QSignalSpy ready(&world.controller->collageMaker(), &CollageMaker::collageReady);
        meter.start();
        busy.start();
        makeCollage->trigger();
        const bool shown = ResultWorld::waitFor(
            [&] { return ready.count() == 1 && window.isVisible() && window.resultView().previewReady(); }, 120000);
        meter.stop();
        busy.stop();
        if (!shown) {
            state.SkipWithError("no picture within two minutes");
            break;
        }
        worstStall = std::max(worstStall, meter.longestGapMs());
        worstBusy = std::max(worstBusy, busy.longestMs());
        size = window.image().size();
        state.PauseTiming();
        ResultWorld::waitFor([] { return false; }, 200); // the result window settles
        state.ResumeTiming();
    }
    state.counters["stall_ms"] = double(worstStall);
    state.counters["busy_ms"] = worstBusy;
    state.counters["megapixels"] = double(size.width()) * size.height() / 1e6;
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_MakeCollage49FactoryPhotos)->Arg(1000)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// A 26-megapixel collage-like picture (5100 x 5100): photo-like gradients and detail.
QImage result26MP()
{
    QImage image(5100, 5100, QImage::Format_RGB32);
    QPainter p(&image);
    for (int i = 0; i < 49; ++i) {
        const QRect tile((i % 7) * 728 + 4, (i / 7) * 728 + 4, 720, 720);
        QLinearGradient g(tile.topLeft(), tile.bottomRight());
        g.setColorAt(0, QColor::fromHsv((i * 47) % 360, 140, 230));
        g.setColorAt(1, QColor::fromHsv((i * 47 + 120) % 360, 200, 90));
        p.fillRect(tile, g);
        quint32 seed = 977u * quint32(i + 1);
        for (int k = 0; k < 300; ++k) {
            seed = seed * 1664525u + 1013904223u;
            p.fillRect(tile.x() + int(seed % 690), tile.y() + int((seed >> 12) % 690), 30, 20,
                       QColor::fromRgb(seed | 0xff000000u));
        }
    }
    return image;
}

// Save… of a 26-megapixel result in the window, from the choice to the file committed; the
// window's thread only waits for the answer. Argument 0: PNG, 1: JPEG (quality 90).
void BM_SaveResult26MP(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    ResultWorld world;
    world.controller->displayResult(result26MP(), true);
    ResultWindow &window = world.controller->resultWindow();
    ResultWorld::waitFor([&] { return window.resultView().previewReady(); }, 30000);
    ResultEncoder::Settings settings;
    settings.format = state.range(0) == 0 ? "png" : "jpeg";
    settings.quality = 90;
    const QString path = world.dir.filePath(QStringLiteral("result.") + (state.range(0) == 0 ? "png" : "jpg"));
    StallMeter meter(2);
    MainThreadBusyMeter busy;
    qint64 worstStall = 0;
    double worstBusy = 0;
    for (auto _ : state) {
        QSignalSpy saved(&world.controller->resultOutputs(), &ResultOutputs::saved);
        meter.start();
        busy.start();
        world.controller->resultOutputs().saveImageToPath(path, settings);
        if (!ResultWorld::waitFor([&] { return saved.count() == 1; }, 120000) || !saved.at(0).at(1).toBool()) {
            state.SkipWithError("the save did not finish");
            break;
        }
        meter.stop();
        busy.stop();
        worstStall = std::max(worstStall, meter.longestGapMs());
        worstBusy = std::max(worstBusy, busy.longestMs());
    }
    state.counters["stall_ms"] = double(worstStall);
    state.counters["busy_ms"] = worstBusy;
    state.counters["file_MB"] = double(QFileInfo(path).size()) / 1e6;
    state.SetLabel(settings.format.constData());
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_SaveResult26MP)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace

namespace {

// Quitting during a save: a 26-megapixel save given up 50 ms after it started, and how long
// the write then takes to stop ("stop_ms"; the program quits once it has). The folder must be
// left with no file. Argument: 0 PNG, 1 JPEG (quality 90), 2 LZW TIFF, 3 WebP (quality 90).
void BM_SaveGivenUp26MP(benchmark::State &state)
{
    static const char *const formats[] = {"png", "jpeg", "tiff", "webp"};
    ResultEncoder::Settings settings;
    settings.format = formats[state.range(0)];
    settings.quality = 90;
    const QImage picture = result26MP();
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("result.") + settings.format);
    double worst = 0;
    QString outcome;
    for (auto _ : state) {
        std::atomic<bool> giveUp{false};
        QElapsedTimer clock;
        qint64 stoppedAt = -1;
        bool written = false;
        std::thread writer([&] {
            written = ResultEncoder::writeFile(picture, path, settings, nullptr, {}, [&giveUp] { return giveUp.load(); });
            stoppedAt = clock.nsecsElapsed();
        });
        QThread::msleep(50);
        clock.start();
        giveUp = true;
        writer.join();
        worst = std::max(worst, double(stoppedAt) / 1e6);
        if (written)
            outcome = QStringLiteral("written before it was given up");
        else if (!QDir(dir.path()).isEmpty())
            outcome = QStringLiteral("A FILE WAS LEFT");
        else if (outcome.isEmpty())
            outcome = QStringLiteral("no file left");
        QFile::remove(path);
    }
    state.counters["stop_ms"] = worst;
    state.SetLabel(QStringLiteral("%1, %2").arg(QLatin1String(settings.format), outcome).toStdString());
}
BENCHMARK(BM_SaveGivenUp26MP)->DenseRange(0, 3)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace
