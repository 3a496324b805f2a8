#include "ObjectPainter.h"

#include "Noise.h"
#include "PaintKit.h"
#include "SkyPainter.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace {

QImage canvas(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    return image;
}

// Soft discs of light, as out-of-focus highlights in a photo's background.
void bokehLights(QImage &image, QRandomGenerator &rng, int count, double minR, double maxR,
                 const std::vector<QColor> &palette, double alpha, const QRectF &region)
{
    QImage layer(image.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter p(&layer);
    p.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < count; ++i) {
        const double r = PaintKit::uniform(rng, minR, maxR);
        const QPointF c(PaintKit::uniform(rng, region.left(), region.right()), PaintKit::uniform(rng, region.top(), region.bottom()));
        const QColor colour = palette[size_t(rng.bounded(int(palette.size())))];
        QRadialGradient g(c, r);
        g.setColorAt(0, PaintKit::withAlpha(colour, alpha * 0.7));
        g.setColorAt(0.85, PaintKit::withAlpha(colour, alpha * 0.85));
        g.setColorAt(1, PaintKit::withAlpha(colour, alpha));
        p.setPen(Qt::NoPen);
        p.setBrush(g);
        p.drawEllipse(c, r, r);
    }
    p.end();
    const QImage soft = PaintKit::blurred(layer, minR * 0.15 + 1);
    QPainter out(&image);
    out.setCompositionMode(QPainter::CompositionMode_Screen);
    out.drawImage(0, 0, soft);
}

// A round fruit lit from the upper left with a soft shadow on the table.
void roundFruit(QPainter &p, QPointF c, double r, const QColor &skin, double squash, bool dimpled,
                QRandomGenerator &rng)
{
    p.setPen(Qt::NoPen);
    QRadialGradient shadow(QPointF(c.x() + r * 0.35, c.y() + r * 0.9), r * 1.3);
    shadow.setColorAt(0, QColor(0, 0, 0, 110));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    p.setBrush(shadow);
    p.drawEllipse(QPointF(c.x() + r * 0.35, c.y() + r * 0.9), r * 1.3, r * 0.35);
    QRadialGradient g(QPointF(c.x() - r * 0.35, c.y() - r * 0.4), r * 1.5);
    g.setColorAt(0, PaintKit::shade(skin, 1.25));
    g.setColorAt(0.45, skin);
    g.setColorAt(0.9, PaintKit::shade(skin, 0.5));
    g.setColorAt(1, PaintKit::shade(skin, 0.45));
    p.setBrush(g);
    p.drawEllipse(c, r, r * squash);
    if (dimpled) {
        // Peel pores.
        for (int i = 0; i < int(r * 1.5); ++i) {
            const double a = PaintKit::uniform(rng, 0, 2 * M_PI);
            const double d = std::sqrt(rng.generateDouble()) * r * 0.92;
            p.setBrush(QColor(0, 0, 0, 18));
            p.drawEllipse(QPointF(c.x() + std::cos(a) * d, c.y() + std::sin(a) * d * squash), r * 0.015 + 0.5, r * 0.015 + 0.5);
        }
    }
    // Specular highlight.
    QRadialGradient hl(QPointF(c.x() - r * 0.38, c.y() - r * 0.42), r * 0.35);
    hl.setColorAt(0, QColor(255, 255, 255, 150));
    hl.setColorAt(1, QColor(255, 255, 255, 0));
    p.setBrush(hl);
    p.drawEllipse(QPointF(c.x() - r * 0.38, c.y() - r * 0.42), r * 0.35, r * 0.3);
}

void leafAt(QPainter &p, QPointF base, double len, double angle, const QColor &colour)
{
    p.save();
    p.translate(base);
    p.rotate(angle);
    QPainterPath leaf;
    leaf.moveTo(0, 0);
    leaf.cubicTo(len * 0.3, -len * 0.3, len * 0.7, -len * 0.25, len, 0);
    leaf.cubicTo(len * 0.7, len * 0.25, len * 0.3, len * 0.3, 0, 0);
    QLinearGradient g(0, -len * 0.2, 0, len * 0.2);
    g.setColorAt(0, PaintKit::shade(colour, 1.25));
    g.setColorAt(1, PaintKit::shade(colour, 0.7));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawPath(leaf);
    p.setPen(QPen(PaintKit::shade(colour, 1.4), std::max(1.0, len * 0.02)));
    p.drawLine(QPointF(0, 0), QPointF(len * 0.85, 0));
    p.restore();
}

// A hot-air balloon: an envelope of coloured gores, a basket on ropes.
void hotAirBalloon(QPainter &p, QPointF top, double size, const std::vector<QColor> &gores, double haze, const QColor &hazeColour)
{
    const double r = size / 2;
    QPainterPath envelope;
    const QPointF c(top.x(), top.y() + r);
    envelope.moveTo(c.x(), top.y());
    envelope.cubicTo(c.x() + r * 1.35, top.y(), c.x() + r * 1.1, c.y() + r * 0.9, c.x() + r * 0.25, c.y() + r * 1.45);
    envelope.lineTo(c.x() - r * 0.25, c.y() + r * 1.45);
    envelope.cubicTo(c.x() - r * 1.1, c.y() + r * 0.9, c.x() - r * 1.35, top.y(), c.x(), top.y());
    p.save();
    p.setClipPath(envelope);
    // Twice round the colour scheme: a dozen or more gores across the visible half.
    const int n = int(gores.size()) * 2;
    for (int i = 0; i < n; ++i) {
        // Gores narrow towards the sides, as on a sphere seen from the front.
        const double a0 = -M_PI / 2 + M_PI * i / n;
        const double a1 = -M_PI / 2 + M_PI * (i + 1) / n;
        const double x0 = c.x() + std::sin(a0) * r * 1.25;
        const double x1 = c.x() + std::sin(a1) * r * 1.25;
        p.fillRect(QRectF(x0, top.y(), x1 - x0 + 0.5, size * 1.5), PaintKit::mix(gores[size_t(i) % gores.size()], hazeColour, haze));
    }
    // Round shading over the gores.
    QRadialGradient shading(QPointF(c.x() - r * 0.4, c.y() - r * 0.3), r * 1.7);
    shading.setColorAt(0, QColor(255, 255, 255, 70));
    shading.setColorAt(0.5, QColor(0, 0, 0, 0));
    shading.setColorAt(1, QColor(0, 0, 0, 120));
    p.fillRect(QRectF(c.x() - r * 1.5, top.y(), r * 3, size * 1.6), shading);
    p.restore();
    // Ropes and basket.
    const QColor rope = PaintKit::mix(QColor(60, 45, 35), hazeColour, haze);
    p.setPen(QPen(rope, std::max(0.8, size * 0.008)));
    const double mouth = c.y() + r * 1.45;
    const double basketTop = mouth + r * 0.35;
    p.drawLine(QPointF(c.x() - r * 0.25, mouth), QPointF(c.x() - r * 0.14, basketTop));
    p.drawLine(QPointF(c.x() + r * 0.25, mouth), QPointF(c.x() + r * 0.14, basketTop));
    p.setPen(Qt::NoPen);
    p.setBrush(PaintKit::mix(QColor(120, 80, 45), hazeColour, haze));
    p.drawRoundedRect(QRectF(c.x() - r * 0.16, basketTop, r * 0.32, r * 0.24), r * 0.03, r * 0.03);
}

} // namespace

QImage ObjectPainter::fruit(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const int v = request.variant % 3;
    const bool portrait = h > w;
    const double tableY = h * (portrait ? PaintKit::uniform(rng, 0.4, 0.46) : PaintKit::uniform(rng, 0.5, 0.6));
    const QColor wall = v == 0 ? QColor(90, 110, 120) : v == 1 ? QColor(220, 205, 180) : QColor(60, 55, 70);
    const QColor table = v == 0 ? QColor(150, 100, 60) : v == 1 ? QColor(235, 230, 220) : QColor(110, 75, 50);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // Wall lit from the left, table surface with a soft wood grain.
    QLinearGradient wg(0, 0, w, 0);
    wg.setColorAt(0, PaintKit::shade(wall, 1.2));
    wg.setColorAt(1, PaintKit::shade(wall, 0.6));
    p.fillRect(QRectF(0, 0, w, tableY), wg);
    // Soft daylight from a window off to the left falls on the wall.
    PaintKit::glow(p, QPointF(w * 0.2, tableY * 0.45), std::max(w, h) * 0.6, QColor(255, 245, 225), 0.35);
    const QImage top = PaintKit::field(QSize(int(w), int(h - tableY) + 1), 2, [&](double x, double y) -> QRgb {
        const double depth = y / (h - tableY);   // 0 at the far edge, 1 at the front
        // Grain runs across the picture; boards and their lines crowd together with distance.
        const double v = 1.0 / (0.25 + depth) * 6.0;
        const double warp = noise.fbm(x / (w * 0.3), v * 0.4, 3) * 1.2;
        const double grain = v == 0 ? 0.0 : (std::sin((v * 7 + warp) * M_PI) * 0.5 + 0.5);
        const double plank = std::abs(std::sin(v * M_PI * 0.5 + 0.3));
        double t = 0.75 + 0.3 * depth;
        if (table != QColor(235, 230, 220))
            t += (grain - 0.5) * 0.12 - PaintKit::smoothstep(0.06, 0.0, plank) * 0.35;
        QColor c = PaintKit::shade(table, t);
        c = PaintKit::mix(c, PaintKit::shade(table, 0.5), (x / w) * 0.3);
        return PaintKit::premultiplied(c, 1.0);
    });
    p.drawImage(QPointF(0, tableY), top);
    // The edge of the table catches the light.
    p.fillRect(QRectF(0, tableY - 1, w, std::max(2.0, h * 0.003)), PaintKit::shade(table, 1.3));

    struct Fruit { QColor skin; double squash; bool dimpled; bool stalk; bool leaf; };
    const Fruit oranges{QColor(240, 130, 20), 0.97, true, false, true};
    const Fruit lemons{QColor(245, 210, 50), 0.8, true, false, false};
    const Fruit apples{QColor(190, 30, 30), 0.92, false, true, true};
    const Fruit greenApples{QColor(150, 190, 60), 0.92, false, true, false};
    const Fruit plums{QColor(90, 40, 90), 0.95, false, false, false};
    std::vector<Fruit> kinds;
    if (v == 0) kinds = {oranges, oranges, lemons};
    else if (v == 1) kinds = {apples, greenApples, apples};
    else kinds = {plums, oranges, apples, lemons};

    const double unit = std::min(w, h * 1.2);
    const int count = 5 + int(rng.bounded(3));
    struct Placed { QPointF c; double r; Fruit f; };
    std::vector<Placed> placed;
    for (int i = 0; i < count; ++i) {
        const double r = unit * PaintKit::uniform(rng, 0.07, 0.1) * (portrait ? 1.3 : 1.0);
        const double x = w * 0.5 + (i - (count - 1) / 2.0) * r * (portrait ? 0.9 : 1.45) + PaintKit::uniform(rng, -0.3, 0.3) * r;
        const double y = tableY + (h - tableY) * PaintKit::uniform(rng, 0.3, portrait ? 0.75 : 0.6) - r * 0.5;
        placed.push_back({QPointF(x, y), r, kinds[size_t(rng.bounded(int(kinds.size())))]});
    }
    std::sort(placed.begin(), placed.end(), [](const Placed &a, const Placed &b) { return a.c.y() < b.c.y(); });
    for (const Placed &f : placed) {
        const QColor skin = PaintKit::shade(f.f.skin, PaintKit::uniform(rng, 0.9, 1.1));
        roundFruit(p, f.c, f.r, skin, f.f.squash, f.f.dimpled, rng);
        if (f.f.stalk) {
            p.setPen(QPen(QColor(90, 60, 30), f.r * 0.06, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(f.c.x(), f.c.y() - f.r * f.f.squash * 0.8), QPointF(f.c.x() + f.r * 0.1, f.c.y() - f.r * 1.15));
        }
        if (f.f.leaf && rng.bounded(2))
            leafAt(p, QPointF(f.c.x() + f.r * 0.05, f.c.y() - f.r * f.f.squash * 0.85), f.r * 0.8, PaintKit::uniform(rng, -60, -10),
                   QColor(70, 130, 50));
    }
    p.end();
    // A shallow depth of field: the wall goes soft.
    PaintKit::vignette(image, 0.45);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage ObjectPainter::hotAirBalloons(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const bool morning = request.variant % 2 == 0;
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor skyTop = morning ? QColor(70, 130, 200) : QColor(80, 90, 160);
    const QColor skyLow = morning ? QColor(250, 225, 190) : QColor(250, 180, 130);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, skyTop}, {0.75, skyLow}, {1.0, skyLow}});
    p.end();
    SkyPainter::layeredClouds(image, QRectF(0, 0, w, h * 0.7), rng.generate(),
                              {0.5, w * 0.5, h * 0.05, QColor(255, 240, 230), QColor(190, 170, 180), 0.6, !morning});
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // Valley below: hazy hills.
    for (int i = 0; i < 3; ++i) {
        auto prof = PaintKit::profile(rng, 65, 0.45);
        const double depth = i / 2.0;
        p.setPen(Qt::NoPen);
        p.setBrush(PaintKit::mix(QColor(60, 90, 70), skyLow, 0.7 - depth * 0.45));
        p.drawPath(PaintKit::areaUnder(prof, w, h * (0.82 + 0.07 * i), h * 0.04, h + 2));
    }
    const std::vector<std::vector<QColor>> schemes = {
        {QColor(220, 40, 40), QColor(250, 200, 40), QColor(220, 40, 40), QColor(250, 200, 40), QColor(220, 40, 40), QColor(250, 200, 40), QColor(220, 40, 40), QColor(250, 200, 40)},
        {QColor(40, 90, 190), QColor(240, 240, 240), QColor(40, 90, 190), QColor(240, 240, 240), QColor(40, 90, 190), QColor(240, 240, 240)},
        {QColor(230, 80, 40), QColor(240, 150, 40), QColor(250, 210, 60), QColor(120, 190, 70), QColor(50, 150, 200), QColor(110, 80, 180), QColor(200, 60, 140)},
        {QColor(30, 140, 100), QColor(250, 230, 120), QColor(30, 140, 100), QColor(250, 230, 120), QColor(30, 140, 100)},
        {QColor(150, 40, 120), QColor(240, 120, 170), QColor(150, 40, 120), QColor(240, 120, 170), QColor(150, 40, 120), QColor(240, 120, 170)},
    };
    const int count = 5 + int(rng.bounded(4));
    const double unit = std::min(w, h);
    for (int i = 0; i < count; ++i) {
        const double depth = double(i) / (count - 1);   // far first
        const double s = unit * (0.05 + 0.25 * depth * depth) * PaintKit::uniform(rng, 0.8, 1.2);
        const QPointF top(PaintKit::uniform(rng, 0.08, 0.92) * w, PaintKit::uniform(rng, 0.05, 0.65) * h);
        hotAirBalloon(p, top, s, schemes[size_t(rng.bounded(int(schemes.size())))], (1.0 - depth) * 0.5, skyLow);
    }
    p.end();
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage ObjectPainter::partyBalloons(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, QColor(250, 235, 225)}, {1.0, QColor(235, 200, 210)}});
    p.end();
    bokehLights(image, rng, 40, std::min(w, h) * 0.03, std::min(w, h) * 0.09,
                {QColor(255, 220, 150), QColor(255, 190, 200), QColor(200, 220, 255)}, 0.25, QRectF(0, 0, w, h));
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor colours[] = {QColor(230, 50, 60), QColor(250, 180, 40), QColor(60, 140, 220), QColor(240, 110, 170),
                              QColor(120, 200, 120), QColor(160, 100, 210), QColor(250, 250, 245)};
    const QPointF knot(w * PaintKit::uniform(rng, 0.4, 0.6), h * 1.02);
    const int count = 9 + int(rng.bounded(5));
    const double unit = std::min(w, h);
    struct B { QPointF c; double r; QColor col; };
    std::vector<B> balloons;
    for (int i = 0; i < count; ++i) {
        const double r = unit * PaintKit::uniform(rng, 0.09, 0.14);
        balloons.push_back({QPointF(PaintKit::uniform(rng, 0.12, 0.88) * w, PaintKit::uniform(rng, 0.1, 0.6) * h), r,
                            colours[rng.bounded(int(std::size(colours)))]});
    }
    // Strings first, then balloons from the back.
    for (const B &b : balloons) {
        QPainterPath string;
        const QPointF from(b.c.x(), b.c.y() + b.r * 1.2);
        string.moveTo(from);
        string.cubicTo(from + QPointF(b.r * 0.4, (knot.y() - from.y()) * 0.3), knot + QPointF(-b.r * 0.4, -(knot.y() - from.y()) * 0.4), knot);
        p.setPen(QPen(QColor(120, 110, 110, 160), std::max(1.0, unit * 0.002)));
        p.setBrush(Qt::NoBrush);
        p.drawPath(string);
    }
    for (const B &b : balloons) {
        p.setPen(Qt::NoPen);
        QRadialGradient g(b.c - QPointF(b.r * 0.35, b.r * 0.45), b.r * 1.5);
        g.setColorAt(0, PaintKit::shade(b.col, 1.35));
        g.setColorAt(0.5, b.col);
        g.setColorAt(1, PaintKit::shade(b.col, 0.55));
        p.setBrush(g);
        QPainterPath shape;
        shape.moveTo(b.c.x(), b.c.y() - b.r * 1.1);
        shape.cubicTo(b.c.x() + b.r * 1.3, b.c.y() - b.r * 1.1, b.c.x() + b.r * 0.9, b.c.y() + b.r * 1.0, b.c.x(), b.c.y() + b.r * 1.15);
        shape.cubicTo(b.c.x() - b.r * 0.9, b.c.y() + b.r * 1.0, b.c.x() - b.r * 1.3, b.c.y() - b.r * 1.1, b.c.x(), b.c.y() - b.r * 1.1);
        p.drawPath(shape);
        // Knot.
        QPainterPath tie;
        tie.moveTo(b.c.x(), b.c.y() + b.r * 1.12);
        tie.lineTo(b.c.x() + b.r * 0.08, b.c.y() + b.r * 1.24);
        tie.lineTo(b.c.x() - b.r * 0.08, b.c.y() + b.r * 1.24);
        tie.closeSubpath();
        p.setBrush(PaintKit::shade(b.col, 0.7));
        p.drawPath(tie);
        // Highlight.
        QRadialGradient hl(b.c - QPointF(b.r * 0.4, b.r * 0.5), b.r * 0.3);
        hl.setColorAt(0, QColor(255, 255, 255, 190));
        hl.setColorAt(1, QColor(255, 255, 255, 0));
        p.setBrush(hl);
        p.drawEllipse(b.c - QPointF(b.r * 0.4, b.r * 0.5), b.r * 0.22, b.r * 0.3);
    }
    p.end();
    PaintKit::vignette(image, 0.2);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}

QImage ObjectPainter::lanterns(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const bool sky = request.variant % 2 == 1;
    const double unit = std::min(w, h);
    if (!sky) {
        // Red paper lanterns hanging on a wire at dusk, city lights blurred behind.
        SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, QColor(20, 25, 60)}, {0.6, QColor(60, 45, 80)}, {1.0, QColor(120, 60, 60)}});
        p.end();
        bokehLights(image, rng, 70, unit * 0.015, unit * 0.05,
                    {QColor(255, 180, 90), QColor(255, 220, 150), QColor(255, 120, 80), QColor(150, 180, 255)}, 0.35,
                    QRectF(0, h * 0.3, w, h * 0.7));
        p.begin(&image);
        p.setRenderHint(QPainter::Antialiasing);
        const int rows = 2;
        for (int row = 0; row < rows; ++row) {
            const double y0 = h * (0.12 + 0.35 * row);
            const double sag = h * 0.08;
            const int n = 3 + int(rng.bounded(2)) + row;
            const double scale = unit * (row == 0 ? 0.1 : 0.16);
            QPainterPath wire;
            wire.moveTo(-10, y0);
            wire.quadTo(w / 2, y0 + sag * 2, w + 10, y0);
            p.setPen(QPen(QColor(20, 15, 20), std::max(1.0, unit * 0.003)));
            p.setBrush(Qt::NoBrush);
            p.drawPath(wire);
            for (int i = 0; i < n; ++i) {
                const double t = (i + 0.5) / n;
                const double x = t * w;
                const double y = y0 + sag * 4 * t * (1 - t) + scale * 0.15;
                const double lw = scale * 0.55, lh = scale * 0.7;
                p.setPen(QPen(QColor(20, 15, 20), std::max(1.0, unit * 0.002)));
                p.drawLine(QPointF(x, y - scale * 0.15), QPointF(x, y));
                PaintKit::glow(p, QPointF(x, y + lh * 0.6), scale * 1.8, QColor(255, 140, 60), 0.45);
                QRadialGradient body(QPointF(x, y + lh * 0.55), lw * 1.1);
                body.setColorAt(0, QColor(255, 230, 150));
                body.setColorAt(0.5, QColor(240, 90, 40));
                body.setColorAt(1, QColor(150, 20, 20));
                p.setPen(Qt::NoPen);
                p.setBrush(body);
                p.drawEllipse(QPointF(x, y + lh * 0.6), lw, lh * 0.5);
                // Ribs of the paper shade.
                p.setPen(QPen(QColor(120, 20, 20, 140), std::max(1.0, scale * 0.01)));
                p.setBrush(Qt::NoBrush);
                for (int k = -2; k <= 2; ++k)
                    p.drawEllipse(QPointF(x, y + lh * 0.6), lw * std::abs(k) / 2.5, lh * 0.5);
                // Caps and tassel.
                p.setPen(Qt::NoPen);
                p.setBrush(QColor(40, 25, 15));
                p.drawRect(QRectF(x - lw * 0.35, y + lh * 0.08, lw * 0.7, lh * 0.06));
                p.drawRect(QRectF(x - lw * 0.35, y + lh * 1.06, lw * 0.7, lh * 0.06));
                p.setPen(QPen(QColor(230, 60, 40), std::max(1.0, scale * 0.03)));
                p.drawLine(QPointF(x, y + lh * 1.12), QPointF(x, y + lh * 1.45));
            }
        }
    } else {
        // Sky lanterns rising over a lake at dusk.
        const double waterY = h * PaintKit::uniform(rng, 0.68, 0.75);
        SkyPainter::gradient(p, QRectF(0, 0, w, waterY), {{0.0, QColor(15, 20, 50)}, {0.7, QColor(70, 60, 110)}, {1.0, QColor(200, 110, 90)}});
        auto hills = PaintKit::profile(rng, 65, 0.5);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(15, 15, 30));
        p.drawPath(PaintKit::areaUnder(hills, w, waterY - h * 0.02, h * 0.03, waterY + 1));
        const int count = 60;
        for (int i = 0; i < count; ++i) {
            const double depth = std::pow(rng.generateDouble(), 2.0);
            const double s = unit * (0.008 + 0.05 * depth);
            const QPointF c(PaintKit::uniform(rng, 0, w), PaintKit::uniform(rng, 0.05, 0.9) * waterY * (1.0 - depth * 0.3));
            PaintKit::glow(p, c, s * 4, QColor(255, 160, 60), 0.5);
            QPainterPath body;
            body.moveTo(c.x() - s * 0.45, c.y() - s * 0.5);
            body.lineTo(c.x() + s * 0.45, c.y() - s * 0.5);
            body.lineTo(c.x() + s * 0.35, c.y() + s * 0.5);
            body.lineTo(c.x() - s * 0.35, c.y() + s * 0.5);
            body.closeSubpath();
            QLinearGradient g(0, c.y() - s * 0.5, 0, c.y() + s * 0.5);
            g.setColorAt(0, QColor(255, 160, 70));
            g.setColorAt(1, QColor(255, 240, 180));
            p.setPen(Qt::NoPen);
            p.setBrush(g);
            p.drawPath(body);
        }
        p.end();
        SkyPainter::reflect(image, int(waterY), QColor(10, 15, 35), w * 0.004, rng.generate(), 0.7);
        p.begin(&image);
    }
    p.end();
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 7);
    return image;
}

QImage ObjectPainter::bokeh(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const bool warm = request.variant % 2 == 0;
    QImage image = canvas(size);
    QPainter p(&image);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), warm ? SkyPainter::Stops{{0.0, QColor(25, 15, 20)}, {1.0, QColor(70, 35, 30)}}
                                                     : SkyPainter::Stops{{0.0, QColor(10, 20, 40)}, {1.0, QColor(30, 50, 80)}});
    p.end();
    const double unit = std::min(w, h);
    const std::vector<QColor> palette = warm
        ? std::vector<QColor>{QColor(255, 190, 90), QColor(255, 140, 60), QColor(255, 220, 160), QColor(230, 90, 70)}
        : std::vector<QColor>{QColor(120, 180, 255), QColor(180, 140, 255), QColor(120, 230, 230), QColor(255, 160, 220)};
    bokehLights(image, rng, 90, unit * 0.01, unit * 0.04, palette, 0.3, QRectF(0, 0, w, h));
    bokehLights(image, rng, 40, unit * 0.05, unit * 0.12, palette, 0.25, QRectF(0, 0, w, h));
    bokehLights(image, rng, 12, unit * 0.12, unit * 0.2, palette, 0.18, QRectF(0, 0, w, h));
    PaintKit::vignette(image, 0.4);
    PaintKit::addGrain(image, request.seed, 6);
    return image;
}
