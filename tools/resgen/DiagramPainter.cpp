#include "DiagramPainter.h"

#include "PaintKit.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace {

const QColor ink(60, 64, 72);
const QColor accent(30, 120, 220);

QImage transparentIcon(int size = DiagramPainter::iconSize)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

// A tiny photograph: sky, sun, two hills, a white border and a drop shadow.
void miniPhoto(QPainter &p, const QRectF &r, int tint = 0, bool border = true)
{
    p.save();
    if (border) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0, 0, 0, 50));
        p.drawRoundedRect(r.translated(1.5, 2), 2, 2);
    }
    const QColor skyTop = tint == 1 ? QColor(240, 150, 90) : tint == 2 ? QColor(120, 90, 180) : QColor(70, 140, 220);
    const QColor skyLow = tint == 1 ? QColor(255, 220, 150) : tint == 2 ? QColor(230, 180, 220) : QColor(190, 225, 250);
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, skyTop);
    sky.setColorAt(1, skyLow);
    p.setPen(Qt::NoPen);
    p.setBrush(sky);
    p.drawRect(r);
    p.setClipRect(r);
    p.setBrush(QColor(255, 230, 120));
    p.drawEllipse(QPointF(r.left() + r.width() * 0.72, r.top() + r.height() * 0.3), r.height() * 0.1, r.height() * 0.1);
    QPainterPath far;
    far.moveTo(r.left(), r.bottom());
    far.lineTo(r.left(), r.top() + r.height() * 0.7);
    far.quadTo(r.left() + r.width() * 0.3, r.top() + r.height() * 0.35, r.left() + r.width() * 0.6, r.top() + r.height() * 0.72);
    far.lineTo(r.right(), r.top() + r.height() * 0.6);
    far.lineTo(r.right(), r.bottom());
    p.setBrush(QColor(90, 150, 90));
    p.drawPath(far);
    QPainterPath near;
    near.moveTo(r.left(), r.bottom());
    near.lineTo(r.left(), r.top() + r.height() * 0.85);
    near.quadTo(r.left() + r.width() * 0.65, r.top() + r.height() * 0.55, r.right(), r.top() + r.height() * 0.82);
    near.lineTo(r.right(), r.bottom());
    p.setBrush(QColor(60, 120, 60));
    p.drawPath(near);
    p.setClipping(false);
    if (border) {
        p.setPen(QPen(Qt::white, 2));
        p.setBrush(Qt::NoBrush);
        p.drawRect(r);
    }
    p.restore();
}

// A straight arrow with heads at one or both ends.
void arrow(QPainter &p, QPointF from, QPointF to, const QColor &c, double width, bool both)
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    const QLineF line(from, to);
    const double head = width * 3.2;
    const QPointF dir = (to - from) / line.length();
    const QPointF normal(-dir.y(), dir.x());
    p.setPen(QPen(c, width, Qt::SolidLine, Qt::FlatCap));
    p.drawLine(from + (both ? dir * head * 0.8 : QPointF()), to - dir * head * 0.8);
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    auto tip = [&](QPointF at, QPointF d) {
        QPolygonF poly;
        poly << at << at - d * head + normal * head * 0.6 << at - d * head - normal * head * 0.6;
        p.drawPolygon(poly);
    };
    tip(to, dir);
    if (both)
        tip(from, -dir);
    p.restore();
}

} // namespace

QImage DiagramPainter::blank()
{
    QImage image(1200, 900, QImage::Format_RGB32);
    image.fill(QColor(240, 240, 240));
    return image;
}

QImage DiagramPainter::placeholder()
{
    const int s = 512;
    QImage image(s, s, QImage::Format_RGB32);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient g(0, 0, 0, s);
    g.setColorAt(0, QColor(226, 227, 230));
    g.setColorAt(1, QColor(208, 209, 213));
    p.fillRect(image.rect(), g);
    // A subtle outlined photo symbol with a plus badge, in a grey a little darker than the tile.
    const QColor line(168, 170, 176);
    const QRectF frame(s * 0.3, s * 0.34, s * 0.4, s * 0.3);
    p.setPen(QPen(line, s * 0.018, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(frame, s * 0.025, s * 0.025);
    QPainterPath hills;
    hills.moveTo(frame.left() + s * 0.03, frame.bottom() - s * 0.03);
    hills.lineTo(frame.left() + s * 0.14, frame.top() + frame.height() * 0.45);
    hills.lineTo(frame.left() + s * 0.22, frame.top() + frame.height() * 0.7);
    hills.lineTo(frame.left() + s * 0.28, frame.top() + frame.height() * 0.55);
    hills.lineTo(frame.right() - s * 0.03, frame.bottom() - s * 0.03);
    p.drawPath(hills);
    p.drawEllipse(QPointF(frame.right() - s * 0.08, frame.top() + s * 0.075), s * 0.028, s * 0.028);
    const QPointF badge(frame.right(), frame.bottom());
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(214, 215, 219));
    p.drawEllipse(badge, s * 0.075, s * 0.075);
    p.setBrush(line);
    p.drawEllipse(badge, s * 0.06, s * 0.06);
    p.setPen(QPen(QColor(226, 227, 230), s * 0.016, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(badge - QPointF(s * 0.03, 0), badge + QPointF(s * 0.03, 0));
    p.drawLine(badge - QPointF(0, s * 0.03), badge + QPointF(0, s * 0.03));
    return image;
}

QImage DiagramPainter::cannotEdit()
{
    const int s = 256;
    QImage image = transparentIcon(s);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // A picture symbol, greyed out, with a red bar across it.
    const QRectF frame(s * 0.16, s * 0.24, s * 0.68, s * 0.52);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 40));
    p.drawRoundedRect(frame.translated(3, 4), 10, 10);
    p.setBrush(QColor(245, 245, 247));
    p.setPen(QPen(QColor(150, 150, 158), 6));
    p.drawRoundedRect(frame, 10, 10);
    const QRectF inner = frame.adjusted(14, 14, -14, -14);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(205, 208, 214));
    p.drawRect(inner);
    QPainterPath mountains;
    mountains.moveTo(inner.bottomLeft());
    mountains.lineTo(inner.left() + inner.width() * 0.35, inner.top() + inner.height() * 0.35);
    mountains.lineTo(inner.left() + inner.width() * 0.55, inner.top() + inner.height() * 0.65);
    mountains.lineTo(inner.left() + inner.width() * 0.72, inner.top() + inner.height() * 0.45);
    mountains.lineTo(inner.bottomRight());
    mountains.closeSubpath();
    p.setBrush(QColor(150, 155, 165));
    p.drawPath(mountains);
    p.setBrush(QColor(170, 174, 182));
    p.drawEllipse(QPointF(inner.right() - inner.width() * 0.2, inner.top() + inner.height() * 0.25), inner.height() * 0.12, inner.height() * 0.12);
    // The cross-out: a red circle with a diagonal bar.
    const QPointF c(s / 2.0, s / 2.0);
    const double r = s * 0.42;
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(255, 255, 255, 200), s * 0.085));
    p.drawEllipse(c, r, r);
    p.setPen(QPen(QColor(210, 40, 40), s * 0.055, Qt::SolidLine, Qt::RoundCap));
    p.drawEllipse(c, r, r);
    const QPointF d(r * std::cos(M_PI / 4), r * std::sin(M_PI / 4));
    p.drawLine(c - d, c + d);
    return image;
}

QImage DiagramPainter::matchingMargin()
{
    // Two photos overlapping; the overlapping strip, where they are matched, is marked and its
    // width shown by a double arrow.
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF left(10, 28, 66, 56), right(52, 34, 66, 56);
    miniPhoto(p, left, 0);
    miniPhoto(p, right, 1);
    const QRectF overlap = left.intersected(right);
    p.setPen(QPen(accent, 2, Qt::DashLine));
    p.setBrush(PaintKit::withAlpha(accent, 0.25));
    p.drawRect(overlap);
    arrow(p, QPointF(overlap.left(), 104), QPointF(overlap.right(), 104), accent, 2.5, true);
    p.setPen(QPen(accent, 1.5));
    p.drawLine(QPointF(overlap.left(), 92), QPointF(overlap.left(), 112));
    p.drawLine(QPointF(overlap.right(), 92), QPointF(overlap.right(), 112));
    return image;
}

QImage DiagramPainter::blendingMargin()
{
    // Two photos meeting in a soft blend whose width the arrow shows.
    QImage image = transparentIcon();
    QImage a = transparentIcon(), b = transparentIcon();
    {
        QPainter pa(&a);
        pa.setRenderHint(QPainter::Antialiasing);
        miniPhoto(pa, QRectF(10, 30, 70, 58), 0, false);
        QPainter pb(&b);
        pb.setRenderHint(QPainter::Antialiasing);
        miniPhoto(pb, QRectF(48, 30, 70, 58), 2, false);
        // Fade photo b in across the blend zone.
        QLinearGradient fade(48, 0, 80, 0);
        fade.setColorAt(0, QColor(0, 0, 0, 0));
        fade.setColorAt(1, QColor(0, 0, 0, 255));
        pb.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        pb.fillRect(b.rect(), fade);
    }
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 50));
    p.drawRect(QRectF(11.5, 32, 107, 58));
    p.drawImage(0, 0, a);
    p.drawImage(0, 0, b);
    p.setPen(QPen(Qt::white, 2));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(10, 30, 108, 58));
    arrow(p, QPointF(48, 104), QPointF(80, 104), accent, 2.5, true);
    p.setPen(QPen(accent, 1.5, Qt::DashLine));
    p.drawLine(QPointF(48, 24), QPointF(48, 112));
    p.drawLine(QPointF(80, 24), QPointF(80, 112));
    return image;
}

QImage DiagramPainter::inputScaling()
{
    // A small photo and its enlarged outline, joined by a diagonal arrow.
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(ink, 2, Qt::DashLine));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(14, 22, 100, 84));
    miniPhoto(p, QRectF(14, 66, 46, 40), 0);
    arrow(p, QPointF(58, 64), QPointF(108, 28), accent, 3, false);
    return image;
}

QImage DiagramPainter::homographyScaling()
{
    // A photo and its perspective-warped outline, with arrows from two corners.
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF photo(34, 38, 60, 50);
    miniPhoto(p, photo, 1);
    QPolygonF warped;
    warped << QPointF(14, 22) << QPointF(116, 30) << QPointF(104, 104) << QPointF(24, 112);
    p.setPen(QPen(ink, 2, Qt::DashLine));
    p.setBrush(Qt::NoBrush);
    p.drawPolygon(warped);
    arrow(p, photo.topLeft(), warped[0] + QPointF(3, 3), accent, 2.5, false);
    arrow(p, photo.topRight(), warped[1] + QPointF(-3, 3), accent, 2.5, false);
    arrow(p, photo.bottomRight(), warped[2] + QPointF(-3, -3), accent, 2.5, false);
    arrow(p, photo.bottomLeft(), warped[3] + QPointF(3, -3), accent, 2.5, false);
    return image;
}

QImage DiagramPainter::cropResult()
{
    // A result picture with ragged edges, the part outside a crop frame dimmed.
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QPolygonF ragged;
    ragged << QPointF(8, 30) << QPointF(62, 18) << QPointF(120, 28) << QPointF(116, 100) << QPointF(66, 112) << QPointF(12, 98);
    p.save();
    QPainterPath clip;
    clip.addPolygon(ragged);
    p.setClipPath(clip);
    miniPhoto(p, QRectF(8, 18, 112, 94), 0, false);
    p.restore();
    const QRectF crop(20, 32, 88, 64);
    QPainterPath outside;
    outside.addPolygon(ragged);
    QPainterPath inside;
    inside.addRect(crop);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0, 0, 0, 110));
    p.drawPath(outside.subtracted(inside));
    p.setPen(QPen(Qt::white, 2.5));
    p.setBrush(Qt::NoBrush);
    p.drawRect(crop);
    // Corner handles.
    p.setPen(QPen(accent, 4, Qt::SolidLine, Qt::SquareCap));
    const double k = 10;
    for (const QPointF &c : {crop.topLeft(), crop.topRight(), crop.bottomRight(), crop.bottomLeft()}) {
        const double sx = c.x() < crop.center().x() ? 1 : -1;
        const double sy = c.y() < crop.center().y() ? 1 : -1;
        p.drawLine(c, c + QPointF(sx * k, 0));
        p.drawLine(c, c + QPointF(0, sy * k));
    }
    return image;
}

QImage DiagramPainter::uniformCrop()
{
    // Three photos of different sizes, each with the same-sized crop frame.
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF photos[] = {QRectF(6, 14, 48, 64), QRectF(40, 40, 66, 50), QRectF(70, 70, 52, 46)};
    int tint = 0;
    for (const QRectF &r : photos) {
        miniPhoto(p, r, tint++);
        const QRectF frame(r.center().x() - 18, r.center().y() - 14, 36, 28);
        p.setPen(QPen(accent, 2));
        p.setBrush(Qt::NoBrush);
        p.drawRect(frame);
    }
    return image;
}

QImage DiagramPainter::crossedCircle()
{
    QImage image = transparentIcon();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF c(64, 64);
    QRadialGradient g(QPointF(52, 46), 70);
    g.setColorAt(0, QColor(240, 90, 80));
    g.setColorAt(1, QColor(190, 30, 30));
    p.setPen(QPen(QColor(150, 20, 20), 2));
    p.setBrush(g);
    p.drawEllipse(c, 52, 52);
    p.setPen(QPen(Qt::white, 12, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(c + QPointF(-22, -22), c + QPointF(22, 22));
    p.drawLine(c + QPointF(22, -22), c + QPointF(-22, 22));
    return image;
}
