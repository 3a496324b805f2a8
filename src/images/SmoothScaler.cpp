#include "SmoothScaler.h"

#include <QtGlobal>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// The average of a 2 x 2 block, channel by channel, rounded to nearest.
inline void averageBlock(const uchar *a, const uchar *b, uchar *out)
{
    for (int c = 0; c < 4; ++c)
        out[c] = uchar((unsigned(a[c]) + a[c + 4] + b[c] + b[c + 4] + 2) >> 2);
}

// One halving of a 32-bit image by 2 x 2 box averaging. An odd last column or row repeats its
// edge pixel. Two output pixels at a time go through SSE2 in 16-bit lanes, with exactly the
// rounding of the plain loop.
QImage halve(const QImage &src)
{
    const int sw = src.width(), sh = src.height();
    const int dw = (sw + 1) / 2, dh = (sh + 1) / 2;
    const int whole = sw / 2; // output pixels made of two full source columns
    QImage dst(dw, dh, src.format());
    if (dst.isNull())
        return {};
    for (int y = 0; y < dh; ++y) {
        const uchar *r0 = src.constScanLine(2 * y);
        const uchar *r1 = src.constScanLine(qMin(2 * y + 1, sh - 1));
        uchar *out = dst.scanLine(y);
        int x = 0;
#ifdef __SSE2__
        const __m128i zero = _mm_setzero_si128();
        const __m128i two = _mm_set1_epi16(2);
        for (; x + 2 <= whole; x += 2) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(r0 + 8 * x));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(r1 + 8 * x));
            // Column sums of the two rows for pixels 0-1 (lo) and 2-3 (hi), in 16 bits.
            const __m128i lo = _mm_add_epi16(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero));
            const __m128i hi = _mm_add_epi16(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero));
            // Add neighbouring pixels: pixel 0 + 1 and pixel 2 + 3.
            const __m128i first = _mm_add_epi16(lo, _mm_srli_si128(lo, 8));
            const __m128i second = _mm_add_epi16(hi, _mm_srli_si128(hi, 8));
            const __m128i sums = _mm_unpacklo_epi64(first, second);
            const __m128i avg = _mm_srli_epi16(_mm_add_epi16(sums, two), 2);
            _mm_storel_epi64(reinterpret_cast<__m128i *>(out + 4 * x), _mm_packus_epi16(avg, zero));
        }
#endif
        for (; x < whole; ++x)
            averageBlock(r0 + 8 * x, r1 + 8 * x, out + 4 * x);
        if (whole < dw) {
            const uchar *a = r0 + whole * 8, *b = r1 + whole * 8;
            for (int c = 0; c < 4; ++c)
                out[whole * 4 + c] = uchar((2u * a[c] + 2u * b[c] + 2) >> 2);
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
