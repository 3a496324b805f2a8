#include "widgets/DropIndicator.h"

#include <QPainter>
#include <QWidget>

void DropIndicator::paint(QWidget *viewport, const QRect &rect, bool on, const QColor &color)
{
    if (rect.isEmpty())
        return;
    QPainter painter(viewport);
    painter.setRenderHint(QPainter::Antialiasing);
    if (on) {
        QColor fill = color;
        fill.setAlpha(60);
        painter.setPen(QPen(color, 3));
        painter.setBrush(fill);
        painter.drawRoundedRect(QRectF(rect).adjusted(2, 2, -2, -2), 5, 5);
        return;
    }
    // The ring sits at the bar's start (its left end, or its top when it stands upright).
    const bool across = rect.width() >= rect.height();
    const QPointF ring = across ? QPointF(rect.left() + kLineWidth, rect.center().y() + 0.5)
                                : QPointF(rect.center().x() + 0.5, rect.top() + kLineWidth);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(across ? QRectF(rect).adjusted(kLineWidth + 2, 0, 0, 0)
                                   : QRectF(rect).adjusted(0, kLineWidth + 2, 0, 0),
                            1.5, 1.5);
    painter.setPen(QPen(color, 2));
    painter.setBrush(viewport->palette().color(QPalette::Base));
    painter.drawEllipse(ring, kLineWidth + 0.5, kLineWidth + 0.5);
}
