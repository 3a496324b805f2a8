#include "FlowerPainter.h"

#include "Noise.h"
#include "PaintKit.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace {

enum class Tip { Round, Pointed, Notched };

struct PetalStyle
{
    QColor base;
    QColor tip;
    Tip shape = Tip::Round;
    double veins = 0.2;   // opacity of the fine lines along the petal
};

// One petal from `centre` outwards at `angle` (degrees), `length` long and `width` wide.
void petal(QPainter &p, QPointF centre, double angle, double length, double width, const PetalStyle &style,
           double shade = 1.0)
{
    p.save();
    p.translate(centre);
    p.rotate(angle);
    QPainterPath path;
    path.moveTo(0, 0);
    switch (style.shape) {
    case Tip::Round:
        path.cubicTo(length * 0.3, -width * 0.6, length * 0.9, -width * 0.7, length, 0);
        path.cubicTo(length * 0.9, width * 0.7, length * 0.3, width * 0.6, 0, 0);
        break;
    case Tip::Pointed:
        path.cubicTo(length * 0.35, -width * 0.65, length * 0.75, -width * 0.45, length, 0);
        path.cubicTo(length * 0.75, width * 0.45, length * 0.35, width * 0.65, 0, 0);
        break;
    case Tip::Notched:
        path.cubicTo(length * 0.3, -width * 0.55, length * 0.95, -width * 0.75, length, -width * 0.2);
        path.lineTo(length * 0.9, -width * 0.05);
        path.lineTo(length * 0.97, width * 0.02);
        path.lineTo(length * 0.9, width * 0.12);
        path.lineTo(length, width * 0.25);
        path.cubicTo(length * 0.95, width * 0.75, length * 0.3, width * 0.55, 0, 0);
        break;
    }
    QLinearGradient g(0, 0, length, 0);
    g.setColorAt(0, PaintKit::shade(style.base, shade));
    g.setColorAt(1, PaintKit::shade(style.tip, shade));
    p.setPen(QPen(PaintKit::withAlpha(PaintKit::shade(style.base, 0.7 * shade), 0.5), std::max(0.6, width * 0.015)));
    p.setBrush(g);
    p.drawPath(path);
    // Shading across the petal: darker along one edge, as if slightly cupped.
    QLinearGradient across(0, -width / 2, 0, width / 2);
    across.setColorAt(0, QColor(255, 255, 255, 40));
    across.setColorAt(0.5, QColor(0, 0, 0, 0));
    across.setColorAt(1, QColor(0, 0, 0, 50));
    p.setPen(Qt::NoPen);
    p.setBrush(across);
    p.drawPath(path);
    if (style.veins > 0) {
        p.setClipPath(path);
        p.setPen(QPen(PaintKit::withAlpha(PaintKit::shade(style.base, 0.75), style.veins), std::max(0.6, width * 0.012)));
        for (int k = -3; k <= 3; ++k)
            p.drawLine(QPointF(length * 0.05, 0), QPointF(length * 0.95, k * width * 0.1));
    }
    p.restore();
}

// A disc of florets: seeds arranged on the golden-angle spiral.
void floretDisc(QPainter &p, QPointF c, double r, const QColor &inner, const QColor &outer, double dot)
{
    QRadialGradient g(c - QPointF(r * 0.2, r * 0.25), r * 1.3);
    g.setColorAt(0, PaintKit::shade(inner, 1.3));
    g.setColorAt(0.7, inner);
    g.setColorAt(1, PaintKit::shade(outer, 0.7));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawEllipse(c, r, r);
    const int n = int(std::pow(r / dot, 2) * 0.8);
    const double golden = M_PI * (3.0 - std::sqrt(5.0));
    for (int i = 0; i < n; ++i) {
        const double d = r * 0.95 * std::sqrt((i + 0.5) / n);
        const double a = i * golden;
        const QPointF at(c.x() + std::cos(a) * d, c.y() + std::sin(a) * d);
        const double t = d / r;
        p.setBrush(PaintKit::withAlpha(PaintKit::mix(PaintKit::shade(inner, 0.6), outer, t), 0.8));
        p.drawEllipse(at, dot * 0.42, dot * 0.42);
        p.setBrush(QColor(255, 255, 255, int(40 * (1 - t))));
        p.drawEllipse(at - QPointF(dot * 0.12, dot * 0.12), dot * 0.15, dot * 0.15);
    }
}

void stemAndLeaves(QPainter &p, QRandomGenerator &rng, QPointF head, double bottom, double unit, const QColor &green)
{
    QPainterPath stem;
    const QPointF foot(head.x() + PaintKit::uniform(rng, -0.15, 0.15) * unit, bottom + 5);
    stem.moveTo(head);
    stem.cubicTo(head + QPointF(PaintKit::uniform(rng, -0.1, 0.1) * unit, (foot.y() - head.y()) * 0.4),
                 foot + QPointF(PaintKit::uniform(rng, -0.1, 0.1) * unit, -(foot.y() - head.y()) * 0.4), foot);
    QLinearGradient g(head.x() - unit * 0.02, 0, head.x() + unit * 0.02, 0);
    g.setColorAt(0, PaintKit::shade(green, 1.3));
    g.setColorAt(1, PaintKit::shade(green, 0.7));
    p.setPen(QPen(QBrush(g), unit * 0.022, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    p.drawPath(stem);
    for (int i = 0; i < 2; ++i) {
        const double t = PaintKit::uniform(rng, 0.45, 0.8);
        const QPointF at = stem.pointAtPercent(t);
        const double len = unit * PaintKit::uniform(rng, 0.22, 0.32);
        const double side = i == 0 ? 1 : -1;
        p.save();
        p.translate(at);
        p.rotate(side > 0 ? PaintKit::uniform(rng, -50, -20) : PaintKit::uniform(rng, 200, 230));
        QPainterPath leaf;
        leaf.moveTo(0, 0);
        leaf.cubicTo(len * 0.3, -len * 0.22, len * 0.7, -len * 0.18, len, 0);
        leaf.cubicTo(len * 0.7, len * 0.12, len * 0.3, len * 0.16, 0, 0);
        QLinearGradient lg(0, -len * 0.2, 0, len * 0.15);
        lg.setColorAt(0, PaintKit::shade(green, 1.25));
        lg.setColorAt(1, PaintKit::shade(green, 0.65));
        p.setPen(Qt::NoPen);
        p.setBrush(lg);
        p.drawPath(leaf);
        p.setPen(QPen(PaintKit::withAlpha(PaintKit::shade(green, 1.4), 0.3), std::max(1.0, len * 0.01)));
        p.drawLine(QPointF(0, 0), QPointF(len * 0.9, -len * 0.01));
        p.restore();
    }
}

// Out-of-focus garden: blotches of foliage and a few light discs, all blurred.
QImage background(QSize size, QRandomGenerator &rng, const QColor &a, const QColor &b, const QColor &accent)
{
    const double w = size.width(), h = size.height();
    const Noise noise(rng.generate());
    QImage image = PaintKit::field(size, 8, [&](double x, double y) -> QRgb {
        const double n = noise.fbm(x / (w * 0.3), y / (h * 0.3), 4);
        QColor c = PaintKit::mix(a, b, PaintKit::clamp01(0.5 + n * 1.2));
        c = PaintKit::mix(c, accent, PaintKit::smoothstep(0.35, 0.6, noise.fbm(x / (w * 0.2) + 9, y / (h * 0.2), 3)) * 0.6);
        return PaintKit::premultiplied(c, 1.0);
    });
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double unit = std::min(w, h);
    for (int i = 0; i < 30; ++i) {
        const double r = unit * PaintKit::uniform(rng, 0.02, 0.07);
        p.setPen(Qt::NoPen);
        p.setBrush(PaintKit::withAlpha(PaintKit::mix(accent, Qt::white, 0.5), PaintKit::uniform(rng, 0.08, 0.25)));
        p.drawEllipse(QPointF(PaintKit::uniform(rng, 0, w), PaintKit::uniform(rng, 0, h)), r, r);
    }
    p.end();
    return PaintKit::blurred(image, unit * 0.012);
}

void ring(QPainter &p, QRandomGenerator &rng, QPointF c, int count, double length, double width,
          const PetalStyle &style, double start, double shade, double squash)
{
    for (int i = 0; i < count; ++i) {
        const double angle = start + 360.0 * i / count + PaintKit::uniform(rng, -4, 4);
        const double l = length * PaintKit::uniform(rng, 0.9, 1.08);
        // Seen a little from the side: petals pointing up or down look shorter.
        const double rad = qDegreesToRadians(angle);
        const double foreshorten = std::sqrt(std::pow(std::cos(rad), 2) + std::pow(std::sin(rad) * squash, 2));
        petal(p, c, qRadiansToDegrees(std::atan2(std::sin(rad) * squash, std::cos(rad))), l * foreshorten,
              width * PaintKit::uniform(rng, 0.9, 1.1), style, shade * PaintKit::uniform(rng, 0.92, 1.05));
    }
}

} // namespace

QImage FlowerPainter::paint(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    const double unit = std::min(w, h);
    QRandomGenerator rng(request.seed);
    const int kind = request.variant % kinds;
    const QColor leafGreen(70, 130, 50);
    QColor bgA(40, 80, 40), bgB(120, 160, 80), accent(230, 220, 140);
    switch (kind) {
    case 2: accent = QColor(200, 60, 50); break;                                        // poppy meadow
    case 3: bgA = QColor(60, 90, 70); accent = QColor(240, 170, 200); break;
    case 4: bgA = QColor(50, 60, 50); bgB = QColor(150, 150, 110); accent = QColor(200, 170, 230); break;
    case 5: bgA = QColor(30, 50, 30); bgB = QColor(90, 120, 60); accent = QColor(230, 120, 130); break;
    case 6: bgB = QColor(160, 190, 230); accent = QColor(250, 240, 200); break;         // sky behind the tulip
    case 7: bgA = QColor(20, 60, 80); bgB = QColor(50, 110, 120); accent = QColor(60, 120, 60); break;   // pond
    case 8: bgA = QColor(50, 70, 60); bgB = QColor(160, 175, 150); accent = QColor(250, 250, 230); break;
    default: break;
    }
    QImage image = background(size, rng, bgA, bgB, accent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF head(w * PaintKit::uniform(rng, 0.42, 0.58), h * PaintKit::uniform(rng, 0.38, 0.48));
    const double squash = PaintKit::uniform(rng, 0.75, 0.92);

    if (kind == 6) {
        // A tulip's stem is bare; its leaves grow from the ground (drawn with the flower).
        QPainterPath stem;
        stem.moveTo(head + QPointF(0, unit * 0.1));
        stem.quadTo(head + QPointF(unit * 0.03, (h - head.y()) * 0.5), QPointF(head.x() - unit * 0.01, h + 5));
        p.setPen(QPen(PaintKit::shade(leafGreen, 0.95), unit * 0.022, Qt::SolidLine, Qt::RoundCap));
        p.setBrush(Qt::NoBrush);
        p.drawPath(stem);
    } else if (kind != 7 && kind != 8) {
        stemAndLeaves(p, rng, head + QPointF(0, unit * 0.05), h, unit, leafGreen);
    }

    // A soft shadow of the flower head on what lies behind it.
    auto headShadow = [&](double r) {
        QRadialGradient g(head + QPointF(r * 0.1, r * 0.15), r);
        g.setColorAt(0, QColor(0, 0, 0, 90));
        g.setColorAt(1, QColor(0, 0, 0, 0));
        p.setPen(Qt::NoPen);
        p.setBrush(g);
        p.drawEllipse(head + QPointF(r * 0.1, r * 0.15), r, r * squash);
    };

    switch (kind) {
    case 0: { // daisy
        const double r = unit * 0.26;
        headShadow(r * 1.1);
        const PetalStyle white{QColor(235, 235, 225), QColor(255, 255, 252), Tip::Round, 0.15};
        ring(p, rng, head, 22, r, r * 0.2, white, 8, 0.85, squash);
        ring(p, rng, head, 22, r * 0.95, r * 0.2, white, 0, 1.0, squash);
        floretDisc(p, head, r * 0.24, QColor(250, 200, 30), QColor(220, 140, 20), r * 0.03);
        break;
    }
    case 1: { // sunflower
        const double r = unit * 0.3;
        headShadow(r * 1.1);
        const PetalStyle yellow{QColor(230, 150, 20), QColor(255, 210, 40), Tip::Pointed, 0.25};
        ring(p, rng, head, 26, r, r * 0.2, yellow, 7, 0.8, squash);
        ring(p, rng, head, 26, r * 0.92, r * 0.2, yellow, 0, 1.0, squash);
        floretDisc(p, head, r * 0.45, QColor(100, 60, 25), QColor(60, 35, 15), r * 0.035);
        break;
    }
    case 2: { // poppy
        const double r = unit * 0.27;
        headShadow(r);
        const PetalStyle red{QColor(170, 20, 20), QColor(235, 50, 35), Tip::Round, 0.12};
        ring(p, rng, head, 4, r, r * 1.15, red, 45, 0.8, squash);
        ring(p, rng, head, 4, r * 0.85, r * 1.05, red, 0, 1.0, squash);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(25, 15, 20));
        p.drawEllipse(head, r * 0.2, r * 0.2 * squash);
        p.setPen(QPen(QColor(30, 20, 30), std::max(1.0, r * 0.012)));
        for (int i = 0; i < 60; ++i) {
            const double a = PaintKit::uniform(rng, 0, 2 * M_PI);
            const double len = r * PaintKit::uniform(rng, 0.2, 0.32);
            const QPointF end(head.x() + std::cos(a) * len, head.y() + std::sin(a) * len * squash);
            p.drawLine(head, end);
            p.setBrush(QColor(40, 30, 50));
            p.drawEllipse(end, r * 0.015, r * 0.015);
        }
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(120, 140, 90));
        p.drawEllipse(head, r * 0.1, r * 0.1 * squash);
        break;
    }
    case 3: { // cosmos
        const double r = unit * 0.27;
        headShadow(r);
        const PetalStyle pink{QColor(200, 60, 130), QColor(250, 170, 210), Tip::Notched, 0.3};
        ring(p, rng, head, 8, r, r * 0.55, pink, 0, 1.0, squash);
        floretDisc(p, head, r * 0.18, QColor(250, 200, 40), QColor(200, 140, 20), r * 0.03);
        break;
    }
    case 4: { // aster
        const double r = unit * 0.25;
        headShadow(r);
        const PetalStyle violet{QColor(110, 60, 170), QColor(190, 160, 240), Tip::Round, 0.1};
        ring(p, rng, head, 40, r, r * 0.09, violet, 4, 0.75, squash);
        ring(p, rng, head, 36, r * 0.9, r * 0.09, violet, 0, 1.0, squash);
        floretDisc(p, head, r * 0.22, QColor(250, 210, 50), QColor(210, 150, 30), r * 0.028);
        break;
    }
    case 5: { // rose, seen from above: rings of petals curling inwards
        const double r = unit * 0.22;
        headShadow(r * 1.2);
        const QColor outer(180, 20, 50), inner(110, 5, 30);
        for (int layer = 0; layer < 7; ++layer) {
            const double t = layer / 6.0;
            const double len = r * (1.0 - t * 0.8);
            const int count = 5 + (layer < 3 ? 1 : 0);
            const PetalStyle style{PaintKit::mix(inner, outer, 0.4), PaintKit::mix(outer, inner, t * 0.7), Tip::Round, 0.05};
            ring(p, rng, head, count, len, len * 1.05, style, layer * 37.0, 1.0 - t * 0.35, squash);
        }
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(80, 0, 20));
        p.drawEllipse(head, r * 0.07, r * 0.07 * squash);
        break;
    }
    case 6: { // tulip, seen from the side: a cup of three petals
        const double r = unit * 0.16;
        const QColor base(230, 60, 40), tip(255, 180, 60);
        auto cupPetal = [&](double dx, double widthFactor, double shade) {
            QPainterPath path;
            const QPointF b(head.x() + dx * r * 0.3, head.y() + r * 0.9);
            path.moveTo(b);
            path.cubicTo(b + QPointF(-r * widthFactor, -r * 0.3), b + QPointF(-r * widthFactor * 0.9, -r * 1.6), b + QPointF(dx * r * 0.2, -r * 2.0));
            path.cubicTo(b + QPointF(r * widthFactor * 0.9, -r * 1.6), b + QPointF(r * widthFactor, -r * 0.3), b);
            QLinearGradient g(0, b.y(), 0, b.y() - r * 2.0);
            g.setColorAt(0, PaintKit::shade(base, shade * 0.85));
            g.setColorAt(0.7, PaintKit::shade(base, shade));
            g.setColorAt(1, PaintKit::shade(tip, shade));
            p.setPen(QPen(PaintKit::withAlpha(PaintKit::shade(base, 0.6), 0.6), std::max(1.0, r * 0.01)));
            p.setBrush(g);
            p.drawPath(path);
            QLinearGradient side(b.x() - r, 0, b.x() + r, 0);
            side.setColorAt(0, QColor(255, 255, 255, 50));
            side.setColorAt(1, QColor(0, 0, 0, 70));
            p.setPen(Qt::NoPen);
            p.setBrush(side);
            p.drawPath(path);
        };
        // Two long leaves rising from the ground beside the stem.
        for (double side : {-1.0, 1.0}) {
            const QPointF root(head.x() + side * unit * 0.02, h + unit * 0.02);
            const double len = unit * PaintKit::uniform(rng, 0.45, 0.6);
            QPainterPath leaf;
            leaf.moveTo(root + QPointF(-side * unit * 0.04, 0));
            leaf.cubicTo(root + QPointF(side * unit * 0.02, -len * 0.5), root + QPointF(side * unit * 0.2, -len * 0.8),
                         root + QPointF(side * unit * 0.26, -len));
            leaf.cubicTo(root + QPointF(side * unit * 0.12, -len * 0.6), root + QPointF(side * unit * 0.1, -len * 0.2),
                         root + QPointF(side * unit * 0.08, 0));
            leaf.closeSubpath();
            QLinearGradient lg(root.x() - unit * 0.05, 0, root.x() + side * unit * 0.25, 0);
            lg.setColorAt(0, PaintKit::shade(leafGreen, side < 0 ? 1.2 : 0.8));
            lg.setColorAt(1, PaintKit::shade(leafGreen, side < 0 ? 0.85 : 1.1));
            p.setPen(Qt::NoPen);
            p.setBrush(lg);
            p.drawPath(leaf);
        }
        cupPetal(-1.2, 0.7, 0.8);
        cupPetal(1.2, 0.7, 0.8);
        cupPetal(0, 0.85, 1.0);
        // Fine streaks running up the front petal.
        p.setPen(QPen(QColor(255, 200, 120, 28), std::max(1.0, r * 0.012)));
        for (int k = -4; k <= 4; ++k) {
            QPainterPath streak;
            const QPointF b(head.x() + k * r * 0.05, head.y() + r * 0.8);
            streak.moveTo(b);
            streak.quadTo(b + QPointF(k * r * 0.12, -r * 0.9), b + QPointF(k * r * 0.06, -r * 1.75));
            p.setBrush(Qt::NoBrush);
            p.drawPath(streak);
        }
        break;
    }
    case 7: { // water lily on a pond, with pads
        for (int i = 0; i < 5; ++i) {
            const QPointF c(PaintKit::uniform(rng, 0.1, 0.9) * w, PaintKit::uniform(rng, 0.55, 0.95) * h);
            const double pr = unit * PaintKit::uniform(rng, 0.12, 0.2);
            const double notch = PaintKit::uniform(rng, 0, 360);
            QRadialGradient g(c - QPointF(pr * 0.3, pr * 0.2), pr * 1.3);
            g.setColorAt(0, QColor(110, 170, 70));
            g.setColorAt(1, QColor(40, 90, 40));
            p.setPen(QPen(QColor(30, 60, 30, 150), std::max(1.0, pr * 0.01)));
            p.setBrush(g);
            p.drawPie(QRectF(c.x() - pr, c.y() - pr * 0.4, pr * 2, pr * 0.8), int((notch + 12) * 16), int(336 * 16));
        }
        const double r = unit * 0.2;
        const PetalStyle pink{QColor(240, 200, 215), QColor(235, 110, 160), Tip::Pointed, 0.15};
        const double flat = 0.45;
        ring(p, rng, head, 10, r * 1.2, r * 0.35, pink, 9, 0.8, flat);
        ring(p, rng, head, 9, r, r * 0.35, pink, 0, 0.95, flat);
        // Inner petals stand up around the centre.
        for (int i = 0; i < 7; ++i) {
            const double a = -150 + i * 20 + PaintKit::uniform(rng, -5, 5);
            petal(p, head + QPointF(0, r * 0.05), a, r * 0.7, r * 0.3, pink, 1.05);
        }
        floretDisc(p, head, r * 0.12, QColor(250, 210, 60), QColor(230, 160, 30), r * 0.03);
        break;
    }
    default: { // a loose cluster of small blue five-petalled flowers
        const PetalStyle blue{QColor(70, 110, 210), QColor(150, 190, 250), Tip::Round, 0.1};
        stemAndLeaves(p, rng, head + QPointF(0, unit * 0.1), h, unit, leafGreen);
        for (int i = 0; i < 24; ++i) {
            const double a = PaintKit::uniform(rng, 0, 2 * M_PI);
            const double d = unit * 0.2 * std::sqrt(rng.generateDouble());
            const QPointF c(head.x() + std::cos(a) * d, head.y() + std::sin(a) * d * 0.8);
            const double r = unit * PaintKit::uniform(rng, 0.035, 0.055);
            ring(p, rng, c, 5, r, r * 0.9, blue, PaintKit::uniform(rng, 0, 72), PaintKit::uniform(rng, 0.85, 1.05), 0.9);
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(255, 240, 150));
            p.drawEllipse(c, r * 0.18, r * 0.18);
            p.setBrush(QColor(250, 250, 240));
            p.drawEllipse(c, r * 0.08, r * 0.08);
        }
        break;
    }
    }
    p.end();
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}
