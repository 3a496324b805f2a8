#pragma once

#include <QList>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>

// The crop rectangle of the image editor, in picture pixels: its aspect choices, its eight
// handles, and how dragging a handle or the inside moves it while it keeps the chosen
// proportions and stays within the picture. The crop tool only draws it and forwards the mouse.
class CropGeometry
{
public:
    enum Aspect { Free = 0, Original, Square, FourThree, ThreeTwo, SixteenNine };
    static constexpr int kAspectCount = 6;
    enum Handle { None = 0, TopLeft, Top, TopRight, Right, BottomRight, Bottom, BottomLeft, Left, Inside };

    // "Free", "Original", "1:1", ...: the titles of the aspect pop-up, in Aspect order.
    static QString aspectTitle(Aspect aspect);
    // Width over height for the aspect on a picture of that size (0 for Free). The fixed ratios
    // follow the picture's orientation: 4:3 on a landscape photo, 3:4 on a portrait one.
    static double ratio(Aspect aspect, const QSizeF &picture);
    // The largest rectangle of the ratio inside `rect`, about the same centre, within bounds;
    // `rect` within bounds for ratio 0.
    static QRectF constrained(const QRectF &rect, double ratio, const QRectF &bounds);
    // The handle at a point, given how near (in picture pixels) counts as on it.
    static Handle handleAt(const QRectF &rect, const QPointF &point, double tolerance);
    // Where a handle sits on the rectangle (its centre for Inside and None).
    static QPointF handlePoint(const QRectF &rect, Handle handle);
    static QList<Handle> handles();
    // The rectangle after dragging `handle` of `start` by `delta`: the opposite corner or side
    // stays, sides keep at least minSize apart, the ratio (when not 0) is kept and everything
    // stays inside bounds. Dragging the inside moves the rectangle.
    static QRectF dragged(const QRectF &start, Handle handle, const QPointF &delta, double ratio,
                          const QRectF &bounds, double minSize = 8);
    // Whole pixels of the rectangle inside a picture of that size (empty when nothing is left).
    static QRect toPixels(const QRectF &rect, const QSize &picture);
};
