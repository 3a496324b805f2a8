#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "AppFixture.h"

#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageCache.h"
#include "templates/TemplateStore.h"
#include "app/templates/TemplateTabView.h"
#include "app/collage/TessaryView.h"

#include "templates/MainWindowState.h"
#include "app/collage/CollageControlBar.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QComboBox>
#include <QListView>
#include <QSpinBox>
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
        {"saveCollage", QKeySequence(QStringLiteral("Ctrl+S"))},
        {"paste", QKeySequence(QStringLiteral("Ctrl+V"))},
        {"removePhoto", QKeySequence(QStringLiteral("Del"))},
        {"jumble", QKeySequence(QStringLiteral("Ctrl+J"))},
        {"undoJumble", QKeySequence(QStringLiteral("Ctrl+Z"))},
        {"unjumble", QKeySequence(QStringLiteral("Ctrl+Shift+J"))},
        {"preferences", QKeySequence(QStringLiteral("Ctrl+,"))},
        {"help", QKeySequence(QStringLiteral("F1"))},
        {"importTemplates", QKeySequence(QStringLiteral("Ctrl+I"))},
    };
    for (const auto &c : cases) {
        QAction *action = controller.mainWindow().action(QString::fromLatin1(c.action));
        ASSERT_NE(action, nullptr) << c.action;
        EXPECT_EQ(action->shortcut(), c.keys) << c.action;
    }
}

// Quitting and starting again gives the same collage: the background colour, the selected
// photo, a template of My Templates, the transform, the frame style, the window's frame and the
// image cache (the second start decodes nothing).
TEST_F(MainWindowTest, QuitAndStartAgainRestoresTheCollage)
{
    const QColor background(30, 60, 90);
    const QRect frame(40, 30, 1000, 620);
    qint64 modules = 0;
    {
        HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
        controller.launch();
        MainWindow &w = controller.mainWindow();
        TessaryView &view = w.tessaryView();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
        view.setTessaryBackgroundColor(background);
        controller.imageBrowserController().selectIndex(4);
        TemplateStore &store = view.templateStore();
        ASSERT_TRUE(store.insertTemplates({store.builtInTemplateAt(12), store.builtInTemplateAt(290)}, 0));
        w.templateTabView().setCurrentTable(TemplateTable::User);
        QListView *table = w.templateTabView().tableView(TemplateTable::User);
        table->setCurrentIndex(table->model()->index(1, 0));
        modules = view.currentLayout().moduleCount;
        w.controlBar().transformGroup()->button(3)->click();
        w.controlBar().imageFrameStylePopUp()->setCurrentIndex(2);
        w.setGeometry(frame);
        ASSERT_TRUE(QTest::qWaitFor([&] { return view.allTilesFilled(); }, 30000));
        controller.applicationWillTerminate(); // what Quit, closing the window and SIGTERM run
    }
    EXPECT_EQ(defaults->arrayForKey(MainWindowState::WindowFrame),
              QVariantList({qint64(frame.x()), qint64(frame.y()), qint64(frame.width()), qint64(frame.height())}));
    HalvernDesktopController again(*defaults, Paths::resourcesFolder());
    MainWindow &w = again.mainWindow();
    TessaryView &view = w.tessaryView();
    EXPECT_GE(view.imageCache().count(), 49) << "the saved cache comes back";
    again.launch();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    EXPECT_GE(view.imageCache().count(), 49);
    EXPECT_EQ(view.tessaryBackgroundColor(), background);
    EXPECT_EQ(again.imageBrowserController().selectedItem(), 4);
    EXPECT_EQ(Preferences(*defaults).imageBrowserSeletion(), 4);
    EXPECT_EQ(w.templateTabView().currentTable(), TemplateTable::User);
    EXPECT_EQ(w.templateTabView().rowLabel(TemplateTable::User)->text(), QStringLiteral("2"));
    EXPECT_EQ(view.currentLayout().moduleCount, modules);
    EXPECT_EQ(view.coordinateTransform(), 3);
    EXPECT_TRUE(w.controlBar().transformGroup()->button(3)->isChecked());
    EXPECT_EQ(view.imageFrameStyle(), 2);
    EXPECT_EQ(w.controlBar().imageFrameStylePopUp()->currentIndex(), 2);
    // The frame as the store's rule fits it to this small off-screen screen (the window's
    // minimum settles within a pixel or two once it is shown).
    const QRect expected = MainWindowState(*defaults).windowFrame({w.screen()->availableGeometry()}, MainWindow::kPreferredSize,
                                                                  w.minimumSizeHint());
    const QRect got = w.geometry();
    for (const auto &[a, b] : {std::pair{got.x(), expected.x()}, {got.y(), expected.y()}, {got.width(), expected.width()},
                               {got.height(), expected.height()}})
        EXPECT_NEAR(a, b, 3) << got.x() << "," << got.y() << " " << got.width() << "x" << got.height();
}

// The window fits half of a 1920 screen, and at 1024 x 640 every control under the collage is
// whole and apart from the others (the bar wraps instead).
TEST_F(MainWindowTest, FitsASmallScreen)
{
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    MainWindow &w = controller.mainWindow();
    EXPECT_LE(w.minimumSizeHint().width(), 960);
    EXPECT_LE(w.minimumSizeHint().height(), 560);
    w.resize(1024, 640);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    EXPECT_EQ(w.size(), QSize(1024, 640));
    CollageControlBar &bar = w.controlBar();
    QList<QRect> controls;
    for (QWidget *c : bar.findChildren<QWidget *>()) {
        if (!c->isVisible() || !(qobject_cast<QAbstractButton *>(c) || qobject_cast<QComboBox *>(c)
                                 || qobject_cast<QSpinBox *>(c) || qobject_cast<QLabel *>(c)))
            continue;
        const QRect r(c->mapTo(&bar, QPoint(0, 0)), c->size());
        EXPECT_TRUE(bar.rect().contains(r)) << c->metaObject()->className();
        EXPECT_GE(c->width(), c->minimumSizeHint().width()) << c->metaObject()->className();
        for (const QRect &other : std::as_const(controls))
            EXPECT_FALSE(r.intersects(other)) << c->metaObject()->className();
        controls.append(r);
    }
    EXPECT_GT(w.tessaryView().height(), 300);
}

} // namespace
