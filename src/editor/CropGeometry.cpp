#include "editor/CropGeometry.h"

#include <algorithm>
#include <cmath>

QString CropGeometry::aspectTitle(Aspect aspect)
{
    switch (aspect) {
    case Free: return QStringLiteral("Free");
    case Original: return QStringLiteral("Original");
    case Square: return QStringLiteral("1:1");
    case FourThree: return QStringLiteral("4:3");
    case ThreeTwo: return QStringLiteral("3:2");
    case SixteenNine: return QStringLiteral("16:9");
    }
    return QString();
}

double CropGeometry::ratio(Aspect aspect, const QSizeF &picture)
{
    if (picture.width() <= 0 || picture.height() <= 0)
        return 0;
    const bool portrait = picture.height() > picture.width();
    const auto oriented = [portrait](double landscape) { return portrait ? 1.0 / landscape : landscape; };
    switch (aspect) {
    case Free: return 0;
    case Original: return picture.width() / picture.height();
    case Square: return 1;
    case FourThree: return oriented(4.0 / 3.0);
    case ThreeTwo: return oriented(3.0 / 2.0);
    case SixteenNine: return oriented(16.0 / 9.0);
    }
    return 0;
}

QRectF CropGeometry::constrained(const QRectF &rect, double ratio, const QRectF &bounds)
{
    const QRectF inside = rect.normalized().intersected(bounds);
    if (ratio <= 0 || inside.isEmpty())
        return inside;
    QSizeF size = inside.size();
    if (size.width() / size.height() > ratio)
        size.setWidth(size.height() * ratio);
    else
        size.setHeight(size.width() / ratio);
    QRectF result(QPointF(), size);
    result.moveCenter(inside.center());
    return result;
}

QList<CropGeometry::Handle> CropGeometry::handles()
{
    return {TopLeft, Top, TopRight, Right, BottomRight, Bottom, BottomLeft, Left};
}

QPointF CropGeometry::handlePoint(const QRectF &r, Handle handle)
{
    switch (handle) {
    case TopLeft: return r.topLeft();
    case Top: return QPointF(r.center().x(), r.top());
    case TopRight: return r.topRight();
    case Right: return QPointF(r.right(), r.center().y());
    case BottomRight: return r.bottomRight();
    case Bottom: return QPointF(r.center().x(), r.bottom());
    case BottomLeft: return r.bottomLeft();
    case Left: return QPointF(r.left(), r.center().y());
    case None:
    case Inside: break;
    }
    return r.center();
}

CropGeometry::Handle CropGeometry::handleAt(const QRectF &rect, const QPointF &point, double tolerance)
{
    // Corners win over sides, and sides over the inside, so a small rectangle can still be
    // resized.
    Handle nearest = None;
    double best = tolerance;
    for (Handle h : handles()) {
        const QPointF d = handlePoint(rect, h) - point;
        const double distance = std::hypot(d.x(), d.y());
        if (distance <= best) {
            best = distance;
            nearest = h;
        }
    }
    if (nearest != None)
        return nearest;
    const bool withinX = point.x() >= rect.left() - tolerance && point.x() <= rect.right() + tolerance;
    const bool withinY = point.y() >= rect.top() - tolerance && point.y() <= rect.bottom() + tolerance;
    if (withinY && std::abs(point.x() - rect.left()) <= tolerance)
        return Left;
    if (withinY && std::abs(point.x() - rect.right()) <= tolerance)
        return Right;
    if (withinX && std::abs(point.y() - rect.top()) <= tolerance)
        return Top;
    if (withinX && std::abs(point.y() - rect.bottom()) <= tolerance)
        return Bottom;
    return rect.contains(point) ? Inside : None;
}

QRectF CropGeometry::dragged(const QRectF &start, Handle handle, const QPointF &delta, double ratio,
                             const QRectF &bounds, double minSize)
{
    if (handle == None)
        return start;
    minSize = std::min({minSize, bounds.width(), bounds.height()});
    if (handle == Inside) {
        QRectF moved = start.translated(delta);
        moved.moveLeft(std::clamp(moved.left(), bounds.left(), std::max(bounds.left(), bounds.right() - moved.width())));
        moved.moveTop(std::clamp(moved.top(), bounds.top(), std::max(bounds.top(), bounds.bottom() - moved.height())));
        return moved;
    }
    const bool movesLeft = handle == TopLeft || handle == Left || handle == BottomLeft;
    const bool movesRight = handle == TopRight || handle == Right || handle == BottomRight;
    const bool movesTop = handle == TopLeft || handle == Top || handle == TopRight;
    const bool movesBottom = handle == BottomLeft || handle == Bottom || handle == BottomRight;

    double left = start.left(), right = start.right(), top = start.top(), bottom = start.bottom();
    if (movesLeft)
        left = std::clamp(left + delta.x(), bounds.left(), right - minSize);
    if (movesRight)
        right = std::clamp(right + delta.x(), left + minSize, bounds.right());
    if (movesTop)
        top = std::clamp(top + delta.y(), bounds.top(), bottom - minSize);
    if (movesBottom)
        bottom = std::clamp(bottom + delta.y(), top + minSize, bounds.bottom());
    if (ratio <= 0)
        return QRectF(QPointF(left, top), QPointF(right, bottom));

    // Keep the proportions: a corner follows the side that moved the least; a side drags the
    // other dimension along, about the rectangle's middle.
    const bool horizontal = movesLeft || movesRight;
    const bool vertical = movesTop || movesBottom;
    double w = right - left, h = bottom - top;
    if (horizontal && vertical) {
        if (w / h > ratio)
            w = h * ratio;
        else
            h = w / ratio;
    } else if (horizontal) {
        h = w / ratio;
    } else {
        w = h * ratio;
    }
    const double anchorX = movesLeft ? start.right() : movesRight ? start.left() : start.center().x();
    const double anchorY = movesTop ? start.bottom() : movesBottom ? start.top() : start.center().y();
    const double roomX = movesLeft    ? anchorX - bounds.left()
                         : movesRight ? bounds.right() - anchorX
                                      : 2 * std::min(anchorX - bounds.left(), bounds.right() - anchorX);
    const double roomY = movesTop      ? anchorY - bounds.top()
                         : movesBottom ? bounds.bottom() - anchorY
                                       : 2 * std::min(anchorY - bounds.top(), bounds.bottom() - anchorY);
    if (w > roomX) {
        w = roomX;
        h = w / ratio;
    }
    if (h > roomY) {
        h = roomY;
        w = h * ratio;
    }
    const double x = movesLeft ? anchorX - w : movesRight ? anchorX : anchorX - w / 2;
    const double y = movesTop ? anchorY - h : movesBottom ? anchorY : anchorY - h / 2;
    return QRectF(x, y, w, h);
}

QRect CropGeometry::toPixels(const QRectF &rect, const QSize &picture)
{
    const QRectF r = rect.normalized();
    const QRect whole(QPoint(int(std::lround(r.left())), int(std::lround(r.top()))),
                      QPoint(int(std::lround(r.right())) - 1, int(std::lround(r.bottom())) - 1));
    return whole.intersected(QRect(QPoint(0, 0), picture));
}
