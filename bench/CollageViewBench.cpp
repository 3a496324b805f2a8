#include "SilentAlerts.h"
#include "foundation/AlertPresenter.h"
#include "foundation/Paths.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "templates/TemplateSelection.h"
#include "app/collage/TessaryView.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

// The collage window's view with the 49 factory photos in the built-in 7 x 7 template, its
// cache warm (every tile filled once), in a store of its own.
struct CollageWorld {
    QTemporaryDir dir;
    SilentAlerts alerts;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<TessaryView> view;

    CollageWorld()
    {
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
        browser = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        view = std::make_unique<TessaryView>(*defaults, *browser, alerts, Paths::resourcesFolder());
        browser->setCollageReloader([this] { view->reloadData(); });
        view->resize(900, 700);
        view->show();
        browser->setInitialSelection();
        view->doChooseTemplate(TemplateTable::BuiltIn, TemplateSelection::kDefaultBuiltInRow);
        waitFilled(60000);
    }
    ~CollageWorld() { qunsetenv("TESSARY_DOCUMENTS"); }

    bool waitFilled(int ms)
    {
        const QDeadlineTimer deadline(ms);
        while (!view->allTilesFilled() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        return view->allTilesFilled();
    }
};

// One relayout of the 49 tiles as a live resize gives it: the view gets a new size, the frame
// change lays the collage out anew and places every tile; the photos are fitted to the new
// tiles on the pool afterwards (not timed: the main thread does not wait for them). With
// state.range(0) = 1 the window is also painted once, as the frame of the resize shows it.
void BM_CollageViewLiveResizeRelayout(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    CollageWorld world;
    if (!world.view->allTilesFilled() || world.view->tiles().size() != 49) {
        state.SkipWithError("the factory collage did not fill (is TESSARY_RESOURCES set?)");
        QLoggingCategory::setFilterRules(QString());
        return;
    }
    const bool paint = state.range(0) != 0;
    int step = 0;
    for (auto _ : state) {
        ++step;
        world.view->resize(900 + (step % 2 ? 7 : -7), 700 + (step % 2 ? 5 : -5));
        if (paint)
            world.view->repaint();
        state.PauseTiming();
        world.waitFilled(10000);
        state.ResumeTiming();
    }
    state.counters["tiles"] = double(world.view->tiles().size());
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_CollageViewLiveResizeRelayout)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
