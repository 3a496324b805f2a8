#pragma once

#include <QImage>
#include <QSize>

// Anti-aliased resampling. Shrinking averages every source pixel that falls into a destination
// pixel (a box filter), so fine detail turns into its mean colour instead of moiré; enlarging
// interpolates smoothly.
class SmoothScaler
{
public:
    // The image resampled to exactly `size` (null for an empty size or a null image). Fastest
    // when the sides are multiples of a power of two that keeps them at least `size`.
    static QImage scaled(const QImage &image, const QSize &size);
    // How many halvings take `from` down while staying at least `to` in both directions.
    static int halvingsFor(const QSize &from, const QSize &to);
    // The image halved `times` times by averaging 2 x 2 blocks; an odd last row or column is
    // averaged on its own. Cheap, and exact when the sides are multiples of 2^times.
    static QImage halved(const QImage &image, int times);
};
