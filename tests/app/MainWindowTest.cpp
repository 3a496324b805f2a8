#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "AppFixture.h"

#include "app/WelcomeSheet.h"
#include "foundation/Preferences.h"
#include "images/ImageBrowserController.h"
#include "images/ImageCache.h"
#include "images/ImageCacheLoader.h"
#include "templates/TemplateStore.h"
#include "widgets/TemplateTabView.h"
#include "widgets/TessaryView.h"

#include <QListView>
#include <QDir>
#include <QLabel>
#include <QTest>

#include <QAction>
#include <QKeySequence>

namespace {

using MainWindowTest = AppFixture;

// The menus carry the keys listed in the README.
TEST_F(MainWindowTest, MenuActionsHaveTheirKeys)
{
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    const struct {
        const char *action;
        QKeySequence keys;
    } cases[] = {
        {"addPhotos", QKeySequence(QStringLiteral("Ctrl+O"))},
        {"quit", QKeySequence(QStringLiteral("Ctrl+Q"))},
        {"paste", QKeySequence(QStringLiteral("Ctrl+V"))},
        {"removePhoto", QKeySequence(QStringLiteral("Del"))},
        {"jumble", QKeySequence(QStringLiteral("Ctrl+J"))},
        {"undoJumble", QKeySequence(QStringLiteral("Ctrl+Z"))},
        {"unjumble", QKeySequence(QStringLiteral("Ctrl+Shift+J"))},
        {"preferences", QKeySequence(QStringLiteral("Ctrl+,"))},
        {"help", QKeySequence(QStringLiteral("F1"))},
    };
    for (const auto &c : cases) {
        QAction *action = controller.mainWindow().action(QString::fromLatin1(c.action));
        ASSERT_NE(action, nullptr) << c.action;
        EXPECT_EQ(action->shortcut(), c.keys) << c.action;
    }
}

// The very first start: the welcome sheet, the 7 x 7 template ("298"), the factory photos in
// its tiles.
TEST_F(MainWindowTest, FirstStart)
{
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    controller.launch();
    MainWindow &w = controller.mainWindow();
    TessaryView &view = w.tessaryView();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    EXPECT_TRUE(controller.welcomeWindow().isVisible());
    EXPECT_EQ(w.templateTabView().rowLabel(TemplateTable::BuiltIn)->text(), QStringLiteral("298"));
    const CollageLayout &layout = view.currentLayout();
    ASSERT_EQ(layout.tiles.size(), 49u);
    for (const TileLayout &tile : layout.tiles)
        EXPECT_EQ(QDir(tile.imagePath).dirName(), QStringLiteral("images-%1.jpg").arg(tile.tag)) << tile.tag;
    for (const char *key : {"FirstRun", "FirstRunDisclosure", "AddTemplatesDisclosed"})
        EXPECT_TRUE(defaults->hasObject(QString::fromLatin1(key))) << key;
}

// Quitting and starting again restores the background colour, the selected photo, the
// template row and the image cache (the second start decodes nothing).
TEST_F(MainWindowTest, QuitAndStartAgainRestoresTheCollage)
{
    const QColor background(30, 60, 90);
    {
        HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
        controller.launch();
        TessaryView &view = controller.mainWindow().tessaryView();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
        view.setTessaryBackgroundColor(background);
        controller.imageBrowserController().selectIndex(4);
        QListView *table = controller.mainWindow().templateTabView().tableView(TemplateTable::BuiltIn);
        table->setCurrentIndex(table->model()->index(290, 0));
        EXPECT_EQ(Preferences(*defaults).selectedTemplateTableRow(), 290);
        ASSERT_TRUE(QTest::qWaitFor([&] { return view.allTilesFilled(); }, 30000));
        controller.applicationWillTerminate(); // what Quit, closing the window and SIGTERM run
    }
    HalvernDesktopController again(*defaults, Paths::resourcesFolder());
    TessaryView &view = again.mainWindow().tessaryView();
    EXPECT_TRUE(view.imageCacheLoader().isRestoring()) << "the saved cache comes back";
    again.launch();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    EXPECT_GE(view.imageCache().count(), 49);
    EXPECT_EQ(view.tessaryBackgroundColor(), background);
    EXPECT_EQ(again.imageBrowserController().selectedItem(), 4);
    EXPECT_EQ(Preferences(*defaults).imageBrowserSeletion(), 4);
    EXPECT_EQ(again.mainWindow().templateTabView().rowLabel(TemplateTable::BuiltIn)->text(), QStringLiteral("291"));
    EXPECT_EQ(view.currentLayout().moduleCount,
              view.templateStore().builtInTemplateAt(290)->value(QStringLiteral("nbrModules")).toLongLong());
}

} // namespace
