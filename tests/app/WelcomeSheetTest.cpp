#include "app/WelcomeSheet.h"
#include "foundation/Preferences.h"
#include "AppFixture.h"
#include "ScreenshotFolder.h"

#include <QCheckBox>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

using WelcomeSheetTest = AppFixture;

// The check box writes its key both ways and only a stored YES shows it checked; "Visit
// Website" ends the sheet and asks for the site.
TEST_F(WelcomeSheetTest, DontShowAgainAndVisitWebsite)
{
    QMainWindow main;
    main.resize(900, 600);
    main.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));
    for (const auto &[stored, checked] : std::vector<std::pair<QVariant, bool>>{{{}, false}, {false, false}, {true, true}}) {
        defaults->setObject(stored, Preferences::DoNotShowWelcomeWindowAgain);
        WelcomeSheet sheet(*defaults, &main);
        EXPECT_EQ(sheet.dontShowAgainCheckbox()->isChecked(), checked) << stored.toString().toStdString();
    }
    defaults->removeObject(Preferences::DoNotShowWelcomeWindowAgain);

    WelcomeSheet sheet(*defaults, &main);
    QSignalSpy website(&sheet, &WelcomeSheet::visitWebsiteRequested);
    sheet.open();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    QCheckBox *box = sheet.dontShowAgainCheckbox();
    box->click();
    EXPECT_TRUE(Preferences(*defaults).doNotShowWelcomeWindowAgain());
    box->click();
    EXPECT_TRUE(defaults->hasObject(Preferences::DoNotShowWelcomeWindowAgain));
    EXPECT_FALSE(Preferences(*defaults).doNotShowWelcomeWindowAgain());
    saveScreenshot(sheet, "welcome-sheet");

    sheet.findChild<QPushButton *>(QStringLiteral("visitWebsite"))->click();
    EXPECT_EQ(website.count(), 1);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(sheet.result(), QDialog::Accepted);
}

} // namespace
