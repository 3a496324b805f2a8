#pragma once

#include "editor/Annotation.h"
#include "editor/EditOperation.h"

#include <QGraphicsObject>
#include <QList>

class AnnotationItem;

// The annotate tool: dragging on the picture draws an arrow, a rectangle, an ellipse or a
// freehand line, and a click places the text typed in the tool's field, in the chosen colour
// and width. The marks stay movable (and deletable) until apply() burns them in as one edit.
class AnnotateTool : public QGraphicsObject
{
    Q_OBJECT
public:
    explicit AnnotateTool(QGraphicsItem *parent = nullptr);

    void setPictureSize(const QSize &size);
    void setKind(Annotation::Kind kind) { m_style.kind = kind; }
    Annotation::Kind kind() const { return m_style.kind; }
    // The colour and width apply to new marks and to the selected ones.
    void setColour(const QColor &colour);
    QColor colour() const { return m_style.colour; }
    void setLineWidth(double width);
    double lineWidth() const { return m_style.width; }
    void setText(const QString &text) { m_style.text = text; }
    QString text() const { return m_style.text; }

    // The marks not yet burnt in, where they now are.
    QList<Annotation> pending() const;
    QList<AnnotationItem *> items() const;
    void addAnnotation(const Annotation &annotation);
    void removeSelected();
    // Emits the pending marks as one edit and forgets them.
    void apply();
    void discard();

    QRectF boundingRect() const override;
    void paint(QPainter *, const QStyleOptionGraphicsItem *, QWidget *) override {}

signals:
    void operationReady(const EditOperation &operation);
    void pendingChanged(int count);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;

private:
    QSize m_picture;
    Annotation m_style;
    AnnotationItem *m_drawing = nullptr;
};
