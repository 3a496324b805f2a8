#pragma once

#include "ImageCanvas.h"
#include "UIImage.h"

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

class PhotoFraming;

// The operations every image offers: fitting into a size by a resize method, letterboxing,
// scaling, the megapixel ceiling, JPEG recompression, thumbnails, content modes and rounded
// clipping. They keep no state; each takes an image and returns a new one, except that
// scaleImageToSize() also sets the point size of the image it is given. Rectangles have their
// origin at the lower left (see BottomLeftCoordinates).
class ImageOperations
{
public:
    // Draws `image` into `rect` of the canvas, fitted by resize method 0-4 (ResizeGeometry), or
    // showing the framing's crop when it is not null.
    static void drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect,
                           ImageCanvas::Operation operation, float fraction, int method);
    static void drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect,
                           ImageCanvas::Operation operation, float fraction, int method, const PhotoFraming &framing);
    // A new image of exactly `size`, transparent where the picture does not reach; `image`
    // itself when a dimension of `size` is 0. High-quality, anti-aliased.
    static UIImage imageToFitSize(const UIImage &image, const QSizeF &size, int method);
    static UIImage imageToFitSize(const UIImage &image, const QSizeF &size, int method, const PhotoFraming &framing);
    static UIImage imageCroppedToFitSize(const UIImage &image, const QSizeF &size); // method 0
    static UIImage imageScaledToFitSize(const UIImage &image, const QSizeF &size);  // method 3
    // A new image of exactly `size`: the picture fitted inside, centred on black, its
    // rectangle widened to whole points.
    static UIImage fitToSize(const UIImage &image, const QSizeF &size);
    // A new image of exactly `size` with the picture scaled to fit inside, centred, the rest
    // transparent. Sets the point size of `image` itself to the scaled size, deliberately:
    // callers hand in images they own.
    static UIImage scaleImageToSize(const UIImage &image, const QSizeF &size);
    // The size an image of `size` points takes under the megapixel ceiling; `size` itself when
    // no shrinking is needed.
    static QSizeF sizeUnderMegaPixels(const QSizeF &size, double megapixels);
    // `image` itself, or a copy scaled down to at most `megapixels` million square points.
    static UIImage scaleToUnderMegaPixels(const UIImage &image, double megapixels);
    // The picture decoded back from a JPEG encoding at `factor` (0 smallest, 1 best).
    static UIImage imageCompressedByFactor(const UIImage &image, float factor);
    // A thumbnail of exactly `size` in content mode 2; the empty image for an invalid image.
    static UIImage imageByScalingProportionallyToSize(const UIImage &image, const QSizeF &size);
    // Replaces `path` by a rectangle whose corners are rounded with `radius` (a plain
    // rectangle for radius 0).
    static void addRoundedRectToPath(QPainterPath &path, const QRectF &rect, qreal radius);
    // Draws `image` into `rect` by content mode 0-12 (ContentModeGeometry).
    static void drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect, int contentMode);
    // The same, clipped to a rounded rectangle when `radius` is not 0.
    static void drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect, double radius, int contentMode);
    static void drawInRectWithRadius(const UIImage &image, ImageCanvas &canvas, const QRectF &rect, double radius)
    {
        drawInRect(image, canvas, rect, radius, 0);
    }
    // A decoded copy of the TIFF encoding, as handed to other toolkits; null when empty.
    static QImage CGImage(const UIImage &image);
};
