#include "MainWindowScreenFixture.h"

#include "app/collage/CollageMaker.h"
#include "app/collage/PleaseWaitWindow.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultSaveDialog.h"
#include "app/result/ResultWindow.h"
#include "app/result/ResultImageView.h"
#include "app/result/SaveOptionsPanel.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QSignalSpy>
#include <QTest>

namespace {

// The collage of the factory photos made from the menu, as the X server shows the please-wait
// window, the result window and its save dialog.
class ResultWindowScreenshotTest : public MainWindowScreenFixture
{
protected:
    void SetUp() override
    {
        MainWindowScreenFixture::SetUp();
        TessaryView &view = controller->mainWindow().tessaryView();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !view.currentLayout().tiles.empty() && view.allTilesFilled(); }, 30000));
    }
};

TEST_F(ResultWindowScreenshotTest, CollageOfTheFactoryPhotos)
{
    save(grabFrame(controller->mainWindow()), "main-window-make-collage");
    PleaseWaitWindow &wait = controller->pleaseWaitWindow();
    QSignalSpy ready(&controller->collageMaker(), &CollageMaker::collageReady);
    controller->mainWindow().action(QStringLiteral("imageCollage"))->trigger();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&wait, 5000));
    save(grabFrame(wait), "please-wait-window");

    ASSERT_TRUE(QTest::qWaitFor([&] { return ready.count() == 1; }, 120000));
    ResultWindow &window = controller->resultWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, 5000));
    window.resize(1100, 820);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.resultView().previewReady(); }, 30000));
    const QImage grab = grabFrame(window);
    save(grab, "result-window");

    // The collage fills the view's width or height, and shows photos, not the backdrop.
    ResultImageView &view = window.resultView();
    const QRectF shown = view.pictureRect();
    EXPECT_TRUE(qAbs(shown.width() - view.viewport()->width()) < 1.5 || qAbs(shown.height() - view.viewport()->height()) < 1.5);
    const QPoint centre = view.viewport()->mapTo(&window, shown.center().toPoint()) +
                          (window.geometry().topLeft() - window.frameGeometry().topLeft());
    EXPECT_NE(grab.pixelColor(centre), QColor(58, 60, 64));

    // The save dialog with a print size that enlarges too far.
    window.action(QStringLiteral("saveResult"))->trigger();
    ResultSaveDialog *dialog = controller->resultOutputs().saveDialog();
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog, 5000));
    SaveOptionsPanel &panel = dialog->options();
    panel.formatPopUp()->setCurrentIndex(panel.formatPopUp()->findData(QByteArray("jpeg")));
    panel.printGroup()->setChecked(true);
    panel.widthBox()->setValue(panel.widthBox()->value() * 4);
    save(grabFrame(*dialog), "result-save-dialog");
    dialog->reject();
}

} // namespace
