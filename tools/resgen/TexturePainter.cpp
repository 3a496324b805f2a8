#include "TexturePainter.h"

#include "Noise.h"
#include "PaintKit.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace {

// Soft light falling from the upper left over the whole picture.
void raking(QImage &image, double strength)
{
    QPainter p(&image);
    const double w = image.width(), h = image.height();
    QLinearGradient g(0, 0, w, h);
    g.setColorAt(0, QColor(255, 250, 235, int(90 * strength)));
    g.setColorAt(0.5, QColor(128, 128, 128, 0));
    g.setColorAt(1, QColor(0, 0, 20, int(110 * strength)));
    p.setCompositionMode(QPainter::CompositionMode_SoftLight);
    p.fillRect(image.rect(), g);
}

} // namespace

QImage TexturePainter::wood(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    struct Palette { QColor light, dark; };
    const Palette palettes[] = {
        {QColor(205, 150, 95), QColor(120, 70, 35)},   // oak
        {QColor(150, 90, 60), QColor(70, 35, 20)},     // walnut
        {QColor(225, 195, 150), QColor(160, 120, 80)}, // pine
    };
    const Palette &pal = palettes[request.variant % 3];
    const bool vertical = h > w;
    const double along = vertical ? h : w;
    const double across = vertical ? w : h;
    const int boards = 4 + int(rng.bounded(3));
    const double boardWidth = across / boards;
    // Per board: tone, and where the log's centre lay relative to the board (a centre off to the
    // side gives straight grain; one just past the edge gives the arches of flat-sawn boards).
    std::vector<double> tone(static_cast<size_t>(boards)), pith(tone), apex(tone), offset(tone), joint(tone);
    for (size_t i = 0; i < size_t(boards); ++i) {
        tone[i] = PaintKit::uniform(rng, -0.16, 0.16);
        pith[i] = (rng.bounded(2) ? -1 : 1) * PaintKit::uniform(rng, 0.6, 3.0) * boardWidth + boardWidth / 2;
        apex[i] = PaintKit::uniform(rng, -0.3, 1.3) * along;
        offset[i] = PaintKit::uniform(rng, 0, 1000);
        joint[i] = PaintKit::uniform(rng, 0.2, 0.8) * along;
    }
    const double ringWidth = boardWidth * 0.09;
    QImage image = PaintKit::field(size, 1, [&](double x, double y) -> QRgb {
        const double a = vertical ? y : x;   // along the grain
        const double c = vertical ? x : y;   // across the grain
        const size_t board = size_t(std::clamp(int(c / boardWidth), 0, boards - 1));
        const double local = c - double(board) * boardWidth;
        const bool second = a > joint[board];
        const double o = offset[board] + (second ? 500 : 0);
        const double p = pith[board] + (second ? boardWidth * 0.7 : 0);
        // Distance from the log's centre, the length squeezed so that rings become long arches.
        const double sway = noise.fbm(a / (along * 0.5) + o, local / boardWidth, 3) * ringWidth * 4;
        const double d = std::hypot(local + sway - p, (a - apex[board]) * 0.06) / ringWidth
                         + noise.fbm(a / along + o, local / boardWidth * 3, 2) * 1.5;
        const double ring = d - std::floor(d);
        // Each ring: pale earlywood, then a narrow darker band of latewood.
        const double late = PaintKit::smoothstep(0.55, 0.85, ring) * (1.0 - PaintKit::smoothstep(0.9, 1.0, ring));
        const double streak = noise.at(a / (along * 0.03) + o, local / (boardWidth * 0.012)) * 0.06;
        double t = 0.75 - late * 0.45 + streak + tone[board];
        // Dark seams between boards and at the board ends.
        const double seam = std::min(local, boardWidth - local);
        const double endSeam = std::abs(a - joint[board]);
        t *= PaintKit::smoothstep(0.0, 3.0, std::min(seam, endSeam)) * 0.7 + 0.3;
        const QColor col = PaintKit::mix(pal.dark, pal.light, PaintKit::clamp01(t));
        return PaintKit::premultiplied(col, 1.0);
    });
    raking(image, 0.8);
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}

QImage TexturePainter::pebbles(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const bool wet = request.variant % 2 == 1;
    // Coarse sand between the stones.
    QImage image = PaintKit::field(size, 2, [&](double x, double y) -> QRgb {
        const double n = noise.fbm(x / 40, y / 40, 4);
        const QColor c = wet ? QColor(70, 65, 60) : QColor(150, 135, 115);
        return PaintKit::premultiplied(PaintKit::shade(c, 1.0 + n * 0.3), 1.0);
    });
    PaintKit::addGrain(image, request.seed ^ 0x1234U, 18);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double unit = std::min(w, h);
    struct Stone { QPointF c; double rx, ry, angle; QColor colour; };
    std::vector<Stone> stones;
    const QColor palette[] = {QColor(160, 155, 150), QColor(120, 115, 110), QColor(190, 175, 150), QColor(95, 100, 110),
                              QColor(175, 140, 115), QColor(210, 205, 195), QColor(80, 75, 75)};
    for (int attempt = 0; attempt < 6000 && stones.size() < 400; ++attempt) {
        const double r = unit * PaintKit::uniform(rng, 0.025, 0.085);
        const QPointF c(PaintKit::uniform(rng, -0.05, 1.05) * w, PaintKit::uniform(rng, -0.05, 1.05) * h);
        bool clear = true;
        for (const Stone &s : stones) {
            if (std::hypot(s.c.x() - c.x(), s.c.y() - c.y()) < (std::max(s.rx, s.ry) + r) * 0.82) {
                clear = false;
                break;
            }
        }
        if (!clear)
            continue;
        stones.push_back({c, r, r * PaintKit::uniform(rng, 0.6, 0.9), PaintKit::uniform(rng, 0, 180),
                          PaintKit::shade(palette[rng.bounded(int(std::size(palette)))], PaintKit::uniform(rng, 0.85, 1.15))});
    }
    for (const Stone &s : stones) {
        p.save();
        p.translate(s.c);
        p.rotate(s.angle);
        // Contact shadow, then the stone lit from the upper left, then a wet sheen.
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0, 0, 0, 70));
        p.drawEllipse(QPointF(s.rx * 0.08, s.ry * 0.12), s.rx * 1.04, s.ry * 1.06);
        QRadialGradient g(QPointF(-s.rx * 0.35, -s.ry * 0.4), std::max(s.rx, s.ry) * 1.6);
        g.setColorAt(0, PaintKit::shade(s.colour, 1.25));
        g.setColorAt(0.6, s.colour);
        g.setColorAt(1, PaintKit::shade(s.colour, 0.55));
        p.setBrush(g);
        p.drawEllipse(QPointF(0, 0), s.rx, s.ry);
        if (wet) {
            QRadialGradient hl(QPointF(-s.rx * 0.35, -s.ry * 0.45), s.rx * 0.45);
            hl.setColorAt(0, QColor(255, 255, 255, 120));
            hl.setColorAt(1, QColor(255, 255, 255, 0));
            p.setBrush(hl);
            p.drawEllipse(QPointF(-s.rx * 0.35, -s.ry * 0.45), s.rx * 0.45, s.ry * 0.3);
        }
        p.restore();
    }
    p.end();
    // Speckled mineral texture over everything.
    const QImage speck = PaintKit::field(size, 1, [&](double x, double y) -> QRgb {
        const double n = noise.at(x / 3.0, y / 3.0);
        const int v = std::clamp(int(128 + n * 80), 0, 255);
        return qRgba(v, v, v, 255);
    });
    p.begin(&image);
    p.setCompositionMode(QPainter::CompositionMode_SoftLight);
    p.setOpacity(0.35);
    p.drawImage(0, 0, speck);
    p.end();
    raking(image, 0.6);
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}

QImage TexturePainter::marble(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const double angle = PaintKit::uniform(rng, 0.3, 1.2);
    const double scale = std::min(w, h);
    QImage image = PaintKit::field(size, 2, [&](double x, double y) -> QRgb {
        const double u = (x * std::cos(angle) + y * std::sin(angle)) / scale;
        const double turbulence = noise.fbm(x / scale * 2.2, y / scale * 2.2, 6) * 3.0;
        const double vein = std::abs(std::sin((u * 5.0 + turbulence) * M_PI));
        const double fine = std::abs(std::sin((u * 13.0 + turbulence * 1.7 + 3) * M_PI));
        double t = std::pow(vein, 0.25) * (0.75 + 0.25 * std::pow(fine, 0.4));
        const double cloud = noise.fbm(x / scale * 4 + 7, y / scale * 4, 4) * 0.08;
        QColor c = PaintKit::mix(QColor(95, 95, 105), QColor(242, 240, 236), PaintKit::clamp01(t + cloud));
        // A faint warm tint along the main veins.
        c = PaintKit::mix(c, QColor(200, 170, 130), (1.0 - std::pow(vein, 0.15)) * 0.3);
        return PaintKit::premultiplied(c, 1.0);
    });
    // Polished surface: a broad soft reflection.
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    PaintKit::glow(p, QPointF(w * 0.3, h * 0.25), std::max(w, h) * 0.7, QColor(255, 255, 255), 0.25);
    p.end();
    PaintKit::vignette(image, 0.25);
    PaintKit::addGrain(image, request.seed, 3);
    return image;
}

QImage TexturePainter::sandRipples(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const double wavelength = std::min(w, h) * 0.045;
    QImage image = PaintKit::field(size, 1, [&](double x, double y) -> QRgb {
        const double warp = noise.fbm(x / (w * 0.25), y / (h * 0.25), 4) * wavelength * 3.5;
        const double phase = (y + x * 0.25 + warp) / wavelength;
        // Asymmetric ripples: a long gentle stoss side and a short steep lee side.
        const double f = phase - std::floor(phase);
        const double lit = f < 0.75 ? f / 0.75 : (1.0 - f) / 0.25;
        const double slope = f < 0.75 ? 0.8 : 0.25;
        const double grain = noise.at(x / 1.6, y / 1.6) * 0.06;
        const double t = PaintKit::clamp01(0.35 + lit * slope * 0.7 + grain);
        return PaintKit::premultiplied(PaintKit::mix(QColor(150, 110, 70), QColor(245, 215, 165), t), 1.0);
    });
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    // A few shells and a long shadow at one side.
    for (int i = 0; i < 5; ++i) {
        const QPointF c(PaintKit::uniform(rng, 0.1, 0.9) * w, PaintKit::uniform(rng, 0.1, 0.9) * h);
        const double r = std::min(w, h) * PaintKit::uniform(rng, 0.012, 0.03);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(60, 40, 20, 60));
        p.drawEllipse(c + QPointF(r * 0.4, r * 0.4), r * 1.1, r * 0.8);
        QRadialGradient g(c - QPointF(r * 0.3, r * 0.3), r * 1.4);
        g.setColorAt(0, QColor(255, 245, 235));
        g.setColorAt(1, QColor(220, 170, 150));
        p.setBrush(g);
        p.drawEllipse(c, r, r * 0.75);
    }
    p.end();
    raking(image, 0.7);
    PaintKit::vignette(image, 0.35);
    PaintKit::addGrain(image, request.seed, 6);
    return image;
}

QImage TexturePainter::fabric(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const int v = request.variant % 3;
    // Close enough to see single threads: a coarse linen, a denim twill, a tartan wool.
    const double thread = std::max(5.0, std::min(w, h) / (v == 0 ? 85.0 : v == 1 ? 90.0 : 110.0));
    // Large soft folds, as if the cloth lay loosely on a table.
    const double foldAngle = PaintKit::uniform(rng, 0.3, 1.2);
    const QImage folds = PaintKit::field(size, 4, [&](double x, double y) -> QRgb {
        // Long soft folds running one way, bent and broken up by noise.
        const double u = (x * std::cos(foldAngle) + y * std::sin(foldAngle)) / (std::min(w, h) * 0.35);
        const double warp = noise.fbm(x / (w * 0.5) + 3, y / (h * 0.5), 2) * 0.7;
        const double fold = std::sin((u + warp) * 2 * M_PI) * (0.6 + 0.4 * noise.fbm(x / w + 9, y / h, 2));
        const double n = fold * 0.7 + noise.fbm(x / (w * 0.5), y / (h * 0.3), 3) * 0.4;
        const int g = std::clamp(int(128 + n * 120), 0, 255);
        return qRgba(g, g, g, 255);
    });
    QImage image = PaintKit::field(size, 1, [&](double x, double y) -> QRgb {
        const int col = int(x / thread);
        const int row = int(y / thread);
        const double fx = x / thread - col;
        const double fy = y / thread - row;
        // Plain weave (linen, tartan) or a three-over-one twill (denim): which yarn is on top.
        const bool warpOnTop = v == 1 ? ((col + row) % 4 != 0) : ((col + row) & 1);
        const double across = warpOnTop ? fx : fy;
        // Each yarn is round: bright along its middle, dark in the gaps between yarns.
        const double profile = std::pow(std::sin(across * M_PI), 0.7);
        // Every yarn has its own thickness and tone, varying slowly along it.
        const double yarn = warpOnTop ? noise.at(col * 0.71 + 0.3, y / (thread * 9)) : noise.at(x / (thread * 9), row * 0.71 + 0.3);
        const double fibre = noise.at(warpOnTop ? x / (thread * 0.15) : x / (thread * 2), warpOnTop ? y / (thread * 2) : y / (thread * 0.15)) * 0.08;
        QColor warp, weft;
        if (v == 0) {
            warp = QColor(205, 190, 165);
            weft = QColor(190, 175, 150);
        } else if (v == 1) {
            // Indigo, faded in patches.
            const double fade = PaintKit::smoothstep(-0.2, 0.6, noise.fbm(x / (w * 0.3) + 5, y / (h * 0.3), 3));
            warp = PaintKit::mix(QColor(35, 55, 105), QColor(95, 125, 170), fade * 0.7);
            weft = QColor(165, 170, 185);
        } else {
            // Tartan: the same sett of stripes in both directions.
            auto stripe = [](int i) {
                const int k = ((i % 24) + 24) % 24;
                if (k < 8) return QColor(165, 35, 40);
                if (k < 10) return QColor(30, 40, 70);
                if (k < 12) return QColor(225, 195, 90);
                if (k < 20) return QColor(30, 70, 50);
                return QColor(165, 35, 40);
            };
            warp = stripe(col / 2);
            weft = stripe(row / 2);
        }
        const QColor base = warpOnTop ? warp : weft;
        const double lit = 0.35 + 0.6 * profile + yarn * 0.12 + fibre;
        return PaintKit::premultiplied(PaintKit::shade(base, 0.5 + 0.6 * lit), 1.0);
    });
    QPainter p(&image);
    p.setCompositionMode(QPainter::CompositionMode_SoftLight);
    p.drawImage(0, 0, folds);
    p.end();
    raking(image, 0.6);
    PaintKit::vignette(image, 0.3);
    PaintKit::addGrain(image, request.seed, 4);
    return image;
}

QImage TexturePainter::leaves(const SceneRequest &request)
{
    const QSize size = request.size;
    const double w = size.width(), h = size.height();
    QRandomGenerator rng(request.seed);
    const Noise noise(rng.generate());
    const bool autumn = request.variant % 2 == 1;
    // Damp earth, or a blurred green undergrowth.
    QImage image = PaintKit::field(size, 4, [&](double x, double y) -> QRgb {
        const double n = noise.fbm(x / (w * 0.2), y / (h * 0.2), 4);
        const QColor c = autumn ? QColor(70, 50, 35) : QColor(30, 60, 30);
        return PaintKit::premultiplied(PaintKit::shade(c, 1.0 + n * 0.5), 1.0);
    });
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor greens[] = {QColor(70, 140, 50), QColor(100, 165, 60), QColor(50, 110, 45), QColor(140, 180, 70)};
    const QColor autumns[] = {QColor(220, 120, 30), QColor(200, 60, 30), QColor(235, 180, 50), QColor(160, 80, 40), QColor(190, 150, 60)};
    const double unit = std::min(w, h);
    const int count = 140;
    for (int i = 0; i < count; ++i) {
        const double len = unit * PaintKit::uniform(rng, 0.1, 0.22);
        const double width = len * PaintKit::uniform(rng, 0.35, 0.5);
        const QPointF c(PaintKit::uniform(rng, -0.1, 1.1) * w, PaintKit::uniform(rng, -0.1, 1.1) * h);
        const QColor base = autumn ? autumns[rng.bounded(int(std::size(autumns)))] : greens[rng.bounded(int(std::size(greens)))];
        const QColor colour = PaintKit::shade(base, PaintKit::uniform(rng, 0.8, 1.15));
        p.save();
        p.translate(c);
        p.rotate(PaintKit::uniform(rng, 0, 360));
        QPainterPath leaf;
        leaf.moveTo(-len / 2, 0);
        leaf.cubicTo(-len * 0.2, -width * 0.75, len * 0.25, -width * 0.6, len / 2, 0);
        leaf.cubicTo(len * 0.25, width * 0.6, -len * 0.2, width * 0.75, -len / 2, 0);
        // Shadow onto what lies beneath.
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0, 0, 0, 60));
        p.translate(len * 0.03, len * 0.04);
        p.drawPath(leaf);
        p.translate(-len * 0.03, -len * 0.04);
        QLinearGradient g(0, -width / 2, 0, width / 2);
        g.setColorAt(0, PaintKit::shade(colour, 1.2));
        g.setColorAt(0.5, colour);
        g.setColorAt(1, PaintKit::shade(colour, 0.7));
        p.setBrush(g);
        p.drawPath(leaf);
        // Midrib, veins and stalk.
        const QColor vein = PaintKit::withAlpha(PaintKit::shade(colour, 1.35), 0.7);
        p.setPen(QPen(vein, std::max(1.0, len * 0.012)));
        p.drawLine(QPointF(-len * 0.6, 0), QPointF(len * 0.45, 0));
        p.setPen(QPen(PaintKit::withAlpha(vein, 0.45), std::max(0.8, len * 0.006)));
        for (int k = 1; k < 7; ++k) {
            const double x = -len / 2 + len * k / 7.5;
            const double reach = width * 0.4 * std::sin(M_PI * (k / 7.5));
            p.drawLine(QPointF(x, 0), QPointF(x + len * 0.1, -reach));
            p.drawLine(QPointF(x, 0), QPointF(x + len * 0.1, reach));
        }
        p.restore();
    }
    p.end();
    raking(image, 0.7);
    PaintKit::vignette(image, 0.4);
    PaintKit::addGrain(image, request.seed, 5);
    return image;
}
