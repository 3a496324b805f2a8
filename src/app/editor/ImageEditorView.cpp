#include "app/editor/ImageEditorView.h"

#include "editor/CropGeometry.h"
#include "editor/EditorZoom.h"
#include "app/editor/AnnotateTool.h"
#include "app/editor/CropTool.h"
#include "app/editor/StraightenTool.h"

#include <QGestureEvent>
#include <QGraphicsPixmapItem>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>

namespace {
// Room left around a fitted picture, in screen pixels.
constexpr int kFitMargin = 12;
} // namespace

ImageEditorView::ImageEditorView(QWidget *parent)
    : QGraphicsView(parent)
{
    setObjectName(QStringLiteral("editorImageView"));
    auto *scene = new QGraphicsScene(this);
    setScene(scene);
    setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    setFrameShape(QFrame::NoFrame);
    setTransformationAnchor(QGraphicsView::AnchorViewCenter);
    setResizeAnchor(QGraphicsView::AnchorViewCenter);
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    setMinimumSize(320, 240);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->grabGesture(Qt::PinchGesture);

    m_pixmap = scene->addPixmap(QPixmap());
    m_pixmap->setTransformationMode(Qt::SmoothTransformation);
    m_selectionItem = scene->addRect(QRectF(), QPen(QColor(48, 140, 255), 0, Qt::DashLine), QColor(48, 140, 255, 40));
    m_selectionItem->setZValue(5);
    m_selectionItem->hide();

    m_crop = new CropTool;
    m_straighten = new StraightenTool;
    m_annotate = new AnnotateTool;
    for (QGraphicsItem *tool : {static_cast<QGraphicsItem *>(m_crop), static_cast<QGraphicsItem *>(m_straighten),
                                static_cast<QGraphicsItem *>(m_annotate)})
        scene->addItem(tool);
    for (auto *tool : {static_cast<QGraphicsObject *>(m_crop), static_cast<QGraphicsObject *>(m_straighten),
                       static_cast<QGraphicsObject *>(m_annotate)})
        connect(tool, SIGNAL(operationReady(EditOperation)), this, SIGNAL(operationReady(EditOperation)));
    connect(m_straighten, &StraightenTool::angleChanged, this, [this](double degrees) { m_pixmap->setRotation(degrees); });
    connect(this, &QGraphicsView::rubberBandChanged, this, &ImageEditorView::rubberBandChanged);
    showTools();
}

ImageEditorView::~ImageEditorView() = default;

void ImageEditorView::setImage(const QImage &image)
{
    const bool resized = image.size() != m_image.size();
    m_image = image;
    m_previewing = false;
    m_pixmap->setPixmap(QPixmap::fromImage(image));
    m_pixmap->setTransform(QTransform());
    m_pixmap->setRotation(0);
    m_pixmap->setTransformOriginPoint(image.width() / 2.0, image.height() / 2.0);
    scene()->setSceneRect(QRectF(QPointF(0, 0), QSizeF(image.size())));
    m_crop->setPictureSize(image.size());
    m_straighten->setPictureSize(image.size());
    m_annotate->setPictureSize(image.size());
    if (resized)
        clearSelection();
}

void ImageEditorView::showPreview(const QImage &preview)
{
    if (preview.isNull() || m_image.isNull())
        return;
    m_previewing = true;
    m_pixmap->setPixmap(QPixmap::fromImage(preview));
    m_pixmap->setTransform(QTransform::fromScale(double(m_image.width()) / preview.width(),
                                                 double(m_image.height()) / preview.height()));
}

void ImageEditorView::endPreview()
{
    if (!m_previewing)
        return;
    m_previewing = false;
    m_pixmap->setPixmap(QPixmap::fromImage(m_image));
    m_pixmap->setTransform(QTransform());
}

void ImageEditorView::setToolMode(ToolMode mode)
{
    if (mode == m_mode)
        return;
    applyTool();
    m_mode = mode;
    showTools();
    emit toolModeChanged(mode);
}

void ImageEditorView::showTools()
{
    m_crop->setVisible(m_mode == Crop);
    m_straighten->setVisible(m_mode == Rotate);
    m_annotate->setVisible(m_mode == Annotate);
    m_selectionItem->setVisible(m_mode == Select && !m_selection.isEmpty());
    setDragMode(m_mode == Move ? QGraphicsView::ScrollHandDrag
                : m_mode == Select ? QGraphicsView::RubberBandDrag
                                   : QGraphicsView::NoDrag);
    setRubberBandSelectionMode(Qt::IntersectsItemShape);
    if (m_mode == Crop)
        m_crop->setPictureSize(m_image.size());
}

void ImageEditorView::applyTool()
{
    switch (m_mode) {
    case Crop:
        m_crop->apply();
        break;
    case Rotate:
        m_straighten->apply();
        break;
    case Annotate:
        m_annotate->apply();
        break;
    case Select:
        if (!m_selection.isEmpty()) {
            const QRect pixels = CropGeometry::toPixels(m_selection, m_image.size());
            clearSelection();
            if (!pixels.isEmpty() && pixels != m_image.rect())
                emit operationReady(EditOperation::cropTo(pixels));
        }
        break;
    case Move:
        break;
    }
}

void ImageEditorView::cancelTool()
{
    switch (m_mode) {
    case Crop:
        m_crop->setPictureSize(m_image.size());
        break;
    case Rotate:
        m_straighten->setAngle(0);
        break;
    case Annotate:
        m_annotate->discard();
        break;
    case Select:
        clearSelection();
        break;
    case Move:
        break;
    }
}

bool ImageEditorView::hasPendingEdit() const
{
    switch (m_mode) {
    case Crop: {
        const QRect pixels = m_crop->cropPixels();
        return !pixels.isEmpty() && pixels != m_image.rect();
    }
    case Rotate: return std::abs(m_straighten->angle()) >= 0.05;
    case Annotate: return !m_annotate->pending().isEmpty();
    default: return false;
    }
}

void ImageEditorView::setZoomFactor(double factor)
{
    m_fitting = false;
    applyZoom(factor);
}

void ImageEditorView::applyZoom(double factor)
{
    factor = EditorZoom::clamp(factor);
    m_zoom = factor;
    setTransform(QTransform::fromScale(factor, factor));
    emit zoomChanged(factor);
}

QSizeF ImageEditorView::fitArea() const
{
    const QSize area = viewport()->size() - QSize(2 * kFitMargin, 2 * kFitMargin);
    return QSizeF(std::max(1, area.width()), std::max(1, area.height()));
}

void ImageEditorView::zoomImageToFit()
{
    m_fitting = true;
    applyZoom(EditorZoom::fitFactor(QSizeF(m_image.size()), fitArea()));
    centerOn(m_pixmap);
}

void ImageEditorView::zoomImageToActualSize()
{
    setZoomFactor(1.0);
}

void ImageEditorView::clearSelection()
{
    m_selection = QRectF();
    m_selectionItem->setRect(QRectF());
    m_selectionItem->hide();
    emit selectionChanged(m_selection);
}

void ImageEditorView::rubberBandChanged(const QRect &viewRect, const QPointF &, const QPointF &)
{
    if (viewRect.isNull())
        return; // the drag ended: the last area stays selected
    // The band as it is drawn now (the scene points given lag one move behind).
    m_selection = mapToScene(viewRect).boundingRect().intersected(sceneRect());
    m_selectionItem->setRect(m_selection);
    m_selectionItem->setVisible(!m_selection.isEmpty());
    emit selectionChanged(m_selection);
}

void ImageEditorView::zoomAround(double factor, const QPoint &viewportPoint)
{
    const QPointF before = mapToScene(viewportPoint);
    setZoomFactor(factor);
    // Keep the picture point under the mouse where it was.
    const QPointF after = mapToScene(viewportPoint);
    const QPointF shift = (after - before) * m_zoom;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - int(std::lround(shift.x())));
    verticalScrollBar()->setValue(verticalScrollBar()->value() - int(std::lround(shift.y())));
}

void ImageEditorView::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QGraphicsView::wheelEvent(event);
        return;
    }
    // One notch (120) is one half-step of the zoom table.
    const double notches = event->angleDelta().y() / 120.0;
    if (notches != 0)
        zoomAround(EditorZoom::scaled(m_zoom, std::pow(EditorZoom::kZoomInFactor, notches)), event->position().toPoint());
    event->accept();
}

bool ImageEditorView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            zoomAround(EditorZoom::scaled(m_zoom, 1.0 + gesture->value()), gesture->position().toPoint());
            return true;
        }
    }
    if (event->type() == QEvent::Gesture) {
        auto *gestures = static_cast<QGestureEvent *>(event);
        if (auto *pinch = static_cast<QPinchGesture *>(gestures->gesture(Qt::PinchGesture))) {
            if (pinch->changeFlags() & QPinchGesture::ScaleFactorChanged)
                zoomAround(EditorZoom::scaled(m_zoom, pinch->scaleFactor()),
                           viewport()->mapFromGlobal(pinch->centerPoint().toPoint()));
            gestures->accept(pinch);
            return true;
        }
    }
    return QGraphicsView::viewportEvent(event);
}

void ImageEditorView::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        applyTool();
        event->accept();
        return;
    case Qt::Key_Escape:
        cancelTool();
        event->accept();
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (m_mode == Annotate) {
            m_annotate->removeSelected();
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QGraphicsView::keyPressEvent(event);
}

void ImageEditorView::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    // Scroll bars coming and going change the viewport too: a fitted picture stays fitted.
    if (m_fitting)
        zoomImageToFit();
}

void ImageEditorView::drawBackground(QPainter *painter, const QRectF &rect)
{
    painter->fillRect(rect, QColor(0x3a, 0x3c, 0x40));
}
