#include "AppFixture.h"
#include "ScreenGrab.h"

#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/result/PageSetupSheet.h"
#include "app/result/PrintOutputs.h"
#include "app/result/ResultWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "app/result/ResultImageView.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QSignalSpy>
#include <QSpinBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

namespace {

class PrintPreviewScreenshot : public AppFixture
{
};

// The factory collage put on paper: the page sheet of Export PDF…, an export under way with its
// Stop button, and the print preview.
TEST_F(PrintPreviewScreenshot, PageSheetAndPrintPreview)
{
    defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
    auto controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
    controller->launch();
    TessaryView &view = controller->mainWindow().tessaryView();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    QSignalSpy ready(&controller->collageMaker(), &CollageMaker::collageReady);
    controller->imageCollage();
    ASSERT_TRUE(QTest::qWaitFor([&] { return ready.count() == 1; }, 120000));
    ResultWindow &window = controller->resultWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, 5000));
    window.resize(1000, 760);

    // A poster at a resolution beyond what the renderer makes: the sheet says so and offers no Export.
    window.action(QStringLiteral("exportPdf"))->trigger();
    PageSetupSheet *sheet = controller->printOutputs().pageSheet();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet, 5000));
    sheet->findChild<QComboBox *>(QStringLiteral("pageName"))->setCurrentText(QStringLiteral("A1"));
    sheet->findChild<QSpinBox *>(QStringLiteral("pageDpi"))->setValue(1200);
    EXPECT_TRUE(sheet->summary().text().contains(QStringLiteral("too large to render")));
    EXPECT_FALSE(sheet->findChild<QPushButton *>(QStringLiteral("pageExport"))->isEnabled());
    saveScreenshotImage(grabScreenArea(window.frameGeometry()), "page-setup-sheet");
    sheet->findChild<QSpinBox *>(QStringLiteral("pageDpi"))->setValue(300);
    sheet->accept(); // the page chosen; the file dialog that follows is closed unanswered
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller->printOutputs().pdfDialog() != nullptr; }, 5000));
    controller->printOutputs().pdfDialog()->reject();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !controller->printOutputs().pdfDialog() || !controller->printOutputs().pdfDialog()->isVisible(); },
        5000));

    // An A1 poster at 300 dpi being made: the bar and Stop in the status bar; Stop ends it.
    PrintOutputs &print = controller->printOutputs();
    QSignalSpy written(&print, &PrintOutputs::pdfWritten);
    print.writePdf(dir.filePath(QStringLiteral("poster.pdf")));
    EXPECT_TRUE(window.stopWorkButton().isVisible());
    saveScreenshotImage(grabScreenArea(window.frameGeometry()), "result-window-making-pdf");
    QTest::mouseClick(&window.stopWorkButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 1; }, 60000));

    QPrinter &printer = controller->printOutputs().printer();
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setPageOrientation(QPageLayout::Landscape);
    window.action(QStringLiteral("printPreview"))->trigger();
    QPrintPreviewDialog *preview = controller->printOutputs().preview();
    ASSERT_NE(preview, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(preview, 5000));
    auto *pages = preview->findChild<QPrintPreviewWidget *>();
    ASSERT_NE(pages, nullptr);
    EXPECT_EQ(pages->pageCount(), 1);
    EXPECT_EQ(pages->orientation(), QPageLayout::Landscape);
    saveScreenshotImage(grabScreenArea(preview->frameGeometry()), "print-preview");
    preview->reject();

    controller.reset();
}

} // namespace
