#pragma once

#include "editor/Annotation.h"

#include <QGraphicsItem>

// One annotation of the annotate tool while it can still be moved: drawn as it will be burnt
// in, dragged by the mouse, selected to change or delete it.
class AnnotationItem : public QGraphicsItem
{
public:
    explicit AnnotationItem(const Annotation &annotation, QGraphicsItem *parent = nullptr);

    const Annotation &annotation() const { return m_annotation; }
    void setAnnotation(const Annotation &annotation);
    // The annotation where it now is, in picture pixels.
    Annotation placed() const { return m_annotation.translated(pos()); }

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    Annotation m_annotation;
};
