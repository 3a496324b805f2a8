#pragma once

#include <QImage>

// A deterministic photo-like test picture: smooth gradients, fine texture and hard-edged bands,
// so encoders, filters and adjustments have real work (a flat picture would be unrealistically
// fast).
inline QImage syntheticPhoto(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    quint32 seed = 12345;
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
            seed = seed * 1664525u + 1013904223u;
            const int noise = int(seed >> 28) - 8;
            line[x] = qRgb(qBound(0, x * 255 / w + noise, 255), qBound(0, y * 255 / h + noise, 255),
                           qBound(0, ((x / 37 + y / 23) % 7) * 36 + noise, 255));
        }
    }
    return img;
}
