#pragma once

#include "AppFixture.h"
#include "ScreenGrab.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"

#include <QDesktopServices>
#include <QTest>

#include <memory>

// The application under the X server: the main window launched at `windowSize`, web and file
// links handed to an object that opens nothing, the welcome sheet declined unless
// `showWelcome`. A test sets either in its constructor.
class MainWindowScreenFixture : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        if (!showWelcome)
            defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &links, "open");
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &links, "open");
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->mainWindow().resize(windowSize);
        controller->launch();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&controller->mainWindow(), 10000));
    }
    void TearDown() override
    {
        controller.reset();
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        AppFixture::TearDown();
    }

    // What the screen shows of a window, its frame included.
    static QImage grabFrame(const QWidget &w) { return grabScreenArea(w.frameGeometry()); }
    QImage grabMainWindow() const { return grabFrame(controller->mainWindow()); }
    static QString save(const QImage &image, const char *name) { return saveScreenshotImage(image, name); }

    QSize windowSize{1400, 900};
    bool showWelcome = false;
    QObject links;
    std::unique_ptr<HalvernDesktopController> controller;
};
