#include "SmoothScaler.h"

#include <QtGlobal>

namespace {

// One halving of a 32-bit image by 2 x 2 box averaging, per channel.
QImage halve(const QImage &src)
{
    const int sw = src.width(), sh = src.height();
    const int dw = (sw + 1) / 2, dh = (sh + 1) / 2;
    QImage dst(dw, dh, src.format());
    if (dst.isNull())
        return {};
    for (int y = 0; y < dh; ++y) {
        const auto *r0 = reinterpret_cast<const quint32 *>(src.constScanLine(2 * y));
        const auto *r1 = reinterpret_cast<const quint32 *>(src.constScanLine(qMin(2 * y + 1, sh - 1)));
        auto *out = reinterpret_cast<quint32 *>(dst.scanLine(y));
        for (int x = 0; x < dw; ++x) {
            const int x0 = 2 * x, x1 = qMin(2 * x + 1, sw - 1);
            const quint32 p[4] = {r0[x0], r0[x1], r1[x0], r1[x1]};
            // Average the four pixels channel by channel: two channels at a time in 64-bit lanes.
            quint64 lo = 0, hi = 0;
            for (quint32 v : p) {
                lo += (v & 0x00ff00ffu);
                hi += ((v >> 8) & 0x00ff00ffu);
            }
            lo = ((lo + 0x00020002u) >> 2) & 0x00ff00ffu;
            hi = ((hi + 0x00020002u) >> 2) & 0x00ff00ffu;
            out[x] = quint32(lo | (hi << 8));
        }
    }
    return dst;
}

bool is32Bit(QImage::Format f)
{
    return f == QImage::Format_RGB32 || f == QImage::Format_ARGB32_Premultiplied;
}

} // namespace

int SmoothScaler::halvingsFor(const QSize &from, const QSize &to)
{
    int times = 0;
    QSize current = from;
    while (current.width() / 2 >= qMax(1, to.width()) && current.height() / 2 >= qMax(1, to.height())) {
        current = QSize((current.width() + 1) / 2, (current.height() + 1) / 2);
        ++times;
    }
    return times;
}

QImage SmoothScaler::halved(const QImage &image, int times)
{
    if (image.isNull() || times <= 0)
        return image;
    QImage current = image;
    if (!is32Bit(current.format()))
        current = current.convertToFormat(current.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                    : QImage::Format_RGB32);
    for (int i = 0; i < times && current.width() >= 2 && current.height() >= 2; ++i) {
        QImage next = halve(current);
        if (next.isNull())
            break;
        current = next;
    }
    return current;
}

QImage SmoothScaler::scaled(const QImage &image, const QSize &size)
{
    if (image.isNull() || size.isEmpty())
        return {};
    if (image.size() == size)
        return image;
    // Box halvings first (fast, exact averages) as long as both sides are even, so that each
    // halving maps the picture exactly onto half its size; then Qt's smooth scale, which also
    // averages when it shrinks, for the rest.
    int times = 0;
    for (QSize s = image.size(), limit = size; s.width() % 2 == 0 && s.height() % 2 == 0
         && s.width() / 2 >= limit.width() && s.height() / 2 >= limit.height(); s /= 2)
        ++times;
    const QImage reduced = halved(image, times);
    if (reduced.size() == size)
        return reduced;
    return reduced.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
