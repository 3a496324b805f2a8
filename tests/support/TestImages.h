#pragma once

// Small pictures made on the fly for the image tests.

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QString>

#include "support/QtPrinters.h"

namespace testimages {

// Left part `left`, right part `right`, split at column `split`.
inline QImage leftRight(int w, int h, int split, QColor left, QColor right)
{
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(right);
    QPainter p(&img);
    p.fillRect(0, 0, split, h, left);
    return img;
}

// Top rows `top` (the first `split` rows of the QImage), the rest `bottom`.
inline QImage topBottom(int w, int h, int split, QColor top, QColor bottom)
{
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(bottom);
    QPainter p(&img);
    p.fillRect(0, 0, w, split, top);
    return img;
}

inline QImage checkerboard(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            img.setPixel(x, y, ((x + y) & 1) ? 0xffffffffu : 0xff000000u);
    return img;
}

// A smooth, detailed picture: gradients plus a diagonal pattern, so that crops and scales
// show where they come from.
inline QImage gradient(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb(x * 255 / qMax(1, w - 1), y * 255 / qMax(1, h - 1), ((x / 16 + y / 16) & 1) * 128 + 64);
    }
    return img;
}

// Smooth ramps only, like most of a photo: different but correct resampling paths agree on it
// closely, while a crop from the wrong place differs by tens of levels.
inline QImage ramps(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x)
            line[x] = qRgb(x * 255 / qMax(1, w - 1), y * 255 / qMax(1, h - 1), (x + y) * 255 / qMax(1, w + h - 2));
    }
    return img;
}

inline QByteArray encode(const QImage &img, const char *format, int quality = -1)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    writer.write(img);
    return bytes;
}

// A JPEG whose frame header claims `w` x `h`: a small real JPEG with its SOF0 size patched.
inline QByteArray jpegClaiming(int w, int h)
{
    QByteArray jpeg = encode(gradient(16, 16), "jpeg", 90);
    const qsizetype sof = jpeg.indexOf(QByteArrayView("\xFF\xC0", 2));
    if (sof < 0)
        return {};
    jpeg[sof + 5] = char(h >> 8);
    jpeg[sof + 6] = char(h & 0xff);
    jpeg[sof + 7] = char(w >> 8);
    jpeg[sof + 8] = char(w & 0xff);
    return jpeg;
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// Mean absolute difference per channel between two images of the same size (0-255).
inline double meanDifference(const QImage &a, const QImage &b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32), y = b.convertToFormat(QImage::Format_RGB32);
    if (x.size() != y.size() || x.isNull())
        return 1e9;
    double sum = 0;
    for (int j = 0; j < x.height(); ++j)
        for (int i = 0; i < x.width(); ++i) {
            const QRgb p = x.pixel(i, j), q = y.pixel(i, j);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * x.width() * x.height());
}

} // namespace testimages
