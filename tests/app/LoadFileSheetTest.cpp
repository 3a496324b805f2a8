#include "app/templates/LoadFileSheet.h"
#include "foundation/Preferences.h"
#include "AppFixture.h"
#include "ScreenshotFolder.h"

#include <QCheckBox>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace {

using LoadFileSheetTest = AppFixture;

// The disclosure: folded the first time (writing its first-run keys), the remembered state
// afterwards, and the fold arithmetic on the sheet's real layout.
TEST_F(LoadFileSheetTest, Disclosure)
{
    QMainWindow main;
    main.resize(900, 600);
    main.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));
    defaults->setBool(true, Preferences::AddTemplatesDisclosed); // a stale state before the first run
    {
        LoadFileSheet sheet(*defaults, &main);
        EXPECT_TRUE(defaults->hasObject(Preferences::FirstRunDisclosure));
        EXPECT_FALSE(defaults->boolForKey(Preferences::AddTemplatesDisclosed));
        EXPECT_FALSE(sheet.disclosureButton()->isChecked());
        EXPECT_FALSE(sheet.disclosureView()->isVisibleTo(&sheet));
        EXPECT_TRUE(sheet.disclosureLabel()->isVisibleTo(&sheet));

        // Folded: the saved height less the view's height plus half its distance from the bottom.
        const QRect saved = sheet.savedFrame();
        const QRect view = sheet.disclosureView()->geometry();
        ASSERT_GT(view.height(), 0);
        const int origin = saved.height() - (view.y() + view.height());
        EXPECT_GT(origin, 0);
        EXPECT_NEAR(sheet.height(), saved.height() - view.height() + origin * 0.5, 0.5);
        EXPECT_EQ(sheet.width(), saved.width());

        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
        saveScreenshot(sheet, "load-file-sheet-folded");
        QTest::mouseClick(sheet.disclosureButton(), Qt::LeftButton);
        EXPECT_TRUE(defaults->boolForKey(Preferences::AddTemplatesDisclosed));
        EXPECT_EQ(sheet.height(), saved.height());
        EXPECT_TRUE(sheet.disclosureView()->isVisible());
        EXPECT_FALSE(sheet.disclosureLabel()->isVisible());
        QTest::qWait(0);
        saveScreenshot(sheet, "load-file-sheet-disclosed");
    }
    // The next run remembers the open state; the first-run key is not written again.
    LoadFileSheet again(*defaults, &main);
    EXPECT_TRUE(again.disclosureButton()->isChecked());
    EXPECT_EQ(again.height(), again.savedFrame().height());
}

// "Don't show this again" writes "DontShowAgain"; each template button ends the sheet and
// reports, the close button only ends it.
TEST_F(LoadFileSheetTest, Buttons)
{
    QMainWindow main;
    main.show();
    LoadFileSheet sheet(*defaults, &main);
    sheet.dontShowAgainCheckbox()->click();
    EXPECT_TRUE(Preferences(*defaults).dontShowAgain());

    QSignalSpy choose(&sheet, &LoadFileSheet::chooseTemplateFile);
    QSignalSpy clear(&sheet, &LoadFileSheet::clearAllTemplates);
    QSignalSpy website(&sheet, &LoadFileSheet::downloadWebsiteTemplateFile);
    QSignalSpy gallery(&sheet, &LoadFileSheet::showTemplateGallery);
    const struct {
        const char *button;
        QSignalSpy *spy;
    } cases[] = {{"chooseTemplateFile", &choose}, {"clearAllTemplates", &clear},
                 {"downloadWebsiteTemplateFile", &website}, {"showTemplateWebviewWindow", &gallery},
                 {"endLoadFileWindow", nullptr}};
    for (const auto &c : cases) {
        sheet.open();
        ASSERT_TRUE(sheet.isVisible()) << c.button;
        sheet.findChild<QPushButton *>(QString::fromLatin1(c.button))->click();
        EXPECT_FALSE(sheet.isVisible()) << c.button;
        for (QSignalSpy *spy : {&choose, &clear, &website, &gallery}) {
            EXPECT_EQ(spy->count(), spy == c.spy ? 1 : 0) << c.button;
            spy->clear();
        }
    }
}

} // namespace
