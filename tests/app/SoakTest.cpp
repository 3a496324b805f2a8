#include "AppFixture.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "photos/ImageBrowserController.h"
#include "app/collage/DragDropImageView.h"
#include "app/photos/ImageBrowserPanel.h"
#include "app/collage/TessaryDataView.h"
#include "app/collage/TessaryView.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMimeData>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QUrl>

#include <cstdio>

namespace {

// Seeded random use of the whole window: clicks anywhere, keys, drags of tiles and of files,
// menu items and resizes, for a minute ($TESSARY_SOAK_SECONDS; CI runs it shorter). Nothing may
// crash or hang, and the store must pass its integrity check afterwards.
class SoakTest : public AppFixture
{
protected:
    static void drop(QWidget *target, const QPoint &at, QMimeData *data)
    {
        QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDragMoveEvent move(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &move);
        if (enter.isAccepted()) {
            QDropEvent dropEvent(QPointF(at), Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(target, &dropEvent);
        }
        delete data;
    }
    template <typename T>
    static T pick(QRandomGenerator &random, const QList<T> &from)
    {
        return from.isEmpty() ? T() : from.at(random.bounded(int(from.size())));
    }
};

TEST_F(SoakTest, RandomUseNeverCrashesOrDamagesTheStore)
{
    const int seconds = qEnvironmentVariableIntValue("TESSARY_SOAK_SECONDS") > 0 ? qEnvironmentVariableIntValue("TESSARY_SOAK_SECONDS") : 60;
    const quint32 seed = qEnvironmentVariableIsSet("TESSARY_SOAK_SEED") ? quint32(qEnvironmentVariableIntValue("TESSARY_SOAK_SEED")) : 20261123u;
    std::printf("soak: %d s, seed %u (TESSARY_SOAK_SEED repeats it)\n", seconds, seed);
    QRandomGenerator random(seed);
    QObject links; // links and help pages are recorded, not opened
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &links, "open");
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &links, "open");

    {
        HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
        controller.launch();
        MainWindow &window = controller.mainWindow();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        TessaryView &collage = window.tessaryView();
        QAbstractItemView *grid = window.imageBrowserPanel().findChild<QAbstractItemView *>();
        ASSERT_NE(grid, nullptr);
        QList<QAction *> actions = window.findChildren<QAction *>();
        actions.removeIf([](QAction *a) { return a->objectName() == QLatin1String("quit") || a->objectName().isEmpty(); });
        const QList<QKeySequence> keys = {
            QKeySequence(Qt::CTRL | Qt::Key_J), QKeySequence(Qt::CTRL | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_J),
            QKeySequence(Qt::Key_Delete), QKeySequence(Qt::Key_Up), QKeySequence(Qt::Key_Down), QKeySequence(Qt::Key_Left),
            QKeySequence(Qt::Key_Right), QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Tab), QKeySequence(Qt::Key_Escape),
            QKeySequence(Qt::Key_5), QKeySequence(Qt::Key_PageDown),
        };
        const QStringList photos = {QDir(Paths::resourcesFolder()).filePath(QStringLiteral("flower-0.jpg")),
                                    QDir(Paths::resourcesFolder()).filePath(QStringLiteral("images-3.jpg")),
                                    dir.filePath(QStringLiteral("missing.jpg"))};

        QElapsedTimer clock;
        clock.start();
        qint64 steps = 0;
        while (clock.elapsed() < seconds * 1000LL) {
            ++steps;
            // Whatever a step opened (a sheet, a dialog, a menu) is answered or closed now and then.
            if (QWidget *popup = QApplication::activePopupWidget())
                popup->close();
            // Qt's own file dialog answers some keys with message boxes of its own run in a
            // nested loop (an existing file, a missing folder), which would wait for a person:
            // file dialogs are cancelled, not typed into.
            for (QWidget *top : QApplication::topLevelWidgets()) {
                if (auto *files = qobject_cast<QFileDialog *>(top); files && files->isVisible())
                    files->reject();
            }
            // Qt's print dialogs do the same (a printer's properties, an existing output file, the
            // preview's page setup and print buttons): they too are cancelled, not answered.
            for (QWidget *top : QApplication::topLevelWidgets()) {
                auto *dialog = qobject_cast<QDialog *>(top);
                if (dialog && dialog->isVisible()
                    && (qobject_cast<QAbstractPrintDialog *>(top) || qobject_cast<QPrintPreviewDialog *>(top)
                        || qobject_cast<QPageSetupDialog *>(top)))
                    dialog->reject();
            }
            if (QWidget *modal = QApplication::activeModalWidget(); modal && random.bounded(3) == 0)
                QTest::keyClick(modal, random.bounded(2) ? Qt::Key_Escape : Qt::Key_Return);
            switch (random.bounded(7)) {
            case 0: { // a click somewhere in the window
                QList<QWidget *> widgets = window.findChildren<QWidget *>();
                widgets.removeIf([](QWidget *w) { return !w->isVisible() || w->width() < 2 || w->height() < 2; });
                if (QWidget *w = pick(random, widgets))
                    QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(random.bounded(w->width()), random.bounded(w->height())));
                break;
            }
            case 1: { // a key, where the focus is
                QWidget *target = QApplication::focusWidget() ? QApplication::focusWidget() : &window;
                QTest::keySequence(target, pick(random, keys));
                break;
            }
            case 2: { // one tile dragged onto another
                const QList<TessaryDataView *> tiles = collage.tiles();
                if (tiles.isEmpty())
                    break;
                TessaryDataView *target = pick(random, tiles);
                drop(target->imageView(), target->imageView()->rect().center(),
                     DragDropImageView::mimeDataForTag(random.bounded(qint64(tiles.size()) + 2) - 1));
                break;
            }
            case 3: { // a file from a file manager, dropped on the photo grid
                auto *data = new QMimeData;
                data->setUrls({QUrl::fromLocalFile(pick(random, photos))});
                QWidget *viewport = grid->viewport();
                drop(viewport, QPoint(random.bounded(viewport->width()), random.bounded(viewport->height())), data);
                break;
            }
            case 4: // a new window size
                window.resize(900 + random.bounded(700), 600 + random.bounded(400));
                break;
            case 5: // a menu item, whatever its state
                if (QAction *a = pick(random, actions); a && a->isEnabled())
                    a->trigger();
                break;
            case 6: // a pause, so decodes and timers run
                QTest::qWait(random.bounded(50, 300));
                break;
            }
            QTest::qWait(random.bounded(1, 20));
            // Keep enough photos to drag around.
            if (controller.imageBrowserController().count() < 3)
                controller.imageBrowserController().addImagesWithPaths(photos.mid(0, 2));
        }
        std::printf("soak: %lld steps\n", steps);
        while (QWidget *modal = QApplication::activeModalWidget()) {
            modal->close();
            QTest::qWait(10);
        }
        controller.applicationWillTerminate();
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

    defaults.reset();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("soak-check"));
        db.setDatabaseName(storePath());
        ASSERT_TRUE(db.open());
        QSqlQuery check(db);
        ASSERT_TRUE(check.exec(QStringLiteral("PRAGMA integrity_check")));
        ASSERT_TRUE(check.next());
        EXPECT_EQ(check.value(0).toString(), QStringLiteral("ok"));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("soak-check"));
    UserDefaults reopened(storePath());
    EXPECT_TRUE(reopened.isOpen());
    EXPECT_TRUE(reopened.movedAsidePath().isEmpty());
}

} // namespace
