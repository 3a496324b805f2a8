#include "AppFixture.h"
#include "support/TiffTags.h"

#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/collage/PleaseWaitWindow.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultSaveDialog.h"
#include "app/result/ResultWindow.h"
#include "foundation/ImagesFolder.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "app/collage/CollageControlBar.h"
#include "widgets/ProgressSpinner.h"
#include "app/result/ResultImageView.h"
#include "app/result/SaveOptionsPanel.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QThreadPool>
#include <QToolButton>

namespace {

QImage picture(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

// The application with its windows, the welcome sheet declined, links recorded instead of
// opened, and the collage renderer replaced where a test says so.
class ResultWindowTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        outputs().setOpener([this](const QUrl &url) {
            openedUrls << url;
            return true;
        });
        outputs().setTemporaryFolder(dir.filePath(QStringLiteral("tmp")));
        QDir().mkpath(dir.filePath(QStringLiteral("tmp")));
        controller->collageMaker().setDelay(0);
    }
    void TearDown() override
    {
        controller.reset();
        AppFixture::TearDown();
    }

    ResultWindow &window() const { return controller->resultWindow(); }
    ResultOutputs &outputs() const { return controller->resultOutputs(); }
    CollageMaker &maker() const { return controller->collageMaker(); }

    // The renderer gives `image` (null: nothing), after reporting two tiles.
    void renderGives(const QImage &image)
    {
        maker().setRenderer([image](const CollageLayout &, qint64, const CollageRenderer::Options &options) {
            if (options.progress) {
                options.progress(1, 2);
                options.progress(2, 2);
            }
            CollageRenderer::Result result;
            result.image = image;
            return result;
        });
    }

    std::unique_ptr<HalvernDesktopController> controller;
    QList<QUrl> openedUrls;
};

// Make Collage from the menu key and from the result button: the please-wait window spins while
// the button is hidden, then the picture shows in the result window, centred the first time.
TEST_F(ResultWindowTest, MakeCollageShowsThePictureInTheResultWindow)
{
    QAbstractButton *button = controller->mainWindow().controlBar().resultButton();
    QAction *menu = controller->mainWindow().action(QStringLiteral("imageCollage"));
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->shortcut(), QKeySequence(QStringLiteral("Ctrl+R")));
    const struct {
        const char *name;
        std::function<void()> press;
        QColor colour;
    } cases[] = {
        {"menu", [menu] { menu->trigger(); }, Qt::red},
        {"button", [button] { QTest::mouseClick(button, Qt::LeftButton); }, Qt::blue},
    };
    QProgressBar *bar = controller->pleaseWaitWindow().progressBar();
    for (const auto &c : cases) {
        renderGives(picture(QSize(120, 80), c.colour));
        QSignalSpy ready(&maker(), &CollageMaker::collageReady);
        QSignalSpy tiles(bar, &QProgressBar::valueChanged);
        c.press();
        EXPECT_TRUE(controller->pleaseWaitWindow().isVisible()) << c.name;
        EXPECT_TRUE(controller->pleaseWaitWindow().spinner()->isAnimating()) << c.name;
        EXPECT_FALSE(button->isVisible()) << c.name;
        ASSERT_TRUE(QTest::qWaitFor([&] { return ready.count() == 1; }, 5000)) << c.name;
        EXPECT_FALSE(controller->pleaseWaitWindow().isVisible()) << c.name;
        // The bar followed the tiles: the last value it showed was 2 of 2.
        ASSERT_FALSE(tiles.isEmpty()) << c.name;
        EXPECT_EQ(tiles.last().at(0).toInt(), 2) << c.name;
        EXPECT_EQ(bar->maximum(), 2) << c.name;
        EXPECT_TRUE(button->isVisible() && button->isEnabled()) << c.name;
        EXPECT_TRUE(window().isVisible()) << c.name;
        EXPECT_EQ(window().image().pixelColor(5, 5), c.colour) << c.name;
        EXPECT_TRUE(defaults->hasObject(Preferences::FirstRunResult)) << c.name;
    }
}

// The real render of the factory collage while a copy and an insert of a large picture are
// encoded: on a machine with two threads in the global pool all of them finish (Qt's image
// conversions wait for global pool threads, which the result's own jobs never hold).
TEST_F(ResultWindowTest, RenderCopyAndInsertAtOnceAllFinish)
{
    TessaryView &view = controller->mainWindow().tessaryView();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    const int globalThreads = QThreadPool::globalInstance()->maxThreadCount();
    QThreadPool::globalInstance()->setMaxThreadCount(2);
    QImage large(3000, 2000, QImage::Format_ARGB32_Premultiplied);
    large.fill(QColor(20, 160, 90, 200));
    controller->displayResult(large, true);
    QSignalSpy ready(&maker(), &CollageMaker::collageReady);
    QSignalSpy copied(&outputs(), &ResultOutputs::copied);
    QSignalSpy inserted(&outputs(), &ResultOutputs::inserted);
    controller->imageCollage();
    window().action(QStringLiteral("copyResult"))->trigger();
    outputs().insertResult();
    const bool done = QTest::qWaitFor([&] { return ready.count() == 1 && copied.count() == 1 && inserted.count() == 1; },
                                      120000);
    QThreadPool::globalInstance()->setMaxThreadCount(globalThreads);
    ASSERT_TRUE(done);
    // The collage replaced the large picture: the factory collage enlarged, opaque photos.
    EXPECT_GT(window().image().width(), view.currentLayout().contentSize.width());
}

// A render that gives nothing hides the please-wait window and leaves the result window as it
// was: not shown, the earlier picture kept.
TEST_F(ResultWindowTest, NothingRenderedLeavesTheResultWindowUntouched)
{
    controller->displayResult(picture(QSize(50, 40), Qt::green), false);
    ASSERT_FALSE(window().isVisible());
    renderGives(QImage());
    QSignalSpy started(&maker(), &CollageMaker::started);
    QSignalSpy finished(&maker(), &CollageMaker::finished);
    QSignalSpy ready(&maker(), &CollageMaker::collageReady);
    controller->imageCollage();
    controller->imageCollage(); // a second press while one is being made is ignored
    ASSERT_TRUE(QTest::qWaitFor([&] { return finished.count() == 1; }, 5000));
    EXPECT_EQ(started.count(), 1);
    EXPECT_EQ(ready.count(), 0);
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(controller->pleaseWaitWindow().isVisible());
    EXPECT_EQ(window().image().size(), QSize(50, 40));
    EXPECT_EQ(window().image().pixelColor(1, 1), QColor(Qt::green));
    EXPECT_FALSE(defaults->hasObject(Preferences::FirstRunResult));
}

// "AlwaysZoomToFit" absent fits a large picture into the window; stored NO shows it at its own
// size, and a resize keeps it so. (That a stored YES reads as absent is the preferences' test.)
TEST_F(ResultWindowTest, ZoomToFitFollowsTheKey)
{
    using Scaling = ResultImageView::Scaling;
    const struct {
        const char *name;
        std::optional<bool> stored;
        Scaling expected;
    } cases[] = {
        {"absent", std::nullopt, Scaling::ProportionallyDown},
        {"storedNo", false, Scaling::None},
    };
    for (const auto &c : cases) {
        if (c.stored)
            defaults->setBool(*c.stored, Preferences::AlwaysZoomToFit);
        else
            defaults->removeObject(Preferences::AlwaysZoomToFit);
        window().actualSize();
        controller->displayResult(picture(QSize(3000, 2000), Qt::darkCyan), true);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window(), 5000));
        EXPECT_EQ(window().resultView().imageScaling(), c.expected) << c.name;
        window().resize(window().size() + QSize(20, 10));
        QCoreApplication::processEvents();
        EXPECT_EQ(window().resultView().imageScaling(), c.expected) << c.name;
        const QRectF shown = window().resultView().pictureRect();
        if (c.expected == Scaling::ProportionallyDown) {
            EXPECT_LE(shown.width(), window().resultView().viewport()->width() + 0.5) << c.name;
        } else {
            EXPECT_EQ(shown.size(), QSizeF(3000, 2000)) << c.name;
        }
    }
    // The View menu's Zoom to Fit fits whatever the key; a small picture stays at its size.
    window().action(QStringLiteral("zoomToFit"))->trigger();
    EXPECT_EQ(window().resultView().imageScaling(), Scaling::ProportionallyDown);
    controller->displayResult(picture(QSize(100, 80), Qt::darkCyan), true);
    EXPECT_EQ(window().resultView().pictureRect().size(), QSizeF(100, 80));
}

// A flip or a scale change of the layout makes the collage again once the view has settled,
// not at once.
TEST_F(ResultWindowTest, FlipAndScaleMakeTheCollageLater)
{
    renderGives(picture(QSize(40, 40), Qt::red));
    for (const auto &change : {&HalvernDesktopController::flipped, &HalvernDesktopController::scaleLayout}) {
        QSignalSpy started(&maker(), &CollageMaker::started);
        QSignalSpy finished(&maker(), &CollageMaker::finished);
        (controller.get()->*change)();
        EXPECT_EQ(started.count(), 0);
        ASSERT_TRUE(QTest::qWaitFor([&] { return finished.count() == 1; }, 5000));
        EXPECT_EQ(started.count(), 1);
    }
}

// The outputs act in the result window only: their keys are the window's own.
TEST_F(ResultWindowTest, OutputActionsAreTheWindowsOwn)
{
    const struct {
        const char *action;
        QKeySequence keys;
    } cases[] = {
        {"saveResult", QKeySequence(QStringLiteral("Ctrl+S"))},
        {"copyResult", QKeySequence(QStringLiteral("Ctrl+C"))},
        {"openResult", QKeySequence(QStringLiteral("Ctrl+O"))},
        {"copyAndOpenResult", QKeySequence(QStringLiteral("Ctrl+Shift+O"))},
        {"insertResult", QKeySequence(QStringLiteral("Ctrl+Shift+I"))},
    };
    for (const auto &c : cases) {
        QAction *a = window().action(QString::fromLatin1(c.action));
        ASSERT_NE(a, nullptr) << c.action;
        EXPECT_EQ(a->shortcut(), c.keys) << c.action;
        EXPECT_EQ(a->shortcutContext(), Qt::WindowShortcut) << c.action;
        EXPECT_FALSE(a->isEnabled()) << c.action << " before any picture";
    }
    controller->displayResult(picture(QSize(10, 10), Qt::red), true);
    for (const auto &c : cases)
        EXPECT_TRUE(window().action(QString::fromLatin1(c.action))->isEnabled()) << c.action;

    // Ctrl+C copies the picture when the result window is active, not from the main window.
    QSignalSpy triggered(window().action(QStringLiteral("copyResult")), &QAction::triggered);
    QSignalSpy copied(&outputs(), &ResultOutputs::copied);
    controller->mainWindow().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&controller->mainWindow(), 5000));
    QTest::keyClick(controller->mainWindow().windowHandle(), Qt::Key_C, Qt::ControlModifier);
    QCoreApplication::processEvents();
    EXPECT_EQ(triggered.count(), 0);
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window(), 5000));
    QTest::keyClick(window().windowHandle(), Qt::Key_C, Qt::ControlModifier);
    QCoreApplication::processEvents();
    EXPECT_EQ(triggered.count(), 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return copied.count() == 1; }, 5000));
}

// With "AutoOpenStitchedImageFile" YES a saved file opens in the default application; the print
// size warns when it would enlarge beyond the sharpest photo; with no reference photo at all
// the dialog never appears.
TEST_F(ResultWindowTest, SaveOpensWarnsAndNeedsAReference)
{
    defaults->setBool(true, Preferences::AutoOpenStitchedImageFile);
    controller->displayResult(picture(QSize(300, 200), Qt::yellow), true);
    ResultEncoder::Settings settings;
    const QString path = dir.filePath(QStringLiteral("auto.png"));
    QSignalSpy saved(&outputs(), &ResultOutputs::saved);
    outputs().saveImageToPath(path, settings);
    ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 1; }, 10000));
    ASSERT_EQ(openedUrls.size(), 1);
    EXPECT_EQ(openedUrls.first().toLocalFile(), path);
    // A write that fails is reported as failed, and nothing is opened.
    outputs().saveImageToPath(dir.filePath(QStringLiteral("no/such/folder/x.png")), settings);
    ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 2; }, 10000));
    EXPECT_FALSE(saved.at(1).at(1).toBool());
    EXPECT_EQ(openedUrls.size(), 1);

    outputs().save();
    ASSERT_NE(outputs().saveDialog(), nullptr);
    SaveOptionsPanel &panel = outputs().saveDialog()->options();
    panel.printGroup()->setChecked(true);
    panel.unitPopUp()->setCurrentIndex(panel.unitPopUp()->findData(int(PrintSize::Unit::Inches)));
    panel.resolutionBox()->setValue(300);
    panel.widthBox()->setValue(2.0); // 600 pixels from 300: twice the blended picture's own
    EXPECT_FALSE(panel.warningLabel()->isHidden());
    panel.widthBox()->setValue(0.5);
    EXPECT_TRUE(panel.warningLabel()->isHidden());
    outputs().saveDialog()->reject();
    ASSERT_TRUE(QTest::qWaitFor([&] { return outputs().saveDialog() == nullptr; }, 2000));

    // Neither photos nor a readable placeholder: no dialog.
    controller->imageBrowserController().clearImages();
    ResultOutputs lonely(window(), controller->imageBrowserController(), *defaults, nullptr,
                         dir.filePath(QStringLiteral("missing.png")));
    lonely.save();
    EXPECT_EQ(lonely.saveDialog(), nullptr);
}

// Copy puts a picture on the clipboard as PNG, as LZW TIFF and as image data; Open writes a
// temporary PNG and hands it to the default viewer; Copy and Open does both; Insert puts the
// picture first in the photo list, as a file of its own.
TEST_F(ResultWindowTest, CopyOpenCopyAndOpenAndInsert)
{
    const QImage image = picture(QSize(64, 48), Qt::magenta);
    controller->displayResult(image, true);
    ImageBrowserController &browser = controller->imageBrowserController();
    const struct {
        const char *action;
        bool copies;
        bool opens;
        bool inserts;
    } cases[] = {{"copyResult", true, false, false},
                 {"openResult", false, true, false},
                 {"copyAndOpenResult", true, true, false},
                 {"insertResult", false, false, true}};
    for (const auto &c : cases) {
        QGuiApplication::clipboard()->clear();
        openedUrls.clear();
        const qsizetype photos = browser.count();
        QSignalSpy copied(&outputs(), &ResultOutputs::copied);
        QSignalSpy opened(&outputs(), &ResultOutputs::opened);
        QSignalSpy inserted(&outputs(), &ResultOutputs::inserted);
        window().action(QString::fromLatin1(c.action))->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] {
            return copied.count() == int(c.copies) && opened.count() == int(c.opens) && inserted.count() == int(c.inserts);
        }, 10000)) << c.action;
        const QMimeData *data = QGuiApplication::clipboard()->mimeData();
        EXPECT_EQ(data && data->hasImage(), c.copies) << c.action;
        if (c.copies) {
            EXPECT_EQ(QImage::fromData(data->data(QStringLiteral("image/png")), "png").size(), image.size()) << c.action;
            EXPECT_EQ(QImage::fromData(data->data(QStringLiteral("image/tiff")), "tiff").size(), image.size()) << c.action;
        }
        ASSERT_EQ(openedUrls.size(), int(c.opens)) << c.action;
        if (c.opens) {
            const QString path = openedUrls.first().toLocalFile();
            EXPECT_TRUE(path.startsWith(dir.filePath(QStringLiteral("tmp"))) && path.endsWith(QStringLiteral(".png"))) << c.action;
            QImageReader reader(path);
            EXPECT_EQ(reader.format(), "png") << c.action;
            EXPECT_EQ(reader.size(), image.size()) << c.action;
        }
        EXPECT_EQ(browser.count(), photos + int(c.inserts)) << c.action;
        if (c.inserts) {
            const QString path = inserted.at(0).at(0).toString();
            EXPECT_EQ(browser.images().first(), path);
            EXPECT_TRUE(ImagesFolder::isOwned(path));
            EXPECT_EQ(QImageReader(path).size(), image.size());
        }
    }
}

// The pending output path is written once, as an LZW TIFF of the next result shown, and then
// forgotten.
TEST_F(ResultWindowTest, PendingOutputPathWritesOneLzwTiff)
{
    const QString path = dir.filePath(QStringLiteral("pending.tif"));
    controller->setPendingOutputPath(path);
    QSignalSpy written(&outputs(), &ResultOutputs::pendingOutputWritten);
    controller->displayResult(picture(QSize(70, 50), Qt::red), false);
    EXPECT_TRUE(controller->pendingOutputPath().isEmpty());
    controller->displayResult(picture(QSize(30, 20), Qt::blue), false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 1; }, 10000));
    QTest::qWait(100);
    EXPECT_EQ(written.count(), 1);
    EXPECT_TRUE(written.at(0).at(1).toBool());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray tiff = file.readAll();
    EXPECT_EQ(QImage::fromData(tiff, "tiff").size(), QSize(70, 50));
    EXPECT_EQ(tiffTag(tiff, 259), 5); // LZW
}

// Stop beside the bar during Save…: the write under way is given up rather than waited for, and
// the folder is left as it was, with neither the file nor a part of it. A save stopped is no
// failure: no alert, a word in the status bar. (Quitting during a save is the program lifecycle
// test's quit table.)
TEST_F(ResultWindowTest, StoppingASaveGivesItUp)
{
    ResultEncoder::Settings settings;
    settings.format = "tiff";
    settings.tiffCompression = 1; // uncompressed: 96 MB to write whatever the pixels
    controller->displayResult(picture(QSize(6000, 4000), Qt::darkRed), true);
    const QString folder = dir.filePath(QStringLiteral("stop"));
    ASSERT_TRUE(QDir().mkpath(folder));
    QSignalSpy saved(&outputs(), &ResultOutputs::saved);
    outputs().saveImageToPath(QDir(folder).filePath(QStringLiteral("result.tif")), settings);
    ASSERT_TRUE(window().stopWorkButton().isVisible());
    QTest::qWait(150);
    QTest::mouseClick(&window().stopWorkButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 1; }, 10000));
    EXPECT_FALSE(saved.at(0).at(1).toBool());
    EXPECT_EQ(window().findChild<QMessageBox *>(), nullptr);
    EXPECT_FALSE(window().stopWorkButton().isVisible());
    EXPECT_EQ(window().statusBar()->currentMessage(), QStringLiteral("Stopped; nothing was written."));
    EXPECT_TRUE(window().action(QStringLiteral("saveResult"))->isEnabled());
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());
}

// The plain TIFF save of a given picture, through its own dialog starting at "Untitled".
TEST_F(ResultWindowTest, SaveImageWritesTiff)
{
    controller->displayResult(picture(QSize(20, 20), Qt::gray), true);
    outputs().saveImage(picture(QSize(33, 22), Qt::darkGreen));
    QFileDialog *dialog = outputs().tiffSaveDialog();
    ASSERT_NE(dialog, nullptr);
    auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->text(), QStringLiteral("Untitled.tif"));
    name->setText(dir.filePath(QStringLiteral("plain")));
    QSignalSpy saved(&outputs(), &ResultOutputs::saved);
    QMetaObject::invokeMethod(dialog, "accept");
    ASSERT_TRUE(QTest::qWaitFor([&] { return saved.count() == 1; }, 10000));
    QImageReader reader(saved.at(0).at(0).toString());
    reader.setDecideFormatFromContent(true);
    EXPECT_EQ(reader.format(), "tiff");
    EXPECT_EQ(reader.size(), QSize(33, 22));
}

} // namespace
