#include "ImageOperations.h"

#include "PhotoFraming.h"

#include "ContentModeGeometry.h"
#include "ResizeGeometry.h"

#include <QBuffer>
#include <QImageWriter>
#include <QLineF>
#include <QtMath>

#include <cmath>

void ImageOperations::drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect,
                                 ImageCanvas::Operation operation, float fraction, int method)
{
    drawInRect(image, canvas, rect, operation, fraction, method, PhotoFraming());
}

void ImageOperations::drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect,
                                 ImageCanvas::Operation operation, float fraction, int method, const PhotoFraming &framing)
{
    const ResizeGeometry::Plan plan = ResizeGeometry::plan(image.size(), rect, method, framing);
    if (plan.drawable)
        canvas.drawImage(image, plan.source, plan.destination, operation, fraction);
}

UIImage ImageOperations::imageToFitSize(const UIImage &image, const QSizeF &size, int method)
{
    return imageToFitSize(image, size, method, PhotoFraming());
}

UIImage ImageOperations::imageToFitSize(const UIImage &image, const QSizeF &size, int method, const PhotoFraming &framing)
{
    if (size.width() == 0 || size.height() == 0)
        return image;
    ImageCanvas canvas(size);
    canvas.setInterpolation(ImageCanvas::Interpolation::High);
    drawInRect(image, canvas, QRectF(QPointF(0, 0), size), ImageCanvas::Operation::SourceOver, 1.0f, method, framing);
    return canvas.takeImage();
}

UIImage ImageOperations::imageCroppedToFitSize(const UIImage &image, const QSizeF &size)
{
    return imageToFitSize(image, size, 0);
}

UIImage ImageOperations::imageScaledToFitSize(const UIImage &image, const QSizeF &size)
{
    return imageToFitSize(image, size, 3);
}

UIImage ImageOperations::fitToSize(const UIImage &image, const QSizeF &size)
{
    const double W = size.width(), H = size.height();
    const double sw = image.width(), sh = image.height();
    ImageCanvas canvas(size);
    canvas.fillRect(QRectF(0, 0, W, H), Qt::black);
    if (sw > 0 && sh > 0) {
        const double r = sw / sh;
        const QSizeF fitted = (H * r > W) ? QSizeF(W, W / r) : QSizeF(H * r, H);
        const QPointF origin = fitted.width() == W ? QPointF(0, (H - fitted.height()) * 0.5)
                                                   : QPointF((W - fitted.width()) * 0.5, 0);
        const QRectF exact(origin, fitted);
        // Outward to whole points.
        const double left = std::floor(exact.left()), bottom = std::floor(exact.top());
        const QRectF integral(left, bottom, std::ceil(exact.right()) - left, std::ceil(exact.bottom()) - bottom);
        canvas.setInterpolation(ImageCanvas::Interpolation::High);
        canvas.drawImage(image, QRectF(QPointF(0, 0), image.size()), integral);
    }
    return canvas.takeImage();
}

UIImage ImageOperations::scaleImageToSize(const UIImage &image, const QSizeF &size)
{
    const float sw = float(image.width()), sh = float(image.height());
    const float s = std::min(float(size.height()) / sh, float(size.width()) / sw);
    ImageCanvas canvas(size);
    if (std::isfinite(s) && s > 0) {
        const QSizeF scaled(double(sw) * s, double(sh) * s);
        image.setSize(scaled);
        canvas.setInterpolation(ImageCanvas::Interpolation::Low);
        const QPointF at((size.width() - scaled.width()) * 0.5, (size.height() - scaled.height()) * 0.5);
        canvas.drawImage(image, QRectF(QPointF(0, 0), scaled), QRectF(at, scaled), ImageCanvas::Operation::Copy);
    }
    return canvas.takeImage();
}

QSizeF ImageOperations::sizeUnderMegaPixels(const QSizeF &size, double megapixels)
{
    const float sw = float(size.width()), sh = float(size.height());
    const float m = (sh * sw) / 1000000.0f;
    if (double(m) > megapixels) {
        const float s = float(std::sqrt(megapixels / double(m)));
        if (s > 0.0f && s < 1.0f)
            return QSizeF(size.width() * s, size.height() * s);
    }
    return size;
}

UIImage ImageOperations::scaleToUnderMegaPixels(const UIImage &image, double megapixels)
{
    const QSizeF target = sizeUnderMegaPixels(image.size(), megapixels);
    if (target == image.size())
        return image;
    return scaleImageToSize(image, target);
}

UIImage ImageOperations::imageCompressedByFactor(const UIImage &image, float factor)
{
    const QImage frame = image.bestRepresentation();
    if (frame.isNull())
        return UIImage();
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(int(std::lround(qBound(0.0f, std::isfinite(factor) ? factor : 1.0f, 1.0f) * 100)));
    if (!writer.write(frame))
        return UIImage();
    return UIImage::loadData(jpeg, QStringLiteral("JPEG data")).image;
}

UIImage ImageOperations::imageByScalingProportionallyToSize(const UIImage &image, const QSizeF &size)
{
    if (!image.isValid())
        return UIImage();
    ImageCanvas canvas(size);
    drawInRect(image, canvas, QRectF(QPointF(0, 0), size), ContentModeGeometry::ContentScaleAspectFill);
    return canvas.takeImage();
}

namespace {

// Appends a line towards the tangent point and an arc of `radius` that turns from the line
// (current point -> corner) onto the line (corner -> next), as a pen rounding a corner does.
void arcToPoint(QPainterPath &path, const QPointF &corner, const QPointF &next, qreal radius)
{
    const QPointF from = path.currentPosition();
    QLineF in(corner, from), out(corner, next);
    if (in.length() == 0 || out.length() == 0 || radius <= 0) {
        path.lineTo(corner);
        return;
    }
    const QPointF u = (from - corner) / in.length();
    const QPointF v = (next - corner) / out.length();
    const qreal cosine = qBound(-1.0, u.x() * v.x() + u.y() * v.y(), 1.0);
    const qreal theta = std::acos(cosine);
    if (theta < 1e-9 || M_PI - theta < 1e-9) {
        path.lineTo(corner);
        return;
    }
    const qreal along = radius / std::tan(theta / 2);
    const QPointF t1 = corner + u * along;
    const QPointF t2 = corner + v * along;
    QPointF bisector = u + v;
    bisector /= std::hypot(bisector.x(), bisector.y());
    const QPointF centre = corner + bisector * (radius / std::sin(theta / 2));
    // QPainterPath angles run counter-clockwise from 3 o'clock with y pointing down.
    auto angleOf = [&](const QPointF &p) { return qRadiansToDegrees(std::atan2(-(p.y() - centre.y()), p.x() - centre.x())); };
    const qreal start = angleOf(t1);
    qreal sweep = angleOf(t2) - start;
    while (sweep > 180)
        sweep -= 360;
    while (sweep <= -180)
        sweep += 360;
    path.lineTo(t1);
    path.arcTo(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius), start, sweep);
}

} // namespace

void ImageOperations::addRoundedRectToPath(QPainterPath &path, const QRectF &rect, qreal radius)
{
    path = QPainterPath();
    if (radius == 0 || !std::isfinite(radius)) {
        path.addRect(rect);
        path.closeSubpath();
        return;
    }
    const qreal x = rect.x(), y = rect.y(), w = rect.width(), h = rect.height();
    const qreal r = std::abs(radius);
    path.moveTo(x + w, y + h / 2);
    arcToPoint(path, QPointF(x + w, y + h), QPointF(x + w / 2, y + h), r);
    arcToPoint(path, QPointF(x, y + h), QPointF(x, y + h / 2), r);
    arcToPoint(path, QPointF(x, y), QPointF(x + w / 2, y), r);
    arcToPoint(path, QPointF(x + w, y), QPointF(x + w, y + h / 2), r);
    path.closeSubpath();
}

void ImageOperations::drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect, int contentMode)
{
    const ContentModeGeometry::Placement placement = ContentModeGeometry::place(image.size(), rect, contentMode);
    if (placement.clip) {
        canvas.save();
        canvas.clipToRect(rect);
    }
    canvas.drawImage(image, QRectF(QPointF(0, 0), image.size()), placement.destination);
    if (placement.clip)
        canvas.restore();
}

void ImageOperations::drawInRect(const UIImage &image, ImageCanvas &canvas, const QRectF &rect, double radius, int contentMode)
{
    canvas.save();
    if (radius != 0) {
        QPainterPath path;
        addRoundedRectToPath(path, rect, radius);
        canvas.clipToPath(path);
    }
    drawInRect(image, canvas, rect, contentMode);
    canvas.restore();
}

QImage ImageOperations::CGImage(const UIImage &image)
{
    return image.CGImage();
}
