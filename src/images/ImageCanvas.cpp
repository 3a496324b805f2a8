#include "ImageCanvas.h"

#include "BottomLeftCoordinates.h"
#include "SmoothScaler.h"

#include <cmath>
#include <limits>

namespace {

bool finiteRect(const QRectF &r)
{
    return std::isfinite(r.x()) && std::isfinite(r.y()) && std::isfinite(r.width()) && std::isfinite(r.height());
}

int wholePixels(qreal points)
{
    if (!(points > 0) || !std::isfinite(points))
        return 0;
    if (points >= qreal(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    return qMax(1, int(points));
}

} // namespace

QSize ImageCanvas::pixelSizeFor(const QSizeF &size)
{
    return QSize(wholePixels(size.width()), wholePixels(size.height()));
}

ImageCanvas::ImageCanvas(const QSizeF &size)
    : m_size(size)
{
    const QSize pixels = pixelSizeFor(size);
    if (pixels.isEmpty())
        return;
    // Refuse sizes whose buffer could not be addressed rather than let QImage warn and fail.
    if (qint64(pixels.width()) * pixels.height() > qint64(std::numeric_limits<int>::max()) / 4)
        return;
    m_image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    if (m_image.isNull())
        return;
    m_image.fill(Qt::transparent);
    m_ownPainter = std::make_unique<QPainter>(&m_image);
    m_painter = m_ownPainter.get();
}

ImageCanvas::ImageCanvas(QPainter &painter, const QSizeF &size)
    : m_painter(&painter), m_size(size)
{
}

ImageCanvas::~ImageCanvas() = default;

void ImageCanvas::save()
{
    if (m_painter)
        m_painter->save();
}

void ImageCanvas::restore()
{
    if (m_painter)
        m_painter->restore();
}

void ImageCanvas::clipToRect(const QRectF &rect)
{
    if (m_painter && finiteRect(rect))
        m_painter->setClipRect(BottomLeftCoordinates::toTopLeft(rect, m_size.height()), Qt::IntersectClip);
}

void ImageCanvas::clipToPath(const QPainterPath &path)
{
    if (m_painter)
        m_painter->setClipPath(BottomLeftCoordinates::toTopLeft(path, m_size.height()), Qt::IntersectClip);
}

void ImageCanvas::fillRect(const QRectF &rect, const QColor &color)
{
    if (!m_painter || !finiteRect(rect))
        return;
    m_painter->save();
    m_painter->setCompositionMode(QPainter::CompositionMode_Source);
    m_painter->fillRect(BottomLeftCoordinates::toTopLeft(rect, m_size.height()), color);
    m_painter->restore();
}

void ImageCanvas::drawImage(const UIImage &image, const QRectF &source, const QRectF &destination,
                            Operation operation, float fraction)
{
    const QImage rep = image.bestRepresentation();
    const QSizeF points = image.size();
    if (!m_painter || rep.isNull() || points.isEmpty() || !finiteRect(source) || !finiteRect(destination)
        || source.isEmpty() || destination.isEmpty())
        return;

    // The source region in the representation's pixels, top-left origin.
    const qreal px = rep.width() / points.width(), py = rep.height() / points.height();
    const QRectF srcTL = BottomLeftCoordinates::toTopLeft(source, points.height());
    QRectF src(srcTL.x() * px, srcTL.y() * py, srcTL.width() * px, srcTL.height() * py);
    const QRectF dst = BottomLeftCoordinates::toTopLeft(destination, m_size.height());
    QImage pixels = rep;

    // Shrinking: resample the covered pixels once with a box filter to the size they take on
    // the canvas, so the painter only has to place them (QPainter's own smooth mode samples
    // bilinearly, which aliases fine detail when reducing by more than half).
    const qreal fx = dst.width() / src.width(), fy = dst.height() / src.height();
    if (fx < 1.0 || fy < 1.0) {
        const QRect covered = src.toAlignedRect().intersected(rep.rect());
        if (covered.isEmpty())
            return;
        const QSize reducedSize(qMax(1, int(std::lround(covered.width() * qMin(fx, 1.0)))),
                                qMax(1, int(std::lround(covered.height() * qMin(fy, 1.0)))));
        const QImage part = covered == rep.rect() ? rep : rep.copy(covered);
        pixels = SmoothScaler::scaled(part, reducedSize);
        if (pixels.isNull())
            return;
        const qreal rx = qreal(reducedSize.width()) / covered.width();
        const qreal ry = qreal(reducedSize.height()) / covered.height();
        src = QRectF((src.x() - covered.x()) * rx, (src.y() - covered.y()) * ry, src.width() * rx, src.height() * ry);
    }

    m_painter->save();
    m_painter->setCompositionMode(operation == Operation::Copy ? QPainter::CompositionMode_Source
                                                                : QPainter::CompositionMode_SourceOver);
    m_painter->setOpacity(qBound(0.0f, fraction, 1.0f));
    m_painter->setRenderHint(QPainter::SmoothPixmapTransform, m_interpolation == Interpolation::High || fx < 1.0 || fy < 1.0);
    m_painter->drawImage(dst, pixels, src);
    m_painter->restore();
}

UIImage ImageCanvas::takeImage()
{
    if (!m_ownPainter)
        return UIImage();
    m_ownPainter->end();
    m_ownPainter.reset();
    m_painter = nullptr;
    return UIImage(QList<QImage>{m_image}, m_size);
}
