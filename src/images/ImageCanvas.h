#pragma once

#include "UIImage.h"

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

#include <memory>

// A drawing target measured in points with the origin at the lower left: either a new image of
// its own (transparent until something is drawn) or someone else's QPainter of a known height.
// Every rectangle and path given to it is converted once, through BottomLeftCoordinates.
// One point is one pixel; an image of a fractional size gets its width and height truncated to
// whole pixels (at least one pixel when the size is not empty).
class ImageCanvas
{
public:
    enum class Operation { Copy = 1, SourceOver = 2 };
    enum class Interpolation { Low = 2, High = 3 };

    // A new transparent image of `size` points. Not valid when the size is empty, not finite,
    // or too large to allocate.
    explicit ImageCanvas(const QSizeF &size);
    // Draws through `painter`, whose surface is `size` points (its height flips the y axis).
    ImageCanvas(QPainter &painter, const QSizeF &size);
    ~ImageCanvas();
    ImageCanvas(const ImageCanvas &) = delete;
    ImageCanvas &operator=(const ImageCanvas &) = delete;

    bool isValid() const { return m_painter != nullptr; }
    QSizeF size() const { return m_size; }
    QPainter *painter() { return m_painter; }

    void setInterpolation(Interpolation quality) { m_interpolation = quality; }
    void save();
    void restore();
    void clipToRect(const QRectF &rect);
    void clipToPath(const QPainterPath &path);
    void fillRect(const QRectF &rect, const QColor &color);
    // Draws the `source` region of `image` (in the image's points, origin lower left) into
    // `destination`. Shrinking is anti-aliased whatever the interpolation setting.
    void drawImage(const UIImage &image, const QRectF &source, const QRectF &destination,
                   Operation operation = Operation::SourceOver, float fraction = 1.0f);

    // Ends drawing and returns the image made (an empty image for a canvas on a painter or an
    // invalid canvas). Call once.
    UIImage takeImage();

    // The whole-pixel size of an image of `size` points.
    static QSize pixelSizeFor(const QSizeF &size);

private:
    QImage m_image;
    std::unique_ptr<QPainter> m_ownPainter;
    QPainter *m_painter = nullptr;
    QSizeF m_size;
    Interpolation m_interpolation = Interpolation::High;
};
