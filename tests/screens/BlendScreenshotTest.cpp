#include "AppFixture.h"
#include "ScreenGrab.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/blend/ProgressSheet.h"
#include "app/result/ResultWindow.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/blend/TileSheet.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"

#include <QAction>
#include <QPushButton>
#include <QDesktopServices>
#include <QDir>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

// The tile sheet, the progress sheet during a blend and a blended picture, as the screen shows
// them. The blend joins three overlapping pieces cut from one factory photo, so the picture
// must come back whole and seamless.
class BlendScreenshotTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &m_links, "open");
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->mainWindow().resize(1400, 900);
        controller->launch();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&controller->mainWindow(), 10000));
        controller->tileAndBlendActions().setTemporaryFolder(dir.filePath(QStringLiteral("tmp")));
    }
    void TearDown() override
    {
        controller.reset();
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        AppFixture::TearDown();
    }
    QImage grabMainWindow()
    {
        QTest::qWait(300); // let the last paints reach the server
        MainWindow &w = controller->mainWindow();
        const QRect frame = w.frameGeometry();
        return w.screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height()).toImage();
    }
    void save(const QImage &image, const char *name)
    {
        saveScreenshotImage(image, name);
    }

    QObject m_links;
    std::unique_ptr<HalvernDesktopController> controller;
};

TEST_F(BlendScreenshotTest, TileSheet)
{
    controller->imageBrowserController().selection().select(0);
    controller->mainWindow().action(QStringLiteral("tilePhoto"))->trigger();
    TileSheet &sheet = controller->tileAndBlendActions().tilePhotosWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.isVisible(); }, 5000));
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&sheet, 5000));
    save(grabMainWindow(), "tile-sheet");
    sheet.reject();
}

TEST_F(BlendScreenshotTest, BlendingAPanoramaCutInPieces)
{
    // Three pieces of one photo, each overlapping the next by a third of its width, at three
    // times the photo's size so the blend takes long enough to be seen.
    const QImage photo(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("images-0.jpg")));
    ASSERT_FALSE(photo.isNull());
    const QImage scene = photo.scaled(photo.size() * 3, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const int piece = scene.width() * 3 / 7, step = piece * 2 / 3;
    QStringList pieces;
    for (int i = 0; i < 3; ++i) {
        pieces.append(dir.filePath(QStringLiteral("piece-%1.jpg").arg(i)));
        ASSERT_TRUE(scene.copy(i * step, 0, piece, scene.height()).save(pieces.last(), "JPG", 95));
    }
    ImageBrowserController &browser = controller->imageBrowserController();
    browser.clearImages();
    browser.addImagesWithPaths(pieces);
    TileAndBlendActions &blending = controller->tileAndBlendActions();
    QSignalSpy finished(&blending, &TileAndBlendActions::blendFinished);
    blending.stitchLeftToRight();
    ProgressSheet &sheet = blending.progressSheet();
    // The bar moves with every photo read and every join.
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.progressBarValue() >= 0.1 || !finished.isEmpty(); }, 20000));
    save(grabMainWindow(), "progress-sheet-blending");
    ASSERT_TRUE(finished.wait(60000) || !finished.isEmpty());
    const QImage picture = finished.first().first().value<QImage>();
    // The pieces join where they were cut: the whole scene back (within the megapixel limit).
    EXPECT_NEAR(double(picture.width()) / picture.height(), double(2 * step + piece) / scene.height(), 0.005);
    save(picture.scaledToWidth(1400, Qt::SmoothTransformation), "blended-panorama");
}

// Photos of different scenes and shapes (landscape 3:2, portrait 3:4, square, wide 16:9),
// brought to one height and feathered into each other over the blending margin, with no gap.
TEST_F(BlendScreenshotTest, BlendingPhotosOfMixedShapes)
{
    defaults->setInteger(120, Preferences::BlendingMarginWidth);
    const struct {
        const char *name;
        QSize shape;
    } photos[] = {{"images-0.jpg", {3, 2}}, {"images-13.jpg", {3, 4}}, {"images-17.jpg", {1, 1}}, {"images-5.jpg", {16, 9}}};
    QStringList paths;
    for (const auto &p : photos) {
        const QImage photo(QDir(Paths::resourcesFolder()).filePath(QLatin1String(p.name)));
        ASSERT_FALSE(photo.isNull());
        const QSize size = p.shape.scaled(photo.size(), Qt::KeepAspectRatio);
        paths.append(dir.filePath(QStringLiteral("shape-%1").arg(QLatin1String(p.name))));
        ASSERT_TRUE(photo.copy(QRect(QPoint((photo.width() - size.width()) / 2, (photo.height() - size.height()) / 2), size))
                        .save(paths.last(), "JPG", 95));
    }
    ImageBrowserController &browser = controller->imageBrowserController();
    browser.clearImages();
    browser.addImagesWithPaths(paths);
    TileAndBlendActions &blending = controller->tileAndBlendActions();
    QSignalSpy finished(&blending, &TileAndBlendActions::blendFinished);
    blending.stitchLeftToRight();
    ASSERT_TRUE(finished.wait(60000));
    const QImage picture = finished.first().first().value<QImage>();
    ASSERT_FALSE(picture.isNull());
    save(picture.scaledToWidth(1400, Qt::SmoothTransformation), "blended-mixed-shapes");
}

// Abort during a long blend: the sheet goes at once, the work stops, and no result comes.
TEST_F(BlendScreenshotTest, WindowAfterAbort)
{
    const QImage photo(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("images-0.jpg")));
    const QImage large = photo.scaled(photo.size() * 4);
    QStringList paths;
    for (int i = 0; i < 8; ++i) {
        paths.append(dir.filePath(QStringLiteral("large-%1.png").arg(i)));
        ASSERT_TRUE(large.save(paths.last(), "PNG", 100));
    }
    ImageBrowserController &browser = controller->imageBrowserController();
    browser.clearImages();
    browser.addImagesWithPaths(paths);
    TileAndBlendActions &blending = controller->tileAndBlendActions();
    QSignalSpy finished(&blending, &TileAndBlendActions::blendFinished);
    blending.stitchBottomToTop();
    ProgressSheet &sheet = blending.progressSheet();
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet.progressBarValue() > 0; }, 20000));
    QTest::mouseClick(sheet.abortButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !blending.blendJob().isRunning(); }, 5000));
    EXPECT_FALSE(sheet.isVisible());
    save(grabMainWindow(), "window-after-abort");
    EXPECT_TRUE(finished.isEmpty());
    EXPECT_FALSE(controller->resultWindow().isVisible());
}

// Photos of different scenes, brought to one size and feathered into each other over the
// blending margin, from the bottom up.
TEST_F(BlendScreenshotTest, BlendingDifferentPhotos)
{
    defaults->setInteger(200, Preferences::BlendingMarginWidth);
    ImageBrowserController &browser = controller->imageBrowserController();
    QStringList photos;
    for (const char *name : {"images-0.jpg", "images-13.jpg", "images-17.jpg"})
        photos.append(QDir(Paths::resourcesFolder()).filePath(QLatin1String(name)));
    browser.clearImages();
    browser.addImagesWithPaths(photos);
    TileAndBlendActions &blending = controller->tileAndBlendActions();
    QSignalSpy finished(&blending, &TileAndBlendActions::blendFinished);
    blending.stitchBottomToTop();
    ASSERT_TRUE(finished.wait(60000));
    const QImage picture = finished.first().first().value<QImage>();
    ASSERT_FALSE(picture.isNull());
    save(picture.scaledToHeight(1000, Qt::SmoothTransformation), "blended-bottom-to-top");
}

} // namespace
