#include "editor/Annotation.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QtMath>

#include <cmath>

double Annotation::fontPixelSize() const
{
    return std::max(12.0, width * 6);
}

static QFont annotationFont(double pixelSize)
{
    QFont font(QStringLiteral("Sans Serif"));
    font.setPixelSize(std::max(1, int(std::lround(pixelSize))));
    font.setBold(true);
    return font;
}

QRectF Annotation::boundingRect() const
{
    if (points.isEmpty())
        return QRectF();
    if (kind == Text) {
        const QFontMetricsF metrics(annotationFont(fontPixelSize()));
        const QSizeF size = metrics.size(0, text.isEmpty() ? QStringLiteral(" ") : text);
        return QRectF(points.first(), size).adjusted(-2, -2, 2, 2);
    }
    QRectF box = QPolygonF(points).boundingRect();
    // The line's half width, and the arrow head's reach.
    const double margin = kind == Arrow ? width * 4 + 2 : width / 2 + 2;
    return box.adjusted(-margin, -margin, margin, margin);
}

void Annotation::paint(QPainter &painter) const
{
    if (points.isEmpty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    QPen pen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const QPointF a = points.first();
    const QPointF b = points.size() > 1 ? points.at(1) : a;
    switch (kind) {
    case Text: {
        painter.setFont(annotationFont(fontPixelSize()));
        const QFontMetricsF metrics(painter.font());
        painter.drawText(QRectF(a, metrics.size(0, text)), Qt::AlignLeft | Qt::AlignTop, text);
        break;
    }
    case Arrow: {
        painter.drawLine(a, b);
        const double length = std::hypot(b.x() - a.x(), b.y() - a.y());
        if (length > 0) {
            const double angle = std::atan2(b.y() - a.y(), b.x() - a.x());
            const double head = std::min(length, width * 4 + 6);
            const double spread = qDegreesToRadians(25.0);
            QPolygonF tip;
            tip << b << b - QPointF(std::cos(angle - spread), std::sin(angle - spread)) * head
                << b - QPointF(std::cos(angle + spread), std::sin(angle + spread)) * head;
            painter.setBrush(colour);
            painter.drawPolygon(tip);
        }
        break;
    }
    case Rectangle:
        painter.drawRect(QRectF(a, b).normalized());
        break;
    case Ellipse:
        painter.drawEllipse(QRectF(a, b).normalized());
        break;
    case Freehand: {
        if (points.size() == 1) {
            painter.drawPoint(a);
            break;
        }
        painter.drawPolyline(QPolygonF(points));
        break;
    }
    }
    painter.restore();
}

Annotation Annotation::translated(const QPointF &offset) const
{
    Annotation moved = *this;
    for (QPointF &p : moved.points)
        p += offset;
    return moved;
}

bool Annotation::isEmpty() const
{
    if (points.isEmpty())
        return true;
    if (kind == Text)
        return text.trimmed().isEmpty();
    const QRectF box = QPolygonF(points).boundingRect();
    return box.width() < 2 && box.height() < 2;
}
