#include "SeascapePainter.h"

#include "Noise.h"
#include "PaintKit.h"
#include "SkyPainter.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <numeric>

namespace {

QImage canvas(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    return image;
}

// Short bright horizontal dashes on the water below a light source: the glitter path.
void glitter(QPainter &p, QRandomGenerator &rng, double x, double top, double bottom, double width,
             const QColor &c, int count)
{
    p.setPen(Qt::NoPen);
    for (int i = 0; i < count; ++i) {
        const double t = std::pow(rng.generateDouble(), 1.5);
        const double y = top + (bottom - top) * t;
        const double spread = width * (0.15 + t * 1.2);
        const double dx = spread * (rng.generateDouble() + rng.generateDouble() - 1.0);
        const double len = width * PaintKit::uniform(rng, 0.02, 0.12) * (0.3 + t);
        const double thick = std::max(0.8, (bottom - top) * 0.004 * (0.3 + t));
        p.setBrush(PaintKit::withAlpha(c, PaintKit::uniform(rng, 0.25, 0.8) * (1.0 - std::abs(dx) / (spread * 1.2))));
        p.drawEllipse(QPointF(x + dx, y), len, thick);
    }
}

// A small boat with a coloured hull and, if `sail`, a mast and a white sail; `scale` is its length.
void boat(QPainter &p, QRandomGenerator &rng, QPointF waterline, double scale, const QColor &hull, bool sail)
{
    p.setPen(Qt::NoPen);
    QPainterPath body;
    body.moveTo(waterline.x() - scale * 0.5, waterline.y() - scale * 0.14);
    body.lineTo(waterline.x() + scale * 0.52, waterline.y() - scale * 0.16);
    body.quadTo(waterline.x() + scale * 0.4, waterline.y() + scale * 0.02, waterline.x() + scale * 0.3, waterline.y() + scale * 0.03);
    body.lineTo(waterline.x() - scale * 0.38, waterline.y() + scale * 0.03);
    body.quadTo(waterline.x() - scale * 0.47, waterline.y(), waterline.x() - scale * 0.5, waterline.y() - scale * 0.14);
    QLinearGradient g(0, waterline.y() - scale * 0.16, 0, waterline.y() + scale * 0.03);
    g.setColorAt(0, PaintKit::shade(hull, 1.15));
    g.setColorAt(1, PaintKit::shade(hull, 0.6));
    p.setBrush(g);
    p.drawPath(body);
    // Gunwale stripe.
    p.setBrush(PaintKit::shade(hull, 1.6));
    p.drawRect(QRectF(waterline.x() - scale * 0.49, waterline.y() - scale * 0.155, scale * 1.0, scale * 0.025));
    if (sail) {
        const double mastH = scale * PaintKit::uniform(rng, 1.0, 1.3);
        const QPointF foot(waterline.x() + scale * 0.02, waterline.y() - scale * 0.15);
        p.setBrush(QColor(70, 60, 50));
        p.drawRect(QRectF(foot.x() - scale * 0.008, foot.y() - mastH, scale * 0.016, mastH));
        QPainterPath main;
        main.moveTo(foot.x() - scale * 0.02, foot.y() - mastH * 0.97);
        main.quadTo(foot.x() - scale * 0.25, foot.y() - mastH * 0.5, foot.x() - scale * 0.42, foot.y() - scale * 0.06);
        main.lineTo(foot.x() - scale * 0.02, foot.y() - scale * 0.06);
        main.closeSubpath();
        QLinearGradient sg(foot.x() - scale * 0.4, 0, foot.x(), 0);
        sg.setColorAt(0, QColor(250, 248, 240));
        sg.setColorAt(1, QColor(205, 205, 210));
        p.setBrush(sg);
        p.drawPath(main);
        QPainterPath jib;
        jib.moveTo(foot.x() + scale * 0.02, foot.y() - mastH * 0.9);
        jib.lineTo(foot.x() + scale * 0.45, foot.y() - scale * 0.08);
        jib.lineTo(foot.x() + scale * 0.02, foot.y() - scale * 0.08);
        jib.closeSubpath();
        p.setBrush(QColor(235, 232, 225));
        p.drawPath(jib);
    } else {
        // A small cabin.
        p.setBrush(QColor(240, 238, 230));
        p.drawRect(QRectF(waterline.x() - scale * 0.15, waterline.y() - scale * 0.3, scale * 0.3, scale * 0.15));
        p.setBrush(QColor(60, 80, 100));
        p.drawRect(QRectF(waterline.x() - scale * 0.1, waterline.y() - scale * 0.27, scale * 0.2, scale * 0.05));
    }
}

} // namespace

QImage SeascapePainter::sunset(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    struct Palette { QColor top, mid, low, sun, sea, cloud, cloudShadow; };
    const Palette palettes[] = {
        {QColor(40, 60, 120), QColor(230, 120, 80), QColor(255, 200, 110), QColor(255, 225, 150), QColor(40, 45, 80), QColor(255, 170, 110), QColor(120, 70, 100)},
        {QColor(60, 40, 110), QColor(220, 100, 140), QColor(255, 180, 150), QColor(255, 220, 190), QColor(50, 40, 80), QColor(255, 160, 170), QColor(100, 60, 110)},
        {QColor(30, 70, 130), QColor(240, 160, 70), QColor(255, 225, 140), QColor(255, 245, 200), QColor(30, 60, 90), QColor(255, 200, 120), QColor(110, 90, 110)},
    };
    const Palette &pal = palettes[request.variant % 3];
    const double horizon = h * (w > h ? PaintKit::uniform(rng, 0.55, 0.62) : 0.58);
    SkyPainter::gradient(p, QRectF(0, 0, w, horizon), {{0.0, pal.top}, {0.6, pal.mid}, {1.0, pal.low}});
    const QPointF sunAt(w * PaintKit::uniform(rng, 0.3, 0.7), horizon - h * PaintKit::uniform(rng, 0.02, 0.08));
    const double sunR = std::min(w, h) * 0.035;
    p.save();
    p.setClipRect(QRectF(0, 0, w, horizon));
    SkyPainter::sun(p, sunAt, sunR, pal.sun, pal.low);
    p.restore();
    p.end();
    SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon * 0.9), rng.generate(),
                              {0.25, w * 0.45, h * 0.04, pal.cloud, pal.cloudShadow, 0.85, true});
    SkyPainter::reflect(image, int(horizon), pal.sea, w * 0.006, rng.generate(), 0.75);
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // The sea darkens towards the viewer.
    QLinearGradient deep(0, horizon, 0, h);
    deep.setColorAt(0, PaintKit::withAlpha(pal.sea, 0.0));
    deep.setColorAt(1, PaintKit::withAlpha(PaintKit::shade(pal.sea, 0.6), 0.85));
    p.fillRect(QRectF(0, horizon, w, h - horizon), deep);
    glitter(p, rng, sunAt.x(), horizon + 1, h, w * 0.12, pal.sun, int(w * 0.5));
    // Headland in silhouette on one side.
    auto land = PaintKit::profile(rng, 65, 0.5);
    for (size_t i = 0; i < land.size(); ++i) {
        const double t = double(i) / double(land.size() - 1);
        const double edge = sunAt.x() < w / 2 ? PaintKit::smoothstep(0.55, 0.9, t) : 1.0 - PaintKit::smoothstep(0.1, 0.45, t);
        land[i] = (land[i] * 0.3 + 0.7) * edge * 2 - 1;
    }
    p.setPen(Qt::NoPen);
    p.setBrush(PaintKit::shade(pal.sea, 0.45));
    QPainterPath headland = PaintKit::areaUnder(land, w, horizon + 1 - h * 0.05, h * 0.05, horizon + 1);
    p.drawPath(headland);
    p.end();
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage SeascapePainter::beach(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double horizon = h * PaintKit::uniform(rng, 0.36, 0.44);
    SkyPainter::gradient(p, QRectF(0, 0, w, horizon), {{0.0, QColor(30, 110, 200)}, {1.0, QColor(190, 225, 245)}});
    p.end();
    SkyPainter::cumulus(image, QRectF(0, 0, w, horizon * 0.9), rng, 4 + int(rng.bounded(4)),
                        std::min(w, h * 1.5) * 0.35, Qt::white, QColor(150, 170, 200));
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const Noise noise(rng.generate());
    // Sea: deep blue at the horizon to turquoise in the shallows.
    const double shore = horizon + (h - horizon) * PaintKit::uniform(rng, 0.35, 0.5);
    QLinearGradient sea(0, horizon, 0, shore);
    sea.setColorAt(0, QColor(25, 85, 140));
    sea.setColorAt(0.6, QColor(30, 140, 170));
    sea.setColorAt(1, QColor(90, 200, 200));
    p.fillRect(QRectF(0, horizon, w, shore - horizon + h * 0.05), sea);
    p.end();
    SkyPainter::waves(image, int(horizon), rng.generate(), 0.6);
    // Lines of foam where the waves break, nearer ones wider apart and brighter.
    QImage foam(size, QImage::Format_ARGB32_Premultiplied);
    foam.fill(Qt::transparent);
    {
        QPainter f(&foam);
        f.setRenderHint(QPainter::Antialiasing);
        for (int i = 0; i < 5; ++i) {
            const double t = (i + 1) / 6.0;
            const double y = horizon + (shore - horizon) * (0.35 + 0.6 * t);
            // Broken lines: the foam comes and goes along the crest.
            QPointF previous;
            for (int k = 0; k <= 240; ++k) {
                const double x = w * k / 240.0;
                const double dy = noise.fbm(x / (w * 0.25), i * 3.1, 3) * h * 0.02 * (0.5 + t);
                const QPointF at(x, y + dy);
                const double presence = PaintKit::smoothstep(-0.1, 0.35, noise.fbm(x / (w * 0.08), i * 7.7, 3));
                if (k > 0 && presence > 0) {
                    const double alpha = (0.3 + 0.6 * t) * presence;
                    f.setPen(QPen(QColor(255, 255, 255, int(255 * alpha)), std::max(1.5, h * 0.005 * (0.3 + t) * (0.5 + presence)),
                                  Qt::SolidLine, Qt::RoundCap));
                    f.drawLine(previous, at);
                }
                previous = at;
            }
        }
    }
    foam = PaintKit::blurred(foam, h * 0.002);
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.drawImage(0, 0, foam);
    // Sand with a wet band and a foam edge that follows a gently curving shore line.
    const QImage sand = PaintKit::field(QSize(int(w), int(h - shore + h * 0.05)), 2, [&](double x, double y) -> QRgb {
        const double yy = y + shore - h * 0.05;
        const double edge = shore + noise.fbm(x / (w * 0.35), 0.3, 3) * h * 0.015;
        if (yy < edge)
            return 0;
        const double n = noise.fbm(x / (w * 0.01), yy / (h * 0.006), 3);
        const double wet = 1.0 - PaintKit::smoothstep(edge, edge + h * 0.07, yy);
        QColor c = PaintKit::mix(QColor(235, 215, 175), QColor(175, 160, 135), wet * 0.7);
        c = PaintKit::shade(c, 1.0 + n * 0.06);
        const double lace = std::exp(-std::pow((yy - edge) / (h * 0.004), 2));
        c = PaintKit::mix(c, Qt::white, lace * 0.85);
        const double alpha = PaintKit::smoothstep(edge, edge + h * 0.003, yy);
        return PaintKit::premultiplied(c, alpha);
    });
    p.drawImage(QPointF(0, shore - h * 0.05), sand);
    p.end();
    PaintKit::vignette(image, 0.25);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage SeascapePainter::boats(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const int v = request.variant % 3;
    const QColor skyTop = v == 1 ? QColor(120, 150, 200) : v == 2 ? QColor(60, 90, 160) : QColor(50, 120, 195);
    const QColor skyLow = v == 1 ? QColor(250, 215, 190) : v == 2 ? QColor(245, 190, 140) : QColor(200, 225, 240);
    const QColor water = v == 1 ? QColor(80, 110, 140) : v == 2 ? QColor(60, 70, 100) : QColor(40, 100, 130);
    const double horizon = h * PaintKit::uniform(rng, 0.45, 0.55);
    SkyPainter::gradient(p, QRectF(0, 0, w, horizon), {{0.0, skyTop}, {1.0, skyLow}});
    p.end();
    SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon), rng.generate(),
                              {0.4, w * 0.5, h * 0.05, v == 0 ? Qt::white : QColor(255, 220, 200),
                               v == 0 ? QColor(170, 185, 210) : QColor(170, 130, 150), 0.7, v != 0});
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // Far shore with a few houses.
    auto far = PaintKit::profile(rng, 65, 0.45);
    p.setPen(Qt::NoPen);
    const QColor land = PaintKit::mix(QColor(70, 95, 80), skyLow, 0.45);
    p.setBrush(land);
    p.drawPath(PaintKit::areaUnder(far, w, horizon - h * 0.02, h * 0.025, horizon + 1));
    for (int i = 0; i < 12; ++i) {
        const double x = PaintKit::uniform(rng, 0, w);
        const double hw = h * PaintKit::uniform(rng, 0.01, 0.02);
        const double y = horizon - h * 0.005;
        const QColor wall = PaintKit::mix(QColor::fromHsv(int(rng.bounded(50)), 60, 235), skyLow, 0.35);
        p.setBrush(wall);
        p.drawRect(QRectF(x, y - hw, hw * 1.3, hw));
        QPainterPath roof;
        roof.moveTo(x - hw * 0.1, y - hw);
        roof.lineTo(x + hw * 0.65, y - hw * 1.5);
        roof.lineTo(x + hw * 1.4, y - hw);
        roof.closeSubpath();
        p.setBrush(PaintKit::mix(QColor(160, 70, 50), skyLow, 0.35));
        p.drawPath(roof);
    }
    // Boats, far to near; their reflections come from the mirror pass below.
    const int count = 3 + int(rng.bounded(3));
    const QColor hulls[] = {QColor(200, 50, 40), QColor(30, 80, 150), QColor(240, 240, 235), QColor(40, 130, 90), QColor(230, 180, 40)};
    struct Placed { QPointF at; double scale; QColor hull; bool sail; };
    std::vector<Placed> placed;
    // Each boat in its own stretch of water, with its own colour.
    std::vector<int> lanes(static_cast<size_t>(count)), colours(std::size(hulls));
    std::iota(lanes.begin(), lanes.end(), 0);
    std::iota(colours.begin(), colours.end(), 0);
    for (int i = count - 1; i > 0; --i)
        std::swap(lanes[size_t(i)], lanes[rng.bounded(i + 1)]);
    for (int i = int(colours.size()) - 1; i > 0; --i)
        std::swap(colours[size_t(i)], colours[rng.bounded(i + 1)]);
    for (int i = 0; i < count; ++i) {
        const double t = (i + PaintKit::uniform(rng, 0.0, 0.8)) / count;
        const double y = horizon + (h - horizon) * (0.02 + 0.3 * t * t);
        const double scale = std::min(w, h * 1.5) * (0.06 + 0.16 * t);
        const double x = (lanes[size_t(i)] + PaintKit::uniform(rng, 0.3, 0.7)) / count * w;
        placed.push_back({QPointF(x, y), scale, hulls[colours[size_t(i) % colours.size()]], rng.bounded(3) != 0});
    }
    const double waterY = horizon;
    p.end();
    // Paint the boats above a temporary water line, mirror, then put them in place: their
    // reflections then sit right under them.
    QImage boatsLayer(size, QImage::Format_ARGB32_Premultiplied);
    boatsLayer.fill(Qt::transparent);
    QPainter b(&boatsLayer);
    b.setRenderHint(QPainter::Antialiasing);
    for (const Placed &pl : placed)
        boat(b, rng, pl.at, pl.scale, pl.hull, pl.sail);
    b.end();
    // Water: the sky mirrored, then boats reflected individually.
    SkyPainter::reflect(image, int(waterY), water, w * 0.004, rng.generate(), 0.8);
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    for (const Placed &pl : placed) {
        const double top = pl.at.y() - pl.scale * 1.5;
        const QRectF src(pl.at.x() - pl.scale * 0.7, top, pl.scale * 1.4, pl.at.y() - top + pl.scale * 0.03);
        QImage piece = boatsLayer.copy(src.toRect()).mirrored(false, true);
        SkyPainter::rippleRows(piece, pl.scale * 0.04, rng.generate());
        // The reflection fades away from the boat.
        QPainter fade(&piece);
        QLinearGradient g(0, 0, 0, piece.height());
        g.setColorAt(0, QColor(0, 0, 0, 255));
        g.setColorAt(1, QColor(0, 0, 0, 40));
        fade.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        fade.fillRect(piece.rect(), g);
        fade.end();
        p.save();
        p.setOpacity(0.55);
        p.drawImage(QPointF(src.left(), pl.at.y() + pl.scale * 0.03), PaintKit::blurred(piece, std::max(1.0, pl.scale * 0.006)));
        p.restore();
    }
    p.drawImage(0, 0, boatsLayer);
    p.end();
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}

QImage SeascapePainter::cloudscape(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const int v = request.variant % 3;
    const double horizon = h * PaintKit::uniform(rng, 0.8, 0.88);
    if (v == 1) {
        SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, QColor(60, 70, 130)}, {0.6, QColor(230, 130, 110)}, {1.0, QColor(255, 200, 130)}});
        p.end();
        SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon), rng.generate(),
                                  {0.05, w * 0.4, h * 0.08, QColor(255, 190, 150), QColor(110, 70, 110), 0.95, true});
    } else {
        SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, QColor(25, 85, 175)}, {0.7, QColor(120, 175, 225)}, {1.0, QColor(200, 225, 240)}});
        p.end();
        if (v == 2)
            SkyPainter::layeredClouds(image, QRectF(0, 0, w, horizon * 0.6), rng.generate(),
                                      {0.45, w * 0.3, h * 0.03, Qt::white, QColor(190, 205, 230), 0.6, false});
        SkyPainter::cumulus(image, QRectF(0, h * 0.1, w, horizon - h * 0.1), rng, 4 + int(rng.bounded(4)),
                            std::min(w, h * 1.6) * 0.5, Qt::white, QColor(140, 155, 185));
    }
    p.begin(&image);
    p.setRenderHint(QPainter::Antialiasing);
    auto land = PaintKit::profile(rng, 129, 0.4);
    const QColor ground = v == 1 ? QColor(40, 30, 50) : QColor(60, 100, 60);
    p.setPen(Qt::NoPen);
    p.setBrush(ground);
    p.drawPath(PaintKit::areaUnder(land, w, horizon, h * 0.02, h + 2));
    p.end();
    PaintKit::vignette(image, 0.25);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}

QImage SeascapePainter::night(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    QImage image = canvas(size);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const bool aurora = request.variant % 2 == 1;
    const double horizon = h * PaintKit::uniform(rng, 0.7, 0.78);
    SkyPainter::gradient(p, QRectF(0, 0, w, h), {{0.0, QColor(5, 8, 25)}, {0.7, QColor(20, 35, 70)}, {1.0, aurora ? QColor(30, 70, 80) : QColor(60, 60, 95)}});
    p.end();
    SkyPainter::stars(image, QRectF(0, 0, w, horizon), rng, int(w * h / 2500), !aurora);
    if (aurora) {
        const Noise noise(rng.generate());
        const QImage lights = PaintKit::field(QSize(int(w), int(horizon)), 3, [&](double x, double y) -> QRgb {
            // Curtains: a wavy base line, bright rays rising from it and fading upwards.
            const double u = x / w;
            const double baseY = horizon * (0.55 + 0.2 * noise.fbm(u * 2.5, 0.7, 3));
            const double above = (baseY - y) / (horizon * 0.45);
            if (above < -0.4)
                return 0;
            const double rays = PaintKit::clamp01(0.5 + noise.fbm(u * 40, y / horizon * 0.8, 3) * 1.2);
            const double band = PaintKit::clamp01(0.4 + noise.fbm(u * 3, 4.1, 3) * 1.5);
            // The lower edge glows brightest and fades softly below; the rays fade upwards.
            double a = (above < 0 ? 1.35 * std::exp(-std::pow(above / 0.12, 2)) : std::exp(-above * 2.2) + 0.35 * std::exp(-above * 12))
                       * rays * band;
            const QColor c = PaintKit::mix(QColor(90, 255, 160), QColor(170, 90, 220), PaintKit::clamp01(above * 0.9));
            return PaintKit::premultiplied(c, a * 0.85);
        });
        QPainter q(&image);
        q.setCompositionMode(QPainter::CompositionMode_Screen);
        q.drawImage(0, 0, lights);
    } else {
        QPainter q(&image);
        q.setRenderHint(QPainter::Antialiasing);
        const QPointF moon(w * PaintKit::uniform(rng, 0.15, 0.85), h * PaintKit::uniform(rng, 0.12, 0.3));
        const double r = std::min(w, h) * 0.035;
        PaintKit::glow(q, moon, r * 8, QColor(200, 210, 240), 0.35);
        QRadialGradient g(moon - QPointF(r * 0.3, r * 0.3), r * 1.3);
        g.setColorAt(0, QColor(255, 252, 240));
        g.setColorAt(1, QColor(215, 215, 205));
        q.setPen(Qt::NoPen);
        q.setBrush(g);
        q.drawEllipse(moon, r, r);
        // Maria: a few faint grey patches.
        for (int i = 0; i < 6; ++i) {
            q.setBrush(QColor(150, 150, 150, 45));
            q.drawEllipse(moon + QPointF(PaintKit::uniform(rng, -0.5, 0.5) * r, PaintKit::uniform(rng, -0.5, 0.5) * r),
                          r * PaintKit::uniform(rng, 0.12, 0.3), r * PaintKit::uniform(rng, 0.1, 0.25));
        }
    }
    // Lake below the horizon mirrors the sky.
    SkyPainter::reflect(image, int(horizon), QColor(10, 20, 35), w * 0.003, rng.generate(), 0.6);
    QPainter q(&image);
    q.setRenderHint(QPainter::Antialiasing);
    // Far hills and a line of spruce trees in silhouette.
    auto hills = PaintKit::profile(rng, 129, 0.5);
    q.setPen(Qt::NoPen);
    q.setBrush(QColor(8, 12, 20));
    q.drawPath(PaintKit::areaUnder(hills, w, horizon - h * 0.03, h * 0.04, horizon + 1));
    const int trees = int(w / (h * 0.02));
    for (int i = 0; i < trees; ++i) {
        const double x = PaintKit::uniform(rng, 0, w);
        const double th = h * PaintKit::uniform(rng, 0.03, 0.09);
        QPainterPath spruce;
        spruce.moveTo(x, horizon - th);
        const int tiers = 5;
        for (int t = 1; t <= tiers; ++t) {
            const double y = horizon - th + th * t / tiers;
            spruce.lineTo(x + th * 0.05 * t, y - th * 0.05);
            spruce.lineTo(x + th * 0.03 * t, y - th * 0.04);
        }
        spruce.lineTo(x + th * 0.2, horizon + 1);
        spruce.lineTo(x - th * 0.2, horizon + 1);
        for (int t = tiers; t >= 1; --t) {
            const double y = horizon - th + th * t / tiers;
            spruce.lineTo(x - th * 0.03 * t, y - th * 0.04);
            spruce.lineTo(x - th * 0.05 * t, y - th * 0.05);
        }
        spruce.closeSubpath();
        q.setBrush(QColor(5, 8, 14));
        q.drawPath(spruce);
        // Its dim reflection.
        q.save();
        q.translate(0, 2 * horizon);
        q.scale(1, -1);
        q.setOpacity(0.5);
        q.drawPath(spruce);
        q.restore();
    }
    q.end();
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 6);
    return image;
}
