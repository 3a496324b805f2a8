#pragma once

#include <QByteArray>
#include <QImage>

// Encodes generated pictures into the file formats the application expects. Every writer
// setting is fixed, so the same picture always gives the same bytes.
class ImageEncoding
{
public:
    static QByteArray jpeg(const QImage &image, int quality = 88);
    static QByteArray png(const QImage &image);
    static QByteArray tiff(const QImage &image);

private:
    static QByteArray encode(const QImage &image, const char *format, int quality);
};
