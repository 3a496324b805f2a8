#include "AppFixture.h"

#include "app/HalvernDesktopController.h"
#include "app/editor/ImageEditorWindow.h"
#include "app/templates/LoadFileSheet.h"
#include "app/MainWindow.h"
#include "app/PreferencesWindow.h"
#include "app/result/ResultWindow.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/blend/TileSheet.h"
#include "app/WelcomeSheet.h"
#include "foundation/Paths.h"
#include "support/Dialogs.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

// The controller's wiring of the program's windows as a person meets it.
class HalvernDesktopControllerTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
    }
    void TearDown() override
    {
        controller.reset();
        AppFixture::TearDown();
    }
    // The alert on the main window: its two texts, after it is answered with OK.
    std::pair<QString, QString> alertTexts()
    {
        QMessageBox *box = Dialogs::waitFor<QMessageBox>();
        EXPECT_TRUE(box && controller->mainWindow().findChildren<QMessageBox *>().contains(box)) << "not on the main window";
        return Dialogs::answer(QStringLiteral("OK"));
    }

    std::unique_ptr<HalvernDesktopController> controller;
};

// Ctrl+Q quits from every window of the program, and Escape closes each sheet (and Preferences,
// in the preferences window's own test).
TEST_F(HalvernDesktopControllerTest, CtrlQFromEveryWindowAndEscapeClosesSheets)
{
    QAction *quit = controller->mainWindow().action(QStringLiteral("quit"));
    ASSERT_NE(quit, nullptr);
    QObject::disconnect(quit, &QAction::triggered, nullptr, nullptr); // counted, not obeyed
    QSignalSpy quits(quit, &QAction::triggered);
    controller->mainWindow().show();
    for (QWidget *window : {static_cast<QWidget *>(&controller->mainWindow()), static_cast<QWidget *>(&controller->resultWindow()),
                            static_cast<QWidget *>(&controller->editorWindow()),
                            static_cast<QWidget *>(&controller->preferencesWindow())}) {
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window)) << window->objectName().toStdString();
        const qsizetype before = quits.count();
        QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
        EXPECT_EQ(quits.count(), before + 1) << window->objectName().toStdString();
    }

    QDialog *sheets[] = {&controller->welcomeWindow(), &controller->loadFileWindow(),
                         &controller->tileAndBlendActions().tilePhotosWindow()};
    for (QDialog *sheet : sheets) {
        sheet->open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet)) << sheet->objectName().toStdString();
        QTest::keyClick(sheet->focusWidget() ? sheet->focusWidget() : sheet, Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([sheet] { return !sheet->isVisible(); }, 2000)) << sheet->objectName().toStdString();
    }
}

// What cannot be done is said on the window: a page when no program on the desktop opens pages,
// and the gallery when its plugin is missing. (Files to open that are not there are the
// collage document tests' open-with case.)
TEST_F(HalvernDesktopControllerTest, PagesWithNoProgramAndAMissingGalleryAreSaid)
{
    controller->mainWindow().show();
    // No program finds the page: no browser on the path, none named.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(dir.path()));
    qunsetenv("BROWSER");
    qunsetenv("DEFAULT_BROWSER");
    controller->mainWindow().action(QStringLiteral("help"))->trigger();
    const auto help = alertTexts();
    qputenv("PATH", path);
    EXPECT_EQ(help.first, QStringLiteral("Tessary Help could not be opened."));
    EXPECT_TRUE(help.second.contains(QStringLiteral("help"))) << help.second.toStdString();

    // The gallery's plugin is not where the program looks for it.
    qputenv("TESSARY_PLUGINS", QFile::encodeName(dir.path()));
    controller->mainWindow().action(QStringLiteral("showTemplateWebviewWindow"))->trigger();
    const auto gallery = alertTexts();
    qunsetenv("TESSARY_PLUGINS");
    EXPECT_EQ(gallery.first, QStringLiteral("The template gallery is not installed."));
    EXPECT_TRUE(gallery.second.contains(dir.path())) << gallery.second.toStdString();
    EXPECT_EQ(controller->templateWebviewWindow(), nullptr);
}

} // namespace
