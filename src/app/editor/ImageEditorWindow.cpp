#include "app/editor/ImageEditorWindow.h"

#include "app/editor/EditorSavePanel.h"

#include "foundation/BackgroundJob.h"
#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "editor/EditDocument.h"
#include "editor/EditedImageReader.h"
#include "editor/EditedImageWriter.h"
#include "editor/EditorZoom.h"
#include "photos/ImageBrowserController.h"
#include "editor/StraightenGeometry.h"
#include "app/editor/AdjustmentsPanel.h"
#include "app/editor/AnnotateTool.h"
#include "app/editor/CropTool.h"
#include "app/editor/EditCommand.h"
#include "app/editor/EditorToolBar.h"
#include "app/editor/ImageEditorView.h"
#include "app/editor/StraightenTool.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>

namespace {

// Runs `work` on a worker thread and hands its result to `done` on the main thread, unless
// `context` is gone by then: the work then ends on its own and its result is dropped.
template <typename Work, typename Done>
BackgroundJob *runInBackground(QObject *context, Work work, Done done)
{
    using Result = decltype(work());
    auto *job = new BackgroundJob(context, BackgroundJob::Threads::SharedPool, BackgroundJob::Ending::Drop);
    QObject::connect(job, &BackgroundJob::finished, context, [job, done](const QVariant &result) {
        job->deleteLater();
        done(result.value<Result>());
    });
    job->start([work](BackgroundJob::Control &) { return QVariant::fromValue(work()); });
    return job;
}

} // namespace

ImageEditorWindow::ImageEditorWindow(ImageBrowserController &browser, UserDefaults &defaults,
                                     const QString &resourcesFolder, QWidget *parent)
    : QMainWindow(parent, Qt::Window)
    , m_defaults(defaults)
    , m_resourcesFolder(resourcesFolder)
    , m_session(browser)
{
    setObjectName(QStringLiteral("editorWindow"));
    m_alerts.setParentWindow(this);
    m_document = new EditDocument(this);
    m_undoStack = new QUndoStack(this);
    m_view = new ImageEditorView;

    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_toolBar = new EditorToolBar(*m_view, *m_undoStack);
    layout->addWidget(m_toolBar);
    auto *rule = new QFrame;
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Plain);
    rule->setStyleSheet(QStringLiteral("color: #c8c8c8;"));
    layout->addWidget(rule);
    layout->addWidget(m_view, 1);
    layout->addWidget(buildBottomBar());
    setCentralWidget(central);
    buildActions();

    connect(m_view, &ImageEditorView::operationReady, this, &ImageEditorWindow::pushOperation);
    // A turn or flip keeps what the tool holds (a straightening being set) by applying it first.
    connect(m_toolBar, &EditorToolBar::operationRequested, this, [this](const EditOperation &operation) {
        m_view->applyTool();
        pushOperation(operation);
    });
    connect(m_toolBar, &EditorToolBar::toolChosen, this, &ImageEditorWindow::switchToolMode);
    connect(m_toolBar, &EditorToolBar::adjustRequested, this, &ImageEditorWindow::openEditPanel);
    connect(m_view, &ImageEditorView::zoomChanged, this, &ImageEditorWindow::updateStatus);
    connect(m_document, &EditDocument::imageChanged, this, &ImageEditorWindow::showDocumentImage);
    connect(m_document, &EditDocument::busyChanged, this, &ImageEditorWindow::updateStatus);
    connect(m_undoStack, &QUndoStack::cleanChanged, this, &ImageEditorWindow::updateTitle);
    connect(m_undoStack, &QUndoStack::indexChanged, this, &ImageEditorWindow::updateStatus);
    connect(&m_view->cropTool(), &CropTool::cropRectChanged, this, &ImageEditorWindow::updateStatus);
    connect(m_view, &ImageEditorView::toolModeChanged, this, &ImageEditorWindow::updateStatus);
    connect(&m_view->straightenTool(), &StraightenTool::angleChanged, this, &ImageEditorWindow::updateStatus);

    setWindowTitle(tr("Image Editor"));
    resize(1000, 720);
    setMinimumSize(640, 480);
    initEditor();
}

ImageEditorWindow::~ImageEditorWindow() = default;

QWidget *ImageEditorWindow::buildBottomBar()
{
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("editorBottomBar"));
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(10, 8, 10, 8);
    row->setSpacing(6);

    m_cantEdit = new QLabel(tr("This image can not be edited."));
    m_cantEdit->setObjectName(QStringLiteral("cantEditImageTextField"));
    m_cantEdit->setStyleSheet(QStringLiteral("color: #b3261e; font-weight: bold;"));
    m_cantEdit->hide();
    row->addWidget(m_cantEdit);

    // The zoom table as a segmented control.
    const struct {
        const char *text;
        const char *tip;
    } steps[] = {{"−", "Zoom out (Ctrl+−)"}, {"+", "Zoom in (Ctrl++)"}, {"1:1", "Actual size (Ctrl+1)"}, {"Fit", "Zoom to fit (Ctrl+0)"}};
    auto *zoom = new QWidget;
    auto *zoomRow = new QHBoxLayout(zoom);
    zoomRow->setContentsMargins(0, 0, 0, 0);
    zoomRow->setSpacing(0);
    for (int i = 0; i < EditorZoom::kStepCount; ++i) {
        auto *b = new QToolButton;
        b->setObjectName(QStringLiteral("zoom%1").arg(i));
        b->setText(QString::fromUtf8(steps[i].text));
        b->setToolTip(tr(steps[i].tip));
        b->setMinimumWidth(34);
        connect(b, &QToolButton::clicked, this, [this, i] { doZoomEditor(i); });
        zoomRow->addWidget(b);
    }
    row->addWidget(zoom);
    m_zoomLabel = new QLabel;
    m_zoomLabel->setMinimumWidth(48);
    row->addWidget(m_zoomLabel);
    m_sizeLabel = new QLabel;
    m_sizeLabel->setStyleSheet(QStringLiteral("color: #5f6368;"));
    row->addWidget(m_sizeLabel);
    m_progress = new QProgressBar;
    m_progress->setRange(0, 0);
    m_progress->setMaximumWidth(140);
    m_progress->setTextVisible(false);
    m_progress->hide();
    row->addWidget(m_progress);
    row->addStretch(1);

    m_saveButton = new QPushButton(tr("Save As…"));
    m_saveButton->setObjectName(QStringLiteral("saveEditorImage"));
    m_saveButton->setToolTip(tr("Save the edited photo to a file (Ctrl+S)"));
    connect(m_saveButton, &QPushButton::clicked, this, &ImageEditorWindow::saveEditorImage);
    m_insertButton = new QPushButton(tr("Add as New Photo"));
    m_insertButton->setObjectName(QStringLiteral("insertEditorImage"));
    m_insertButton->setToolTip(tr("Add the edited photo to the photo list, keeping the original"));
    connect(m_insertButton, &QPushButton::clicked, this, &ImageEditorWindow::insertEditorImage);
    m_replaceButton = new QPushButton(tr("Replace Original"));
    m_replaceButton->setObjectName(QStringLiteral("replaceEditorImage"));
    m_replaceButton->setToolTip(tr("Put the edited photo in the original's place in the photo list; the original file is kept"));
    m_replaceButton->setDefault(true);
    connect(m_replaceButton, &QPushButton::clicked, this, &ImageEditorWindow::replaceEditorImage);
    row->addWidget(m_saveButton);
    row->addWidget(m_insertButton);
    row->addWidget(m_replaceButton);
    m_outputButtons = {m_saveButton, m_insertButton, m_replaceButton};
    return bar;
}

void ImageEditorWindow::buildActions()
{
    const auto shortcut = [this](const QKeySequence &keys, std::function<void()> run) {
        auto *a = new QAction(this);
        a->setShortcut(keys);
        a->setShortcutContext(Qt::WindowShortcut);
        connect(a, &QAction::triggered, this, std::move(run));
        addAction(a);
        return a;
    };
    const Qt::Key toolKeys[] = {Qt::Key_V, Qt::Key_M, Qt::Key_C, Qt::Key_R, Qt::Key_A};
    for (int i = 0; i < ImageEditorView::kToolModeCount; ++i)
        shortcut(QKeySequence(toolKeys[i]), [this, i] { switchToolMode(i); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Minus), [this] { doZoomEditor(EditorZoom::ZoomOut); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Plus), [this] { doZoomEditor(EditorZoom::ZoomIn); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Equal), [this] { doZoomEditor(EditorZoom::ZoomIn); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_1), [this] { doZoomEditor(EditorZoom::ActualSize); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_0), [this] { doZoomEditor(EditorZoom::ZoomToFit); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_S), [this] { saveEditorImage(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_J), [this] { openEditPanel(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
}

void ImageEditorWindow::initEditor()
{
    switchToolMode(ImageEditorView::Move);
    m_view->zoomImageToFit();
    setEditingEnabled(false);
    updateStatus();
}

void ImageEditorWindow::doEdit()
{
    m_cantEdit->hide();
    show();
    raise();
    activateWindow();
    Preferences prefs(m_defaults);
    if (prefs.markPresent(Preferences::FirstRunEditor)) {
        if (QScreen *s = screen()) {
            QRect frame = frameGeometry();
            frame.moveCenter(s->availableGeometry().center());
            move(frame.topLeft());
        }
    }
    ImageBookmarks::UrlRef url;
    switch (m_session.actionForSelection(&url)) {
    case ImageEditorSession::EditAction::Nothing:
        return;
    case ImageEditorSession::EditAction::Begin:
        m_session.setEditingURL(url);
        beginEditing();
        return;
    case ImageEditorSession::EditAction::AskFirst: {
        AlertPresenter::Alert alert;
        alert.messageText = QStringLiteral("Replace edit contents?");
        alert.informativeText = QStringLiteral("Any changes not yet saved will be lost.");
        alert.defaultButton = QStringLiteral("Cancel");
        alert.alternateButton = QStringLiteral("OK");
        m_alerts.presentAlert(alert, [this, url](int response) {
            if (response != AlertPresenter::AlternateButton)
                return;
            m_session.setEditingURL(url);
            if (url)
                beginEditing();
        });
        escapeCancels();
        return;
    }
    }
}

void ImageEditorWindow::beginEditing()
{
    const QString path = m_session.editingPath();
    const quint64 generation = ++m_loadGeneration;
    m_loading = true;
    m_cantEdit->hide();
    updateStatus();
    runInBackground(this, [path] { return EditedImageReader::read(path); }, [this, path, generation](const EditedImageReader::Photo &photo) {
        if (generation != m_loadGeneration)
            return; // another photo was asked for meanwhile
        m_loading = false;
        m_view->cancelTool();
        if (!photo.ok) {
            showCannotEdit(path);
            emit loaded(false);
            return;
        }
        m_canEdit = true;
        m_properties = photo.properties;
        m_undoStack->clear();
        m_document->setSource(photo.image);
        setWindowFilePath(path);
        updateTitle();
        setEditingEnabled(true);
        refreshPanelSource();
        // Once the window has its final size.
        QTimer::singleShot(10, this, [this] { m_view->zoomImageToFit(); });
        emit loaded(true);
    });
}

void ImageEditorWindow::showCannotEdit(const QString &path)
{
    m_canEdit = false;
    m_properties = {};
    m_undoStack->clear();
    m_document->setSource(QImage(QDir(m_resourcesFolder).filePath(QStringLiteral("ximage.png"))));
    setWindowFilePath(path);
    updateTitle();
    setEditingEnabled(false);
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("This image can not be edited.");
    alert.informativeText = QStringLiteral("Try converting the image to another format.");
    alert.defaultButton = QStringLiteral("OK");
    m_alerts.presentAlert(alert, {});
    m_cantEdit->show();
    QTimer::singleShot(10, this, [this] { m_view->zoomImageToFit(); });
}

void ImageEditorWindow::switchToolMode(int index)
{
    if (index < 0 || index >= ImageEditorView::kToolModeCount)
        return;
    m_view->setToolMode(ImageEditorView::ToolMode(index));
    m_toolBar->showTool(index);
    m_view->setFocus();
}

void ImageEditorWindow::doZoomEditor(int index)
{
    switch (index) {
    case EditorZoom::ZoomOut:
    case EditorZoom::ZoomIn:
        m_view->setZoomFactor(EditorZoom::afterStep(index, m_view->zoomFactor(), QSizeF(m_view->pictureSize()), m_view->fitArea()));
        break;
    case EditorZoom::ActualSize:
        m_view->zoomImageToActualSize();
        break;
    case EditorZoom::ZoomToFit:
        m_view->zoomImageToFit();
        break;
    default:
        break;
    }
}

void ImageEditorWindow::openEditPanel()
{
    if (!m_canEdit)
        return;
    if (!m_editPanel) {
        m_editPanel = new AdjustmentsPanel(this);
        m_editPanel->setObjectName(QStringLiteral("editPanel"));
        m_editPanel->setWindowFlag(Qt::Tool);
        m_editPanel->setModal(false);
        connect(m_editPanel, &AdjustmentsPanel::previewReady, this, &ImageEditorWindow::previewAdjustments);
        connect(m_editPanel, &AdjustmentsPanel::applyRequested, this, [this](const PhotoAdjustments &adjustments) {
            m_view->endPreview();
            m_view->applyTool();
            if (!adjustments.isNeutral())
                pushOperation(EditOperation::adjust(adjustments));
        });
        connect(m_editPanel, &QDialog::finished, m_view, &ImageEditorView::endPreview);
        refreshPanelSource();
    }
    m_editPanel->show();
    m_editPanel->raise();
    // Beside the editor, where the screen has room; else over its right edge.
    const QRect frame = frameGeometry();
    QPoint place(frame.right() + 8, frame.top());
    if (QScreen *s = screen()) {
        const QRect available = s->availableGeometry();
        if (place.x() + m_editPanel->width() > available.right())
            place.setX(std::max(available.left(), frame.right() - m_editPanel->width() - 24));
    }
    m_editPanel->move(place);
}

void ImageEditorWindow::refreshPanelSource()
{
    if (!m_editPanel || !m_canEdit)
        return;
    // A screen-sized copy, made on a worker: the preview is computed on it. A copy still being
    // made of an older picture is dropped.
    const QImage image = m_document->image();
    const QSize screenSize = screen() ? screen()->availableGeometry().size() : QSize(1600, 1000);
    if (m_proxyJob) {
        m_proxyJob->disconnect();
        m_proxyJob->deleteLater();
    }
    m_proxyJob = runInBackground(m_editPanel, [image, screenSize] {
        return image.width() > screenSize.width() || image.height() > screenSize.height()
                   ? image.scaled(screenSize, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                   : image;
    }, [panel = m_editPanel](const QImage &proxy) { panel->setPreviewSource(proxy); });
}

void ImageEditorWindow::previewAdjustments(const QImage &preview, const PhotoAdjustments &adjustments)
{
    if (adjustments.isNeutral())
        m_view->endPreview();
    else
        m_view->showPreview(preview);
}

void ImageEditorWindow::pushOperation(const EditOperation &operation)
{
    if (!m_canEdit || m_document->image().isNull())
        return;
    m_undoStack->push(new EditCommand(*m_document, m_document->count(), operation));
}

void ImageEditorWindow::showDocumentImage()
{
    const QSize before = m_view->pictureSize();
    m_view->setImage(m_document->image());
    if (before != m_document->image().size())
        m_view->zoomImageToFit();
    if (m_editPanel && m_editPanel->isVisible() && !m_document->isBusy())
        refreshPanelSource();
    updateStatus();
}

void ImageEditorWindow::whenEditsDone(std::function<void()> then)
{
    m_view->applyTool();
    if (!m_document->isBusy()) {
        then();
        return;
    }
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(m_document, &EditDocument::busyChanged, this, [connection, then](bool busy) {
        if (busy)
            return;
        QObject::disconnect(*connection);
        then();
    });
}

void ImageEditorWindow::saveEditorImage()
{
    if (!m_canEdit || m_savePanel)
        return;
    auto *panel = new EditorSavePanel(windowFilePath(), m_properties.format, m_properties.quality, this);
    m_savePanel = panel;
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(panel, &QDialog::finished, this, [this] { m_savePanel = nullptr; });
    connect(panel, &EditorSavePanel::saveRequested, this, &ImageEditorWindow::savePanelDidEnd);
    panel->open();
}

void ImageEditorWindow::savePanelDidEnd(const QString &path, const QByteArray &format, int quality)
{
    whenEditsDone([this, path, format, quality] {
        const QImage image = m_document->image();
        if (image.isNull() || !m_canEdit) {
            qCInfo(lcTessary, "*** saveImageToPath - no image");
            return;
        }
        const QString source = m_session.editingPath();
        const int cleanIndex = m_undoStack->index();
        setWriting(true);
        runInBackground(this, [image, path, format, quality, source] {
            QString error;
            const bool ok = EditedImageWriter::write(image, path, format, quality, source, &error);
            return std::make_pair(ok, error);
        }, [this, path, cleanIndex](const std::pair<bool, QString> &result) {
            setWriting(false);
            if (result.first && m_undoStack->index() == cleanIndex)
                m_undoStack->setClean();
            if (!result.first) {
                qCInfo(lcTessary, "%s", qUtf8Printable(result.second));
                m_alerts.beep();
                AlertPresenter::Alert alert;
                alert.messageText = QStringLiteral("The photo could not be saved.");
                alert.informativeText = result.second;
                m_alerts.presentAlert(alert, {});
            }
            emit saved(path, result.first);
        });
    });
}

void ImageEditorWindow::writeEditedImage(std::function<void(const QString &path)> then)
{
    whenEditsDone([this, then] {
        const QImage image = m_canEdit ? m_document->image() : QImage();
        setWriting(true);
        runInBackground(this, [image] { return ImageEditorSession::writeEditedImage(image); },
                        [this, then](const QString &path) {
                            setWriting(false);
                            then(path);
                        });
    });
}

void ImageEditorWindow::insertEditorImage()
{
    writeEditedImage([this](const QString &path) {
        m_session.insertEditedFile(path);
        if (!path.isEmpty())
            m_undoStack->setClean();
        emit inserted(path);
    });
}

void ImageEditorWindow::replaceEditorImage()
{
    writeEditedImage([this](const QString &path) {
        const bool ok = m_session.replaceWithEditedFile(path);
        if (ok) {
            setWindowFilePath(m_session.editingPath());
            m_undoStack->setClean();
            updateTitle();
        }
        emit replaced(ok);
    });
}

void ImageEditorWindow::closeNoSave()
{
    hide();
    if (m_editPanel)
        m_editPanel->hide();
}

void ImageEditorWindow::windowDidResize()
{
    // Instantly, with no animation: the picture stays fitted while the window is resized.
    m_view->zoomImageToFit();
}

bool ImageEditorWindow::hasUnsavedEdits() const
{
    return m_canEdit && (!m_undoStack->isClean() || m_view->hasPendingEdit());
}

void ImageEditorWindow::closeEvent(QCloseEvent *event)
{
    if (!hasUnsavedEdits()) {
        closeNoSave();
        event->accept();
        return;
    }
    event->ignore();
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Close the editor with unsaved changes?");
    alert.informativeText = QStringLiteral(
        "The edited photo has not been saved, added or put in place of the original. It stays in the "
        "editor until another photo is opened.");
    alert.defaultButton = QStringLiteral("Cancel");
    alert.alternateButton = QStringLiteral("Close");
    m_alerts.presentAlert(alert, [this](int response) {
        if (response == AlertPresenter::AlternateButton)
            closeNoSave();
    });
    escapeCancels();
}

void ImageEditorWindow::escapeCancels()
{
    // Both questions here lose an edit on their alternate answer: Escape keeps it instead.
    const QList<QMessageBox *> boxes = findChildren<QMessageBox *>(Qt::FindDirectChildrenOnly);
    if (!boxes.isEmpty() && boxes.constLast()->defaultButton())
        boxes.constLast()->setEscapeButton(boxes.constLast()->defaultButton());
}

void ImageEditorWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    windowDidResize();
}

void ImageEditorWindow::setEditingEnabled(bool enabled)
{
    m_toolBar->setEditingEnabled(enabled);
    for (QWidget *w : std::as_const(m_outputButtons))
        w->setEnabled(enabled);
}

void ImageEditorWindow::setWriting(bool writing)
{
    m_writing += writing ? 1 : -1;
    updateStatus();
}

void ImageEditorWindow::updateTitle()
{
    const QString path = windowFilePath();
    setWindowTitle(path.isEmpty() ? tr("Image Editor")
                                  : QStringLiteral("%1[*] — %2").arg(QFileInfo(path).fileName(), tr("Image Editor")));
    setWindowModified(m_canEdit && !m_undoStack->isClean());
}

void ImageEditorWindow::updateStatus()
{
    m_zoomLabel->setText(QStringLiteral("%1%").arg(std::lround(m_view->zoomFactor() * 100)));
    const QSize size = m_document->targetSize();
    QString sizeText;
    if (!size.isEmpty() && m_canEdit) {
        sizeText = QStringLiteral("%1 × %2").arg(size.width()).arg(size.height());
        // While cropping, what the crop will keep.
        const QRect kept = m_view->cropTool().cropPixels();
        QSize result = size;
        if (m_view->toolMode() == ImageEditorView::Crop && !kept.isEmpty())
            result = kept.size();
        // While straightening, what the turn will keep.
        if (m_view->toolMode() == ImageEditorView::Rotate)
            result = StraightenGeometry::straightenedSize(size, m_view->straightenTool().angle());
        if (result != size)
            sizeText += QStringLiteral("  →  %1 × %2").arg(result.width()).arg(result.height());
    }
    m_sizeLabel->setText(sizeText);
    m_progress->setVisible(m_loading || m_writing > 0 || m_document->isBusy());
    updateTitle();
}
