#include "LandscapePainter.h"

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

// A broadleaf tree standing at `foot`, `height` tall, its crown of many leaf clumps lit from
// the upper left.
void tree(QPainter &p, QRandomGenerator &rng, QPointF foot, double height, const QColor &leaf,
          const QColor &shadowTint)
{
    const double crown = height * PaintKit::uniform(rng, 0.3, 0.4);
    p.setPen(Qt::NoPen);
    // Shadow on the ground.
    p.setBrush(PaintKit::withAlpha(shadowTint, 0.3));
    p.drawEllipse(QPointF(foot.x() + crown * 0.5, foot.y()), crown * 1.2, crown * 0.16);
    // Trunk, and two limbs into the crown.
    const QColor bark = PaintKit::shade(QColor(70, 55, 40), 0.8);
    p.setPen(QPen(bark, std::max(1.0, height * 0.045), Qt::SolidLine, Qt::RoundCap));
    const QPointF fork(foot.x(), foot.y() - height * 0.45);
    p.drawLine(foot, fork);
    p.setPen(QPen(bark, std::max(1.0, height * 0.025), Qt::SolidLine, Qt::RoundCap));
    p.drawLine(fork, fork + QPointF(-crown * 0.4, -crown * 0.6));
    p.drawLine(fork, fork + QPointF(crown * 0.35, -crown * 0.7));
    p.setPen(Qt::NoPen);
    const QPointF centre(foot.x(), foot.y() - height + crown);
    const int clumps = 28 + int(rng.bounded(16));
    for (int i = 0; i < clumps; ++i) {
        // Back clumps first: drawn in order of a rising "front-ness" so the crown looks round.
        const double t = double(i) / clumps;
        const double a = PaintKit::uniform(rng, 0, 2 * M_PI);
        const double d = std::sqrt(rng.generateDouble()) * (1.0 - t * 0.4);
        const QPointF c = centre + QPointF(std::cos(a) * d * crown * 0.95, std::sin(a) * d * crown * 0.8);
        const double r = crown * PaintKit::uniform(rng, 0.18, 0.32);
        // Upper-left clumps catch the light; the inside of the crown is in shade.
        const double light = PaintKit::clamp01(0.5 - (c.x() - centre.x()) / crown * 0.35 - (c.y() - centre.y()) / crown * 0.45) * (0.4 + 0.6 * t);
        const QColor base = PaintKit::mix(PaintKit::shade(leaf, 0.6), PaintKit::shade(leaf, 1.45), light);
        QRadialGradient g(c + QPointF(-r * 0.35, -r * 0.4), r * 1.5);
        g.setColorAt(0.0, PaintKit::shade(base, 1.15));
        g.setColorAt(1.0, PaintKit::shade(base, 0.7));
        p.setBrush(g);
        p.drawEllipse(c, r, r * 0.9);
    }
}

} // namespace

QImage LandscapePainter::hills(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);

    struct Palette { QColor skyTop, skyLow, haze, near, far, tree; };
    const Palette palettes[] = {
        {QColor(58, 118, 196), QColor(196, 222, 240), QColor(190, 210, 225), QColor(86, 140, 52), QColor(120, 160, 110), QColor(46, 92, 40)},
        {QColor(70, 120, 185), QColor(235, 215, 180), QColor(220, 200, 170), QColor(190, 140, 50), QColor(180, 150, 110), QColor(150, 80, 30)},
        {QColor(150, 165, 190), QColor(245, 225, 200), QColor(235, 225, 215), QColor(90, 125, 70), QColor(160, 170, 160), QColor(50, 80, 50)},
        {QColor(40, 100, 190), QColor(170, 210, 240), QColor(175, 205, 230), QColor(110, 160, 40), QColor(120, 165, 120), QColor(60, 110, 30)},
    };
    const Palette &pal = palettes[request.variant % 4];
    const double horizon = h * PaintKit::uniform(rng, 0.42, 0.55);

    SkyPainter::gradient(p, QRectF(0, 0, w, horizon + h * 0.1),
                         {{0.0, pal.skyTop}, {0.75, pal.skyLow}, {1.0, pal.haze}});
    p.end();
    if (request.variant == 2) {
        SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon), rng.generate(),
                                  {0.3, w * 0.5, h * 0.08, QColor(255, 245, 235), QColor(200, 190, 195), 0.7, false});
    } else {
        SkyPainter::cumulus(image, QRectF(0, 0, w, horizon * 0.85), rng, 3 + int(rng.bounded(4)),
                            std::min(w, h * 1.5) * 0.45, Qt::white, QColor(150, 165, 190));
    }
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);

    const Noise noise(rng.generate());
    // Patches of meadow, and fine grass streaks that only show up close by.
    const QImage meadow = PaintKit::field(size, 2, [&](double x, double y) -> QRgb {
        const double n = noise.fbm(x / (w * 0.12), y / (h * 0.05), 5);
        const double near = PaintKit::smoothstep(horizon, h, y);
        const double grass = noise.fbm(x / (h * 0.004), y / (h * 0.02), 3) * near;
        const int v = std::clamp(int(128 + n * 110 + grass * 90), 0, 255);
        return qRgba(v, v, v, 255);
    });

    const int layers = 5;
    for (int i = 0; i < layers; ++i) {
        const double depth = double(i) / (layers - 1);             // 0 far .. 1 near
        const double base = horizon + (h - horizon) * (0.02 + depth * depth * 0.7);
        const double amplitude = h * (0.03 + 0.07 * depth) * PaintKit::uniform(rng, 0.7, 1.3);
        // A few control points smoothed into rolling hills.
        const auto smooth = PaintKit::smoothed(PaintKit::profile(rng, 9, 0.45), 257);
        const QPainterPath area = PaintKit::areaUnder(smooth, w, base, amplitude, h + 2);
        const double haze = std::pow(1.0 - depth, 1.6) * 0.55;
        QColor ground = PaintKit::mix(pal.near, pal.far, 1.0 - depth);
        ground = PaintKit::mix(ground, QColor::fromHsvF(ground.hueF(), ground.saturationF(), ground.valueF()),
                               rng.generateDouble());
        const QColor top = PaintKit::mix(PaintKit::shade(ground, 1.15), pal.haze, haze);
        const QColor bottom = PaintKit::mix(PaintKit::shade(ground, 0.7), pal.haze, haze * 0.8);
        QLinearGradient g(0, base - amplitude, 0, std::min(h, base + h * 0.25));
        g.setColorAt(0, top);
        g.setColorAt(1, bottom);
        p.setPen(Qt::NoPen);
        p.setBrush(g);
        p.drawPath(area);
        // Meadow texture, stronger on near hills.
        p.save();
        p.setClipPath(area);
        p.setCompositionMode(QPainter::CompositionMode_SoftLight);
        p.setOpacity(0.25 + 0.5 * depth);
        p.drawImage(0, int(i * h * 0.07) % int(h * 0.3) - int(h * 0.15), meadow);
        p.restore();
        if (request.variant == 2 && i < layers - 1) {
            // Morning mist lying in the valley in front of this hill.
            QLinearGradient mist(0, base - amplitude * 0.2, 0, base + h * 0.06);
            mist.setColorAt(0, PaintKit::withAlpha(pal.haze, 0.0));
            mist.setColorAt(0.7, PaintKit::withAlpha(pal.haze, 0.35));
            mist.setColorAt(1, PaintKit::withAlpha(pal.haze, 0.0));
            p.fillRect(QRectF(0, base - amplitude, w, amplitude + h * 0.1), mist);
        }
        // Trees along the nearer hills.
        if (i >= 1 && i < layers - 1) {
            const int trees = int(rng.bounded(2 + i * 2));
            for (int t = 0; t < trees; ++t) {
                const double x = PaintKit::uniform(rng, 0, w);
                const double y = base - amplitude * PaintKit::heightAt(smooth, w, x) + h * 0.01 * depth;
                const double th = h * (0.03 + 0.11 * depth * depth) * PaintKit::uniform(rng, 0.7, 1.2);
                tree(p, rng, QPointF(x, y), th, PaintKit::mix(pal.tree, pal.haze, haze * 0.9),
                     PaintKit::shade(ground, 0.4));
            }
        }
    }
    p.end();
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage LandscapePainter::mountains(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);

    struct Palette { QColor skyTop, skyLow, haze, rock, snow, near; bool lake; };
    const Palette palettes[] = {
        {QColor(45, 105, 185), QColor(185, 215, 240), QColor(170, 195, 220), QColor(95, 90, 95), QColor(245, 248, 252), QColor(40, 70, 45), true},
        {QColor(90, 90, 150), QColor(250, 185, 160), QColor(230, 170, 170), QColor(120, 85, 100), QColor(255, 225, 220), QColor(55, 45, 70), false},
        {QColor(25, 45, 90), QColor(230, 150, 110), QColor(110, 120, 160), QColor(70, 75, 105), QColor(250, 205, 190), QColor(25, 30, 55), false},
        {QColor(60, 130, 200), QColor(200, 225, 240), QColor(180, 205, 225), QColor(110, 105, 100), QColor(250, 250, 255), QColor(45, 85, 50), true},
    };
    const Palette &pal = palettes[request.variant % 4];
    const double waterY = pal.lake ? h * PaintKit::uniform(rng, 0.6, 0.68) : h;
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, pal.skyTop}, {0.6, pal.skyLow}, {1.0, pal.haze}});
    if (request.variant % 4 == 1 || request.variant % 4 == 2) {
        p.end();
        SkyPainter::layeredClouds(image, QRectF(0, 0, w, h * 0.45), rng.generate(),
                                  {0.35, w * 0.6, h * 0.05, QColor(255, 210, 190), QColor(150, 110, 140), 0.8, true});
        p.begin(&image);
        p.setRenderHint(QPainter::Antialiasing);
    } else {
        p.end();
        SkyPainter::cumulus(image, QRectF(0, 0, w, h * 0.35), rng, 2 + int(rng.bounded(3)),
                            std::min(w, h * 1.5) * 0.35, Qt::white, QColor(160, 175, 200));
        p.begin(&image);
        p.setRenderHint(QPainter::Antialiasing);
    }

    const double ground = pal.lake ? waterY : h * 0.82;
    // The main range: rock and snow shaded by ridged noise, lit from the left.
    {
        auto heights = PaintKit::profile(rng, 513, 0.52);
        // Sharpen the peaks and widen the valleys between them.
        for (double &v : heights)
            v = 2 * std::pow((v + 1) / 2, 1.6) - 1;
        const double base = ground - h * 0.02;
        const double amplitude = h * PaintKit::uniform(rng, 0.22, 0.3);
        const double peakBase = base - amplitude;
        const QPainterPath area = PaintKit::areaUnder(heights, w, peakBase + amplitude * 0.0, amplitude, h + 2);
        const Noise noise(rng.generate());
        const double snowLine = peakBase - amplitude * 0.1;
        const int rockTop = std::max(0, int(peakBase - amplitude * 1.05));
        const QImage rock = PaintKit::field(QSize(size.width(), size.height() - rockTop), 2, [&](double x, double fieldY) -> QRgb {
            const double y = fieldY + rockTop;
            const double nx = x / (w * 0.05), ny = y / (h * 0.07);
            const double r = noise.ridged(nx, ny, 5);
            const double rl = noise.ridged(nx - 0.08, ny - 0.04, 5);
            const double light = PaintKit::clamp01(0.5 + (r - rl) * 4.0);
            const double snowEdge = snowLine + noise.fbm(x / (w * 0.03), y / (h * 0.02), 4) * amplitude * 0.35
                                    + r * amplitude * 0.25;
            double snow = 1.0 - PaintKit::smoothstep(snowEdge - amplitude * 0.05, snowEdge + amplitude * 0.05, y);
            snow *= PaintKit::smoothstep(0.25, 0.5, r);
            const QColor rockColour = PaintKit::mix(PaintKit::shade(pal.rock, 0.45), PaintKit::shade(pal.rock, 1.15), light);
            const QColor snowColour = PaintKit::mix(PaintKit::shade(pal.snow, 0.72), pal.snow, light);
            QColor c = PaintKit::mix(rockColour, snowColour, snow);
            c = PaintKit::mix(c, pal.haze, 0.2 + 0.35 * PaintKit::smoothstep(peakBase, base, y));
            return PaintKit::premultiplied(c, 1.0);
        });
        p.save();
        p.setClipPath(area);
        p.drawImage(0, rockTop, rock);
        p.restore();
    }
    // Nearer foothills, darker and less hazy towards the viewer.
    const Noise treeNoise(rng.generate());
    const QImage canopy = PaintKit::field(size, 2, [&](double x, double y) -> QRgb {
        const double n = treeNoise.fbm(x / (h * 0.006), y / (h * 0.005), 3) * 0.7 + treeNoise.fbm(x / (w * 0.1), y / (h * 0.05), 3) * 0.5;
        const int v = std::clamp(int(128 + n * 150), 0, 255);
        return qRgba(v, v, v, 255);
    });
    const int ridges = 3;
    for (int i = 0; i < ridges; ++i) {
        const double depth = double(i + 1) / ridges;
        auto heights = PaintKit::profile(rng, 257, 0.45 + 0.05 * i);
        const double base = ground + h * 0.01 * i;
        const double amplitude = h * PaintKit::uniform(rng, 0.06, 0.12) * (1.0 - depth * 0.4);
        const QPainterPath area = PaintKit::areaUnder(heights, w, base - amplitude * 0.4, amplitude, h + 2);
        QColor c = PaintKit::mix(pal.near, pal.haze, 0.55 * (1.0 - depth) + 0.05);
        QLinearGradient g(0, base - amplitude * 1.4, 0, base);
        g.setColorAt(0, PaintKit::shade(c, 1.1));
        g.setColorAt(1, PaintKit::mix(c, pal.haze, 0.35));
        p.setPen(Qt::NoPen);
        p.setBrush(g);
        p.drawPath(area);
        // Forest on the slopes: a mottled texture of tree crowns.
        p.save();
        p.setClipPath(area);
        p.setCompositionMode(QPainter::CompositionMode_SoftLight);
        p.setOpacity((0.5 + 0.4 * depth) * (request.variant % 4 == 2 ? 0.4 : 1.0));
        p.drawImage(0, 0, canopy);
        p.restore();
        if (i == ridges - 1) {
            // Conifers along the nearest ridge.
            const int count = int(w / (h * 0.012));
            for (int t = 0; t < count; ++t) {
                const double x = PaintKit::uniform(rng, 0, w);
                const double y = base - amplitude * 0.4 - amplitude * PaintKit::heightAt(heights, w, x) + h * 0.004;
                const double th = h * PaintKit::uniform(rng, 0.012, 0.032);
                QPainterPath pine;
                pine.moveTo(x, y - th);
                pine.lineTo(x + th * 0.22, y);
                pine.lineTo(x - th * 0.22, y);
                pine.closeSubpath();
                p.setBrush(PaintKit::shade(c, 0.8));
                p.drawPath(pine);
            }
        }
    }
    p.end();
    if (pal.lake) {
        SkyPainter::reflect(image, int(waterY), PaintKit::mix(pal.skyTop, pal.near, 0.5), w * 0.004, rng.generate(), 0.82);
        QPainter q(&image);
        q.setRenderHint(QPainter::Antialiasing);
        // The near shore, a dark strip of grass and stones.
        auto shore = PaintKit::profile(rng, 65, 0.5);
        const QPainterPath area = PaintKit::areaUnder(shore, w, h * 0.97, h * 0.03, h + 2);
        q.setPen(Qt::NoPen);
        q.setBrush(PaintKit::shade(pal.near, 0.6));
        q.drawPath(area);
    }
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage LandscapePainter::lavender(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const bool evening = request.variant % 2 == 1;
    const double horizon = h * PaintKit::uniform(rng, 0.38, 0.46);
    const QColor skyTop = evening ? QColor(70, 80, 150) : QColor(70, 130, 200);
    const QColor skyLow = evening ? QColor(250, 190, 140) : QColor(210, 225, 240);
    const QColor haze = evening ? QColor(220, 170, 160) : QColor(200, 205, 225);
    SkyPainter::gradient(p, QRectF(0, 0, w, horizon + 2), {{0.0, skyTop}, {1.0, skyLow}});
    if (evening) {
        SkyPainter::sun(p, QPointF(w * PaintKit::uniform(rng, 0.25, 0.75), horizon - h * 0.03), h * 0.025,
                        QColor(255, 230, 170), QColor(255, 180, 120));
    }
    p.end();
    SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon), rng.generate(),
                              {0.45, w * 0.5, h * 0.05, evening ? QColor(255, 200, 180) : Qt::white,
                               evening ? QColor(150, 110, 150) : QColor(175, 185, 210), 0.75, evening});
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // Distant tree line and hills.
    auto far = PaintKit::profile(rng, 129, 0.5);
    p.setPen(Qt::NoPen);
    p.setBrush(PaintKit::mix(QColor(80, 100, 80), haze, 0.6));
    p.drawPath(PaintKit::areaUnder(far, w, horizon - h * 0.01, h * 0.015, h));
    // The field: rows of lavender converging on a vanishing point.
    const QColor soil = QColor(85, 90, 50);
    p.fillRect(QRectF(0, horizon, w, h - horizon), PaintKit::mix(soil, haze, 0.3));
    const double vx = w * PaintKit::uniform(rng, 0.35, 0.65);
    const int rows = 28;
    const double spread = w * 3.2 / rows;
    const QColor bloom = evening ? QColor(120, 80, 170) : QColor(135, 95, 190);
    // Rows far to the sides leave the picture through its left and right edges, so the field
    // fills the whole width up to the horizon.
    const int sideRows = rows * 8;
    for (int k = -sideRows; k <= sideRows; ++k) {
        // Cut each row where it leaves the picture: huge slivers would be slow to fill.
        const double reach = std::min(1.0, w * 1.1 / (std::abs(k) * spread + 1.0));
        const double bottom = horizon + (h - horizon) * reach;
        const double x0 = vx + (k - 0.38) * spread * reach;
        const double x1 = vx + (k + 0.38) * spread * reach;
        QPainterPath row;
        row.moveTo(vx + k * spread * 0.002, horizon);
        row.lineTo(x1, bottom);
        row.lineTo(x0, bottom);
        row.closeSubpath();
        QLinearGradient g(0, horizon, 0, h);
        g.setColorAt(0.0, PaintKit::mix(bloom, haze, 0.7));
        g.setColorAt(0.3, PaintKit::mix(bloom, haze, 0.25));
        g.setColorAt(1.0, PaintKit::shade(bloom, 0.8));
        p.setBrush(g);
        p.drawPath(row);
    }
    // Flower spikes in the near rows, drawn back to front.
    const int spikes = int(w * h / 900);
    std::vector<QPointF> points;
    points.reserve(size_t(spikes));
    for (int i = 0; i < spikes; ++i) {
        const double t = std::pow(rng.generateDouble(), 0.6);  // more towards the viewer
        const double y = horizon + (h - horizon) * (0.25 + 0.75 * t);
        const double along = (y - horizon) / (h - horizon);
        // A point on a row that is in view at this depth.
        const double lo = (-0.02 * w - vx) / (spread * along), hi = (1.02 * w - vx) / (spread * along);
        const int k = int(std::lround(PaintKit::uniform(rng, lo, hi)));
        const double x = vx + (k + PaintKit::uniform(rng, -0.33, 0.33)) * spread * along;
        points.emplace_back(x, y);
    }
    std::sort(points.begin(), points.end(), [](QPointF a, QPointF b) { return a.y() < b.y(); });
    for (const QPointF &pt : points) {
        const double along = (pt.y() - horizon) / (h - horizon);
        const double len = h * 0.05 * along * along;
        const double width = std::max(1.0, len * 0.16);
        QColor c = PaintKit::shade(bloom, PaintKit::uniform(rng, 0.7, 1.25));
        c = PaintKit::mix(c, haze, (1.0 - along) * 0.5);
        const QPointF tip = pt - QPointF(PaintKit::uniform(rng, -0.2, 0.2) * len, len);
        // A green stalk, then the flowering head on its upper half.
        p.setPen(QPen(PaintKit::mix(QColor(90, 110, 60), haze, (1.0 - along) * 0.5), width * 0.5, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(pt, (pt + tip) / 2);
        p.setPen(QPen(c, width, Qt::SolidLine, Qt::RoundCap));
        p.drawLine((pt * 0.45 + tip * 0.55), tip);
    }
    // A lone tree on the horizon.
    const double tx = w * (vx / w < 0.5 ? PaintKit::uniform(rng, 0.65, 0.85) : PaintKit::uniform(rng, 0.15, 0.35));
    tree(p, rng, QPointF(tx, horizon + h * 0.005), h * 0.11, PaintKit::mix(QColor(60, 95, 40), haze, 0.15),
         QColor(40, 40, 40));
    p.end();
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage LandscapePainter::forest(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const bool autumn = request.variant % 2 == 1;
    const QColor fog = autumn ? QColor(235, 215, 180) : QColor(205, 225, 210);
    const QColor deep = autumn ? QColor(90, 60, 40) : QColor(35, 60, 45);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, PaintKit::mix(fog, Qt::white, 0.3)}, {0.6, fog}, {1.0, PaintKit::mix(fog, deep, 0.5)}});
    // Trunks in depth layers: far ones thin and pale, near ones thick, dark and barked; each
    // layer with its own band of foliage overhead.
    const Noise noise(rng.generate());
    const QImage bark = PaintKit::field(size, 2, [&](double x, double y) -> QRgb {
        const double n = noise.fbm(x / (w * 0.004), y / (h * 0.05), 4);
        const int v = std::clamp(int(128 + n * 160), 0, 255);
        return qRgba(v, v, v, 255);
    });
    const QColor foliage = autumn ? QColor(200, 110, 40) : QColor(60, 100, 50);
    const int layers = 6;
    for (int i = 0; i < layers; ++i) {
        const double depth = double(i) / (layers - 1);
        const double veil = 0.85 * std::pow(1.0 - depth, 1.3);
        const QColor leaves = PaintKit::mix(foliage, fog, veil);
        const int count = int(14 - 9 * depth);
        const QColor barkColour = PaintKit::mix(fog, autumn ? QColor(60, 40, 30) : QColor(40, 40, 35), 1.0 - veil);
        for (int t = 0; t < count; ++t) {
            const double x = PaintKit::uniform(rng, -0.05, 1.05) * w;
            const double tw = w * (0.006 + 0.045 * depth * depth) * PaintKit::uniform(rng, 0.7, 1.3);
            const double footY = h * (0.68 + 0.3 * depth) + PaintKit::uniform(rng, -0.02, 0.02) * h;
            const double lean = PaintKit::uniform(rng, -0.03, 0.03) * h;
            QLinearGradient g(x - tw / 2, 0, x + tw / 2, 0);
            g.setColorAt(0.0, PaintKit::shade(barkColour, 1.2));
            g.setColorAt(0.35, barkColour);
            g.setColorAt(1.0, PaintKit::shade(barkColour, 0.65));
            QPainterPath trunk;
            trunk.moveTo(x - tw * 0.38 + lean, -2);
            trunk.lineTo(x + tw * 0.38 + lean, -2);
            trunk.lineTo(x + tw * 0.5, footY - tw * 0.4);
            trunk.quadTo(x + tw * 0.7, footY, x + tw * 1.1, footY);
            trunk.lineTo(x - tw * 1.1, footY);
            trunk.quadTo(x - tw * 0.7, footY, x - tw * 0.5, footY - tw * 0.4);
            trunk.closeSubpath();
            p.setPen(Qt::NoPen);
            p.setBrush(g);
            p.drawPath(trunk);
            if (depth > 0.3) {
                p.save();
                p.setClipPath(trunk);
                p.setCompositionMode(QPainter::CompositionMode_Overlay);
                p.setOpacity(0.5 * depth);
                p.drawImage(0, 0, bark);
                p.restore();
            }
        }
        // Foliage: clumps hanging from the top edge, over the tops of the trunks, out of focus.
        QImage crowns(size, QImage::Format_ARGB32_Premultiplied);
        crowns.fill(Qt::transparent);
        QPainter f(&crowns);
        f.setRenderHint(QPainter::Antialiasing);
        const int clumps = int(160 + 120 * depth);
        for (int k = 0; k < clumps; ++k) {
            const double r = h * PaintKit::uniform(rng, 0.012, 0.035) * (0.6 + depth);
            const QPointF c(PaintKit::uniform(rng, -0.05, 1.05) * w,
                            h * (0.2 - 0.08 * depth) * std::pow(rng.generateDouble(), 1.5) - h * 0.02);
            QRadialGradient g(c + QPointF(-r * 0.3, -r * 0.3), r * 1.4);
            g.setColorAt(0, PaintKit::shade(leaves, 1.1 + 0.1 * depth));
            g.setColorAt(1, PaintKit::shade(leaves, 0.85 - 0.2 * depth));
            f.setPen(Qt::NoPen);
            f.setBrush(g);
            f.drawEllipse(c, r * 1.3, r);
        }
        f.end();
        p.drawImage(0, 0, PaintKit::blurred(crowns, h * 0.004 * (1 + depth * 1.5)));
        // A veil of mist between layers, thicker near the ground.
        QLinearGradient mist(0, 0, 0, h);
        mist.setColorAt(0, PaintKit::withAlpha(fog, 0.08 * (1.0 - depth)));
        mist.setColorAt(0.75, PaintKit::withAlpha(fog, 0.3 * (1.0 - depth)));
        mist.setColorAt(1, PaintKit::withAlpha(fog, 0.1 * (1.0 - depth)));
        p.fillRect(QRectF(0, 0, w, h), mist);
    }
    // Sun rays slanting through the canopy.
    p.end();
    QImage rays(size, QImage::Format_ARGB32_Premultiplied);
    rays.fill(Qt::transparent);
    {
        QPainter r(&rays);
        r.setRenderHint(QPainter::Antialiasing);
        const QPointF source(w * PaintKit::uniform(rng, 0.1, 0.9), -h * 0.2);
        for (int i = 0; i < 14; ++i) {
            const double angle = PaintKit::uniform(rng, -0.5, 0.5) + (source.x() < w / 2 ? 0.25 : -0.25);
            const double spread = PaintKit::uniform(rng, 0.01, 0.04);
            const double len = h * 1.6;
            QPainterPath beam;
            beam.moveTo(source);
            beam.lineTo(source + QPointF(std::sin(angle - spread) * len, std::cos(angle - spread) * len));
            beam.lineTo(source + QPointF(std::sin(angle + spread) * len, std::cos(angle + spread) * len));
            beam.closeSubpath();
            QLinearGradient g(source, source + QPointF(0, len));
            g.setColorAt(0.0, QColor(255, 250, 225, 140));
            g.setColorAt(1.0, QColor(255, 250, 225, 0));
            r.setPen(Qt::NoPen);
            r.setBrush(g);
            r.drawPath(beam);
        }
    }
    rays = PaintKit::blurred(rays, w * 0.01);
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setCompositionMode(QPainter::CompositionMode_Screen);
    p.drawImage(0, 0, rays);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    // Forest floor: ferns or fallen leaves as soft specks.
    const QColor floor = autumn ? QColor(170, 90, 35) : QColor(70, 110, 45);
    QLinearGradient g(0, h * 0.85, 0, h);
    g.setColorAt(0, PaintKit::withAlpha(floor, 0.0));
    g.setColorAt(1, PaintKit::withAlpha(PaintKit::shade(floor, 0.7), 0.9));
    p.fillRect(QRectF(0, h * 0.75, w, h * 0.25), g);
    // Leaves of the undergrowth as small soft specks, the nearest ones out of focus.
    QImage ground(size, QImage::Format_ARGB32_Premultiplied);
    ground.fill(Qt::transparent);
    QPainter q(&ground);
    q.setRenderHint(QPainter::Antialiasing);
    q.setPen(Qt::NoPen);
    for (int i = 0; i < int(w * 6); ++i) {
        const double y = h * (0.8 + 0.2 * std::pow(rng.generateDouble(), 0.6));
        const double x = PaintKit::uniform(rng, 0, w);
        const double r = h * 0.0008 * (1 + (y / h - 0.8) * 40) * PaintKit::uniform(rng, 0.5, 1.5);
        const QColor speck = PaintKit::shade(floor, PaintKit::uniform(rng, 0.45, 1.15));
        q.setBrush(PaintKit::withAlpha(PaintKit::mix(speck, fog, PaintKit::smoothstep(0.9, 0.8, y / h) * 0.6), 0.85));
        q.save();
        q.translate(x, y);
        q.rotate(PaintKit::uniform(rng, -40, 40));
        q.drawEllipse(QPointF(0, 0), r * 2.2, r);
        q.restore();
    }
    q.end();
    p.drawImage(0, 0, PaintKit::blurred(ground, h * 0.0012));
    p.end();
    PaintKit::vignette(image, 0.4);
    PaintKit::addGrain(image, request.seed, 6);
    return image;
}

QImage LandscapePainter::dunes(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const bool late = request.variant % 2 == 1;
    const QColor skyTop = late ? QColor(40, 70, 140) : QColor(30, 90, 170);
    const QColor skyLow = late ? QColor(250, 200, 150) : QColor(190, 215, 235);
    const QColor lit = late ? QColor(240, 160, 90) : QColor(235, 190, 130);
    const QColor dark = late ? QColor(120, 60, 60) : QColor(150, 100, 70);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, skyTop}, {0.45, skyLow}, {1.0, skyLow}});
    p.end();
    const Noise noise(rng.generate());
    const double horizon = h * PaintKit::uniform(rng, 0.38, 0.5);
    const int layers = 4;
    for (int i = 0; i < layers; ++i) {
        const double depth = double(i) / (layers - 1);
        const auto crest = PaintKit::smoothed(PaintKit::profile(rng, 7, 0.5), 513);
        const double base = horizon + (h - horizon) * (0.08 + depth * 0.55);
        const double amplitude = h * (0.05 + 0.08 * depth);
        const QPainterPath area = PaintKit::areaUnder(crest, w, base, amplitude, h + 2);
        const double haze = (1.0 - depth) * 0.45;
        const double ripple = h * (0.004 + 0.01 * depth);
        // Only the rows this dune can cover.
        const int top = std::max(0, int(base - amplitude * 1.05) - 2);
        const QImage sand = PaintKit::field(QSize(size.width(), size.height() - top), 2, [&](double x, double fieldY) -> QRgb {
            const double y = fieldY + top;
            // Faces turned towards the light (rising to the right) are bright, the lee sides dark.
            const double dx = 4.0 / 512.0 * w;
            const double slope = (PaintKit::heightAt(crest, w, x + dx) - PaintKit::heightAt(crest, w, x - dx)) * amplitude / (2 * dx);
            const double crestY = base - amplitude * PaintKit::heightAt(crest, w, x);
            const double below = PaintKit::clamp01((y - crestY) / (h * 0.25));
            double light = PaintKit::smoothstep(-0.25, 0.25, slope * (1.0 - below * 0.7));
            const double r = std::sin((y + noise.fbm(x / (w * 0.1), y / (h * 0.1), 3) * h * 0.05) / ripple * 2 * M_PI);
            light = PaintKit::clamp01(light + r * 0.05 * depth);
            QColor c = PaintKit::mix(dark, lit, light * 0.9 + 0.1 * (1.0 - below));
            c = PaintKit::mix(c, skyLow, haze);
            return PaintKit::premultiplied(c, 1.0);
        });
        QPainter q(&image);
        q.setRenderHint(QPainter::Antialiasing);
        q.setClipPath(area);
        q.drawImage(0, top, sand);
    }
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 6);
    return image;
}
