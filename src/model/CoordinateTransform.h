#pragma once

#include <QRectF>
#include <QSizeF>
#include <QString>

struct CollageLayout;

// Mirrors or turns the whole collage: every tile rectangle moves, while each photo stays upright
// and is fitted anew to its moved rectangle (the layout engine already fits photos of the two
// rotations to the swapped size). Applied once, after the layout knows its extent.
class CoordinateTransform
{
public:
    enum Value {
        NoTransform = 0,
        FlippedHorizontally = 1,
        FlippedVertically = 2,
        RotatedLeft = 3,
        RotatedRight = 4,
    };
    static constexpr int kCount = 5;

    // The name shown beside the transform control; an empty string for values outside 0..4 (the
    // control then keeps the text it had).
    static QString name(int transform);
    static bool isValid(int transform) { return transform >= 0 && transform < kCount; }
    static bool isRotation(int transform) { return transform == RotatedLeft || transform == RotatedRight; }

    // The tile rectangle `r` of a collage whose untransformed extent is `extent` (each side
    // truncated to whole points first). Values other than 1..4 leave the rectangle alone.
    static QRectF apply(const QRectF &r, const QSizeF &extent, int transform);

    // Moves every tile of a freshly made layout (its frame and its grid rectangle) for the
    // layout's own transform. The layout's content size is already the turned one; the extent
    // it was laid out in stays as it is.
    static void applyCoordinateTransform(CollageLayout &layout);
};
