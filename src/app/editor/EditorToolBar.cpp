#include "app/editor/EditorToolBar.h"

#include "editor/CropGeometry.h"
#include "app/editor/AnnotateTool.h"
#include "app/editor/CropTool.h"
#include "app/editor/ImageEditorView.h"
#include "app/editor/StraightenTool.h"

#include <QAction>
#include <QButtonGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>

namespace {

// A small rounded square of the colour, for the colour button.
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

} // namespace

EditorToolBar::EditorToolBar(ImageEditorView &view, QUndoStack &undoStack, QWidget *parent)
    : QWidget(parent)
    , m_view(&view)
{
    setObjectName(QStringLiteral("editorToolBar"));
    // Two rows, so every control has its whole width at the window's smallest size: the tool
    // modes, Undo, Redo and Adjust above; the chosen tool's options below.
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(10, 8, 10, 8);
    rows->setSpacing(6);
    auto *row = new QHBoxLayout;
    row->setSpacing(6);
    rows->addLayout(row);

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
        button->setMinimumWidth(64);
        button->setToolTip(QStringLiteral("%1 (%2)").arg(tr(tools[i].tip), QLatin1String(tools[i].key)));
        m_toolGroup->addButton(button, i);
        segmentRow->addWidget(button);
    }
    m_toolGroup->button(0)->setChecked(true);
    connect(m_toolGroup, &QButtonGroup::idClicked, this, &EditorToolBar::toolChosen);
    row->addWidget(segments);
    row->addStretch(1);

    // Undo and Redo keep their words, so they never change width and nothing beside them
    // moves; what they would undo or redo is in their tool tips.
    auto *undo = new QToolButton;
    auto *undoAction = new QAction(tr("Undo"), this);
    undoAction->setObjectName(QStringLiteral("editorUndo"));
    undoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    undoAction->setEnabled(undoStack.canUndo());
    connect(undoAction, &QAction::triggered, &undoStack, &QUndoStack::undo);
    connect(&undoStack, &QUndoStack::canUndoChanged, undoAction, &QAction::setEnabled);
    undo->setDefaultAction(undoAction);
    auto *redo = new QToolButton;
    auto *redoAction = new QAction(tr("Redo"), this);
    redoAction->setObjectName(QStringLiteral("editorRedo"));
    redoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    redoAction->setEnabled(undoStack.canRedo());
    connect(redoAction, &QAction::triggered, &undoStack, &QUndoStack::redo);
    connect(&undoStack, &QUndoStack::canRedoChanged, redoAction, &QAction::setEnabled);
    redo->setDefaultAction(redoAction);
    const auto tip = [](QAction *action, const QString &verb, const QString &what) {
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        action->setToolTip(what.isEmpty() ? QStringLiteral("%1 (%2)").arg(verb, keys)
                                          : QStringLiteral("%1 %2 (%3)").arg(verb, what, keys));
    };
    tip(undoAction, tr("Undo"), undoStack.undoText());
    tip(redoAction, tr("Redo"), undoStack.redoText());
    connect(&undoStack, &QUndoStack::undoTextChanged, undoAction,
            [undoAction, tip](const QString &what) { tip(undoAction, tr("Undo"), what); });
    connect(&undoStack, &QUndoStack::redoTextChanged, redoAction,
            [redoAction, tip](const QString &what) { tip(redoAction, tr("Redo"), what); });
    for (QAction *a : {undoAction, redoAction}) {
        a->setShortcutContext(Qt::WindowShortcut);
        addAction(a);
    }
    for (QToolButton *b : {undo, redo})
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
    row->addWidget(undo);
    row->addWidget(redo);
    row->addSpacing(8);
    auto *adjust = new QPushButton(tr("Adjust…"));
    adjust->setObjectName(QStringLiteral("adjustButton"));
    adjust->setToolTip(tr("Exposure, contrast, colour and sharpness (Ctrl+J)"));
    connect(adjust, &QPushButton::clicked, this, &EditorToolBar::adjustRequested);
    row->addWidget(adjust);
    rows->addWidget(buildToolOptions());
    m_editControls = {segments, adjust, m_toolOptions};
}

QWidget *EditorToolBar::buildToolOptions()
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
        connect(b, &QToolButton::clicked, this, [this, kind] { emit operationRequested(EditOperation::turn(kind)); });
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
    m_lineWidth = new QSpinBox;
    m_lineWidth->setRange(1, 40);
    m_lineWidth->setSuffix(tr(" px"));
    m_lineWidth->setValue(int(m_view->annotateTool().lineWidth()));
    m_lineWidth->setToolTip(tr("Line width in photo pixels; text grows with it"));
    connect(m_lineWidth, &QSpinBox::valueChanged, this, [this](int w) { m_view->annotateTool().setLineWidth(w); });
    row->addWidget(m_lineWidth);
    m_annotationText = new QLineEdit(m_view->annotateTool().text());
    m_annotationText->setObjectName(QStringLiteral("annotationTextField"));
    m_annotationText->setPlaceholderText(tr("Text to place"));
    m_annotationText->setMinimumWidth(140);
    m_annotationText->setEnabled(false);
    connect(m_annotationText, &QLineEdit::textChanged, this, [this](const QString &t) { m_view->annotateTool().setText(t); });
    row->addWidget(m_annotationText, 1);
    auto *applyMarks = new QToolButton;
    applyMarks->setText(tr("Apply"));
    applyMarks->setToolTip(tr("Draw the marks into the photo (Enter); until then they can be moved"));
    connect(applyMarks, &QToolButton::clicked, m_view, &ImageEditorView::applyTool);
    auto *discardMarks = new QToolButton;
    discardMarks->setText(tr("Discard"));
    discardMarks->setToolTip(tr("Remove the marks not yet applied (Esc)"));
    connect(discardMarks, &QToolButton::clicked, m_view, &ImageEditorView::cancelTool);
    row->addWidget(applyMarks);
    row->addWidget(discardMarks);
    return m_toolOptions;
}

void EditorToolBar::showTool(int index)
{
    if (QAbstractButton *b = m_toolGroup->button(index))
        b->setChecked(true);
    m_toolOptions->setCurrentIndex(index);
}

void EditorToolBar::setEditingEnabled(bool enabled)
{
    for (QWidget *w : std::as_const(m_editControls))
        w->setEnabled(enabled);
}
