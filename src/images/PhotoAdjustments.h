#pragma once

#include <QImage>

// The colour and tone adjustments of the image editor, as one value: each field at 0 leaves
// the picture as it is. Exposure is in stops; the others run from -1 to 1 (sharpness from 0).
// applyTo is pure and thread-safe, so the editor previews on a small copy and applies at full
// size off the main thread with the same code.
struct PhotoAdjustments {
    double exposure = 0;
    double brightness = 0;
    double contrast = 0;
    double saturation = 0;
    double temperature = 0;
    double tint = 0;
    double highlights = 0;
    double shadows = 0;
    double sharpness = 0;

    bool isNeutral() const;
    bool operator==(const PhotoAdjustments &) const = default;

    // The adjusted picture (same size; alpha kept).
    QImage applyTo(const QImage &image) const;
};
