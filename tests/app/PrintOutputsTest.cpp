#include "AppFixture.h"

#include "app/collage/CollageMaker.h"
#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/result/PageSetupSheet.h"
#include "app/result/PrintOutputs.h"
#include "app/result/ResultWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "support/PdfFacts.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>

namespace {

// The application with the factory collage made (the picture itself stands in for the render,
// so the window's copy is small while the page is rendered from the real layout).
class PrintOutputsTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
        controller = std::make_unique<HalvernDesktopController>(*defaults, Paths::resourcesFolder());
        controller->launch();
        controller->collageMaker().setDelay(0);
    }
    void TearDown() override
    {
        controller.reset();
        AppFixture::TearDown();
    }

    void makeCollage()
    {
        TessaryView &view = controller->mainWindow().tessaryView();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
        QImage small(240, 240, QImage::Format_RGB32);
        small.fill(Qt::darkGreen);
        controller->collageMaker().setRenderer(
            [small](const CollageLayout &, qint64, const CollageRenderer::Options &) {
                CollageRenderer::Result r;
                r.image = small;
                return r;
            });
        QSignalSpy ready(&controller->collageMaker(), &CollageMaker::collageReady);
        controller->imageCollage();
        ASSERT_TRUE(QTest::qWaitFor([&] { return ready.count() == 1; }, 10000));
    }

    // Export PDF… through the sheet (A5 landscape at 72 dpi) and the file dialog, typing `name`.
    void exportThroughTheDialogs(const QString &name)
    {
        QAction *action = window().action(QStringLiteral("exportPdf"));
        ASSERT_TRUE(action->isEnabled());
        action->trigger();
        PageSetupSheet *sheet = print().pageSheet();
        ASSERT_NE(sheet, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet, 5000));
        EXPECT_TRUE(sheet->isModal());
        sheet->findChild<QComboBox *>(QStringLiteral("pageName"))->setCurrentText(QStringLiteral("A5"));
        sheet->findChild<QComboBox *>(QStringLiteral("pageOrientation"))->setCurrentIndex(1);
        sheet->findChild<QSpinBox *>(QStringLiteral("pageDpi"))->setValue(72);
        EXPECT_TRUE(sheet->summary().text().contains(QStringLiteral("210 × 148 mm"))) << sheet->summary().text().toStdString();
        QTest::mouseClick(sheet->findChild<QPushButton *>(QStringLiteral("pageExport")), Qt::LeftButton);
        ASSERT_TRUE(QTest::qWaitFor([&] { return print().pdfDialog() != nullptr; }, 5000));
        QFileDialog *dialog = print().pdfDialog();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog, 5000));
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(name);
        QMetaObject::invokeMethod(dialog, "accept");
    }

    ResultWindow &window() const { return controller->resultWindow(); }
    PrintOutputs &print() const { return controller->printOutputs(); }

    std::unique_ptr<HalvernDesktopController> controller;
};

// The PDF holds the collage rendered afresh for the page from its layout, not the window's
// small copy; the name gets ".pdf"; an existing file is replaced only after Replace.
TEST_F(PrintOutputsTest, ExportPdfThroughTheSheetAndTheFileDialog)
{
    makeCollage();
    EXPECT_EQ(window().action(QStringLiteral("exportPdf"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+E")));
    EXPECT_EQ(window().action(QStringLiteral("printResult"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+P")));
    const QString base = dir.filePath(QStringLiteral("album"));
    QSignalSpy written(&print(), &PrintOutputs::pdfWritten);
    exportThroughTheDialogs(base);
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 1; }, 30000));
    EXPECT_EQ(written.at(0).at(0).toString(), base + QStringLiteral(".pdf"));
    ASSERT_TRUE(written.at(0).at(1).toBool());
    const QSize expected = print().lastPage().renderSize(controller->collageMaker().madeLayout().contentSize);
    EXPECT_GT(expected.width(), 240);

    // Again to the same name: Cancel keeps the file, Replace writes it anew.
    const QDateTime first = QFileInfo(base + QStringLiteral(".pdf")).lastModified();
    for (QMessageBox::ButtonRole answer : {QMessageBox::RejectRole, QMessageBox::DestructiveRole}) {
        exportThroughTheDialogs(base + QStringLiteral(".pdf"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return print().alert() != nullptr; }, 5000));
        QMessageBox *box = print().alert();
        EXPECT_TRUE(box->text().contains(QStringLiteral("“album.pdf” already exists")));
        for (QAbstractButton *b : box->buttons())
            if (box->buttonRole(b) == answer)
                QTest::mouseClick(b, Qt::LeftButton);
        QTest::qWait(200);
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 2; }, 30000));
    QTest::qWait(100);
    EXPECT_EQ(written.count(), 2); // Cancel wrote nothing
    EXPECT_GE(QFileInfo(base + QStringLiteral(".pdf")).lastModified(), first);

    if (!PdfFacts::toolsPresent())
        GTEST_SKIP() << PdfFacts::kMissing;
    const PdfFacts facts = PdfFacts::of(base + QStringLiteral(".pdf"));
    EXPECT_EQ(facts.pages, 1);
    EXPECT_NEAR(facts.pageSize.width(), 595, 1);
    EXPECT_NEAR(facts.pageSize.height(), 420, 1);
    EXPECT_EQ(facts.title, QStringLiteral("album"));
    EXPECT_EQ(facts.creator, QStringLiteral("Tessary"));
    ASSERT_EQ(facts.images.size(), 1u);
    EXPECT_NEAR(facts.images[0].width(), expected.width(), 1);
    EXPECT_NEAR(facts.images[0].height(), expected.height(), 1);
    // Photos, not the window's plain stand-in picture.
    const QImage embedded = PdfFacts::firstImage(base + QStringLiteral(".pdf"));
    ASSERT_FALSE(embedded.isNull());
    int differing = 0;
    for (int i = 1; i < 8; ++i) {
        const QColor c = embedded.pixelColor(embedded.width() * i / 8, embedded.height() * i / 8);
        differing += std::abs(c.red()) + std::abs(c.green() - 128) + std::abs(c.blue()) > 60;
    }
    EXPECT_GE(differing, 5);
}

// Printing to a PDF file through QPrinter: the printer's page, the picture at 300 dpi. Stop
// ends a page under way with nothing written; a failure is an alert in words.
TEST_F(PrintOutputsTest, PrintToAFileStopAndFailure)
{
    makeCollage();
    window().action(QStringLiteral("printResult"))->trigger();
    auto *dialog = window().findChild<QPrintDialog *>(QStringLiteral("printDialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    dialog->reject();

    QPrinter &printer = print().printer();
    const QString printed = dir.filePath(QStringLiteral("printed.pdf"));
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(printed);
    printer.setPageSize(QPageSize(QPageSize::A5));
    printer.setPageOrientation(QPageLayout::Portrait);
    QSignalSpy done(&print(), &PrintOutputs::printed);
    print().printNow();
    EXPECT_TRUE(window().stopWorkButton().isVisible());
    ASSERT_TRUE(QTest::qWaitFor([&] { return done.count() == 1; }, 30000));
    EXPECT_TRUE(done.at(0).at(0).toBool());
    EXPECT_FALSE(window().stopWorkButton().isVisible());

    QSignalSpy written(&print(), &PrintOutputs::pdfWritten);
    const QString stopped = dir.filePath(QStringLiteral("stopped.pdf"));
    print().writePdf(stopped);
    QTest::mouseClick(&window().stopWorkButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 1; }, 30000));
    EXPECT_FALSE(written.at(0).at(1).toBool());
    EXPECT_FALSE(QFileInfo::exists(stopped));
    EXPECT_EQ(print().alert(), nullptr);
    EXPECT_EQ(window().statusBar()->currentMessage(), QStringLiteral("Stopped"));

    print().writePdf(dir.filePath(QStringLiteral("no/such/folder/x.pdf")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return written.count() == 2; }, 30000));
    ASSERT_NE(print().alert(), nullptr);
    EXPECT_TRUE(print().alert()->text().contains(QStringLiteral("The PDF could not be written")));
    EXPECT_FALSE(print().alert()->informativeText().isEmpty());

    if (!PdfFacts::toolsPresent())
        GTEST_SKIP() << PdfFacts::kMissing;
    const PdfFacts facts = PdfFacts::of(printed);
    EXPECT_EQ(facts.pages, 1);
    EXPECT_NEAR(facts.pageSize.width(), 420, 1);
    EXPECT_NEAR(facts.pageSize.height(), 595, 1);
    const PagePreset page = PagePreset::ofPageLayout(printer.pageLayout(), 300);
    const QSize expected = page.renderSize(controller->collageMaker().madeLayout().contentSize);
    ASSERT_EQ(facts.images.size(), 1u);
    EXPECT_NEAR(facts.images[0].width(), expected.width(), 1);
    EXPECT_NEAR(facts.images[0].height(), expected.height(), 1);
}

} // namespace
