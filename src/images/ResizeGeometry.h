#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

class PhotoFraming;

// How an image of a given size is fitted into a target rectangle by one of the four resize
// methods (the same numbers as a photo's alignment). All rectangles have their origin at the
// lower left. The ratios are computed in single precision and rounded half away from zero, so
// that every caller crops the same pixels.
class ResizeGeometry
{
public:
    enum Method {
        ResizeCrop = 0,      // cover the target, crop the overflow equally from both ends
        ResizeCropStart = 1, // cover, keep the left end / the upper end
        ResizeCropEnd = 2,   // cover, keep the right end / the lower end (y = 0)
        ResizeScale = 3,     // fit the whole image inside the target, centred
        ResizeSmart = 4,     // cover, centred on the photo's subject (given as a framing)
    };

    struct Plan {
        QSizeF scaledSize;  // (cw, ch): the image scaled to cover or to fit
        QPointF cropOffset; // (ox, oy) in scaled units; zero for ResizeScale
        QRectF source;      // the region of the image that is drawn, in image points
        QRectF destination; // where it is drawn
        bool drawable = false; // false when a size is empty or the arithmetic degenerates
    };

    // ResizeSmart without a framing is the centred crop.
    static Plan plan(const QSizeF &imageSize, const QRectF &target, int method);
    // With a framing (not null) the target shows the framing's crop of the image, whatever the
    // method; otherwise the same as plan(imageSize, target, method).
    static Plan plan(const QSizeF &imageSize, const QRectF &target, int method, const PhotoFraming &framing);
};
