#include "AppFixture.h"

#include "app/editor/EditorSavePanel.h"
#include "app/HalvernDesktopController.h"
#include "app/editor/ImageEditorWindow.h"
#include "app/MainWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "editor/EditDocument.h"
#include "editor/EditorZoom.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "images/ImageFileReader.h"
#include "output/JpegQuality.h"
#include "images/UIImage.h"
#include "support/Dialogs.h"
#include "support/LogCapture.h"
#include "support/RecordingAlertPresenter.h"
#include "app/editor/AdjustmentsPanel.h"
#include "app/editor/EditorToolBar.h"
#include "app/editor/AnnotateTool.h"
#include "app/editor/ImageEditorView.h"
#include "app/photos/ImageBrowserPanel.h"
#include "app/collage/TessaryView.h"

#include "support/ExifJpeg.h"
#include "support/TestImages.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QUndoStack>
#include <QtMath>

#include <memory>

namespace {

class ImageEditorTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        browser = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        browser->clearImages();
        // Two photos: a JPEG written at quality 70 and a PNG.
        photoA = dir.filePath(QStringLiteral("harbour.jpg"));
        photoB = dir.filePath(QStringLiteral("quarters.png"));
        ASSERT_TRUE(testimages::writeFile(photoA, testimages::encode(testimages::gradient(160, 120), "jpeg", 70)));
        ASSERT_TRUE(testimages::writeFile(photoB, testimages::encode(testimages::quarters(120, 80), "png")));
        browser->addImagesWithPaths({photoA, photoB});
        ASSERT_EQ(browser->count(), 2);
        editor = std::make_unique<ImageEditorWindow>(*browser, *defaults, Paths::resourcesFolder());
    }
    void TearDown() override
    {
        editor.reset();
        browser.reset();
        AppFixture::TearDown();
    }

    // Selects the photo and opens it (answering OK when another photo is open), waiting until
    // it is on show.
    bool edit(qsizetype index)
    {
        browser->selection().select(index);
        const bool same = editor->session().editingURL() == browser->imageBookmarks().urlAtIndex(index);
        const bool asks = !same && editor->session().editingURL();
        QSignalSpy loaded(editor.get(), &ImageEditorWindow::loaded);
        editor->doEdit();
        if (asks)
            answer(QStringLiteral("OK"));
        return (same || QTest::qWaitFor([&] { return !loaded.isEmpty(); }, 5000)) &&
               QTest::qWaitForWindowExposed(editor.get(), 5000);
    }
    bool settled()
    {
        return QTest::qWaitFor([&] { return !editor->document().isBusy() && !editor->isWriting(); }, 5000);
    }
    ImageEditorView &view() const { return editor->editorImageView(); }
    QImage picture() const { return editor->document().image(); }
    // The editor's open message box, window-modal, answered with the button; once it is gone.
    std::pair<QString, QString> answer(const QString &button)
    {
        const QMessageBox *box = Dialogs::waitFor<QMessageBox>();
        EXPECT_TRUE(box && box->windowModality() == Qt::WindowModal);
        const std::pair<QString, QString> texts = Dialogs::answer(button);
        (void)QTest::qWaitFor([&] { return !editor->findChild<QMessageBox *>(); }, 5000);
        return texts;
    }
    QPoint viewportPoint(const QPointF &picturePoint) const { return view().mapFromScene(picturePoint); }
    // A left-button drag over the picture, in picture pixels.
    void drag(const QPointF &from, const QPointF &to)
    {
        QTest::mousePress(view().viewport(), Qt::LeftButton, {}, viewportPoint(from));
        QTest::mouseMove(view().viewport(), viewportPoint(to));
        QTest::mouseRelease(view().viewport(), Qt::LeftButton, {}, viewportPoint(to));
    }
    bool clickButton(const char *text)
    {
        for (QAbstractButton *b : editor->findChildren<QAbstractButton *>()) {
            if (b->text() == QString::fromUtf8(text)) {
                QTest::mouseClick(b, Qt::LeftButton);
                return true;
            }
        }
        return false;
    }
    // The newest edit once worked out; the Undo menu shows that edit's own name.
    EditOperation newestEdit()
    {
        EXPECT_TRUE(settled());
        const EditOperation newest = editor->document().operations().value(editor->document().count() - 1);
        EXPECT_EQ(editor->undoStack().undoText(), newest.name());
        return newest;
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<ImageEditorWindow> editor;
    QString photoA, photoB;
};

TEST_F(ImageEditorTest, OpensTheSelectedPhotoCentredTheFirstTimeWithItsNameAndFormat)
{
    EXPECT_FALSE(defaults->hasObject(Preferences::FirstRunEditor));
    ASSERT_TRUE(edit(0));
    EXPECT_TRUE(defaults->hasObject(Preferences::FirstRunEditor));
    EXPECT_TRUE(editor->isVisible());
    EXPECT_EQ(editor->windowFilePath(), photoA);
    EXPECT_TRUE(editor->windowTitle().contains(QStringLiteral("harbour.jpg")));
    EXPECT_EQ(picture().size(), QSize(160, 120));
    EXPECT_EQ(editor->editorImageUTType(), QByteArray("jpeg"));
    EXPECT_FALSE(editor->cantEditImageTextField().isVisible());
    EXPECT_EQ(editor->session().editingURL(), browser->imageBookmarks().urlAtIndex(0));
    // Fitted once the window has its size.
    ASSERT_TRUE(QTest::qWaitFor([&] {
        return std::abs(view().zoomFactor() - EditorZoom::fitFactor(QSizeF(160, 120), view().fitArea())) < 1e-9;
    }, 2000));
}

TEST_F(ImageEditorTest, AnotherPhotoAsksFirstAndOnlyOkReplaces)
{
    const struct {
        const char *button;
        bool replaces;
    } cases[] = {{"Cancel", false}, {"OK", true}};
    for (const auto &c : cases) {
        ASSERT_TRUE(edit(0)) << c.button;
        editor->pushOperation(EditOperation::turn(EditOperation::TurnRight));
        const ImageBookmarks::UrlRef before = editor->session().editingURL();
        browser->selection().select(1);
        QSignalSpy loaded(editor.get(), &ImageEditorWindow::loaded);
        editor->doEdit();
        QMessageBox *box = editor->findChild<QMessageBox *>();
        ASSERT_NE(box, nullptr);
        ASSERT_NE(box->escapeButton(), nullptr);
        EXPECT_EQ(box->escapeButton()->text(), QStringLiteral("Cancel")); // Escape keeps the edit
        const auto texts = answer(QString::fromLatin1(c.button));
        EXPECT_EQ(texts.first, QStringLiteral("Replace edit contents?"));
        EXPECT_EQ(texts.second, QStringLiteral("Any changes not yet saved will be lost."));
        if (c.replaces) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return !loaded.isEmpty(); }, 5000));
            EXPECT_EQ(editor->session().editingURL(), browser->imageBookmarks().urlAtIndex(1));
            EXPECT_EQ(editor->document().count(), 0);
            EXPECT_EQ(editor->editorImageUTType(), QByteArray("png"));
        } else {
            EXPECT_EQ(editor->session().editingURL(), before);
            EXPECT_EQ(editor->document().count(), 1);
            EXPECT_EQ(picture().size(), QSize(120, 160));
            // Going back to the first photo: it is the one open, so nothing is asked.
            browser->selection().select(0);
        }
    }
}

TEST_F(ImageEditorTest, AFileThatCannotBeReadShowsTheFailurePictureSheetAndNote)
{
    const QString broken = dir.filePath(QStringLiteral("broken.jpg"));
    ASSERT_TRUE(testimages::writeFile(broken, "not a picture at all"));
    editor->show();
    editor->session().setEditingURL(std::make_shared<const QUrl>(QUrl::fromLocalFile(broken)));
    QSignalSpy loaded(editor.get(), &ImageEditorWindow::loaded);
    editor->beginEditing();
    ASSERT_TRUE(loaded.wait(5000));
    EXPECT_FALSE(loaded.first().first().toBool());
    const QImage ximage(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("ximage.png")));
    ASSERT_FALSE(ximage.isNull());
    EXPECT_EQ(picture().size(), ximage.size());
    EXPECT_EQ(editor->windowFilePath(), broken);
    EXPECT_TRUE(editor->cantEditImageTextField().isVisible());
    EXPECT_FALSE(editor->saveButton().isEnabled());
    const auto texts = answer(QStringLiteral("OK"));
    EXPECT_EQ(texts.first, QStringLiteral("This image can not be edited."));
    EXPECT_EQ(texts.second, QStringLiteral("Try converting the image to another format."));
    // Nothing to add: only the log says so.
    {
        const LogCapture log;
        QSignalSpy inserted(editor.get(), &ImageEditorWindow::inserted);
        editor->insertEditorImage();
        ASSERT_TRUE(inserted.wait(5000));
        EXPECT_TRUE(log.lines().contains(QStringLiteral("*** saveImageToPath - no image")));
    }
    EXPECT_EQ(browser->count(), 2);
    // A readable photo hides the note again.
    ASSERT_TRUE(edit(0));
    EXPECT_FALSE(editor->cantEditImageTextField().isVisible());
}

// Tool keys, Ctrl+Z and Ctrl+Shift+Z (the history's pixels are the document's own rule), the
// wheel, a pinch and a resize.
TEST_F(ImageEditorTest, KeysWheelAndResizeDriveToolsHistoryAndZoom)
{
    ASSERT_TRUE(edit(0));
    editor->activateWindow();
    const struct {
        Qt::Key key;
        ImageEditorView::ToolMode mode;
    } keys[] = {{Qt::Key_C, ImageEditorView::Crop}, {Qt::Key_R, ImageEditorView::Rotate}, {Qt::Key_A, ImageEditorView::Annotate},
                {Qt::Key_M, ImageEditorView::Select}, {Qt::Key_V, ImageEditorView::Move}};
    for (const auto &k : keys) {
        QTest::keyClick(view().viewport(), k.key);
        EXPECT_EQ(view().toolMode(), k.mode) << k.key;
    }
    editor->pushOperation(EditOperation::turn(EditOperation::TurnLeft));
    ASSERT_TRUE(settled());
    QTest::keyClick(editor.get(), Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(settled());
    EXPECT_TRUE(editor->undoStack().isClean());
    EXPECT_EQ(editor->document().count(), 0);
    QTest::keyClick(editor.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(settled());
    EXPECT_EQ(editor->document().count(), 1);
    // Ctrl+wheel: one notch is half a step in.
    const double before = view().zoomFactor();
    const QPoint centre = view().viewport()->rect().center();
    QWheelEvent wheel(centre, view().viewport()->mapToGlobal(centre), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view().viewport(), &wheel);
    EXPECT_NEAR(view().zoomFactor(), before * EditorZoom::kZoomInFactor, 1e-9);
    // A pinch spreading the fingers by a quarter.
    const double beforePinch = view().zoomFactor();
    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, centre, centre,
                              view().viewport()->mapToGlobal(centre), 0.25, QPointF(), 0);
    QApplication::sendEvent(view().viewport(), &pinch);
    EXPECT_NEAR(view().zoomFactor(), beforePinch * 1.25, 1e-9);
    // A resize refits at once.
    editor->resize(editor->width() + 200, editor->height() + 100);
    QCoreApplication::processEvents();
    EXPECT_NEAR(view().zoomFactor(), EditorZoom::fitFactor(QSizeF(picture().size()), view().fitArea()), 1e-9);
}

// Mouse drags of the select and rotate tools, from the picture's point of view.
TEST_F(ImageEditorTest, SelectingAnAreaCropsToItAndDraggingAroundTheCentreStraightens)
{
    ASSERT_TRUE(edit(0)); // 160 x 120
    editor->switchToolMode(ImageEditorView::Select);
    drag({20, 10}, {100, 70});
    const QRectF selected = view().selectionRect();
    EXPECT_NEAR(selected.left(), 20, 1);
    EXPECT_NEAR(selected.bottom(), 70, 1);
    QTest::keyClick(view().viewport(), Qt::Key_Return);
    ASSERT_TRUE(settled());
    EXPECT_NEAR(picture().width(), 80, 1);
    EXPECT_NEAR(picture().height(), 60, 1);
    EXPECT_TRUE(view().selectionRect().isEmpty());

    // Now 80 x 60: a drag from right of the centre to 10 degrees below it turns by 10.
    editor->switchToolMode(ImageEditorView::Rotate);
    const QPointF centre(picture().width() / 2.0, picture().height() / 2.0);
    const double r = 20;
    const QPointF end = centre + QPointF(r * std::cos(qDegreesToRadians(10.0)), r * std::sin(qDegreesToRadians(10.0)));
    drag(centre + QPointF(r, 0), end);
    EXPECT_NEAR(editor->toolBar().angleField().value(), 10.0, 1.0);
    // Escape forgets it.
    QTest::keyClick(view().viewport(), Qt::Key_Escape);
    EXPECT_EQ(editor->toolBar().angleField().value(), 0.0);
    EXPECT_FALSE(view().hasPendingEdit());
}

// The buttons and a typed angle with Enter push their edits (whose pixels are the edits' own
// rule); a turn while an angle is set straightens first.
TEST_F(ImageEditorTest, RotateByButtonsAndStraightenByTypingAnAngle)
{
    ASSERT_TRUE(edit(1));
    editor->switchToolMode(ImageEditorView::Rotate);
    const struct {
        const char *button;
        EditOperation::Kind kind;
    } turns[] = {{"⟳ Right", EditOperation::TurnRight}, {"⟲ Left", EditOperation::TurnLeft}, {"⇋ Flip", EditOperation::FlipHorizontal}};
    for (const auto &t : turns) {
        ASSERT_TRUE(clickButton(t.button)) << t.button;
        EXPECT_EQ(newestEdit(), EditOperation::turn(t.kind)) << t.button;
    }
    editor->toolBar().angleField().setValue(5.0);
    EXPECT_TRUE(view().hasPendingEdit());
    QTest::keyClick(view().viewport(), Qt::Key_Enter);
    EXPECT_EQ(newestEdit(), EditOperation::straighten(5.0));
    EXPECT_EQ(editor->toolBar().angleField().value(), 0.0);
    EXPECT_EQ(editor->undoStack().count(), 4);
    editor->toolBar().angleField().setValue(-3.0);
    ASSERT_TRUE(clickButton("⟳ Right"));
    ASSERT_TRUE(settled());
    ASSERT_EQ(editor->document().operations().size(), 6);
    EXPECT_EQ(editor->document().operations().at(4), EditOperation::straighten(-3.0));
    EXPECT_EQ(editor->undoStack().text(4), EditOperation::straighten(-3.0).name());
    EXPECT_EQ(editor->undoStack().text(5), EditOperation::turn(EditOperation::TurnRight).name());
}

// The mark as drawn and moved is the edit applied when the tool is left (its pixels are the
// edit's own rule).
TEST_F(ImageEditorTest, AnAnnotationIsDrawnMovedAndAppliedOnLeavingTheTool)
{
    ASSERT_TRUE(edit(0)); // 160 x 120
    editor->switchToolMode(ImageEditorView::Annotate);
    editor->toolBar().annotationKindPopUp().setCurrentIndex(Annotation::Rectangle);
    editor->toolBar().lineWidthField().setValue(6);
    drag({40, 40}, {100, 90});
    ASSERT_EQ(view().annotateTool().pending().size(), 1);
    // Still movable: drag it 20 pixels right by its edge.
    drag({40, 60}, {60, 60});
    const Annotation placed = view().annotateTool().pending().constFirst();
    EXPECT_EQ(placed.kind, Annotation::Rectangle);
    EXPECT_EQ(placed.width, 6);
    ASSERT_EQ(placed.points.size(), 2);
    EXPECT_NEAR(placed.points.at(0).x(), 60, 3);
    EXPECT_NEAR(placed.points.at(1).y(), 90, 3);
    EXPECT_EQ(editor->document().count(), 0); // not applied yet
    editor->switchToolMode(ImageEditorView::Move);
    EXPECT_EQ(newestEdit(), EditOperation::annotate({placed}));
    EXPECT_TRUE(view().annotateTool().pending().isEmpty());
}

TEST_F(ImageEditorTest, SavingProposesTheSourcesNameFormatAndQuality)
{
    const struct {
        qsizetype index;
        const char *proposed;
        QByteArray format;
        int quality;
    } cases[] = {{0, "harbour.jpg", "jpeg", 70}, {1, "quarters.png", "png", -1}};
    for (const auto &c : cases) {
        ASSERT_TRUE(edit(c.index));
        ASSERT_EQ(editor->editorImageUTType(), c.format);
        editor->pushOperation(EditOperation::cropTo(QRect(0, 0, 60, 50)));
        ASSERT_TRUE(settled());
        editor->saveEditorImage();
        EditorSavePanel *panel = editor->savePanel();
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel->windowModality(), Qt::WindowModal);
        EXPECT_TRUE(panel->testOption(QFileDialog::DontUseNativeDialog));
        auto *name = panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(name, nullptr);
        EXPECT_EQ(name->text(), QString::fromLatin1(c.proposed));
        auto *quality = panel->findChild<QSlider *>(QStringLiteral("qualitySlider"));
        ASSERT_NE(quality, nullptr);
        EXPECT_EQ(quality->isVisibleTo(panel), c.quality > 0);
        if (c.quality > 0) {
            EXPECT_EQ(quality->value(), c.quality);
        }
        const QString target = dir.filePath(QStringLiteral("saved-") + QString::fromLatin1(c.proposed));
        QSignalSpy saved(editor.get(), &ImageEditorWindow::saved);
        panel->selectFile(target);
        QMetaObject::invokeMethod(panel, "accept");
        ASSERT_TRUE(saved.wait(5000));
        EXPECT_TRUE(saved.first().at(1).toBool());
        QByteArray bytes;
        QString error;
        ASSERT_TRUE(ImageFileReader::readFile(target, &bytes, &error));
        EXPECT_EQ(ImageFileReader::readHeader(bytes, target).format, c.format);
        if (c.quality > 0) {
            EXPECT_EQ(JpegQuality::estimate(bytes), c.quality);
        }
        EXPECT_EQ(UIImage::loadData(bytes).image.size(), QSizeF(60, 50));
        EXPECT_TRUE(editor->undoStack().isClean());
    }
}

TEST_F(ImageEditorTest, InsertAddsTheEditAsANewPhotoAndKeepsTheSource)
{
    ASSERT_TRUE(edit(0));
    const auto bytesOf = [](const QString &path) { QFile f(path); return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray(); };
    const QByteArray original = bytesOf(photoA);
    editor->pushOperation(EditOperation::turn(EditOperation::TurnRight));
    QSignalSpy inserted(editor.get(), &ImageEditorWindow::inserted);
    editor->insertEditorImage();
    ASSERT_TRUE(inserted.wait(5000));
    const QString path = inserted.first().first().toString();
    ASSERT_FALSE(path.isEmpty());
    EXPECT_EQ(browser->count(), 3);
    EXPECT_TRUE(browser->images().contains(path));
    EXPECT_EQ(QImage(path).size(), QSize(120, 160));
    EXPECT_EQ(bytesOf(photoA), original);
    EXPECT_EQ(editor->session().editingURL(), browser->imageBookmarks().urlAtIndex(browser->images().indexOf(photoA)));
}

TEST_F(ImageEditorTest, ReplacePutsTheEditInPlaceOfThePhotoItCameFrom)
{
    ASSERT_TRUE(edit(1));
    editor->pushOperation(EditOperation::cropTo(QRect(0, 0, 60, 40)));
    QSignalSpy replaced(editor.get(), &ImageEditorWindow::replaced);
    editor->replaceEditorImage();
    ASSERT_TRUE(replaced.wait(5000));
    EXPECT_TRUE(replaced.first().first().toBool());
    const QString path = browser->imageBookmarks().pathAtIndex(1);
    EXPECT_NE(path, photoB);
    EXPECT_EQ(QImage(path).size(), QSize(60, 40));
    EXPECT_TRUE(QFile::exists(photoB)); // the source is never overwritten
    EXPECT_EQ(QImage(photoB).size(), QSize(120, 80));
    EXPECT_EQ(editor->windowFilePath(), path);
    EXPECT_TRUE(editor->undoStack().isClean());
    // The replacement is now the photo open: opening it again asks nothing.
    browser->selection().select(1);
    editor->doEdit();
    EXPECT_FALSE(editor->isLoading());
    EXPECT_TRUE(Dialogs::noneShown<QMessageBox>());
}

TEST_F(ImageEditorTest, ClosingWithUnsavedEditsAsksAndCloseNoSaveDoesNot)
{
    ASSERT_TRUE(edit(0));
    editor->close();
    EXPECT_FALSE(editor->isVisible()); // nothing to lose: closes at once
    ASSERT_TRUE(edit(0));
    editor->pushOperation(EditOperation::turn(EditOperation::TurnRight));
    EXPECT_TRUE(editor->isWindowModified());
    editor->close();
    EXPECT_EQ(answer(QStringLiteral("Cancel")).first, QStringLiteral("Close the editor with unsaved changes?"));
    EXPECT_TRUE(editor->isVisible());
    editor->close();
    answer(QStringLiteral("Close"));
    EXPECT_FALSE(editor->isVisible());
    // The edit stays with the photo it belongs to.
    EXPECT_EQ(editor->document().count(), 1);
    ASSERT_TRUE(edit(0));
    editor->closeNoSave();
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(Dialogs::noneShown<QMessageBox>());
}

TEST_F(ImageEditorTest, AdjustmentsPreviewInTheViewAndApplyAsOneUndoableEdit)
{
    ASSERT_TRUE(edit(0));
    editor->openEditPanel();
    AdjustmentsPanel *panel = editor->editPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_FALSE(panel->isModal());
    PhotoAdjustments brighter;
    brighter.exposure = 1;
    QImage preview(80, 60, QImage::Format_RGB32);
    preview.fill(Qt::white);
    emit panel->previewReady(preview, brighter);
    EXPECT_TRUE(view().isPreviewing());
    emit panel->previewReady(preview, PhotoAdjustments{});
    EXPECT_FALSE(view().isPreviewing());
    emit panel->previewReady(preview, brighter);
    emit panel->applyRequested(brighter);
    ASSERT_TRUE(settled());
    EXPECT_FALSE(view().isPreviewing());
    EXPECT_EQ(editor->undoStack().count(), 1);
    EXPECT_EQ(editor->undoStack().undoText(), QStringLiteral("Adjustments"));
    EXPECT_EQ(editor->document().operations().constFirst().adjustments, brighter);
}

// The application: Edit > Edit Photo (Ctrl+E) and a double click in the browser open the
// editor; quitting closes it without asking.
TEST_F(ImageEditorTest, TheMainWindowOpensTheEditor)
{
    editor.reset();
    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    controller.launch();
    QAction *action = controller.mainWindow().action(QStringLiteral("editPhoto"));
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->shortcut(), QKeySequence(QStringLiteral("Ctrl+E")));
    ImageBrowserController &list = controller.imageBrowserController();
    ASSERT_EQ(list.count(), 2); // the fixture's two photos, stored
    list.selection().select(0);
    QSignalSpy loaded(&controller.editorWindow(), &ImageEditorWindow::loaded);
    action->trigger();
    ASSERT_TRUE(loaded.wait(10000));
    EXPECT_TRUE(controller.editorWindow().isVisible());
    EXPECT_EQ(controller.editorWindow().session().editingURL(), list.imageBookmarks().urlAtIndex(0));
    // A double click on another photo asks first.
    list.selection().select(1);
    emit controller.mainWindow().imageBrowserPanel().editRequested(1);
    EXPECT_EQ(Dialogs::answer(QStringLiteral("Cancel")).first, QStringLiteral("Replace edit contents?"));
    // Ctrl+Z in the editor undoes the edit, never the collage's jumble (the main window's Ctrl+Z).
    ImageEditorWindow &editorWindow = controller.editorWindow();
    TessaryView &collage = controller.mainWindow().tessaryView();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !collage.currentLayout().tiles.empty(); }, 30000));
    collage.jumble();
    ASSERT_TRUE(collage.isJumbled());
    editorWindow.pushOperation(EditOperation::turn(EditOperation::TurnRight));
    editorWindow.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&editorWindow, 5000));
    QTest::keyClick(&editorWindow, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(editorWindow.undoStack().index(), 0);
    EXPECT_TRUE(collage.isJumbled());
    editorWindow.pushOperation(EditOperation::turn(EditOperation::TurnRight));
    controller.applicationWillTerminate();
    EXPECT_FALSE(controller.editorWindow().isVisible());
}

} // namespace
