#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QRandomGenerator>

#include <utility>
#include <vector>

class QPainter;

// Skies for the generated landscapes: gradients, clouds of two kinds, the sun, stars, and the
// mirrored sky in still water.
class SkyPainter
{
public:
    using Stops = std::vector<std::pair<double, QColor>>;

    // A vertical gradient over `rect` through the given stops (0 = top, 1 = bottom).
    static void gradient(QPainter &p, const QRectF &rect, const Stops &stops);

    struct Layer {
        double coverage = 0.0;      // -1 (overcast) .. 1 (almost clear)
        double scaleX = 400;        // feature size in pixels, across
        double scaleY = 120;        // and down: flat clouds have scaleY << scaleX
        QColor light = Qt::white;   // sunlit side
        QColor shadow = QColor(170, 180, 200);
        double opacity = 0.9;
        bool litFromBelow = false;  // sunset clouds glow underneath
    };
    // Wispy or layered cloud cover drawn over `region` of `image`, fading out at its bottom.
    static void layeredClouds(QImage &image, const QRectF &region, quint32 seed, const Layer &layer);

    // Heaped fair-weather clouds: `count` clusters of soft puffs with flat, shaded bases.
    static void cumulus(QImage &image, const QRectF &region, QRandomGenerator &rng, int count,
                        double size, const QColor &light, const QColor &shadow);

    // A sun disc with its halo.
    static void sun(QPainter &p, QPointF centre, double radius, const QColor &core, const QColor &halo);

    // Stars over `region`, brighter ones with a small glow; a soft band of the galaxy if asked.
    static void stars(QImage &image, const QRectF &region, QRandomGenerator &rng, int count, bool galaxy);

    // Still-water reflection: rows below `waterY` mirror the rows above, slightly shifted per row
    // by ripples, darkened and tinted towards `water` with distance.
    static void reflect(QImage &image, int waterY, const QColor &water, double ripple, quint32 seed,
                        double darken = 0.8);
    // Soft wavelets over the water below `waterY`, flattened and crowded by perspective towards
    // the horizon; `strength` 0..1.
    static void waves(QImage &image, int waterY, quint32 seed, double strength);
    // Shifts each row sideways by a smooth random amount of up to `amplitude` pixels: a
    // reflection broken up by ripples.
    static void rippleRows(QImage &image, double amplitude, quint32 seed);
};
