#include "ContentModeGeometry.h"

#include <cmath>

ContentModeGeometry::Placement ContentModeGeometry::place(const QSizeF &imageSize, const QRectF &target, int mode)
{
    const double x = target.x(), y = target.y(), w = target.width(), h = target.height();
    const double iw = imageSize.width(), ih = imageSize.height();
    Placement p{target, false};
    if (iw == w && ih == h)
        return p;

    auto centred = [&](double dw, double dh) {
        return QRectF(x + std::floor(w * 0.5 - dw * 0.5), y + std::floor(h * 0.5 - dh * 0.5), dw, dh);
    };
    const double cx = x + std::floor(w * 0.5 - iw * 0.5); // centred horizontally, natural size
    const double cy = y + std::floor(h * 0.5 - ih * 0.5); // centred vertically, natural size

    switch (mode) {
    case ContentScaleAspectFit:
        // Portrait and square images fill the height, landscape ones the width: the image's own
        // orientation decides, not its aspect against the target's.
        if (ih >= iw)
            p.destination = centred(std::floor(h * iw / ih), h);
        else
            p.destination = centred(w, std::floor(w * ih / iw));
        break;
    case ContentScaleAspectFill:
        if (ih >= iw)
            p.destination = centred(w, std::floor(w * ih / iw));
        else
            p.destination = centred(std::floor(h * iw / ih), h);
        break;
    case ContentCenter:
        p.destination = QRectF(cx, cy, iw, ih);
        break;
    case ContentTop:
        p = {QRectF(cx, y, iw, ih), true};
        break;
    case ContentBottom:
        p = {QRectF(cx, y + std::floor(h - ih), iw, ih), true};
        break;
    case ContentLeft:
        p = {QRectF(x, cy, iw, ih), true};
        break;
    case ContentRight:
        p = {QRectF(x + (w - iw), cy, iw, ih), true};
        break;
    case ContentTopLeft:
        p = {QRectF(x, y, iw, ih), true};
        break;
    case ContentTopRight:
        p = {QRectF(x + (w - iw), y, iw, ih), true};
        break;
    case ContentBottomLeft:
        p = {QRectF(x, y + std::floor(h - ih), iw, ih), true};
        break;
    case ContentBottomRight:
        p = {QRectF(x + (w - iw), y + (h - ih), iw, ih), true};
        break;
    default: // ContentScaleToFill, ContentRedraw and anything else: the target itself
        break;
    }
    return p;
}
