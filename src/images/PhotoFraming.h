#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QVariant>

#include <optional>

// How a photo is framed in its tile by hand (or by the Smart alignment): which point of the
// photo is at the centre of the tile and how far it is zoomed in beyond filling the tile.
//
// The centre is kept in fractions of the photo's width and height, measured from its top-left
// corner as the photo is seen, and the zoom relative to "fill" (1 = the largest part of the
// photo with the tile's shape, up to kMaxZoom). Neither depends on the tile's size or shape, so a
// framing survives a change of template: it is clamped for each tile when it is used, so that the
// photo always covers the whole tile.
//
// A default-made framing is "none": the photo is fitted by its alignment instead.
class PhotoFraming
{
public:
    static constexpr double kMinZoom = 1.0;
    static constexpr double kMaxZoom = 8.0;

    PhotoFraming() = default;
    PhotoFraming(const QPointF &center, double zoom);

    bool isNull() const { return m_zoom <= 0; }
    QPointF center() const { return m_center; }
    double zoom() const { return m_zoom; }

    // The part of a photo of imageSize shown in a tile of tileSize: the tile's shape, inside
    // the photo, in photo points with the origin at the top left. Empty for a null framing or
    // empty sizes.
    QRectF cropRect(const QSizeF &imageSize, const QSizeF &tileSize) const;
    // The framing as that tile shows it: zoom within [kMinZoom, kMaxZoom], the centre moved
    // just enough for the crop to lie inside the photo.
    PhotoFraming clamped(const QSizeF &imageSize, const QSizeF &tileSize) const;
    // Moved as a drag of `delta` tile points moves the photo under the pointer.
    PhotoFraming panned(const QSizeF &imageSize, const QSizeF &tileSize, const QPointF &delta) const;
    // Zoomed by `factor`, keeping the photo point under `tilePoint` (tile points, top left) in
    // place as far as the clamping allows.
    PhotoFraming zoomedAbout(const QSizeF &imageSize, const QSizeF &tileSize, const QPointF &tilePoint,
                             double factor) const;
    // The framing that shows `crop` (photo points, top left) in a tile of tileSize, e.g. what an
    // alignment shows, so a drag starts from the picture as it is.
    static PhotoFraming fromCropRect(const QSizeF &imageSize, const QSizeF &tileSize, const QRectF &crop);

    // What a tile shows of a photo with this alignment: the hand framing when there is one; for
    // the Smart alignment (4) the photo filling the tile around its subject (the photo's centre
    // while the subject is unknown); otherwise none, and the alignment fits the photo.
    static PhotoFraming forAlignment(int alignment, const PhotoFraming &hand, const std::optional<QPointF> &subject);

    // Stored form: a dictionary {"x", "y", "zoom"}; an empty dictionary for none. Anything that
    // is not a well-formed framing reads as none.
    QVariant toVariant() const;
    static PhotoFraming fromVariant(const QVariant &value);

    bool operator==(const PhotoFraming &other) const = default;

private:
    QPointF m_center{0.5, 0.5};
    double m_zoom = 0;
};
