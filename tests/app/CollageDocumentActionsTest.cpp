#include "app/collage/CollageDocumentActions.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "templates/TemplateStore.h"
#include "app/collage/CollageControlBar.h"
#include "app/collage/TessaryView.h"
#include "AppFixture.h"
#include "support/Dialogs.h"
#include "FileDialogs.h"
#include "ScreenshotFolder.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

#include <memory>

namespace {

class CollageDocumentWindowTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        album = dir.filePath(QStringLiteral("album"));
        QDir().mkpath(album);
        for (int i = 0; i < 3; ++i) {
            QImage image(60 + 10 * i, 40, QImage::Format_RGB32);
            image.fill(QColor::fromHsv(100 * i, 200, 200));
            photos << QDir(album).filePath(QStringLiteral("photo %1.png").arg(i));
            ASSERT_TRUE(image.save(photos.last()));
        }
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        ASSERT_TRUE(QTest::qWaitFor([this] { return !view().currentLayout().tiles.empty(); }, 30000));
    }
    void TearDown() override
    {
        controller.reset();
        AppFixture::TearDown();
    }

    TessaryView &view() const { return controller->mainWindow().tessaryView(); }
    CollageControlBar &bar() const { return controller->mainWindow().controlBar(); }
    CollageDocumentActions &documents() const { return controller->collageDocuments(); }
    ImageBrowserController &browser() const { return controller->imageBrowserController(); }

    // Sets every field of the collage away from the first start's values.
    void makeCollage()
    {
        view().doChooseTemplate(TemplateTable::BuiltIn, 12);
        browser().removeItemsAtIndexes([this] {
            QList<qsizetype> all;
            for (qsizetype i = 0; i < browser().count(); ++i)
                all << i;
            return all;
        }());
        browser().addImagesWithPaths(photos);
        browser().imageBookmarks().setAligment(ImageBookmarks::ResizeScale, 1);
        browser().imageBookmarks().setAligment(ImageBookmarks::ResizeCropEnd, 2);
        bar().spacingTypePopUp()->setCurrentIndex(1);
        bar().imageFrameStylePopUp()->setCurrentIndex(2);
        bar().widthSpacing()->setValue(12);
        bar().heightSpacing()->setValue(8);
        view().setCoordinateTransform(2);
        view().setTessaryBackgroundColor(QColor(10, 20, 30, 200));
        view().jumble();
    }

    // Sets everything back to other values, so an open has something to restore.
    void changeCollage()
    {
        view().unjumble();
        view().doChooseTemplate(TemplateTable::BuiltIn, 40);
        browser().loadFactoryImages();
        bar().spacingTypePopUp()->setCurrentIndex(0);
        bar().imageFrameStylePopUp()->setCurrentIndex(0);
        bar().widthSpacing()->setValue(3);
        view().setCoordinateTransform(0);
        view().setTessaryBackgroundColor(Qt::transparent);
    }

    QString album;
    QStringList photos;
    std::unique_ptr<HalvernDesktopController> controller;
};

// Save, change everything, open: every field is back, the title names the document and the
// unsaved-changes mark follows the changes.
TEST_F(CollageDocumentWindowTest, SaveAndOpenRestoresEveryField)
{
    makeCollage();
    const CollageDocument saved = documents().currentCollage();
    ASSERT_TRUE(saved.jumbled);
    ASSERT_EQ(saved.photos.size(), 3);
    const QString file = QDir(album).filePath(QStringLiteral("Summer.tessary"));
    ASSERT_TRUE(documents().saveCollage(file));
    MainWindow &window = controller->mainWindow();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Summer[*] — Tessary"));
    EXPECT_FALSE(window.isWindowModified());

    changeCollage();
    EXPECT_TRUE(window.isWindowModified());

    ASSERT_TRUE(documents().openCollage(file));
    // Every field as the document writes it.
    EXPECT_EQ(documents().currentCollage().toPropertyList(album), saved.toPropertyList(album));
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_TRUE(view().isJumbled());
    EXPECT_EQ(bar().spacingTypePopUp()->currentIndex(), 1);
    EXPECT_EQ(bar().imageFrameStylePopUp()->currentIndex(), 2);
    EXPECT_EQ(bar().widthSpacing()->value(), 12);
    EXPECT_TRUE(Dialogs::noneShown<QMessageBox>());
    // Recent documents, newest first, in the Open Recent menu.
    auto *recent = window.findChild<QMenu *>(QStringLiteral("openRecentMenu"));
    ASSERT_NE(recent, nullptr);
    ASSERT_FALSE(recent->actions().isEmpty());
    EXPECT_EQ(recent->actions().first()->data().toString(), file);

    ASSERT_TRUE(QTest::qWaitFor([this] { return view().allTilesFilled(); }, 10000));
    saveScreenshot(window, "collage-document-opened");
    QMenu *fileMenu = window.menuBar()->actions().first()->menu();
    fileMenu->popup(window.mapToGlobal(QPoint(0, 0)));
    ASSERT_TRUE(QTest::qWaitFor([fileMenu] { return fileMenu->isVisible(); }, 2000));
    saveScreenshot(*fileMenu, "file-menu-collage-documents");
    fileMenu->hide();
}

// A file that is not a collage is refused in an alert naming it; the collage stays as it was.
// (Which files are refused, and why, is the document reader's own rule.)
TEST_F(CollageDocumentWindowTest, AMalformedDocumentIsRefused)
{
    const QStringList before = browser().images();
    const QString path = dir.filePath(QStringLiteral("text.tessary"));
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("just some text");
    f.close();
    EXPECT_FALSE(documents().openCollage(path));
    const auto [message, informative] = Dialogs::answer();
    EXPECT_EQ(message, QStringLiteral("The collage could not be opened."));
    EXPECT_TRUE(informative.contains(path)) << informative.toStdString();
    EXPECT_EQ(browser().images(), before);
    EXPECT_EQ(controller->mainWindow().windowTitle(), QStringLiteral("Tessary"));
}

// File > Save Collage As… and Open Collage… through Qt's own dialogs, as a person types.
TEST_F(CollageDocumentWindowTest, TheMenuItemsUseTheFileDialogs)
{
    makeCollage();
    MainWindow &window = controller->mainWindow();
    window.action(QStringLiteral("saveCollageAs"))->trigger();
    QFileDialog *save = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(save, nullptr);
    EXPECT_TRUE(save->testOption(QFileDialog::DontUseNativeDialog));
    EXPECT_EQ(save->windowModality(), Qt::WindowModal);
    FileDialogs::choose(album, {QStringLiteral("typed")});
    const QString file = QDir(album).filePath(QStringLiteral("typed.tessary"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFileInfo::exists(file); }, 5000));
    EXPECT_EQ(documents().documentPath(), file);

    changeCollage();
    window.action(QStringLiteral("openCollage"))->trigger();
    Dialogs::answer(QStringLiteral("Don't Save")); // the changes come first
    FileDialogs::choose(album, {QStringLiteral("typed.tessary")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return browser().images() == photos; }, 5000));
    EXPECT_TRUE(view().isJumbled());
}

// File > Save Collage saves the open document where it is (Save As without one). With unsaved
// changes, quitting and opening another document ask first: Cancel keeps all as it is, Save
// writes the document and goes on, Don't Save goes on and writes nothing.
TEST_F(CollageDocumentWindowTest, SaveCollageAndTheUnsavedQuestion)
{
    MainWindow &window = controller->mainWindow();
    window.action(QStringLiteral("saveCollage"))->trigger();
    QFileDialog *saveAs = Dialogs::waitFor<QFileDialog>();
    ASSERT_NE(saveAs, nullptr) << "no document yet: Save As";
    saveAs->reject();

    makeCollage();
    view().unjumble(); // the transform relays the collage out
    const QString other = QDir(album).filePath(QStringLiteral("other.tessary"));
    const QString first = QDir(album).filePath(QStringLiteral("first.tessary"));
    ASSERT_TRUE(documents().saveCollage(other));
    ASSERT_TRUE(documents().saveCollage(first));
    const auto storedTransform = [&first] { return CollageDocument::read(first).document->coordinateTransform; };
    view().setCoordinateTransform(1);
    ASSERT_TRUE(window.isWindowModified());
    window.action(QStringLiteral("saveCollage"))->trigger();
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_EQ(storedTransform(), 1);

    QSignalSpy closing(&window, &MainWindow::closing);
    const struct {
        const char *name;
        bool quit; // else Open Recent: "other"
        const char *answer;
        int storedTransform;
        bool wentOn;
    } cases[] = {
        {"open, Cancel", false, "Cancel", 1, false},
        {"open, Don't Save", false, "Don't Save", 1, true},
        {"open, Save", false, "Save", 4, true},
        {"quit, Cancel", true, "Cancel", 1, false},
        {"quit, Save", true, "Save", 4, true},
    };
    for (const auto &c : cases) {
        if (documents().documentPath() != first) {
            ASSERT_TRUE(documents().openCollage(first)) << c.name;
        }
        view().setCoordinateTransform(1);
        ASSERT_TRUE(documents().saveCollage(first));
        view().setCoordinateTransform(4);
        closing.clear();
        if (c.quit)
            window.action(QStringLiteral("quit"))->trigger();
        else
            window.findChild<QMenu *>(QStringLiteral("openRecentMenu"))->actions().at(1)->trigger();
        QMessageBox *box = Dialogs::waitFor<QMessageBox>();
        ASSERT_NE(box, nullptr) << c.name;
        EXPECT_EQ(box->windowModality(), Qt::WindowModal) << c.name;
        EXPECT_EQ(Dialogs::answer(QString::fromUtf8(c.answer)).first,
                  QStringLiteral("Do you want to save the changes to the collage “first”?")) << c.name;
        QTest::qWait(20);
        EXPECT_EQ(storedTransform(), c.storedTransform) << c.name;
        if (c.quit) {
            EXPECT_EQ(closing.count(), c.wentOn ? 1 : 0) << c.name;
        } else {
            EXPECT_EQ(documents().documentPath(), c.wentOn ? other : first) << c.name;
        }
    }
}

// Files opened with Tessary: photos join the photo list, a templates file is imported into My
// Templates, a collage document is opened; anything else is passed over.
TEST_F(CollageDocumentWindowTest, OpenWithSortsPhotosTemplatesAndCollages)
{
    const QString templates = QDir(Paths::resourcesFolder()).filePath(QStringLiteral("Templates/Columns.plist"));
    ASSERT_TRUE(QFileInfo::exists(templates));
    const qsizetype userTemplates = controller->mainWindow().tessaryView().templateStore().userTemplates().size();
    const qsizetype photoCount = browser().count();

    controller->openFiles({photos[0], templates, dir.filePath(QStringLiteral("no such file.jpg")), album, photos[2]});
    EXPECT_EQ(browser().count(), photoCount + 2);
    EXPECT_EQ(browser().images().mid(photoCount), QStringList({photos[0], photos[2]}));
    EXPECT_GT(controller->mainWindow().tessaryView().templateStore().userTemplates().size(), userTemplates);
    const auto [missing, which] = Dialogs::answer();
    EXPECT_EQ(missing, QStringLiteral("A file to open was not found."));
    EXPECT_TRUE(which.contains(QStringLiteral("no such file.jpg"))) << which.toStdString();

    makeCollage();
    const QString file = QDir(album).filePath(QStringLiteral("opened.tessary"));
    ASSERT_TRUE(documents().saveCollage(file));
    changeCollage();
    controller->openFiles({file}); // asks first about the changes
    Dialogs::answer(QStringLiteral("Don't Save"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return browser().images() == photos; }, 5000));
    EXPECT_EQ(controller->mainWindow().windowTitle(), QStringLiteral("opened[*] — Tessary"));
}

} // namespace
