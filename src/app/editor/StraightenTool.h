#pragma once

#include "editor/EditOperation.h"

#include <QGraphicsObject>

// The rotate tool's straightening: dragging around the picture's centre (or typing an angle)
// turns the picture by a small angle, shown live with a level grid and the part that will be
// kept; apply() emits the straightening. Quarter turns and flips are plain edits of their own.
class StraightenTool : public QGraphicsObject
{
    Q_OBJECT
public:
    static constexpr double kMaximumDegrees = 45;

    explicit StraightenTool(QGraphicsItem *parent = nullptr);

    void setPictureSize(const QSize &size);
    double angle() const { return m_degrees; }
    // Clamped to +-kMaximumDegrees.
    void setAngle(double degrees);
    // Emits the straightening unless the angle is zero; the angle goes back to zero.
    void apply();

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

signals:
    void angleChanged(double degrees);
    void operationReady(const EditOperation &operation);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;

private:
    double pixelsPerScreenPixel() const;

    QSize m_picture;
    double m_degrees = 0;
    double m_pressDegrees = 0;
    double m_pressBearing = 0;
};
