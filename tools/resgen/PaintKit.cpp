#include "PaintKit.h"

#include <QPainter>
#include <QRadialGradient>

QColor PaintKit::mix(const QColor &a, const QColor &b, double t)
{
    t = clamp01(t);
    return QColor::fromRgbF(float(lerp(a.redF(), b.redF(), t)), float(lerp(a.greenF(), b.greenF(), t)),
                            float(lerp(a.blueF(), b.blueF(), t)), float(lerp(a.alphaF(), b.alphaF(), t)));
}

QColor PaintKit::shade(const QColor &c, double factor)
{
    if (factor <= 1)
        return mix(Qt::black, c, factor);
    return mix(c, Qt::white, factor - 1);
}

QRgb PaintKit::premultiplied(const QColor &c, double alpha)
{
    const double a = clamp01(alpha) * c.alphaF();
    return qRgba(int(c.red() * a + 0.5), int(c.green() * a + 0.5), int(c.blue() * a + 0.5),
                 int(255 * a + 0.5));
}

QImage PaintKit::enlarge(const QImage &grid, QSize size, int step)
{
    QImage out(size, QImage::Format_ARGB32_Premultiplied);
    const int gw = grid.width();
    const int gh = grid.height();
    // Horizontal weights and sample indices are the same on every row.
    std::vector<int> x0(size_t(size.width())), wx(size_t(size.width()));
    for (int x = 0; x < size.width(); ++x) {
        x0[size_t(x)] = std::min(x / step, gw - 2);
        wx[size_t(x)] = ((x - x0[size_t(x)] * step) << 8) / step;
    }
    for (int y = 0; y < size.height(); ++y) {
        const int y0 = std::min(y / step, gh - 2);
        const int wy = ((y - y0 * step) << 8) / step;
        const auto *top = reinterpret_cast<const QRgb *>(grid.constScanLine(y0));
        const auto *bottom = reinterpret_cast<const QRgb *>(grid.constScanLine(y0 + 1));
        auto *line = reinterpret_cast<QRgb *>(out.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const int i = x0[size_t(x)];
            const int w = wx[size_t(x)];
            const QRgb a = top[i], b = top[i + 1], c = bottom[i], d = bottom[i + 1];
            auto channel = [&](int shift) {
                const int ab = (((a >> shift) & 0xff) * (256 - w) + ((b >> shift) & 0xff) * w);
                const int cd = (((c >> shift) & 0xff) * (256 - w) + ((d >> shift) & 0xff) * w);
                return ((ab * (256 - wy) + cd * wy) + (1 << 15)) >> 16;
            };
            line[x] = qRgba(channel(16), channel(8), channel(0), channel(24));
        }
    }
    return out;
}

void PaintKit::boxBlur(QImage &image, int radius)
{
    if (radius < 1)
        return;
    const int w = image.width();
    const int h = image.height();
    const int window = 2 * radius + 1;
    std::vector<QRgb> buffer(size_t(std::max(w, h)));

    auto blurLine = [&](auto get, auto set, int n) {
        int sum[4] = {0, 0, 0, 0};
        auto add = [&](QRgb c, int sign) {
            sum[0] += sign * qAlpha(c);
            sum[1] += sign * qRed(c);
            sum[2] += sign * qGreen(c);
            sum[3] += sign * qBlue(c);
        };
        for (int i = -radius; i <= radius; ++i)
            add(get(std::clamp(i, 0, n - 1)), 1);
        for (int i = 0; i < n; ++i) {
            buffer[size_t(i)] = qRgba(sum[1] / window, sum[2] / window, sum[3] / window, sum[0] / window);
            add(get(std::min(i + radius + 1, n - 1)), 1);
            add(get(std::max(i - radius, 0)), -1);
        }
        for (int i = 0; i < n; ++i)
            set(i, buffer[size_t(i)]);
    };

    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        blurLine([&](int i) { return line[i]; }, [&](int i, QRgb c) { line[i] = c; }, w);
    }
    for (int x = 0; x < w; ++x) {
        blurLine([&](int i) { return reinterpret_cast<const QRgb *>(image.constScanLine(i))[x]; },
                 [&](int i, QRgb c) { reinterpret_cast<QRgb *>(image.scanLine(i))[x] = c; }, h);
    }
}

QImage PaintKit::blurred(const QImage &image, double radius)
{
    const QSize size = image.size();
    // Blur at a size where the radius is a few pixels; the enlargement is then smooth.
    const double factor = std::max(1.0, radius / 4.0);
    const QSize small(std::max(1, int(size.width() / factor)), std::max(1, int(size.height() / factor)));
    QImage work = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (small != size)
        work = work.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const int r = std::max(1, int(std::lround(radius / factor)));
    for (int pass = 0; pass < 3; ++pass)
        boxBlur(work, r);
    if (small != size)
        work = work.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return work;
}

static inline quint32 mixBits(quint32 h)
{
    h ^= h >> 16;
    h *= 0x7feb352dU;
    h ^= h >> 15;
    h *= 0x846ca68bU;
    h ^= h >> 16;
    return h;
}

void PaintKit::addGrain(QImage &image, quint32 seed, double amount)
{
    const int w = image.width();
    const int h = image.height();
    const int scale = int(amount * 256);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        quint32 state = mixBits(seed ^ (quint32(y) * 0x9e3779b9U));
        for (int x = 0; x < w; ++x) {
            state = state * 1664525U + 1013904223U;
            const quint32 r = mixBits(state);
            // Sum of two uniforms: a triangular spread centred on zero.
            const int n = int(r & 0xff) + int((r >> 8) & 0xff) - 255;
            const int d = (n * scale) >> 16;
            const QRgb c = line[x];
            line[x] = qRgba(std::clamp(qRed(c) + d, 0, 255), std::clamp(qGreen(c) + d, 0, 255),
                            std::clamp(qBlue(c) + d, 0, 255), qAlpha(c));
        }
    }
}

void PaintKit::vignette(QImage &image, double strength)
{
    QPainter p(&image);
    const QRectF r = image.rect();
    const double radius = std::hypot(r.width(), r.height()) / 2;
    QRadialGradient g(r.center(), radius);
    g.setColorAt(0.0, QColor(0, 0, 0, 0));
    g.setColorAt(0.55, QColor(0, 0, 0, 0));
    g.setColorAt(1.0, QColor(0, 0, 0, int(255 * clamp01(strength))));
    p.fillRect(r, g);
}

void PaintKit::glow(QPainter &p, QPointF centre, double radius, const QColor &c, double alpha)
{
    QRadialGradient g(centre, radius);
    g.setColorAt(0.0, withAlpha(c, alpha));
    g.setColorAt(0.25, withAlpha(c, alpha * 0.45));
    g.setColorAt(0.6, withAlpha(c, alpha * 0.1));
    g.setColorAt(1.0, withAlpha(c, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(g);
    p.drawEllipse(centre, radius, radius);
}

std::vector<double> PaintKit::profile(QRandomGenerator &rng, int count, double roughness)
{
    int n = 1;
    while (n < count - 1)
        n *= 2;
    std::vector<double> h(size_t(n + 1), 0.0);
    h[0] = uniform(rng, -0.5, 0.5);
    h[size_t(n)] = uniform(rng, -0.5, 0.5);
    double spread = 1.0;
    for (int step = n; step > 1; step /= 2) {
        for (int i = 0; i < n; i += step) {
            const size_t mid = size_t(i + step / 2);
            h[mid] = (h[size_t(i)] + h[size_t(i + step)]) / 2 + uniform(rng, -spread, spread);
        }
        spread *= roughness;
    }
    double lo = 1e9, hi = -1e9;
    for (double v : h) {
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    for (double &v : h)
        v = hi > lo ? 2 * (v - lo) / (hi - lo) - 1 : 0;
    return h;
}

std::vector<double> PaintKit::smoothed(const std::vector<double> &coarse, int samples)
{
    std::vector<double> out(size_t(std::max(2, samples)));
    const int n = int(coarse.size());
    auto at = [&](int i) { return coarse[size_t(std::clamp(i, 0, n - 1))]; };
    for (size_t k = 0; k < out.size(); ++k) {
        const double pos = double(k) / double(out.size() - 1) * (n - 1);
        const int i = std::min(int(pos), n - 2);
        const double t = pos - i;
        const double p0 = at(i - 1), p1 = at(i), p2 = at(i + 1), p3 = at(i + 2);
        out[k] = 0.5 * ((2 * p1) + (-p0 + p2) * t + (2 * p0 - 5 * p1 + 4 * p2 - p3) * t * t
                        + (-p0 + 3 * p1 - 3 * p2 + p3) * t * t * t);
    }
    return out;
}

double PaintKit::heightAt(const std::vector<double> &heights, double width, double x)
{
    const double pos = clamp01(x / width) * double(heights.size() - 1);
    const size_t i = std::min(size_t(pos), heights.size() - 2);
    const double t = pos - double(i);
    return lerp(heights[i], heights[i + 1], t);
}

QPainterPath PaintKit::areaUnder(const std::vector<double> &heights, double width, double baseY,
                                 double amplitude, double bottom)
{
    QPainterPath path;
    const size_t n = heights.size();
    path.moveTo(-2, bottom);
    for (size_t i = 0; i < n; ++i) {
        const double x = -2 + (width + 4) * double(i) / double(n - 1);
        path.lineTo(x, baseY - amplitude * heights[i]);
    }
    path.lineTo(width + 2, bottom);
    path.closeSubpath();
    return path;
}
