#include "app/editor/StraightenTool.h"

#include "editor/StraightenGeometry.h"

#include <QCursor>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <QtMath>

#include <cmath>

StraightenTool::StraightenTool(QGraphicsItem *parent)
    : QGraphicsObject(parent)
{
    setZValue(10);
    setCursor(Qt::SizeAllCursor);
}

void StraightenTool::setPictureSize(const QSize &size)
{
    prepareGeometryChange();
    m_picture = size;
    setAngle(0);
    update();
}

void StraightenTool::setAngle(double degrees)
{
    degrees = std::clamp(degrees, -kMaximumDegrees, kMaximumDegrees);
    if (qFuzzyCompare(1 + degrees, 1 + m_degrees))
        return;
    m_degrees = degrees;
    update();
    emit angleChanged(degrees);
}

void StraightenTool::apply()
{
    if (std::abs(m_degrees) < 0.05)
        return;
    const double degrees = m_degrees;
    setAngle(0);
    emit operationReady(EditOperation::straighten(degrees));
}

QRectF StraightenTool::boundingRect() const
{
    const QSizeF bounds = StraightenGeometry::rotatedBounds(QSizeF(m_picture), kMaximumDegrees);
    QRectF r(QPointF(), bounds);
    r.moveCenter(QPointF(m_picture.width() / 2.0, m_picture.height() / 2.0));
    return r;
}

double StraightenTool::pixelsPerScreenPixel() const
{
    if (!scene() || scene()->views().isEmpty())
        return 1.0;
    const double scale = scene()->views().first()->transform().m11();
    return scale > 0 ? 1.0 / scale : 1.0;
}

void StraightenTool::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (m_picture.isEmpty())
        return;
    const double px = pixelsPerScreenPixel();
    const QSizeF size(m_picture);
    QRectF kept(QPointF(), size * StraightenGeometry::inscribedScale(size, m_degrees));
    kept.moveCenter(QPointF(size.width() / 2, size.height() / 2));
    painter->save();
    // What the straightening cuts away of the turned picture, dimmed; the corners it uncovers
    // show the ground.
    QPainterPath turned;
    turned.addRect(QRectF(QPointF(0, 0), size));
    const QPointF centre(size.width() / 2, size.height() / 2);
    turned = QTransform().translate(centre.x(), centre.y()).rotate(m_degrees).translate(-centre.x(), -centre.y()).map(turned);
    QPainterPath keptPath;
    keptPath.addRect(kept);
    const QPainterPath outside = turned.subtracted(keptPath);
    painter->fillPath(outside, QColor(0, 0, 0, 120));
    // A level grid to line the horizon up with.
    painter->setPen(QPen(QColor(255, 255, 255, 120), px));
    const int lines = 8;
    for (int i = 1; i < lines; ++i) {
        const double x = kept.left() + kept.width() * i / lines;
        const double y = kept.top() + kept.height() * i / lines;
        painter->drawLine(QPointF(x, kept.top()), QPointF(x, kept.bottom()));
        painter->drawLine(QPointF(kept.left(), y), QPointF(kept.right(), y));
    }
    painter->setPen(QPen(Qt::white, 1.5 * px));
    painter->drawRect(kept);
    painter->restore();
}

void StraightenTool::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const QPointF d = event->pos() - QPointF(m_picture.width() / 2.0, m_picture.height() / 2.0);
    m_pressBearing = qRadiansToDegrees(std::atan2(d.y(), d.x()));
    m_pressDegrees = m_degrees;
    event->accept();
}

void StraightenTool::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    const QPointF d = event->pos() - QPointF(m_picture.width() / 2.0, m_picture.height() / 2.0);
    if (std::hypot(d.x(), d.y()) < 4 * pixelsPerScreenPixel())
        return; // too near the centre to tell a direction
    double turn = qRadiansToDegrees(std::atan2(d.y(), d.x())) - m_pressBearing;
    while (turn > 180)
        turn -= 360;
    while (turn < -180)
        turn += 360;
    setAngle(std::round((m_pressDegrees + turn) * 10) / 10);
}
