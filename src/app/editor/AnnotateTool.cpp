#include "app/editor/AnnotateTool.h"

#include "app/editor/AnnotationItem.h"

#include <QCursor>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>

AnnotateTool::AnnotateTool(QGraphicsItem *parent)
    : QGraphicsObject(parent)
{
    setZValue(10);
    setCursor(Qt::CrossCursor);
    m_style.text = QStringLiteral("Caption");
}

void AnnotateTool::setPictureSize(const QSize &size)
{
    prepareGeometryChange();
    m_picture = size;
}

void AnnotateTool::setColour(const QColor &colour)
{
    m_style.colour = colour;
    for (AnnotationItem *item : items()) {
        if (item->isSelected()) {
            Annotation a = item->annotation();
            a.colour = colour;
            item->setAnnotation(a);
        }
    }
}

void AnnotateTool::setLineWidth(double width)
{
    m_style.width = width;
    for (AnnotationItem *item : items()) {
        if (item->isSelected()) {
            Annotation a = item->annotation();
            a.width = width;
            item->setAnnotation(a);
        }
    }
}

QList<AnnotationItem *> AnnotateTool::items() const
{
    QList<AnnotationItem *> result;
    for (QGraphicsItem *child : childItems())
        if (auto *item = dynamic_cast<AnnotationItem *>(child))
            result.append(item);
    return result;
}

QList<Annotation> AnnotateTool::pending() const
{
    QList<Annotation> result;
    for (const AnnotationItem *item : items())
        result.append(item->placed());
    return result;
}

void AnnotateTool::addAnnotation(const Annotation &annotation)
{
    new AnnotationItem(annotation, this);
    emit pendingChanged(int(items().size()));
}

void AnnotateTool::removeSelected()
{
    for (AnnotationItem *item : items())
        if (item->isSelected())
            delete item;
    emit pendingChanged(int(items().size()));
}

void AnnotateTool::apply()
{
    const QList<Annotation> marks = pending();
    discard();
    if (!marks.isEmpty())
        emit operationReady(EditOperation::annotate(marks));
}

void AnnotateTool::discard()
{
    m_drawing = nullptr;
    qDeleteAll(items());
    emit pendingChanged(0);
}

QRectF AnnotateTool::boundingRect() const
{
    return QRectF(QPointF(0, 0), QSizeF(m_picture));
}

void AnnotateTool::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !boundingRect().contains(event->pos())) {
        event->ignore();
        return;
    }
    if (scene())
        scene()->clearSelection();
    Annotation mark = m_style;
    mark.points = {event->pos()};
    if (mark.kind == Annotation::Text) {
        if (!mark.isEmpty())
            addAnnotation(mark);
        event->accept();
        return;
    }
    if (mark.kind != Annotation::Freehand)
        mark.points.append(event->pos());
    m_drawing = new AnnotationItem(mark, this);
    event->accept();
}

void AnnotateTool::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_drawing)
        return;
    Annotation mark = m_drawing->annotation();
    const QPointF p(std::clamp(event->pos().x(), 0.0, double(m_picture.width())),
                    std::clamp(event->pos().y(), 0.0, double(m_picture.height())));
    if (mark.kind == Annotation::Freehand)
        mark.points.append(p);
    else
        mark.points[1] = p;
    m_drawing->setAnnotation(mark);
}

void AnnotateTool::mouseReleaseEvent(QGraphicsSceneMouseEvent *)
{
    if (!m_drawing)
        return;
    AnnotationItem *done = m_drawing;
    m_drawing = nullptr;
    if (done->annotation().isEmpty())
        delete done;
    else
        done->setSelected(true);
    emit pendingChanged(int(items().size()));
}
