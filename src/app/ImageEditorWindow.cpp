#include "app/ImageEditorWindow.h"

#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "images/EditDocument.h"
#include "images/EditedImageWriter.h"
#include "images/EditorZoom.h"
#include "images/ImageBrowserController.h"
#include "images/ImageFileReader.h"
#include "images/JpegQuality.h"
#include "images/StraightenGeometry.h"
#include "images/UIImage.h"
#include "widgets/AdjustmentsPanel.h"
#include "widgets/AnnotateTool.h"
#include "widgets/CropTool.h"
#include "widgets/EditCommand.h"
#include "widgets/ImageEditorView.h"
#include "widgets/StraightenTool.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTimer>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>
#include <QtConcurrent>

namespace {

// Runs `work` on a worker thread and hands its result to `done` on the main thread, unless
// `context` is gone by then.
template <typename Work, typename Done>
void runInBackground(QObject *context, Work work, Done done)
{
    using Result = decltype(work());
    auto *watcher = new QFutureWatcher<Result>(context);
    QObject::connect(watcher, &QFutureWatcher<Result>::finished, context, [watcher, done] {
        watcher->deleteLater();
        done(watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(work));
}

struct LoadedPhoto {
    QImage image;
    ImageEditorWindow::ImageProperties properties;
    bool ok = false;
};

LoadedPhoto loadPhoto(const QString &path)
{
    LoadedPhoto photo;
    QByteArray bytes;
    QString error;
    if (!ImageFileReader::readFile(path, &bytes, &error))
        return photo;
    const ImageFileReader::Header header = ImageFileReader::readHeader(bytes, path);
    if (!header.ok())
        return photo;
    const UIImage::LoadResult loaded = UIImage::loadData(bytes, path);
    if (!loaded.ok())
        return photo;
    photo.image = loaded.image.bestRepresentation();
    photo.properties.format = header.format;
    photo.properties.size = photo.image.size();
    if (header.format == "jpeg")
        photo.properties.quality = JpegQuality::estimateOrDefault(bytes);
    photo.ok = !photo.image.isNull();
    return photo;
}

QIcon swatch(const QColor &colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 120), 1));
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(1.5, 1.5, 13, 13), 3, 3);
    return QIcon(pixmap);
}

QString formatTitle(const QByteArray &format)
{
    if (format == "jpeg")
        return QStringLiteral("JPEG");
    if (format == "png")
        return QStringLiteral("PNG");
    if (format == "tiff")
        return QStringLiteral("TIFF");
    if (format == "webp")
        return QStringLiteral("WebP");
    if (format == "bmp")
        return QStringLiteral("BMP");
    return QString::fromLatin1(format).toUpper();
}

QString nameFilter(const QByteArray &format)
{
    QString patterns = QStringLiteral("*.") + EditedImageWriter::suffixForFormat(format);
    if (format == "jpeg")
        patterns = QStringLiteral("*.jpg *.jpeg");
    else if (format == "tiff")
        patterns = QStringLiteral("*.tif *.tiff");
    return QStringLiteral("%1 (%2)").arg(formatTitle(format), patterns);
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
    layout->addWidget(buildToolBar());
    layout->addWidget(m_view, 1);
    layout->addWidget(buildBottomBar());
    setCentralWidget(central);
    buildActions();

    connect(m_view, &ImageEditorView::operationReady, this, &ImageEditorWindow::pushOperation);
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

QWidget *ImageEditorWindow::buildToolBar()
{
    auto *bar = new QWidget;
    bar->setObjectName(QStringLiteral("editorToolBar"));
    bar->setAutoFillBackground(true);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(10, 8, 10, 8);
    row->setSpacing(6);

    // The tool modes as one segmented control: checkable buttons side by side, one checked.
    auto *segments = new QWidget;
    auto *segmentRow = new QHBoxLayout(segments);
    segmentRow->setContentsMargins(0, 0, 0, 0);
    segmentRow->setSpacing(0);
    m_toolGroup = new QButtonGroup(this);
    m_toolGroup->setExclusive(true);
    const struct {
        const char *title;
        const char *key;
        const char *tip;
    } tools[] = {
        {"Move", "V", "Drag to move around the photo"},
        {"Select", "M", "Drag to select an area; Enter crops to it"},
        {"Crop", "C", "Drag the handles, then press Enter to crop"},
        {"Rotate", "R", "Turn, flip, or drag around the centre to straighten"},
        {"Annotate", "A", "Draw arrows, shapes, lines and text on the photo"},
    };
    for (int i = 0; i < ImageEditorView::kToolModeCount; ++i) {
        auto *button = new QToolButton;
        button->setObjectName(QStringLiteral("tool%1").arg(QLatin1String(tools[i].title)));
        button->setText(tr(tools[i].title));
        button->setCheckable(true);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        button->setMinimumWidth(72);
        button->setToolTip(QStringLiteral("%1 (%2)").arg(tr(tools[i].tip), QLatin1String(tools[i].key)));
        m_toolGroup->addButton(button, i);
        segmentRow->addWidget(button);
    }
    m_toolGroup->button(0)->setChecked(true);
    connect(m_toolGroup, &QButtonGroup::idClicked, this, &ImageEditorWindow::switchToolMode);
    row->addWidget(segments);
    row->addSpacing(12);
    row->addWidget(buildToolOptions(), 1);

    auto *undo = new QToolButton;
    undo->setDefaultAction(m_undoStack->createUndoAction(this, tr("Undo")));
    undo->defaultAction()->setObjectName(QStringLiteral("editorUndo"));
    undo->defaultAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    undo->defaultAction()->setShortcutContext(Qt::WindowShortcut);
    addAction(undo->defaultAction());
    auto *redo = new QToolButton;
    redo->setDefaultAction(m_undoStack->createRedoAction(this, tr("Redo")));
    redo->defaultAction()->setObjectName(QStringLiteral("editorRedo"));
    redo->defaultAction()->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    redo->defaultAction()->setShortcutContext(Qt::WindowShortcut);
    addAction(redo->defaultAction());
    for (QToolButton *b : {undo, redo}) {
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
        b->setMaximumWidth(160);
        b->setToolTip(b->defaultAction()->shortcut().toString(QKeySequence::NativeText));
    }
    row->addWidget(undo);
    row->addWidget(redo);
    row->addSpacing(8);
    auto *adjust = new QPushButton(tr("Adjust…"));
    adjust->setObjectName(QStringLiteral("adjustButton"));
    adjust->setToolTip(tr("Exposure, contrast, colour and sharpness (Ctrl+J)"));
    connect(adjust, &QPushButton::clicked, this, &ImageEditorWindow::openEditPanel);
    row->addWidget(adjust);
    m_editControls = {segments, adjust};
    return bar;
}

QWidget *ImageEditorWindow::buildToolOptions()
{
    m_toolOptions = new QStackedWidget;
    const auto page = [this](QHBoxLayout **rowOut) {
        auto *w = new QWidget;
        auto *row = new QHBoxLayout(w);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(6);
        m_toolOptions->addWidget(w);
        *rowOut = row;
        return w;
    };
    const auto hint = [](const QString &text) {
        auto *label = new QLabel(text);
        label->setStyleSheet(QStringLiteral("color: #5f6368;"));
        return label;
    };
    QHBoxLayout *row;

    // Move.
    page(&row);
    row->addWidget(hint(tr("Drag to move around the photo; Ctrl+wheel zooms.")));
    row->addStretch();

    // Select.
    page(&row);
    row->addWidget(hint(tr("Drag to select an area.")));
    auto *cropToSelection = new QPushButton(tr("Crop to Selection"));
    connect(cropToSelection, &QPushButton::clicked, m_view, &ImageEditorView::applyTool);
    row->addWidget(cropToSelection);
    row->addStretch();

    // Crop.
    page(&row);
    row->addWidget(new QLabel(tr("Aspect:")));
    m_aspect = new QComboBox;
    m_aspect->setObjectName(QStringLiteral("aspectPopUp"));
    for (int i = 0; i < CropGeometry::kAspectCount; ++i)
        m_aspect->addItem(CropGeometry::aspectTitle(CropGeometry::Aspect(i)));
    connect(m_aspect, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_view->cropTool().setAspect(CropGeometry::Aspect(index)); });
    row->addWidget(m_aspect);
    auto *applyCrop = new QPushButton(tr("Crop"));
    applyCrop->setToolTip(tr("Crop to the frame (Enter)"));
    connect(applyCrop, &QPushButton::clicked, m_view, &ImageEditorView::applyTool);
    auto *resetCrop = new QPushButton(tr("Reset"));
    resetCrop->setToolTip(tr("The frame back around the whole photo (Esc)"));
    connect(resetCrop, &QPushButton::clicked, m_view, &ImageEditorView::cancelTool);
    row->addWidget(applyCrop);
    row->addWidget(resetCrop);
    row->addStretch();

    // Rotate.
    page(&row);
    const auto turnButton = [this, row](const QString &text, const QString &tip, EditOperation::Kind kind) {
        auto *b = new QToolButton;
        b->setText(text);
        b->setToolTip(tip);
        connect(b, &QToolButton::clicked, this, [this, kind] { pushOperation(EditOperation::turn(kind)); });
        row->addWidget(b);
    };
    turnButton(tr("⟲ Left"), tr("Rotate 90° counter-clockwise"), EditOperation::TurnLeft);
    turnButton(tr("⟳ Right"), tr("Rotate 90° clockwise"), EditOperation::TurnRight);
    turnButton(tr("⇋ Flip"), tr("Flip horizontally"), EditOperation::FlipHorizontal);
    turnButton(tr("⇵ Flip"), tr("Flip vertically"), EditOperation::FlipVertical);
    row->addSpacing(10);
    row->addWidget(new QLabel(tr("Straighten:")));
    m_angle = new QDoubleSpinBox;
    m_angle->setObjectName(QStringLiteral("angleField"));
    m_angle->setRange(-StraightenTool::kMaximumDegrees, StraightenTool::kMaximumDegrees);
    m_angle->setDecimals(1);
    m_angle->setSingleStep(0.1);
    m_angle->setSuffix(QStringLiteral("°"));
    m_angle->setToolTip(tr("Type an angle, or drag around the photo's centre"));
    connect(m_angle, &QDoubleSpinBox::valueChanged, this, [this](double v) { m_view->straightenTool().setAngle(v); });
    connect(&m_view->straightenTool(), &StraightenTool::angleChanged, this, [this](double v) {
        const QSignalBlocker block(m_angle);
        m_angle->setValue(v);
    });
    row->addWidget(m_angle);
    auto *applyAngle = new QPushButton(tr("Straighten"));
    applyAngle->setToolTip(tr("Turn by the angle and cut the corners away (Enter)"));
    connect(applyAngle, &QPushButton::clicked, m_view, &ImageEditorView::applyTool);
    row->addWidget(applyAngle);
    row->addStretch();

    // Annotate.
    page(&row);
    m_annotationKind = new QComboBox;
    m_annotationKind->setObjectName(QStringLiteral("annotationKindPopUp"));
    m_annotationKind->addItems({tr("Text"), tr("Arrow"), tr("Rectangle"), tr("Ellipse"), tr("Freehand")});
    m_annotationKind->setCurrentIndex(Annotation::Arrow);
    connect(m_annotationKind, &QComboBox::currentIndexChanged, this, [this](int index) {
        m_view->annotateTool().setKind(Annotation::Kind(index));
        m_annotationText->setEnabled(index == Annotation::Text);
    });
    row->addWidget(m_annotationKind);
    m_colourButton = new QToolButton;
    m_colourButton->setToolTip(tr("Colour"));
    m_colourButton->setIcon(swatch(m_view->annotateTool().colour()));
    connect(m_colourButton, &QToolButton::clicked, this, [this] {
        auto *dialog = new QColorDialog(m_view->annotateTool().colour(), this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setOption(QColorDialog::DontUseNativeDialog);
        dialog->setWindowModality(Qt::WindowModal);
        connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor &c) {
            m_view->annotateTool().setColour(c);
            m_colourButton->setIcon(swatch(c));
        });
        dialog->open();
    });
    row->addWidget(m_colourButton);
    row->addWidget(new QLabel(tr("Width:")));
    m_lineWidth = new QSpinBox;
    m_lineWidth->setRange(1, 40);
    m_lineWidth->setValue(int(m_view->annotateTool().lineWidth()));
    m_lineWidth->setToolTip(tr("Line width in photo pixels; text grows with it"));
    connect(m_lineWidth, &QSpinBox::valueChanged, this, [this](int w) { m_view->annotateTool().setLineWidth(w); });
    row->addWidget(m_lineWidth);
    m_annotationText = new QLineEdit(m_view->annotateTool().text());
    m_annotationText->setObjectName(QStringLiteral("annotationTextField"));
    m_annotationText->setPlaceholderText(tr("Text to place"));
    m_annotationText->setMinimumWidth(180);
    m_annotationText->setEnabled(false);
    connect(m_annotationText, &QLineEdit::textChanged, this, [this](const QString &t) { m_view->annotateTool().setText(t); });
    row->addWidget(m_annotationText, 1);
    auto *applyMarks = new QPushButton(tr("Apply"));
    applyMarks->setToolTip(tr("Draw the marks into the photo (Enter); until then they can be moved"));
    connect(applyMarks, &QPushButton::clicked, m_view, &ImageEditorView::applyTool);
    auto *discardMarks = new QPushButton(tr("Discard"));
    discardMarks->setToolTip(tr("Remove the marks not yet applied (Esc)"));
    connect(discardMarks, &QPushButton::clicked, m_view, &ImageEditorView::cancelTool);
    row->addWidget(applyMarks);
    row->addWidget(discardMarks);
    return m_toolOptions;
}

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
    m_editControls += {m_saveButton, m_insertButton, m_replaceButton};
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
    for (QWidget *w : std::as_const(m_editControls))
        w->setEnabled(false);
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
    runInBackground(this, [path] { return loadPhoto(path); }, [this, path, generation](const LoadedPhoto &photo) {
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
        for (QWidget *w : std::as_const(m_editControls))
            w->setEnabled(true);
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
    for (QWidget *w : std::as_const(m_editControls))
        w->setEnabled(false);
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
    if (QAbstractButton *b = m_toolGroup->button(index))
        b->setChecked(true);
    m_toolOptions->setCurrentIndex(index);
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
    // A screen-sized copy, made on a worker: the preview is computed on it.
    const QImage image = m_document->image();
    const QSize screenSize = screen() ? screen()->availableGeometry().size() : QSize(1600, 1000);
    runInBackground(m_editPanel, [image, screenSize] {
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
    auto *panel = new QFileDialog(this, tr("Save Edited Photo"));
    m_savePanel = panel;
    panel->setObjectName(QStringLiteral("savePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setWindowModality(Qt::WindowModal);

    // The format and its options start as the source file's.
    const QList<QByteArray> formats = EditedImageWriter::saveFormats();
    QStringList filters;
    for (const QByteArray &f : formats)
        filters.append(nameFilter(f));
    panel->setNameFilters(filters);
    const QByteArray sourceFormat = formats.contains(m_properties.format) ? m_properties.format : QByteArray("png");
    panel->selectNameFilter(nameFilter(sourceFormat));
    const QFileInfo represented(windowFilePath());
    panel->setDirectory(represented.absolutePath());
    QString proposed = represented.fileName();
    if (!formats.contains(m_properties.format))
        proposed = represented.completeBaseName() + QStringLiteral(".png");
    panel->selectFile(proposed);

    // The options: the quality of the formats that have one.
    auto *qualityLabel = new QLabel(tr("Quality:"));
    auto *quality = new QSlider(Qt::Horizontal);
    quality->setObjectName(QStringLiteral("qualitySlider"));
    quality->setRange(1, 100);
    quality->setValue(m_properties.quality > 0 ? m_properties.quality : JpegQuality::kDefaultQuality);
    auto *qualityValue = new QLabel(QString::number(quality->value()));
    qualityValue->setMinimumWidth(28);
    connect(quality, &QSlider::valueChanged, qualityValue, [qualityValue](int v) { qualityValue->setNum(v); });
    auto *options = new QWidget;
    auto *optionsRow = new QHBoxLayout(options);
    optionsRow->setContentsMargins(0, 0, 0, 0);
    optionsRow->addWidget(quality, 1);
    optionsRow->addWidget(qualityValue);
    if (auto *grid = qobject_cast<QGridLayout *>(panel->layout())) {
        const int r = grid->rowCount();
        grid->addWidget(qualityLabel, r, 0);
        grid->addWidget(options, r, 1, 1, grid->columnCount() - 1);
    }
    const auto formatOfFilter = [formats, filters](const QString &filter) {
        const qsizetype i = filters.indexOf(filter);
        return i >= 0 ? formats.at(i) : QByteArray("png");
    };
    const auto showOptions = [qualityLabel, options, formatOfFilter](const QString &filter) {
        const bool has = EditedImageWriter::hasQuality(formatOfFilter(filter));
        qualityLabel->setVisible(has);
        options->setVisible(has);
    };
    showOptions(panel->selectedNameFilter());
    connect(panel, &QFileDialog::filterSelected, panel, [panel, showOptions, formatOfFilter](const QString &filter) {
        showOptions(filter);
        // The name follows the format chosen.
        if (auto *name = panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))) {
            const QFileInfo typed(name->text());
            if (!typed.completeBaseName().isEmpty())
                name->setText(typed.completeBaseName() + QLatin1Char('.') + EditedImageWriter::suffixForFormat(formatOfFilter(filter)));
        }
    });
    connect(panel, &QFileDialog::finished, this, [this, panel, quality, formatOfFilter](int result) {
        m_savePanel = nullptr;
        if (result != QDialog::Accepted || panel->selectedFiles().isEmpty())
            return;
        QString path = panel->selectedFiles().constFirst();
        QByteArray format = EditedImageWriter::formatForSuffix(QFileInfo(path).suffix());
        if (format.isEmpty()) {
            format = formatOfFilter(panel->selectedNameFilter());
            path += QLatin1Char('.') + EditedImageWriter::suffixForFormat(format);
        }
        savePanelDidEnd(path, format, EditedImageWriter::hasQuality(format) ? quality->value() : -1);
    });
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
}

void ImageEditorWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    windowDidResize();
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
