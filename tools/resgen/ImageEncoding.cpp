#include "ImageEncoding.h"

#include <QBuffer>
#include <QImageWriter>

QByteArray ImageEncoding::encode(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (quality >= 0)
        writer.setQuality(quality);
    if (qstrcmp(format, "tiff") == 0)
        writer.setCompression(1);   // LZW: lossless and small for flat diagrams
    if (qstrcmp(format, "jpeg") == 0)
        writer.setOptimizedWrite(true);
    if (!writer.write(image))
        return {};
    return bytes;
}

QByteArray ImageEncoding::jpeg(const QImage &image, int quality)
{
    // JPEG has no alpha: flatten to plain RGB first.
    return encode(image.convertToFormat(QImage::Format_RGB888), "jpeg", quality);
}

QByteArray ImageEncoding::png(const QImage &image)
{
    return encode(image, "png", -1);
}

QByteArray ImageEncoding::tiff(const QImage &image)
{
    return encode(image, "tiff", -1);
}
