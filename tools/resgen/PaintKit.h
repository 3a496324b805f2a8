#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>
#include <vector>

class QPainter;

// Small painting helpers shared by every generated picture: colour arithmetic, smooth fields
// evaluated coarsely and enlarged, blur, film grain, vignetting and soft light.
class PaintKit
{
public:
    static double clamp01(double v) { return std::clamp(v, 0.0, 1.0); }
    static double smoothstep(double e0, double e1, double x)
    {
        const double t = clamp01((x - e0) / (e1 - e0));
        return t * t * (3 - 2 * t);
    }
    static double lerp(double a, double b, double t) { return a + (b - a) * t; }
    static QColor mix(const QColor &a, const QColor &b, double t);
    static QColor withAlpha(QColor c, double alpha)
    {
        c.setAlphaF(float(clamp01(alpha)));
        return c;
    }
    static QColor shade(const QColor &c, double factor);   // < 1 darker, > 1 lighter
    static QRgb premultiplied(const QColor &c, double alpha);

    // Uniform draw in [lo, hi).
    static double uniform(QRandomGenerator &rng, double lo, double hi)
    {
        return lo + (hi - lo) * rng.generateDouble();
    }

    // A picture of `size` whose pixel at (x, y) is colour(x, y) (premultiplied ARGB), evaluated
    // every `step` pixels and enlarged smoothly: for slowly varying fields this is as good as
    // evaluating every pixel and many times faster.
    template <class ColourAt>
    static QImage field(QSize size, int step, ColourAt colour)
    {
        const int w = std::max(2, (size.width() + step - 1) / step + 1);
        const int h = std::max(2, (size.height() + step - 1) / step + 1);
        QImage small(w, h, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < h; ++y) {
            auto *line = reinterpret_cast<QRgb *>(small.scanLine(y));
            for (int x = 0; x < w; ++x)
                line[x] = colour(double(x * step), double(y * step));
        }
        if (step == 1)
            return small.copy(0, 0, size.width(), size.height());
        return enlarge(small, size, step);
    }

    // Bilinear enlargement of a grid whose sample (i, j) stands for pixel (i * step, j * step).
    static QImage enlarge(const QImage &grid, QSize size, int step);

    // A Gaussian-like blur of about `radius` pixels (three box passes at a reduced size).
    static QImage blurred(const QImage &image, double radius);
    static void boxBlur(QImage &image, int radius);

    // Monochrome film grain of about `amount` levels, the same for the same seed.
    static void addGrain(QImage &image, quint32 seed, double amount);
    // Darkens the corners by up to `strength` (0..1).
    static void vignette(QImage &image, double strength);
    // A radial glow of colour `c` fading to nothing at `radius`.
    static void glow(QPainter &p, QPointF centre, double radius, const QColor &c, double alpha);

    // A horizon profile of `count` heights in [-1, 1] by midpoint displacement; roughness near
    // 0.5 gives mountains, lower values gentle hills.
    static std::vector<double> profile(QRandomGenerator &rng, int count, double roughness);
    // The area under a profile: heights mapped to baseY - amplitude * h over the full width,
    // closed along the bottom edge at `bottom`.
    static QPainterPath areaUnder(const std::vector<double> &heights, double width, double baseY,
                                  double amplitude, double bottom);
    // A smooth profile of `samples` heights through the coarse one (Catmull-Rom curve).
    static std::vector<double> smoothed(const std::vector<double> &coarse, int samples);
    // Height of the profile at x, interpolated.
    static double heightAt(const std::vector<double> &heights, double width, double x);
};
