#include "AppFixture.h"
#include "ScreenGrab.h"

#include "app/editor/ImageEditorWindow.h"
#include "foundation/Paths.h"
#include "editor/EditDocument.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "support/RecordingAlertPresenter.h"
#include "app/editor/AdjustmentsPanel.h"
#include "app/editor/EditorToolBar.h"
#include "app/editor/AnnotateTool.h"
#include "app/editor/ImageEditorView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QToolButton>
#include <QDoubleSpinBox>
#include <QDir>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// The image editor as the X server shows it: its tool bars at the smallest size, and a photo
// with the adjustments panel beside it.
class ImageEditorScreenshotTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        browser = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        browser->clearImages();
        browser->addImagesWithPaths({QDir(Paths::resourcesFolder()).filePath(QStringLiteral("flower-3.jpg"))});
        editor = std::make_unique<ImageEditorWindow>(*browser, *defaults, Paths::resourcesFolder());
        editor->resize(1100, 760);
        browser->selection().select(0);
        QSignalSpy loaded(editor.get(), &ImageEditorWindow::loaded);
        editor->doEdit();
        ASSERT_TRUE(loaded.wait(10000));
        ASSERT_TRUE(loaded.first().first().toBool());
        ASSERT_TRUE(QTest::qWaitForWindowExposed(editor.get(), 10000));
    }
    void TearDown() override
    {
        editor.reset();
        browser.reset();
        AppFixture::TearDown();
    }
    // What the screen shows of the window (and of any window beside it, given in `also`).
    QImage grab(const QWidget *also = nullptr)
    {
        return grabScreenArea(also ? editor->frameGeometry().united(also->frameGeometry()) : editor->frameGeometry());
    }
    QString save(const QImage &image, const char *name)
    {
        return saveScreenshotImage(image, name);
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<ImageEditorWindow> editor;
};

// At the window's smallest size each tool's bar shows its controls whole, side by side, inside
// the window; an undo does not move the buttons beside Undo.
TEST_F(ImageEditorScreenshotTest, ToolBarsFitAtTheSmallestSize)
{
    editor->resize(1, 1); // the smallest the window allows
    QTest::qWait(100);
    EXPECT_LE(editor->width(), 700);
    const struct {
        int mode;
        const char *name;
    } tools[] = {{ImageEditorView::Rotate, "editor-rotate-bar-smallest"}, {ImageEditorView::Annotate, "editor-annotate-bar-smallest"},
                 {ImageEditorView::Crop, nullptr}, {ImageEditorView::Select, nullptr}};
    EditorToolBar &bar = editor->toolBar();
    for (const auto &t : tools) {
        SCOPED_TRACE(t.mode);
        editor->switchToolMode(t.mode);
        if (t.mode == ImageEditorView::Annotate) {
            bar.annotationKindPopUp().setCurrentIndex(Annotation::Text);
            bar.annotationTextField().setText(QStringLiteral("Spring in the garden"));
        }
        QApplication::processEvents();
        QList<QRect> taken;
        for (QWidget *w : bar.findChildren<QWidget *>()) {
            if (!w->isVisible() || !(qobject_cast<QAbstractButton *>(w) || qobject_cast<QComboBox *>(w)
                                     || qobject_cast<QAbstractSpinBox *>(w) || qobject_cast<QLineEdit *>(w)))
                continue;
            if (qobject_cast<QLineEdit *>(w) && qobject_cast<QAbstractSpinBox *>(w->parentWidget()))
                continue; // a spin box's own field
            const QRect r(w->mapTo(editor.get(), QPoint(0, 0)), w->size());
            EXPECT_TRUE(editor->rect().contains(r)) << w->metaObject()->className() << " " << w->objectName().toStdString();
            EXPECT_GE(w->width(), w->minimumSizeHint().width()) << "cut: " << w->objectName().toStdString();
            if (auto *b = qobject_cast<QAbstractButton *>(w)) {
                EXPECT_GE(b->width(), b->sizeHint().width()) << "cut: " << b->text().toStdString();
            }
            for (const QRect &other : std::as_const(taken))
                EXPECT_FALSE(other.intersects(r)) << "covered: " << w->objectName().toStdString();
            taken << r;
        }
        if (t.name)
            save(grab(), t.name);
    }
    auto *undo = bar.findChildren<QToolButton *>().value(0);
    for (QToolButton *b : bar.findChildren<QToolButton *>())
        if (b->defaultAction() && b->defaultAction()->objectName() == QLatin1String("editorUndo"))
            undo = b;
    const QRect before = undo->geometry();
    emit bar.operationRequested(EditOperation::turn(EditOperation::TurnLeft));
    QApplication::processEvents();
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_EQ(undo->geometry(), before);
}

TEST_F(ImageEditorScreenshotTest, AdjustmentsPanelBeside)
{
    editor->move(20, 40);
    editor->openEditPanel();
    AdjustmentsPanel *panel = editor->editPanel();
    ASSERT_NE(panel, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(panel, 5000));
    const QImage before = grab();
    // Brighter, warmer and richer: the view shows the live preview.
    QSignalSpy previews(panel, &AdjustmentsPanel::previewReady);
    PhotoAdjustments lift;
    lift.exposure = 0.6;
    lift.shadows = 0.4;
    lift.saturation = 0.35;
    lift.temperature = 0.25;
    panel->setAdjustments(lift);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !previews.isEmpty() && !panel->isPreviewing(); }, 5000));
    const QImage shot = grab(panel);
    save(shot, "editor-adjustments");
    const QPoint middle(editor->width() / 2, editor->height() / 2);
    EXPECT_GT(qGray(shot.pixel(middle + QPoint(-200, 150))), qGray(before.pixel(middle + QPoint(-200, 150))));
    EXPECT_FALSE(panel->frameGeometry().intersects(editor->frameGeometry().adjusted(0, 0, -30, 0)));
}

} // namespace
