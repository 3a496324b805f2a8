#include "app/editor/AnnotationItem.h"

#include <QCursor>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionGraphicsItem>

AnnotationItem::AnnotationItem(const Annotation &annotation, QGraphicsItem *parent)
    : QGraphicsItem(parent)
    , m_annotation(annotation)
{
    setFlags(ItemIsMovable | ItemIsSelectable);
    setCursor(Qt::OpenHandCursor);
}

void AnnotationItem::setAnnotation(const Annotation &annotation)
{
    prepareGeometryChange();
    m_annotation = annotation;
    update();
}

QRectF AnnotationItem::boundingRect() const
{
    return m_annotation.boundingRect().adjusted(-3, -3, 3, 3);
}

QPainterPath AnnotationItem::shape() const
{
    QPainterPath path;
    path.addRect(m_annotation.boundingRect());
    return path;
}

void AnnotationItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *)
{
    m_annotation.paint(*painter);
    if (option->state & QStyle::State_Selected) {
        const double px = 1.0 / std::max(0.01, painter->worldTransform().m11());
        QPen pen(QColor(48, 140, 255), 1.5 * px, Qt::DashLine);
        painter->setPen(pen);
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(m_annotation.boundingRect());
    }
}
