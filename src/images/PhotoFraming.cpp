#include "images/PhotoFraming.h"

#include <QVariantMap>

#include <algorithm>
#include <cmath>

namespace {

bool usable(const QSizeF &size)
{
    return std::isfinite(size.width()) && std::isfinite(size.height()) && size.width() > 0 && size.height() > 0;
}

// The largest part of the photo with the tile's shape: what "fill" shows at zoom 1.
QSizeF fillSize(const QSizeF &imageSize, const QSizeF &tileSize)
{
    const double shape = tileSize.width() / tileSize.height();
    const double w = std::min(imageSize.width(), imageSize.height() * shape);
    return QSizeF(w, std::min(imageSize.height(), w / shape));
}

const QString kX = QStringLiteral("x");
const QString kY = QStringLiteral("y");
const QString kZoom = QStringLiteral("zoom");

} // namespace

PhotoFraming::PhotoFraming(const QPointF &center, double zoom)
    : m_center(center)
    , m_zoom(std::isfinite(zoom) && zoom > 0 ? std::clamp(zoom, kMinZoom, kMaxZoom) : 0)
{
}

QRectF PhotoFraming::cropRect(const QSizeF &imageSize, const QSizeF &tileSize) const
{
    if (isNull() || !usable(imageSize) || !usable(tileSize))
        return QRectF();
    const QSizeF fill = fillSize(imageSize, tileSize);
    const QSizeF crop = fill / m_zoom;
    const double halfW = crop.width() / 2, halfH = crop.height() / 2;
    const double cx = std::clamp(m_center.x() * imageSize.width(), halfW, imageSize.width() - halfW);
    const double cy = std::clamp(m_center.y() * imageSize.height(), halfH, imageSize.height() - halfH);
    return QRectF(cx - halfW, cy - halfH, crop.width(), crop.height());
}

PhotoFraming PhotoFraming::clamped(const QSizeF &imageSize, const QSizeF &tileSize) const
{
    const QRectF crop = cropRect(imageSize, tileSize);
    if (crop.isEmpty())
        return *this;
    return PhotoFraming(QPointF(crop.center().x() / imageSize.width(), crop.center().y() / imageSize.height()), m_zoom);
}

PhotoFraming PhotoFraming::panned(const QSizeF &imageSize, const QSizeF &tileSize, const QPointF &delta) const
{
    const QRectF crop = cropRect(imageSize, tileSize);
    if (crop.isEmpty())
        return *this;
    // The photo follows the pointer: its visible part moves the other way.
    const double perTilePoint = crop.width() / tileSize.width();
    const QPointF center = crop.center() - delta * perTilePoint;
    return PhotoFraming(QPointF(center.x() / imageSize.width(), center.y() / imageSize.height()), m_zoom)
        .clamped(imageSize, tileSize);
}

PhotoFraming PhotoFraming::zoomedAbout(const QSizeF &imageSize, const QSizeF &tileSize, const QPointF &tilePoint,
                                       double factor) const
{
    const QRectF crop = cropRect(imageSize, tileSize);
    if (crop.isEmpty() || !std::isfinite(factor) || factor <= 0)
        return *this;
    const QPointF photoPoint = crop.topLeft() + tilePoint * (crop.width() / tileSize.width());
    const double zoom = std::clamp(m_zoom * factor, kMinZoom, kMaxZoom);
    const QSizeF next = fillSize(imageSize, tileSize) / zoom;
    const QPointF topLeft = photoPoint - tilePoint * (next.width() / tileSize.width());
    const QPointF center = topLeft + QPointF(next.width() / 2, next.height() / 2);
    return PhotoFraming(QPointF(center.x() / imageSize.width(), center.y() / imageSize.height()), zoom)
        .clamped(imageSize, tileSize);
}

PhotoFraming PhotoFraming::fromCropRect(const QSizeF &imageSize, const QSizeF &tileSize, const QRectF &crop)
{
    if (!usable(imageSize) || !usable(tileSize) || !(crop.width() > 0))
        return PhotoFraming(QPointF(0.5, 0.5), kMinZoom);
    const double zoom = fillSize(imageSize, tileSize).width() / crop.width();
    return PhotoFraming(QPointF(crop.center().x() / imageSize.width(), crop.center().y() / imageSize.height()), zoom)
        .clamped(imageSize, tileSize);
}

PhotoFraming PhotoFraming::forAlignment(int alignment, const PhotoFraming &hand, const std::optional<QPointF> &subject)
{
    if (!hand.isNull())
        return hand;
    constexpr int kSmart = 4;
    if (alignment == kSmart)
        return PhotoFraming(subject.value_or(QPointF(0.5, 0.5)), kMinZoom);
    return PhotoFraming();
}

QVariant PhotoFraming::toVariant() const
{
    QVariantMap map;
    if (!isNull()) {
        map.insert(kX, m_center.x());
        map.insert(kY, m_center.y());
        map.insert(kZoom, m_zoom);
    }
    return map;
}

PhotoFraming PhotoFraming::fromVariant(const QVariant &value)
{
    if (value.typeId() != QMetaType::QVariantMap)
        return PhotoFraming();
    const QVariantMap map = value.toMap();
    bool okX = false, okY = false, okZoom = false;
    const double x = map.value(kX).toDouble(&okX);
    const double y = map.value(kY).toDouble(&okY);
    const double zoom = map.value(kZoom).toDouble(&okZoom);
    if (!okX || !okY || !okZoom || !std::isfinite(x) || !std::isfinite(y) || x < 0 || x > 1 || y < 0 || y > 1)
        return PhotoFraming();
    return PhotoFraming(QPointF(x, y), zoom);
}
