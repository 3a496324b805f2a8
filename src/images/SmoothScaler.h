#pragma once

#include <QImage>
#include <QSize>

// Anti-aliased resampling. Shrinking averages every source pixel that falls into a destination
// pixel (a box filter), so fine detail turns into its mean colour instead of moiré; enlarging
// interpolates smoothly.
class SmoothScaler
{
public:
    // The image resampled to exactly `size` (null for an empty size or a null image).
    static QImage scaled(const QImage &image, const QSize &size);
    // Halves the image by averaging 2 x 2 blocks (an odd last row or column is averaged on its
    // own) until one more halving would go below `atLeast`. Cheap, and leaves the final smooth
    // step a factor below two.
    static QImage halvedToAtLeast(const QImage &image, const QSize &atLeast);
};
