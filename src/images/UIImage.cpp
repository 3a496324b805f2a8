#include "UIImage.h"

#include "BottomLeftCoordinates.h"
#include "ImageCanvas.h"
#include "ImageFileReader.h"
#include "ImageOperations.h"
#include "PhotoFraming.h"
#include "ResizeGeometry.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTransform>

#include <cmath>

UIImage::UIImage()
    : m_data(std::make_shared<Data>())
{
}

UIImage::UIImage(const QImage &frame)
    : m_data(std::make_shared<Data>())
{
    if (!frame.isNull()) {
        m_data->frames.append(frame);
        m_data->size = QSizeF(frame.size());
    }
}

namespace {

// A photo file read whole with its header, or why it could not be (the reader's words).
struct HeadedFile {
    QByteArray bytes;
    ImageFileReader::Header header;
    QString error;
};

HeadedFile readHeadedFile(const QString &path)
{
    HeadedFile file;
    if (!ImageFileReader::readFile(path, &file.bytes, &file.error))
        return file;
    file.header = ImageFileReader::readHeader(file.bytes, path);
    file.error = file.header.error;
    return file;
}

} // namespace

UIImage::UIImage(const QList<QImage> &frames, const QSizeF &size)
    : m_data(std::make_shared<Data>())
{
    for (const QImage &f : frames) {
        if (!f.isNull())
            m_data->frames.append(f);
    }
    m_data->size = size;
}

UIImage::LoadResult UIImage::loadData(const QByteArray &bytes, const QString &name)
{
    const ImageFileReader::Frames decoded = ImageFileReader::decode(bytes, name);
    if (!decoded.ok())
        return {UIImage(), decoded.error};
    return {UIImage(decoded.frames, QSizeF(decoded.size)), QString()};
}

UIImage::LoadResult UIImage::loadFile(const QString &path)
{
    QByteArray bytes;
    QString error;
    if (!ImageFileReader::readFile(path, &bytes, &error))
        return {UIImage(), error};
    return loadData(bytes, path);
}

UIImage UIImage::initWithContentsOfFile(const QString &path)
{
    return loadFile(path).image;
}

UIImage::LoadResult UIImage::loadFileUnderMegaPixels(const QString &path, double megapixels)
{
    const HeadedFile file = readHeadedFile(path);
    if (!file.error.isEmpty())
        return {UIImage(), file.error};
    const QByteArray &bytes = file.bytes;
    const ImageFileReader::Header &header = file.header;
    const QSizeF full(header.size);
    const QSizeF target = ImageOperations::sizeUnderMegaPixels(full, megapixels);
    if (target != full && header.format == "jpeg") {
        const ImageFileReader::Frames reduced =
            ImageFileReader::decodeReducedJpeg(bytes, path, ImageCanvas::pixelSizeFor(target));
        if (reduced.ok()) {
            // The reduced pixels stand for the full picture: same point size, so the ceiling
            // computes the very size and crop that a full decode would get.
            const UIImage stand(reduced.frames, full);
            return {stand.scaleToUnderMegaPixels(megapixels), QString()};
        }
    }
    LoadResult loaded = loadData(bytes, path);
    if (loaded.ok())
        loaded.image = loaded.image.scaleToUnderMegaPixels(megapixels);
    return loaded;
}

UIImage::LoadResult UIImage::loadFileWithin(const QString &path, int side)
{
    const HeadedFile file = readHeadedFile(path);
    if (!file.error.isEmpty())
        return {UIImage(), file.error};
    const QByteArray &bytes = file.bytes;
    const ImageFileReader::Header &header = file.header;
    const QSize target = header.size.width() <= side && header.size.height() <= side
                             ? header.size
                             : header.size.scaled(side, side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    QImage frame;
    if (target != header.size && header.format == "jpeg") {
        const ImageFileReader::Frames reduced = ImageFileReader::decodeReducedJpeg(bytes, path, target);
        if (reduced.ok())
            frame = reduced.frames.first();
    }
    if (frame.isNull()) {
        LoadResult loaded = loadData(bytes, path);
        if (!loaded.ok())
            return loaded;
        frame = loaded.image.bestRepresentation();
    }
    if (frame.size() != target)
        frame = frame.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return {UIImage(frame), QString()};
}

UIImage UIImage::initWithContentsOfFileFittedToSize(const QString &path, const QSizeF &size, int method)
{
    return initWithContentsOfFileFittedToSize(path, size, method, PhotoFraming());
}

UIImage UIImage::initWithContentsOfFileFittedToSize(const QString &path, const QSizeF &size, int method,
                                                    const PhotoFraming &framing)
{
    const HeadedFile file = readHeadedFile(path);
    if (!file.error.isEmpty())
        return UIImage();
    const QByteArray &bytes = file.bytes;
    const ImageFileReader::Header &header = file.header;
    const QSizeF full(header.size);
    const ResizeGeometry::Plan plan = ResizeGeometry::plan(full, QRectF(QPointF(0, 0), size), method, framing);
    if (header.format == "jpeg" && plan.drawable && !plan.source.isEmpty()) {
        // The scale at which the source region lands on the result, per direction.
        const qreal fx = plan.destination.width() / plan.source.width();
        const qreal fy = plan.destination.height() / plan.source.height();
        const QSize needed(int(std::ceil(full.width() * std::min(fx, 1.0))), int(std::ceil(full.height() * std::min(fy, 1.0))));
        if (needed.width() * 2 <= header.size.width() && needed.height() * 2 <= header.size.height()) {
            const ImageFileReader::Frames reduced = ImageFileReader::decodeReducedJpeg(bytes, path, needed);
            if (reduced.ok())
                return UIImage(reduced.frames, full).imageToFitSize(size, method, framing);
        }
    }
    return loadData(bytes, path).image.imageToFitSize(size, method, framing);
}

UIImage UIImage::initWithContentsOfURL(const QUrl &url)
{
    if (!url.isLocalFile())
        return UIImage();
    return initWithContentsOfFile(url.toLocalFile());
}

UIImage UIImage::initWithContentsOfFileUnderMegaPixels(const QString &path, double megapixels)
{
    return loadFileUnderMegaPixels(path, megapixels).image;
}

QByteArray UIImage::TIFFRepresentation() const
{
    const QImage frame = bestRepresentation();
    if (frame.isNull())
        return {};
    QByteArray tiff;
    QBuffer buffer(&tiff);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "tiff");
    if (!writer.write(frame))
        return {};
    return tiff;
}

UIImage UIImage::initWithTIFFRepresentation(const QByteArray &tiff)
{
    return loadData(tiff, QStringLiteral("TIFF data")).image;
}

QSizeF UIImage::size() const
{
    return m_data->size;
}

void UIImage::setSize(const QSizeF &size) const
{
    m_data->size = size;
}

QImage UIImage::bestRepresentation() const
{
    QImage best;
    qint64 bestArea = -1;
    for (const QImage &f : m_data->frames) {
        const qint64 area = qint64(f.width()) * f.height();
        if (area > bestArea) {
            best = f;
            bestArea = area;
        }
    }
    return best;
}

int UIImage::pixelsWide() const
{
    return bestRepresentation().width();
}

int UIImage::pixelsHigh() const
{
    return bestRepresentation().height();
}

int UIImage::frameCount() const
{
    return int(m_data->frames.size());
}

QList<QImage> UIImage::representations() const
{
    return m_data->frames;
}

bool UIImage::isValid() const
{
    return !m_data->frames.isEmpty();
}

UIImage UIImage::fixOrientation() const
{
    return *this;
}

UIImage UIImage::croppedImage(const QRectF &rect) const
{
    const QImage frame = bestRepresentation();
    if (frame.isNull() || size().isEmpty() || !std::isfinite(rect.x()) || !std::isfinite(rect.y())
        || !(std::abs(rect.width()) < 1e9) || !(std::abs(rect.height()) < 1e9) || std::abs(rect.x()) > 1e9 || std::abs(rect.y()) > 1e9)
        return UIImage();
    const QRectF topLeft = BottomLeftCoordinates::toTopLeft(rect, size().height());
    const qreal px = frame.width() / size().width(), py = frame.height() / size().height();
    // Whole pixels by rounding origin and size, so a centred crop keeps its exact width.
    const QRect pixels = QRect(int(std::lround(topLeft.x() * px)), int(std::lround(topLeft.y() * py)),
                               int(std::lround(topLeft.width() * px)), int(std::lround(topLeft.height() * py)))
                             .intersected(frame.rect());
    if (pixels.isEmpty())
        return UIImage();
    return UIImage(frame.copy(pixels));
}

UIImage UIImage::doFitImage(const UIImage &image, const QSizeF &size)
{
    const float iw = float(image.width()), ih = float(image.height());
    const float w = float(size.width()), h = float(size.height());
    const float q = std::min(iw / w, ih / h);
    if (!std::isfinite(q) || q <= 0)
        return UIImage();
    const QSizeF crop(double(w) * q, double(h) * q);
    return image.croppedImage(QRectF(QPointF((iw - crop.width()) * 0.5, (ih - crop.height()) * 0.5), crop));
}

UIImage UIImage::rotate90(const UIImage &image, bool clockwise)
{
    const QImage frame = image.fixOrientation().bestRepresentation();
    if (frame.isNull())
        return UIImage();
    // A quarter turn is an exact pixel permutation; clockwise as seen on screen.
    return UIImage(frame.transformed(QTransform().rotate(clockwise ? 90 : -90)));
}

QImage UIImage::CGImage() const
{
    const QByteArray tiff = TIFFRepresentation();
    if (tiff.isEmpty())
        return {};
    return initWithTIFFRepresentation(tiff).bestRepresentation();
}

QImage UIImage::getCGImageRef() const
{
    if (m_data->frames.isEmpty())
        return {};
    return UIImage(m_data->frames.first()).CGImage();
}

UIImage UIImage::imageWithInsetContent(int inset, bool megapixelLimit, const QColor &background, bool insetByCropping) const
{
    double s = 1.0;
    if (megapixelLimit) {
        const float m = float(width() * height() / 1000000.0);
        if (m > 8.0f)
            s = std::sqrt(8.0 / double(m));
    }
    const double W = width() * s, H = height() * s;
    ImageCanvas canvas{QSizeF(W, H)};
    if (!canvas.isValid())
        return UIImage();
    QColor opaque = background;
    opaque.setAlphaF(1.0f);
    canvas.fillRect(QRectF(0, 0, W, H), opaque);
    const double e = qMax(0.0, std::min(std::trunc(std::min(W * 0.5, H * 0.5)), double(inset)));
    const QRectF content(e, e, W - 2 * e, H - 2 * e);
    // Drawing the fitted picture straight onto the background is the same as fitting it into a
    // transparent image of the content size first, minus one full-size copy.
    canvas.setInterpolation(ImageCanvas::Interpolation::High);
    ImageOperations::drawInRect(*this, canvas, content, ImageCanvas::Operation::SourceOver, 1.0f, insetByCropping ? 0 : 3);
    return canvas.takeImage();
}

UIImage UIImage::imageToFitSize(const QSizeF &size, int method, const PhotoFraming &framing) const
{
    return ImageOperations::imageToFitSize(*this, size, method, framing);
}

UIImage UIImage::imageToFitSize(const QSizeF &size, int method) const
{
    return ImageOperations::imageToFitSize(*this, size, method);
}

UIImage UIImage::scaleToUnderMegaPixels(double megapixels) const
{
    return ImageOperations::scaleToUnderMegaPixels(*this, megapixels);
}

UIImage UIImage::scaleImageToSize(const QSizeF &size) const
{
    return ImageOperations::scaleImageToSize(*this, size);
}
