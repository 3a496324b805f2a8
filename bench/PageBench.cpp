#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/result/PrintOutputs.h"
#include "app/result/ResultWindow.h"
#include "app/StallMeter.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "app/collage/TessaryView.h"

#include "MainThreadBusyMeter.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

// Export PDF… of the 49 factory photos on an A4 page at 300 dpi from the result window: from
// the choice of file to the PDF committed, the collage rendered afresh for the page on a worker.
// "stall_ms" is the longest the main thread went without its timer meanwhile; "busy_ms" the most
// processor time it spent on its own in one such interval (a stall with little of it is the
// thread waiting for a core on a busy machine).

namespace {

template <typename Pred>
bool waitFor(Pred pred, int ms)
{
    const QDeadlineTimer deadline(ms);
    while (!pred() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return pred();
}

void BM_ExportPdfA4At300Dpi(benchmark::State &state)
{
    QLoggingCategory::setFilterRules(QStringLiteral("tessary.info=false"));
    QTemporaryDir dir;
    qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    defaults.setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
    auto controller = std::make_unique<HalvernDesktopController>(defaults, Paths::resourcesFolder());
    controller->launch();
    TessaryView &view = controller->mainWindow().tessaryView();
    if (!waitFor([&] { return view.currentLayout().tiles.size() == 49 && view.allTilesFilled(); }, 60000)) {
        state.SkipWithError("the factory collage did not fill (is TESSARY_RESOURCES set?)");
        return;
    }
    controller->collageMaker().setDelay(0);
    QSignalSpy ready(&controller->collageMaker(), &CollageMaker::collageReady);
    controller->imageCollage();
    if (!waitFor([&] { return ready.count() == 1; }, 120000)) {
        state.SkipWithError("no collage within two minutes");
        return;
    }
    PrintOutputs &print = controller->printOutputs();
    const QString path = dir.filePath(QStringLiteral("a4.pdf"));
    StallMeter meter(2);
    qint64 worstStall = 0;
    MainThreadBusyMeter busy;
    double worstBusy = 0;
    for (auto _ : state) {
        QSignalSpy written(&print, &PrintOutputs::pdfWritten);
        meter.start();
        busy.start();
        print.writePdf(path);
        const bool done = waitFor([&] { return written.count() == 1; }, 120000);
        meter.stop();
        busy.stop();
        if (!done || !written.at(0).at(1).toBool()) {
            state.SkipWithError("the PDF was not written");
            break;
        }
        worstStall = std::max(worstStall, meter.longestGapMs());
        worstBusy = std::max(worstBusy, busy.longestMs());
    }
    const QSize pixels = print.lastPage().renderSize(controller->collageMaker().madeLayout().contentSize);
    state.counters["stall_ms"] = double(worstStall);
    state.counters["busy_ms"] = worstBusy;
    state.counters["megapixels"] = double(pixels.width()) * pixels.height() / 1e6;
    state.counters["file_MB"] = double(QFileInfo(path).size()) / 1e6;
    controller.reset();
    qunsetenv("TESSARY_DOCUMENTS");
    QLoggingCategory::setFilterRules(QString());
}
BENCHMARK(BM_ExportPdfA4At300Dpi)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace
