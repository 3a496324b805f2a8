#pragma once

#include <QImage>

class QThreadPool;

// The colour and tone adjustments of the image editor, as one value: each field at 0 leaves
// the picture as it is. applyTo is pure and thread-safe, so the editor previews on a small copy
// and applies at full size off the main thread with the same code.
//
// Ranges (values outside are clamped):
//   exposure     -4..4 stops: linear-light gain (2^exposure); white rolls off softly instead of
//                clipping hard when the gain pushes it past full scale.
//   brightness   -1..1: lifts (or lowers) the midtones, black and white stay put.
//   contrast     -1..1: an S-curve around mid grey (negative flattens towards grey).
//   saturation   -1..1: colour away from (or towards) grey at constant luma; -1 is greyscale.
//   temperature  -1..1: white balance, positive warmer (more red, less blue).
//   tint         -1..1: white balance, positive towards magenta, negative towards green.
//   highlights   -1..1: a tone curve on the bright tones only (negative recovers them).
//   shadows      -1..1: a tone curve on the dark tones only (positive opens them up).
//   sharpness     0..1: an unsharp mask on luma whose radius follows the picture's size, so a
//                screen-sized preview looks like the full-size result shown fitted.
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

    // The adjusted picture, same size, as Format_RGB32, or Format_ARGB32 when the source has
    // an alpha channel (alpha kept as it is). A neutral value returns the image itself; a null
    // image gives a null image, and so does running out of memory. Rows are processed in bands on a private thread pool, so it may
    // be called from any thread, including a thread of the global pool.
    QImage applyTo(const QImage &image) const;
    // The same on the given pool (its threads must not be busy waiting on this call).
    QImage applyTo(const QImage &image, QThreadPool &pool) const;
};
