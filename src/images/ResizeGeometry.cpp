#include "ResizeGeometry.h"

#include "PhotoFraming.h"

#include <cmath>

namespace {
bool finitePositive(float v)
{
    return std::isfinite(v) && v > 0.0f;
}
} // namespace

ResizeGeometry::Plan ResizeGeometry::plan(const QSizeF &imageSize, const QRectF &target, int method)
{
    Plan p;
    const float sw = float(imageSize.width());
    const float sh = float(imageSize.height());
    const float x = float(target.x());
    const float y = float(target.y());
    const float w = float(target.width());
    const float h = float(target.height());
    if (!finitePositive(sw) || !finitePositive(sh) || !finitePositive(w) || !finitePositive(h))
        return p;

    const float a = sw / sh; // source aspect
    const float t = w / h;   // target aspect
    float cw, ch;
    const bool coverByHeight = (method == ResizeScale) ? (a <= t) : (a > t);
    if (coverByHeight) {
        cw = std::round(a * h);
        ch = h;
    } else {
        cw = w;
        ch = std::round(w / a);
    }
    p.scaledSize = QSizeF(cw, ch);

    if (method == ResizeScale) {
        p.source = QRectF(0, 0, sw, sh);
        p.destination = QRectF(double(x) + (double(w) - cw) * 0.5, double(y) + (double(h) - ch) * 0.5, cw, ch);
        p.drawable = finitePositive(cw) && finitePositive(ch);
        return p;
    }

    p.destination = QRectF(x, y, w, h);
    if (method == ResizeSmart)
        method = ResizeCrop;
    if (method < ResizeCrop || method > ResizeCropEnd) {
        // Not a resize method: the whole image stretched over the target.
        p.source = QRectF(0, 0, sw, sh);
        p.drawable = true;
        return p;
    }

    const bool tooWide = a > t;
    float ox = 0.0f, oy = 0.0f;
    switch (method) {
    case ResizeCrop:
        ox = std::round((cw - w) * 0.5f);
        oy = std::round((ch - h) * 0.5f);
        break;
    case ResizeCropStart:
        if (tooWide) {
            ox = 0.0f;
            oy = std::round((ch - h) * 0.5f);
        } else {
            ox = std::round((cw - w) * 0.5f);
            oy = std::round(ch - h);
        }
        break;
    case ResizeCropEnd:
        if (tooWide) {
            ox = std::round(cw - w);
            oy = std::round((ch - h) * 0.5f);
        } else {
            ox = 0.0f;
            oy = 0.0f;
        }
        break;
    }
    p.cropOffset = QPointF(ox, oy);
    const float k = ch / sh;
    if (!finitePositive(k))
        return p;
    p.source = QRectF(ox / k, oy / k, w / k, h / k);
    p.drawable = true;
    return p;
}

ResizeGeometry::Plan ResizeGeometry::plan(const QSizeF &imageSize, const QRectF &target, int method, const PhotoFraming &framing)
{
    if (framing.isNull())
        return plan(imageSize, target, method);
    Plan p;
    const QRectF crop = framing.cropRect(imageSize, target.size());
    if (crop.isEmpty())
        return p;
    // The crop is measured from the top; sources here from the bottom.
    p.source = QRectF(crop.x(), imageSize.height() - crop.bottom(), crop.width(), crop.height());
    const double k = target.width() / crop.width();
    p.scaledSize = imageSize * k;
    p.cropOffset = QPointF(p.source.x() * k, p.source.y() * k);
    p.destination = target;
    p.drawable = true;
    return p;
}
