#include "AppFixture.h"
#include "support/RecordingAlertPresenter.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/blend/ProgressSheet.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/blend/TileSheet.h"
#include "foundation/ImagesFolder.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "app/collage/CollageControlBar.h"
#include "widgets/DelayedPopupMenuButton.h"
#include "app/blend/TilingProgressIndicator.h"

#include <QColorDialog>
#include <QComboBox>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

#include <memory>

namespace {

// The actions over a photo list of the test's own (no factory photos), under a window of
// their own, with an alert presenter that records.
class TileAndBlendActionsTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(false, Preferences::FirstRunLoadFactoryImages);
        defaults->setInteger(10, Preferences::BlendingMarginWidth);
        browser = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        window = std::make_unique<QWidget>();
        window->resize(600, 400);
        progress = new TilingProgressIndicator(window.get());
        actions = std::make_unique<TileAndBlendActions>(*defaults, *browser, alerts, window.get(), *progress);
        actions->setTemporaryFolder(dir.filePath(QStringLiteral("tmp")));
        actions->tiler().setPauseBeforeEachTile(std::chrono::milliseconds(0));
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    void TearDown() override
    {
        actions.reset();
        window.reset();
        browser.reset();
        AppFixture::TearDown();
    }
    // n photos of w x h, flat greys, added to the list.
    void addPhotos(int n, int w = 40, int h = 30)
    {
        QStringList paths;
        for (int i = 0; i < n; ++i) {
            QImage photo(w, h, QImage::Format_RGB32);
            photo.fill(QColor(60 + 8 * i, 90, 200 - 6 * i));
            paths.append(dir.filePath(QStringLiteral("photo-%1.png").arg(i)));
            ASSERT_TRUE(photo.save(paths.last()));
        }
        browser->addImagesWithPaths(paths);
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<QWidget> window;
    TilingProgressIndicator *progress = nullptr;
    std::unique_ptr<TileAndBlendActions> actions;
};

// The tile sheet: Cancel closes it and starts nothing; Tile cuts the selected photo into the
// chosen rows and columns, whose tiles join the photo list. A cut asked for with nothing
// selected never ends: the sheet only beeps from then on.
TEST_F(TileAndBlendActionsTest, TileSheetCutsTheSelectedPhotoAndIsRefusedWhileACutRuns)
{
    addPhotos(1, 60, 40);
    browser->selection().select(0);
    TileSheet &sheet = actions->tilePhotosWindow();
    actions->showTilePhotosWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.isVisible(); }, 2000));
    QTest::mouseClick(sheet.cancelButton(), Qt::LeftButton);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_FALSE(progress->isActive());
    EXPECT_FALSE(actions->tilingInProgress());

    actions->showTilePhotosWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.isVisible(); }, 2000));
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    ASSERT_EQ(sheet.rowsPopUpButton()->count(), 10);
    EXPECT_EQ(sheet.columnsPopUpButton()->itemText(9), QStringLiteral("10"));
    sheet.rowsPopUpButton()->setCurrentIndex(1);
    sheet.columnsPopUpButton()->setCurrentIndex(2);
    QTest::mouseClick(sheet.tilingButton(), Qt::LeftButton);
    EXPECT_FALSE(sheet.isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !actions->tilingInProgress(); }, 10000));
    QCoreApplication::processEvents();
    EXPECT_FALSE(progress->isActive());
    // The six tiles join the list from the images folder (their names and pixels are the
    // tiler's own test).
    ASSERT_EQ(browser->count(), 7);
    const QString imagesFolder = QFileInfo(ImagesFolder::path()).absoluteFilePath();
    const QStringList images = browser->images();
    EXPECT_EQ(std::count_if(images.begin(), images.end(), [&](const QString &p) { return QFileInfo(p).absolutePath() == imagesFolder; }), 6);

    browser->selection().clear();
    actions->tilePhotoFiles();
    EXPECT_TRUE(actions->tilingInProgress());
    EXPECT_TRUE(progress->isActive());
    actions->showTilePhotosWindow();
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_FALSE(sheet.isVisible());
}

// Each command checks its photos first (a refusal is the blend refusal's rule: a beep, or the
// alert), else shows the progress sheet and hands over the blend of its photos.
TEST_F(TileAndBlendActionsTest, BlendCommandsCheckAndBlendTheirPhotos)
{
    using Command = void (TileAndBlendActions::*)();
    const struct {
        const char *name;
        int photos;
        Command command;
        int beeps, alerts;
        qsizetype files;
        QSize picture;
    } cases[] = {
        {"left to right, none", 0, &TileAndBlendActions::stitchLeftToRight, 1, 0, 0, {}},
        {"square, three", 3, &TileAndBlendActions::stitchSquare, 0, 1, 0, {}},
        {"left to right", 3, &TileAndBlendActions::stitchLeftToRight, 0, 0, 3, {3 * 40 - 2 * 10, 30}},
        {"bottom to top", 2, &TileAndBlendActions::stitchBottomToTop, 0, 0, 2, {40, 2 * 30 - 10}},
        {"square of 16 out of 20", 20, &TileAndBlendActions::stitchSquare, 0, 0, 16, {4 * 40 - 3 * 10, 4 * 30 - 3 * 10}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        browser->clearImages();
        alerts.beeps = 0;
        alerts.alerts.clear();
        addPhotos(c.photos);
        QSignalSpy finished(actions.get(), &TileAndBlendActions::blendFinished);
        (actions.get()->*c.command)();
        EXPECT_EQ(alerts.beeps, c.beeps);
        ASSERT_EQ(alerts.alerts.size(), c.alerts);
        if (c.alerts > 0) {
            EXPECT_EQ(alerts.alerts[0].messageText, QStringLiteral("There must be enough images to make a perfect square."));
        }
        if (c.files == 0) {
            EXPECT_FALSE(actions->progressSheet().isVisible());
            continue;
        }
        EXPECT_EQ(actions->filesToStitch().size(), c.files);
        EXPECT_TRUE(actions->progressSheet().isVisible());
        ASSERT_TRUE(finished.wait(20000));
        EXPECT_EQ(finished.first().first().value<QImage>().size(), c.picture);
        EXPECT_EQ(actions->progressSheet().progressBarValue(), 1.0);
        actions->progressSheet().endSheet();
    }
}

// Abort on the sheet: the sheet ends at once, the blend stops and no picture comes. Cancel on
// the tiling bar: the cut stops after its current tile, the tiles made stay in the list.
TEST_F(TileAndBlendActionsTest, AbortAndCancelStopTheWork)
{
    addPhotos(12, 1600, 1200);
    QSignalSpy finished(actions.get(), &TileAndBlendActions::blendFinished);
    actions->stitchLeftToRight();
    ProgressSheet &sheet = actions->progressSheet();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.progressBarValue() > 0; }, 10000));
    QTest::mouseClick(sheet.abortButton(), Qt::LeftButton);
    EXPECT_FALSE(sheet.isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !actions->blendJob().isRunning(); }, 5000));
    QTest::qWait(50);
    EXPECT_TRUE(finished.isEmpty());

    browser->selection().select(0);
    actions->tiler().setPauseBeforeEachTile(std::chrono::milliseconds(100));
    actions->tilePhotoFiles(); // the sheet's 2 x 2
    ASSERT_TRUE(QTest::qWaitFor([&] { return browser->count() == 13; }, 5000));
    QTest::mouseClick(progress->cancelButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !actions->tilingInProgress(); }, 5000));
    QCoreApplication::processEvents();
    EXPECT_FALSE(progress->isActive());
    EXPECT_GE(browser->count(), 13);
    EXPECT_LT(browser->count(), 16);
}

// In the main window: the blend button's menu starts a blend, and the result ends the sheet.
TEST_F(TileAndBlendActionsTest, BlendButtonOfTheMainWindowBlends)
{
    actions.reset();
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    controller.mainWindow().show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&controller.mainWindow()));
    controller.imageBrowserController().clearImages();
    QStringList paths;
    for (int i = 0; i < 2; ++i) {
        QImage photo(50, 40, QImage::Format_RGB32);
        photo.fill(QColor(80 + 60 * i, 100, 120));
        paths.append(dir.filePath(QStringLiteral("p%1.png").arg(i)));
        ASSERT_TRUE(photo.save(paths.last()));
    }
    controller.imageBrowserController().addImagesWithPaths(paths);
    TileAndBlendActions &blending = controller.tileAndBlendActions();
    blending.setTemporaryFolder(dir.filePath(QStringLiteral("tmp")));
    QSignalSpy finished(&blending, &TileAndBlendActions::blendFinished);

    DelayedPopupMenuButton *button = controller.mainWindow().controlBar().blendButton();
    QTest::mouseClick(button, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return button->menu() && button->menu()->isVisible(); }, 3000));
    button->menu()->actions().at(1)->trigger(); // Blend Left to Right
    button->menu()->close();
    EXPECT_TRUE(blending.progressSheet().isVisible());
    ASSERT_TRUE(finished.wait(20000));
    EXPECT_EQ(finished.first().first().value<QImage>().size(), QSize(2 * 50 - 10, 40));
    EXPECT_FALSE(blending.progressSheet().isVisible());

    // The blend background well beside the button gives the colour that frames a blend (the
    // frame's rule is the blend frame's test).
    CollageControlBar &bar = controller.mainWindow().controlBar();
    bar.blendBackgroundColorWell()->click();
    auto *chooser = bar.findChild<QColorDialog *>(QStringLiteral("blendBackgroundColorDialog"));
    ASSERT_TRUE(chooser);
    EXPECT_EQ(chooser->windowModality(), Qt::WindowModal);
    chooser->setCurrentColor(Qt::darkGreen);
    chooser->accept();
    defaults->setDouble(4, Preferences::MatchingMarginWidth);
    const QImage framed = blending.insetForBlender(finished.first().first().value<QImage>());
    EXPECT_EQ(blending.blendMatchingMargin(), 4);
    EXPECT_EQ(blending.blendBackgroundColor(), QColor(Qt::darkGreen));
    EXPECT_EQ(framed.pixelColor(0, 0), QColor(Qt::darkGreen));

    // Tiling is in the Edit menu.
    controller.mainWindow().action(QStringLiteral("tilePhoto"))->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return blending.tilePhotosWindow().isVisible(); }, 2000));
    blending.tilePhotosWindow().reject();
}

} // namespace
