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

// The pixels of `rect` in `image`: for 32-bit images a view onto the same buffer (valid while
// `image` lives), so cropping a large photo costs no copy.
QImage region(const QImage &image, const QRect &rect)
{
    if (rect == image.rect())
        return image;
    if (image.depth() != 32)
        return image.copy(rect);
    const uchar *first = image.constBits() + qsizetype(rect.y()) * image.bytesPerLine() + qsizetype(rect.x()) * 4;
    return QImage(first, rect.width(), rect.height(), image.bytesPerLine(), image.format());
}

QSize reducedSizeFor(const QSize &size, qreal fx, qreal fy)
{
    return QSize(qMax(1, int(std::lround(size.width() * qMin(fx, 1.0)))), qMax(1, int(std::lround(size.height() * qMin(fy, 1.0)))));
}

// One side of `rect` grown to a multiple of `block` within [0, limit), moved back from the far
// edge when needed; shrunk to a multiple when the image is too small for that.
void alignSide(int *start, int *length, int block, int limit)
{
    int len = (*length + block - 1) / block * block;
    if (len > limit)
        len = limit / block * block;
    if (len <= 0)
        return; // smaller than one block: keep as it is
    int s = *start;
    if (s + len > limit)
        s = limit - len;
    *start = qMax(0, s);
    *length = len;
}

QRect alignedTo(const QRect &rect, int block, const QRect &bounds)
{
    int x = rect.x(), y = rect.y(), w = rect.width(), h = rect.height();
    alignSide(&x, &w, block, bounds.width());
    alignSide(&y, &h, block, bounds.height());
    return QRect(x, y, w, h);
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
        QRect covered = src.toAlignedRect().intersected(rep.rect());
        if (covered.isEmpty())
            return;
        QSize reducedSize = reducedSizeFor(covered.size(), fx, fy);
        // Widen the region to whole 2 x 2 blocks of every halving, so each halving maps the
        // region exactly onto half its size and the picture does not creep by fractions of a pixel.
        const int halvings = SmoothScaler::halvingsFor(covered.size(), reducedSize);
        if (halvings > 0) {
            covered = alignedTo(covered, 1 << halvings, rep.rect());
            reducedSize = reducedSizeFor(covered.size(), fx, fy);
        }
        const QImage part = region(rep, covered);
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
