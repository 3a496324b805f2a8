#pragma once

#include "editor/CropGeometry.h"
#include "editor/EditOperation.h"

#include <QGraphicsObject>

// The crop tool of the image editor: a rectangle with eight handles over the picture, the rest
// of the picture dimmed. Dragging a handle resizes it, dragging inside moves it, always within
// the picture and in the chosen proportions (the geometry is CropGeometry's); apply() emits the
// crop.
class CropTool : public QGraphicsObject
{
    Q_OBJECT
public:
    explicit CropTool(QGraphicsItem *parent = nullptr);

    // A new picture (or a new size after an edit): the rectangle covers all of it.
    void setPictureSize(const QSize &size);
    QSize pictureSize() const { return m_picture; }
    void setAspect(CropGeometry::Aspect aspect);
    CropGeometry::Aspect aspect() const { return m_aspect; }
    QRectF cropRect() const { return m_rect; }
    void setCropRect(const QRectF &rect);
    // The pixels the crop keeps.
    QRect cropPixels() const { return CropGeometry::toPixels(m_rect, m_picture); }
    // Emits the crop unless it keeps the whole picture.
    void apply();

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

signals:
    void operationReady(const EditOperation &operation);
    void cropRectChanged(const QRectF &rect);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverMoveEvent(QGraphicsSceneHoverEvent *event) override;

private:
    // Picture pixels per screen pixel, so handles keep their size on screen at any zoom.
    double pixelsPerScreenPixel() const;
    QRectF bounds() const { return QRectF(QPointF(0, 0), QSizeF(m_picture)); }

    QSize m_picture;
    QRectF m_rect;
    CropGeometry::Aspect m_aspect = CropGeometry::Free;
    CropGeometry::Handle m_dragging = CropGeometry::None;
    bool m_drawing = false;
    QPointF m_pressPoint;
    QRectF m_pressRect;
};
