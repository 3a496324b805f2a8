#include "app/editor/CropTool.h"

#include <QCursor>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr double kHandleScreenSize = 9;
constexpr double kGrabScreenDistance = 12;

Qt::CursorShape cursorFor(CropGeometry::Handle handle)
{
    switch (handle) {
    case CropGeometry::TopLeft:
    case CropGeometry::BottomRight: return Qt::SizeFDiagCursor;
    case CropGeometry::TopRight:
    case CropGeometry::BottomLeft: return Qt::SizeBDiagCursor;
    case CropGeometry::Top:
    case CropGeometry::Bottom: return Qt::SizeVerCursor;
    case CropGeometry::Left:
    case CropGeometry::Right: return Qt::SizeHorCursor;
    case CropGeometry::Inside: return Qt::SizeAllCursor;
    case CropGeometry::None: break;
    }
    return Qt::CrossCursor;
}
} // namespace

CropTool::CropTool(QGraphicsItem *parent)
    : QGraphicsObject(parent)
{
    setAcceptHoverEvents(true);
    setZValue(10);
}

void CropTool::setPictureSize(const QSize &size)
{
    prepareGeometryChange();
    m_picture = size;
    m_rect = CropGeometry::constrained(bounds(), CropGeometry::ratio(m_aspect, QSizeF(size)), bounds());
    update();
    emit cropRectChanged(m_rect);
}

void CropTool::setAspect(CropGeometry::Aspect aspect)
{
    m_aspect = aspect;
    // The new proportions, as large as they fit about the current rectangle's centre; from a
    // small rectangle start again from the whole picture.
    const double ratio = CropGeometry::ratio(aspect, QSizeF(m_picture));
    QRectF start = m_rect;
    if (ratio > 0) {
        QRectF wanted(QPointF(0, 0), QSizeF(m_picture));
        wanted.moveCenter(m_rect.center());
        start = wanted;
        // Keep the centre where the picture allows it.
        start = CropGeometry::dragged(start, CropGeometry::Inside, QPointF(), 0, bounds());
        start = start.intersected(bounds());
    }
    setCropRect(CropGeometry::constrained(start, ratio, bounds()));
}

void CropTool::setCropRect(const QRectF &rect)
{
    m_rect = rect.intersected(bounds());
    update();
    emit cropRectChanged(m_rect);
}

void CropTool::apply()
{
    const QRect pixels = cropPixels();
    if (pixels.isEmpty() || pixels == QRect(QPoint(0, 0), m_picture))
        return;
    emit operationReady(EditOperation::cropTo(pixels));
}

QRectF CropTool::boundingRect() const
{
    const double margin = kHandleScreenSize * pixelsPerScreenPixel();
    return bounds().adjusted(-margin, -margin, margin, margin);
}

double CropTool::pixelsPerScreenPixel() const
{
    if (!scene() || scene()->views().isEmpty())
        return 1.0;
    const double scale = scene()->views().first()->transform().m11();
    return scale > 0 ? 1.0 / scale : 1.0;
}

void CropTool::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (m_picture.isEmpty())
        return;
    const double px = pixelsPerScreenPixel();
    painter->save();
    // The picture outside the crop, dimmed.
    QPainterPath outside;
    outside.addRect(bounds());
    outside.addRect(m_rect);
    painter->fillPath(outside, QColor(0, 0, 0, 140));
    // The rule-of-thirds lines inside the crop.
    painter->setPen(QPen(QColor(255, 255, 255, 110), px));
    for (int i = 1; i < 3; ++i) {
        const double x = m_rect.left() + m_rect.width() * i / 3;
        const double y = m_rect.top() + m_rect.height() * i / 3;
        painter->drawLine(QPointF(x, m_rect.top()), QPointF(x, m_rect.bottom()));
        painter->drawLine(QPointF(m_rect.left(), y), QPointF(m_rect.right(), y));
    }
    // The frame and its handles.
    painter->setPen(QPen(Qt::white, 1.5 * px));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(m_rect);
    painter->setPen(QPen(QColor(40, 40, 40), px));
    painter->setBrush(Qt::white);
    const double h = kHandleScreenSize * px;
    for (CropGeometry::Handle handle : CropGeometry::handles()) {
        const QPointF c = CropGeometry::handlePoint(m_rect, handle);
        painter->drawRect(QRectF(c.x() - h / 2, c.y() - h / 2, h, h));
    }
    painter->restore();
}

void CropTool::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_dragging = CropGeometry::handleAt(m_rect, event->pos(), kGrabScreenDistance * pixelsPerScreenPixel());
    if (m_dragging == CropGeometry::None && bounds().contains(event->pos())) {
        // Outside the rectangle: draw a new one from here.
        m_rect = QRectF(event->pos(), QSizeF(0, 0));
        m_dragging = CropGeometry::Inside;
        m_drawing = true;
    }
    m_pressPoint = event->pos();
    m_pressRect = m_rect;
    event->accept();
}

void CropTool::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (m_dragging == CropGeometry::None)
        return;
    const double ratio = CropGeometry::ratio(m_aspect, QSizeF(m_picture));
    if (m_drawing) {
        // A new rectangle from the press point to the mouse, in the chosen proportions, its
        // corner at the press point.
        QRectF drawn = QRectF(m_pressPoint, event->pos()).normalized().intersected(bounds());
        if (ratio > 0 && !drawn.isEmpty()) {
            QSizeF size = drawn.size();
            size = drawn.width() / drawn.height() > ratio ? QSizeF(size.height() * ratio, size.height())
                                                           : QSizeF(size.width(), size.width() / ratio);
            drawn = QRectF(QPointF(event->pos().x() < m_pressPoint.x() ? m_pressPoint.x() - size.width() : m_pressPoint.x(),
                                   event->pos().y() < m_pressPoint.y() ? m_pressPoint.y() - size.height() : m_pressPoint.y()),
                           size);
        }
        setCropRect(drawn);
        return;
    }
    setCropRect(CropGeometry::dragged(m_pressRect, m_dragging, event->pos() - m_pressPoint, ratio, bounds()));
}

void CropTool::mouseReleaseEvent(QGraphicsSceneMouseEvent *)
{
    m_dragging = CropGeometry::None;
    m_drawing = false;
    if (m_rect.width() < 1 || m_rect.height() < 1)
        setCropRect(CropGeometry::constrained(bounds(), CropGeometry::ratio(m_aspect, QSizeF(m_picture)), bounds()));
}

void CropTool::hoverMoveEvent(QGraphicsSceneHoverEvent *event)
{
    setCursor(cursorFor(CropGeometry::handleAt(m_rect, event->pos(), kGrabScreenDistance * pixelsPerScreenPixel())));
}
