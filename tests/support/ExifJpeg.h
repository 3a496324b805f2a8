#pragma once

// Photos as cameras store them: pixels in the sensor's order plus an EXIF orientation tag that
// says how to turn them upright. Made on the fly from an upright picture.

#include "support/TestImages.h"

#include <QColor>
#include <QImage>
#include <QtEndian>

namespace testimages {

// An upright picture of four coloured quarters (red top left, green top right, blue bottom left,
// white bottom right): every turn and mirror of it looks different.
inline QImage quarters(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    QPainter p(&img);
    p.fillRect(0, 0, w / 2, h / 2, Qt::red);
    p.fillRect(w / 2, 0, w - w / 2, h / 2, Qt::green);
    p.fillRect(0, h / 2, w / 2, h - h / 2, Qt::blue);
    p.fillRect(w / 2, h / 2, w - w / 2, h - h / 2, Qt::white);
    return img;
}

// The four quarters' colours of `img` read at their centres, as "RGBW"-style letters: R, G, B, W,
// or ? for anything else.
inline QString quarterColours(const QImage &img)
{
    QString s;
    const int w = img.width(), h = img.height();
    for (const QPoint p : {QPoint(w / 4, h / 4), QPoint(3 * w / 4, h / 4), QPoint(w / 4, 3 * h / 4), QPoint(3 * w / 4, 3 * h / 4)}) {
        const QColor c = img.pixelColor(p);
        const auto high = [](int v) { return v > 200; };
        const auto low = [](int v) { return v < 60; };
        if (high(c.red()) && low(c.green()) && low(c.blue()))
            s += QLatin1Char('R');
        else if (low(c.red()) && high(c.green()) && low(c.blue()))
            s += QLatin1Char('G');
        else if (low(c.red()) && low(c.green()) && high(c.blue()))
            s += QLatin1Char('B');
        else if (high(c.red()) && high(c.green()) && high(c.blue()))
            s += QLatin1Char('W');
        else
            s += QLatin1Char('?');
    }
    return s;
}

// How a camera stores `upright` for EXIF orientation 1-8: the pixels before the turn or mirror
// that the tag asks for. Stored pixel (sx, sy) is shown at (dx, dy):
//   1 (sx, sy)       2 (W-1-sx, sy)       3 (W-1-sx, H-1-sy)   4 (sx, H-1-sy)
//   5 (sy, sx)       6 (W-1-sy, sx)       7 (W-1-sy, H-1-sx)   8 (sy, H-1-sx)
inline QImage storedForOrientation(const QImage &upright, int orientation)
{
    const int W = upright.width(), H = upright.height();
    const bool turned = orientation >= 5;
    QImage stored(turned ? H : W, turned ? W : H, QImage::Format_RGB32);
    for (int sy = 0; sy < stored.height(); ++sy) {
        for (int sx = 0; sx < stored.width(); ++sx) {
            int dx = sx, dy = sy;
            switch (orientation) {
            case 2: dx = W - 1 - sx; break;
            case 3: dx = W - 1 - sx; dy = H - 1 - sy; break;
            case 4: dy = H - 1 - sy; break;
            case 5: dx = sy; dy = sx; break;
            case 6: dx = W - 1 - sy; dy = sx; break;
            case 7: dx = W - 1 - sy; dy = H - 1 - sx; break;
            case 8: dx = sy; dy = H - 1 - sx; break;
            default: break;
            }
            stored.setPixel(sx, sy, upright.pixel(dx, dy));
        }
    }
    return stored;
}

// A minimal EXIF block (APP1 segment): a big-endian TIFF header and one directory holding only
// the orientation tag (0x0112, SHORT).
inline QByteArray exifOrientationSegment(int orientation)
{
    QByteArray tiff("MM\0*\0\0\0\x08", 8);
    tiff.append(QByteArray("\0\x01", 2));                        // one entry
    tiff.append(QByteArray("\x01\x12\0\x03\0\0\0\x01", 8));      // orientation, SHORT, count 1
    tiff.append(char(0)).append(char(orientation)).append(QByteArray(2, '\0'));
    tiff.append(QByteArray(4, '\0'));                            // no next directory
    const QByteArray body = QByteArray("Exif\0\0", 6) + tiff;
    QByteArray segment("\xFF\xE1", 2);
    char length[2];
    qToBigEndian(quint16(body.size() + 2), length);
    return segment + QByteArray(length, 2) + body;
}

// A JPEG of `upright` stored as a camera would for the orientation, with the tag.
inline QByteArray orientedJpeg(const QImage &upright, int orientation)
{
    const QByteArray jpeg = encode(storedForOrientation(upright, orientation), "jpeg", 95);
    // Right after the start-of-image marker.
    return jpeg.left(2) + exifOrientationSegment(orientation) + jpeg.mid(2);
}

// A camera JPEG's EXIF block with a description and the orientation "turn right" (6).
inline QByteArray cameraExif(const QByteArray &description)
{
    QByteArray text = description + '\0';
    QByteArray tiff("MM\0*\0\0\0\x08", 8);
    tiff.append(QByteArray("\0\x02", 2)); // two entries
    char be[4];
    // ImageDescription, ASCII, its text after the directory.
    tiff.append(QByteArray("\x01\x0E\0\x02", 4));
    qToBigEndian(quint32(text.size()), be);
    tiff.append(be, 4);
    qToBigEndian(quint32(8 + 2 + 2 * 12 + 4), be);
    tiff.append(be, 4);
    tiff.append(QByteArray("\x01\x12\0\x03\0\0\0\x01\0\x06\0\0", 12)); // Orientation 6
    tiff.append(QByteArray(4, '\0'));
    tiff.append(text);
    const QByteArray body = QByteArray("Exif\0\0", 6) + tiff;
    char length[2];
    qToBigEndian(quint16(body.size() + 2), length);
    return QByteArray("\xFF\xE1", 2) + QByteArray(length, 2) + body;
}

} // namespace testimages
