#include "SkyPainter.h"

#include "Noise.h"
#include "PaintKit.h"

#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>

#include <cmath>

void SkyPainter::gradient(QPainter &p, const QRectF &rect, const Stops &stops)
{
    QLinearGradient g(rect.topLeft(), rect.bottomLeft());
    for (const auto &[at, colour] : stops)
        g.setColorAt(at, colour);
    p.fillRect(rect, g);
}

void SkyPainter::layeredClouds(QImage &image, const QRectF &region, quint32 seed, const Layer &layer)
{
    const Noise noise(seed);
    const Noise detail(seed ^ 0x5bd1e995U);
    const QSize size = region.size().toSize();
    const double top = region.top();
    const double height = region.height();
    const QImage cloud = PaintKit::field(size, 4, [&](double x, double y) -> QRgb {
        const double nx = x / layer.scaleX;
        const double ny = (y + top) / layer.scaleY;
        const double warp = detail.fbm(nx * 0.7, ny * 0.7, 3) * 0.6;
        const double density = noise.fbm(nx + warp, ny, 6, 2.0, 0.55);
        double alpha = PaintKit::smoothstep(layer.coverage * 0.5, layer.coverage * 0.5 + 0.35, density);
        // Thin out towards the bottom of the region (the horizon) and a little at the very top.
        alpha *= 1.0 - PaintKit::smoothstep(0.55, 1.0, y / height);
        alpha *= layer.opacity;
        // Light: the denser part of a cloud is its shaded core, unless lit from below.
        const double below = noise.fbm(nx + warp, ny + 0.12, 6, 2.0, 0.55);
        double lit = PaintKit::clamp01(0.55 + (density - below) * 3.0);
        if (layer.litFromBelow)
            lit = 1.0 - lit * 0.8;
        lit = PaintKit::clamp01(lit - PaintKit::smoothstep(0.3, 0.8, density) * 0.35);
        return PaintKit::premultiplied(PaintKit::mix(layer.shadow, layer.light, lit), alpha);
    });
    QPainter p(&image);
    p.drawImage(region.topLeft(), cloud);
}

void SkyPainter::cumulus(QImage &image, const QRectF &region, QRandomGenerator &rng, int count,
                         double size, const QColor &light, const QColor &shadow)
{
    QPainter out(&image);
    const Noise noise(rng.generate());
    for (int c = 0; c < count; ++c) {
        // Distant clouds are smaller and lower.
        const double depth = PaintKit::uniform(rng, 0.0, 1.0);
        const double width = size * PaintKit::lerp(0.35, 1.0, depth) * PaintKit::uniform(rng, 0.7, 1.3);
        const double cx = PaintKit::uniform(rng, region.left() - width * 0.3, region.right() + width * 0.3);
        const double base = region.top() + region.height() * PaintKit::lerp(0.95, 0.35, depth);
        // The heap: puffs along a flat base, higher towards the middle.
        struct Puff { double x, y, r; };
        std::vector<Puff> puffs;
        const int n = 9 + int(rng.bounded(9));
        for (int i = 0; i < n; ++i) {
            const double t = PaintKit::uniform(rng, -0.5, 0.5);
            const double r = width * PaintKit::uniform(rng, 0.1, 0.22) * (1.0 - std::abs(t) * 0.9);
            const double y = base - r * 0.5 - (0.5 - std::abs(t)) * width * PaintKit::uniform(rng, 0.05, 0.35);
            puffs.push_back({cx + t * width, y, r});
        }
        const QRectF box(cx - width * 0.75, base - width * 0.6, width * 1.5, width * 0.62);
        const QSize boxSize = box.size().toSize();
        if (boxSize.isEmpty())
            continue;
        const double scale = width * 0.09;
        const double offset = c * 13.7;
        auto density = [&](double x, double y) {
            double d = -1;
            for (const Puff &p : puffs) {
                const double k = 1.0 - std::hypot(x - p.x, (y - p.y) * 1.1) / p.r;
                d = std::max(d, k);
            }
            // Billows on the surface (only near the heap, so no stray wisps float about).
            d += noise.fbm(x / scale + offset, y / scale, 5, 2.0, 0.55) * 0.45 * PaintKit::smoothstep(-0.25, 0.15, d);
            // A flat, slightly ragged base.
            d -= PaintKit::smoothstep(base - width * 0.06, base + width * 0.02, y) * 0.6;
            return d;
        };
        const double step = std::max(2.0, width * 0.025);
        const QImage cloud = PaintKit::field(boxSize, 2, [&](double lx, double ly) -> QRgb {
            const double x = lx + box.left(), y = ly + box.top();
            const double d = density(x, y);
            const double alpha = PaintKit::smoothstep(0.0, 0.4, d);
            if (alpha <= 0)
                return 0;
            // Lit from above: surfaces whose density rises downwards face the sun.
            const double facing = density(x, y + step) - d;
            const double height = PaintKit::clamp01((base - y) / (width * 0.45));
            double lit = PaintKit::clamp01(0.45 + facing * 3.0 + height * 0.45 - PaintKit::smoothstep(0.3, 0.9, d) * 0.2);
            // Thin edges let light through.
            lit = PaintKit::lerp(lit, 1.0, (1.0 - alpha) * 0.5);
            return PaintKit::premultiplied(PaintKit::mix(shadow, light, lit), alpha * 0.97);
        });
        out.drawImage(box.topLeft(), cloud);
    }
}

void SkyPainter::sun(QPainter &p, QPointF centre, double radius, const QColor &core, const QColor &halo)
{
    p.setRenderHint(QPainter::Antialiasing);
    PaintKit::glow(p, centre, radius * 14, halo, 0.45);
    PaintKit::glow(p, centre, radius * 4, halo, 0.6);
    QRadialGradient g(centre, radius);
    g.setColorAt(0.0, Qt::white);
    g.setColorAt(0.7, core);
    g.setColorAt(1.0, PaintKit::withAlpha(core, 0.9));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawEllipse(centre, radius, radius);
}

void SkyPainter::stars(QImage &image, const QRectF &region, QRandomGenerator &rng, int count, bool galaxy)
{
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double unit = std::max(1.0, image.width() / 1600.0);
    if (galaxy) {
        // A diagonal glowing band with dark lanes.
        const Noise noise(rng.generate());
        const double angle = PaintKit::uniform(rng, -0.5, 0.5);
        const QSize size = region.size().toSize();
        const QImage band = PaintKit::field(size, 4, [&](double x, double y) -> QRgb {
            const double u = (x - size.width() / 2.0) * std::cos(angle) + (y - size.height() * 0.4) * std::sin(angle);
            const double v = -(x - size.width() / 2.0) * std::sin(angle) + (y - size.height() * 0.4) * std::cos(angle);
            const double across = v / (size.height() * 0.18) + noise.fbm(u / 300, 0.5, 3) * 0.6;
            double a = std::exp(-across * across);
            const double dust = noise.fbm(u / 90, v / 90, 5);
            a *= PaintKit::clamp01(0.55 + dust * 1.3);
            a *= 1.0 - PaintKit::smoothstep(0.55, 1.0, y / size.height());
            return PaintKit::premultiplied(QColor(225, 215, 235), a * 0.45);
        });
        p.drawImage(region.topLeft(), band);
    }
    p.setPen(Qt::NoPen);
    for (int i = 0; i < count; ++i) {
        const double x = PaintKit::uniform(rng, region.left(), region.right());
        const double y = region.top() + region.height() * std::pow(rng.generateDouble(), 1.3);
        const double fade = 1.0 - PaintKit::smoothstep(0.5, 1.0, (y - region.top()) / region.height());
        const double b = std::pow(rng.generateDouble(), 3.0);
        const double r = unit * (0.45 + b * 1.3);
        QColor c = PaintKit::mix(QColor(255, 230, 200), QColor(200, 220, 255), rng.generateDouble());
        c.setAlphaF(float(PaintKit::clamp01((0.35 + b) * fade)));
        p.setBrush(c);
        p.drawEllipse(QPointF(x, y), r, r);
        if (b > 0.6)
            PaintKit::glow(p, QPointF(x, y), r * 6, c, 0.35 * fade);
    }
}

void SkyPainter::reflect(QImage &image, int waterY, const QColor &water, double ripple, quint32 seed,
                         double darken)
{
    const Noise noise(seed);
    const int w = image.width();
    const int h = image.height();
    const QImage source = image.copy(0, 0, w, waterY);
    const QRgb tint = water.rgb();
    for (int y = waterY; y < h; ++y) {
        const double distance = double(y - waterY) / std::max(1, h - waterY);
        // Rows further from the horizon mirror rows further up, and waves widen with distance.
        const int sourceY = std::clamp(waterY - 1 - (y - waterY), 0, waterY - 1);
        const double amplitude = ripple * (0.3 + distance * 1.5);
        const double shift = amplitude * noise.fbm(0.5, y / (2.0 + distance * 10.0), 3);
        const int dx = int(std::lround(shift));
        const double toWater = PaintKit::clamp01(0.25 + distance * 0.6);
        const auto *src = reinterpret_cast<const QRgb *>(source.constScanLine(sourceY));
        auto *dst = reinterpret_cast<QRgb *>(image.scanLine(y));
        const int k = int(256 * toWater);
        const int dk = int(256 * darken);
        for (int x = 0; x < w; ++x) {
            const QRgb s = src[std::clamp(x + dx, 0, w - 1)];
            const int r = ((qRed(s) * dk >> 8) * (256 - k) + qRed(tint) * k) >> 8;
            const int g = ((qGreen(s) * dk >> 8) * (256 - k) + qGreen(tint) * k) >> 8;
            const int b = ((qBlue(s) * dk >> 8) * (256 - k) + qBlue(tint) * k) >> 8;
            dst[x] = qRgb(r, g, b);
        }
    }
    waves(image, waterY, seed ^ 0xa5a5a5a5U, 0.35);
}

void SkyPainter::waves(QImage &image, int waterY, quint32 seed, double strength)
{
    const int w = image.width();
    const int h = image.height();
    if (waterY >= h - 1)
        return;
    const Noise noise(seed);
    const double depthSpan = std::max(1, h - waterY);
    const QImage field = PaintKit::field(QSize(w, h - waterY), 2, [&](double x, double y) -> QRgb {
        const double z = y / depthSpan;                      // 0 at the horizon, 1 at the bottom
        const double scale = 0.12 + z;                       // nearer waves look bigger
        const double u = x / (w * 0.06 * scale);
        const double v = y / (h * 0.012 * scale * scale + 1);
        const double n = noise.fbm(u, v, 4, 2.0, 0.5);
        const int g = std::clamp(int(128 + n * 200 * strength * (0.4 + 0.6 * z)), 0, 255);
        return qRgba(g, g, g, 255);
    });
    QPainter p(&image);
    p.setCompositionMode(QPainter::CompositionMode_SoftLight);
    p.drawImage(0, waterY, field);
}

void SkyPainter::rippleRows(QImage &image, double amplitude, quint32 seed)
{
    const Noise noise(seed);
    const int w = image.width();
    std::vector<QRgb> row(size_t(std::max(0, w)));
    for (int y = 0; y < image.height(); ++y) {
        const int dx = int(std::lround(amplitude * noise.fbm(0.5, y / 3.0, 3) * std::min(1.0, y / 20.0)));
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int sx = x + dx;
            row[size_t(x)] = (sx >= 0 && sx < w) ? line[sx] : 0;
        }
        std::copy(row.begin(), row.end(), line);
    }
}
