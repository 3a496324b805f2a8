#include "MainWindowScreenFixture.h"

#include "app/blend/ProgressSheet.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/blend/TileSheet.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"

#include <QAction>
#include <QDir>
#include <QSignalSpy>
#include <QTest>

namespace {

// The tile sheet, the progress sheet during a blend and a blended picture, as the screen shows
// them. The blend joins three overlapping pieces cut from one factory photo, so the picture
// must come back whole and seamless.
class BlendScreenshotTest : public MainWindowScreenFixture
{
protected:
    void SetUp() override
    {
        MainWindowScreenFixture::SetUp();
        controller->tileAndBlendActions().setTemporaryFolder(dir.filePath(QStringLiteral("tmp")));
    }
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

} // namespace
