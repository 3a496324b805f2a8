#include "output/JpegQuality.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

// The standard luminance table (order does not matter here: only its scaled sum is compared).
constexpr std::array<int, 64> kLuminance = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

// The sum of the standard table scaled for a quality, as the common encoder scales it.
long scaledSum(int quality)
{
    const long scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    long sum = 0;
    for (int q : kLuminance)
        sum += std::clamp<long>((q * scale + 50) / 100, 1, 255);
    return sum;
}

int byteAt(const QByteArray &bytes, qsizetype i)
{
    return i < bytes.size() ? quint8(bytes.at(i)) : -1;
}

// The sum of the first luminance (table 0) quantisation table, or -1.
long luminanceTableSum(const QByteArray &jpeg)
{
    if (byteAt(jpeg, 0) != 0xFF || byteAt(jpeg, 1) != 0xD8)
        return -1;
    qsizetype pos = 2;
    while (pos + 4 <= jpeg.size()) {
        if (byteAt(jpeg, pos) != 0xFF)
            return -1;
        const int marker = byteAt(jpeg, pos + 1);
        if (marker == 0xFF) { // fill byte
            ++pos;
            continue;
        }
        if (marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7) || marker == 0x01) {
            pos += 2;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) // the picture data starts: no table came
            return -1;
        const int length = (byteAt(jpeg, pos + 2) << 8) | byteAt(jpeg, pos + 3);
        if (length < 2 || pos + 2 + length > jpeg.size())
            return -1;
        if (marker == 0xDB) {
            qsizetype t = pos + 4;
            const qsizetype end = pos + 2 + length;
            while (t < end) {
                const int precisionAndId = byteAt(jpeg, t++);
                const bool wide = (precisionAndId >> 4) != 0;
                const qsizetype size = wide ? 128 : 64;
                if (t + size > end)
                    return -1;
                if ((precisionAndId & 0x0F) == 0) {
                    long sum = 0;
                    for (int i = 0; i < 64; ++i)
                        sum += wide ? (byteAt(jpeg, t + 2 * i) << 8) | byteAt(jpeg, t + 2 * i + 1) : byteAt(jpeg, t + i);
                    return sum;
                }
                t += size;
            }
        }
        pos += 2 + length;
    }
    return -1;
}

} // namespace

int JpegQuality::estimate(const QByteArray &jpeg)
{
    const long sum = luminanceTableSum(jpeg);
    if (sum <= 0)
        return -1;
    int best = -1;
    long bestDistance = std::numeric_limits<long>::max();
    for (int quality = 1; quality <= 100; ++quality) {
        const long distance = std::abs(scaledSum(quality) - sum);
        // Ties (tables clamped at 1 near the top) go to the higher quality.
        if (distance <= bestDistance) {
            bestDistance = distance;
            best = quality;
        }
    }
    return best;
}

int JpegQuality::estimateOrDefault(const QByteArray &jpeg)
{
    const int quality = estimate(jpeg);
    return quality > 0 ? quality : kDefaultQuality;
}
