#include "SilentAlerts.h"
#include "foundation/AlertPresenter.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"
#include "app/photos/ImageBrowserListView.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/photos/ImageBrowserPanel.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

#include <benchmark/benchmark.h>

#include <memory>

// The image browser with a long list: 1000 small photos in the grid, their thumbnails made
// (warm), as a user who collected many photos scrolls, zooms and adds one more.

namespace {

constexpr int kPhotoCount = 1000;

// One browser for every case: building it (1000 files, the list, every thumbnail) takes a while.
struct Browser {
    Browser()
    {
        qputenv("TESSARY_DOCUMENTS", QFile::encodeName(dir.filePath(QStringLiteral("Documents"))));
        QDir(dir.path()).mkpath(QStringLiteral("photos"));
        QDir(dir.path()).mkpath(QStringLiteral("resources"));
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
        defaults->setBool(false, QStringLiteral("FirstRunLoadFactoryImages"));
        QStringList paths;
        for (int i = 0; i < kPhotoCount; ++i) {
            QImage image(160, 120, QImage::Format_RGB32);
            image.fill(QColor::fromHsv(i * 7 % 360, 160, 220));
            paths.append(dir.filePath(QStringLiteral("photos/p%1.jpg").arg(i)));
            image.save(paths.last(), "JPEG");
        }
        extra = dir.filePath(QStringLiteral("photos/extra.jpg"));
        QImage(160, 120, QImage::Format_RGB32).save(extra, "JPEG");
        controller = std::make_unique<ImageBrowserController>(*defaults, dir.filePath(QStringLiteral("resources")), alerts);
        controller->addImagesWithPaths(paths);
        cache = std::make_unique<ImageCache>(controller.get());
        loader = std::make_unique<ImageCacheLoader>(*cache);
        loader->request(paths);
        loader->waitForAll();
        panel = std::make_unique<ImageBrowserPanel>(*controller, *loader, *defaults);
        panel->resize(420, 900);
        panel->show();
        (void)QTest::qWaitForWindowExposed(panel.get());
        // Every thumbnail made once, as after the user scrolled through the list.
        ImageBrowserListView &grid = panel->grid();
        for (int row = 0; row < kPhotoCount; row += 20) {
            grid.scrollTo(panel->model().index(row), QAbstractItemView::PositionAtTop);
            grid.viewport()->repaint();
            QTest::qWait(ImageBrowserModel::kRequestDelayMilliseconds + 10);
        }
        (void)QTest::qWaitFor([&] { return loader->loadingCount() == 0 && panel->model().pendingThumbnails() == 0; }, 60000);
    }

    QTemporaryDir dir;
    SilentAlerts alerts;
    QString extra;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<ImageBrowserController> controller;
    std::unique_ptr<ImageCache> cache;
    std::unique_ptr<ImageCacheLoader> loader;
    std::unique_ptr<ImageBrowserPanel> panel;
};

Browser &browser()
{
    static Browser b;
    return b;
}

// One frame of scrolling: the grid moves by a quarter of its height and paints.
void BM_ImageBrowserScrollFrame(benchmark::State &state)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        state.SkipWithError("needs a QApplication");
        return;
    }
    ImageBrowserListView &grid = browser().panel->grid();
    QScrollBar *bar = grid.verticalScrollBar();
    const int step = grid.viewport()->height() / 4;
    for (auto _ : state) {
        bar->setValue(bar->value() + step >= bar->maximum() ? 0 : bar->value() + step);
        grid.viewport()->repaint();
    }
}
BENCHMARK(BM_ImageBrowserScrollFrame)->Unit(benchmark::kMillisecond);

// The grid laid out again for a new thumbnail size (a step of the zoom slider), and painted.
void BM_ImageBrowserZoomStep(benchmark::State &state)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        state.SkipWithError("needs a QApplication");
        return;
    }
    ImageBrowserPanel &panel = *browser().panel;
    int value = 0;
    for (auto _ : state) {
        value = (value + 7) % ImageBrowserPanel::kZoomSteps;
        panel.zoomSlider().setValue(value);
        panel.grid().doItemsLayout();
        panel.grid().viewport()->repaint();
    }
}
BENCHMARK(BM_ImageBrowserZoomStep)->Unit(benchmark::kMillisecond);

// A photo inserted at the front of the 1000 and removed again, each through the controller
// (stored at once) with the grid following by row signals and painting.
void BM_ImageBrowserInsertAndRemoveAtFront(benchmark::State &state)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        state.SkipWithError("needs a QApplication");
        return;
    }
    Browser &b = browser();
    for (auto _ : state) {
        b.controller->insertImage(b.extra, 0);
        b.panel->grid().viewport()->repaint();
        b.controller->removeItemsAtIndexes({0});
        b.panel->grid().viewport()->repaint();
    }
}
BENCHMARK(BM_ImageBrowserInsertAndRemoveAtFront)->Unit(benchmark::kMillisecond);

// The grid's reset of the 1000 rows, as after a list change that is no simple insert, remove
// or move: laid out again and painted.
void BM_ImageBrowserReset(benchmark::State &state)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) {
        state.SkipWithError("needs a QApplication");
        return;
    }
    ImageBrowserListView &grid = browser().panel->grid();
    for (auto _ : state) {
        grid.reset();
        grid.doItemsLayout();
        grid.viewport()->repaint();
    }
}
BENCHMARK(BM_ImageBrowserReset)->Unit(benchmark::kMillisecond);

} // namespace
