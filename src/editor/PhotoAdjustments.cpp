#include "editor/PhotoAdjustments.h"

#include <QColorSpace>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <vector>

// How the adjustments are applied. Every pixel goes through three steps:
//  1. per channel, through one 256-entry table each: sRGB decoded to linear light, white
//     balance gains (temperature, tint) and the exposure gain with a soft shoulder, encoded back
//     to sRGB, then the brightness and contrast curves. The result keeps 4 bits more than the
//     input (0..4080), so the later steps do not band.
//  2. luma (Rec. 709 weights on the encoded values) through a table of the
//     highlights and shadows curves; the change is added to all three channels, so colour
//     differences are kept. Saturation then scales each channel's distance from that luma.
//  3. with sharpness, an unsharp mask: the luma plane of step 2 is box-blurred and the
//     difference added back to each channel.
// Rows are cut into bands that run in parallel; the blur reads a few rows beyond its band, so
// it runs as a second parallel pass once every band of the first is done.

namespace {

constexpr int kMax = 255 * 16; // full scale of the 12-bit working values: 8 bits and 4 more
constexpr int kLumaR = 3483, kLumaG = 11718, kLumaB = 1183; // Rec. 709 weights, sum 1 << 14
constexpr int kBandRows = 64;

// A working value (0..kMax) rounded back to 8 bits.
constexpr uint to8(int v)
{
    return uint(v + 8) >> 4;
}

double srgbToLinear(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double linearToSrgb(double v)
{
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

// Maps linear values from 0..top into 0..1: unchanged up to a knee, then a smooth exponential
// shoulder with slope 1 at the knee that reaches exactly 1 at `top`, so an exposure boost rolls
// white off instead of cutting it. With top <= 1 nothing goes past full scale: the identity.
class Shoulder
{
public:
    explicit Shoulder(double top)
        : m_top(top)
    {
        if (top <= 1)
            return;
        // Slope 1 at the knee: c = 1 - exp(-T c) for the shoulder's length T in knee units;
        // h(c) = 1 - exp(-T c) - c is positive just above 0 and negative at 1.
        const double T = (top - kKnee) / (1 - kKnee);
        double lo = 1e-9, hi = 1;
        for (int i = 0; i < 60; ++i) {
            const double c = (lo + hi) / 2;
            (1 - std::exp(-T * c) - c > 0 ? lo : hi) = c;
        }
        m_c = (lo + hi) / 2;
        m_norm = 1 - std::exp(-T * m_c);
    }
    double operator()(double x) const
    {
        if (m_top <= 1 || x <= kKnee)
            return std::min(x, 1.0);
        const double t = std::min((x - kKnee) / (1 - kKnee), (m_top - kKnee) / (1 - kKnee));
        return kKnee + (1 - kKnee) * (1 - std::exp(-t * m_c)) / m_norm;
    }

private:
    static constexpr double kKnee = 0.8;
    double m_top;
    double m_c = 1;
    double m_norm = 1;
};

// Everything one call needs, computed once from the adjustments; read-only while bands run.
struct Tables {
    // 32-bit entries: vector code can gather them.
    std::array<std::array<qint32, 256>, 3> channel{}; // step 1 for red, green, blue
    std::array<qint32, kMax + 1> lumaDelta{};          // step 2: highlights and shadows
    int saturation = 256;                               // (1 + saturation) in 1/256
    bool perChannelOnly = true; // no luma-dependent step: one byte-to-byte table per channel
    std::array<std::array<quint8, 256>, 3> direct{};    // the fast path's tables
    int sharpenRadius = 0;                              // 0: no sharpening
    int sharpenAmount = 0;                              // in 1/256
};

double clamped(double v, double lo, double hi)
{
    return std::isfinite(v) ? std::clamp(v, lo, hi) : 0.0;
}

Tables makeTables(const PhotoAdjustments &a, const QSize &size)
{
    Tables t;
    const double exposure = clamped(a.exposure, -4, 4);
    const double brightness = clamped(a.brightness, -1, 1);
    const double contrast = clamped(a.contrast, -1, 1);
    const double temperature = clamped(a.temperature, -1, 1);
    const double tint = clamped(a.tint, -1, 1);

    // White balance as gains on linear light, scaled so that grey keeps its luminance.
    std::array<double, 3> gains = {std::exp2(0.4 * temperature), std::exp2(-0.3 * tint), std::exp2(-0.4 * temperature)};
    const double greyLuminance = 0.2126 * gains[0] + 0.7152 * gains[1] + 0.0722 * gains[2];
    const double exposureGain = std::exp2(exposure);
    for (double &g : gains)
        g *= exposureGain / greyLuminance;
    const Shoulder shoulder(*std::max_element(gains.begin(), gains.end()));

    for (int c = 0; c < 3; ++c) {
        for (int v = 0; v < 256; ++v) {
            double x = linearToSrgb(shoulder(srgbToLinear(v / 255.0) * gains[c]));
            // Brightness: a parabola through black and white (at most a gamma of about 1.6).
            x += 0.6 * brightness * x * (1 - x);
            // Contrast: a cubic S around mid grey, flat at the ends at +1 and half as steep in
            // the middle at -1; monotonic over the whole range.
            x += contrast * x * (1 - x) * (2 * x - 1);
            t.channel[c][v] = qint32(std::lround(std::clamp(x, 0.0, 1.0) * kMax));
        }
    }

    // Highlights and shadows: bumps on the luma axis, each confined to its end of the tones
    // (shadows below 0.7, highlights above 0.3) and leaving black and white in place. The bump
    // L (1 - L/w)^3 has slope 1 at black and no less than -1/4 anywhere, so gains up to 1
    // downwards and 4 upwards keep the curve monotonic; 2 is used for opening the shadows and
    // for holding the highlights back, the moves people make most.
    const double shadows = clamped(a.shadows, -1, 1);
    const double highlights = clamped(a.highlights, -1, 1);
    const double shadowGain = shadows > 0 ? 2.0 : 1.0;
    const double highlightGain = highlights < 0 ? 2.0 : 1.0;
    const auto bump = [](double L) {
        constexpr double kWidth = 0.7;
        return L < kWidth ? L * std::pow(1 - L / kWidth, 3) : 0.0;
    };
    bool lumaCurve = false;
    for (int v = 0; v <= kMax; ++v) {
        const double L = double(v) / kMax;
        const double delta = shadows * shadowGain * bump(L) + highlights * highlightGain * bump(1 - L);
        t.lumaDelta[v] = qint32(std::lround(delta * kMax));
        lumaCurve = lumaCurve || t.lumaDelta[v] != 0;
    }
    t.saturation = int(std::lround((1 + clamped(a.saturation, -1, 1)) * 256));

    const double sharpness = clamped(a.sharpness, 0, 1);
    if (sharpness > 0) {
        t.sharpenRadius = std::max(1, int(std::lround(std::max(size.width(), size.height()) / 2000.0)));
        t.sharpenAmount = int(std::lround(sharpness * 1.5 * 256));
    }
    t.perChannelOnly = !lumaCurve && t.saturation == 256 && t.sharpenAmount == 0;
    if (t.perChannelOnly) {
        for (int c = 0; c < 3; ++c)
            for (int v = 0; v < 256; ++v)
                t.direct[c][v] = to8(t.channel[c][v]);
    }
    return t;
}

// Steps 1 and 2 on one row; with `luma`, also the row's final luma (12 bits) for sharpening.
template<bool withLuma>
inline __attribute__((always_inline)) void toneRow(const QRgb *in, QRgb *out, quint16 *luma, int width, const Tables &t)
{
    if (t.perChannelOnly) {
        for (int x = 0; x < width; ++x) {
            const QRgb p = in[x];
            out[x] = (p & 0xff000000u) | (uint(t.direct[0][qRed(p)]) << 16) | (uint(t.direct[1][qGreen(p)]) << 8)
                | t.direct[2][qBlue(p)];
        }
        return;
    }
    // Chunks of a fixed length, the table look-ups apart from the arithmetic, so that the
    // compiler turns the arithmetic into vector code (the last chunk is padded).
    constexpr int kChunk = 256;
    alignas(64) QRgb pixels[kChunk];
    alignas(64) int R[kChunk], G[kChunk], B[kChunk], Y[kChunk], D[kChunk];
    alignas(64) QRgb result[kChunk];
    alignas(64) quint16 lumaOut[kChunk];
    const int sat = t.saturation;
    for (int x0 = 0; x0 < width; x0 += kChunk) {
        const int n = std::min(kChunk, width - x0);
        const QRgb *src = in + x0;
        if (n < kChunk) {
            std::copy(src, src + n, pixels);
            std::fill(pixels + n, pixels + kChunk, 0u);
            src = pixels;
        }
        for (int i = 0; i < kChunk; ++i) {
            const QRgb p = src[i];
            R[i] = t.channel[0][(p >> 16) & 0xff];
            G[i] = t.channel[1][(p >> 8) & 0xff];
            B[i] = t.channel[2][p & 0xff];
        }
        for (int i = 0; i < kChunk; ++i)
            Y[i] = (R[i] * kLumaR + G[i] * kLumaG + B[i] * kLumaB + (1 << 13)) >> 14;
        for (int i = 0; i < kChunk; ++i)
            D[i] = t.lumaDelta[Y[i]];
        for (int i = 0; i < kChunk; ++i) {
            const int y = Y[i] + D[i];
            const int r = std::clamp(y + (((R[i] - Y[i]) * sat) >> 8), 0, kMax);
            const int g = std::clamp(y + (((G[i] - Y[i]) * sat) >> 8), 0, kMax);
            const int b = std::clamp(y + (((B[i] - Y[i]) * sat) >> 8), 0, kMax);
            result[i] = (src[i] & 0xff000000u) | (to8(r) << 16) | (to8(g) << 8) | to8(b);
            lumaOut[i] = quint16(std::clamp(y, 0, kMax));
        }
        std::copy(result, result + n, out + x0);
        if constexpr (withLuma)
            std::copy(lumaOut, lumaOut + n, luma + x0);
    }
}

// Steps 1 and 2 for a row, in AVX2 vector code where the processor has it (gathers make the
// table look-ups eight at a time), else in the baseline instruction set. Same code, same result.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
template<bool withLuma>
__attribute__((target("avx2"))) void toneRowAvx2(const QRgb *in, QRgb *out, quint16 *luma, int width, const Tables &t)
{
    toneRow<withLuma>(in, out, luma, width, t);
}

template<bool withLuma>
void toneRowFastest(const QRgb *in, QRgb *out, quint16 *luma, int width, const Tables &t)
{
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2)
        toneRowAvx2<withLuma>(in, out, luma, width, t);
    else
        toneRow<withLuma>(in, out, luma, width, t);
}
#else
template<bool withLuma>
void toneRowFastest(const QRgb *in, QRgb *out, quint16 *luma, int width, const Tables &t)
{
    toneRow<withLuma>(in, out, luma, width, t);
}
#endif

struct Band {
    int top;
    int bottom; // one past the last row
};

// The sums of the 2r + 1 values around each value of a row, edges repeated.
void horizontalSums(const quint16 *src, quint32 *dst, int width, int r)
{
    quint32 sum = 0;
    for (int k = -r; k <= r; ++k)
        sum += src[std::clamp(k, 0, width - 1)];
    for (int x = 0; x < width; ++x) {
        dst[x] = sum;
        if (x >= r && x + r + 1 < width)
            sum += src[x + r + 1] - src[x - r];
        else
            sum += src[std::min(x + r + 1, width - 1)] - src[std::max(x - r, 0)];
    }
}

// Step 3 on one band: a box blur of the luma plane (reading r rows beyond the band, edges
// repeated) and the detail, luma minus blur, added to the band's pixels. The horizontal sums
// of the 2r + 1 rows under the window are kept in a small ring, so the work stays in cache.
void sharpenBand(const Band &band, uchar *outBits, qsizetype outStride, int width, int height,
                 const std::vector<quint16> &luma, const Tables &t)
{
    const int r = t.sharpenRadius;
    const int span = 2 * r + 1;
    const auto lumaRow = [&](int y) { return luma.data() + qsizetype(std::clamp(y, 0, height - 1)) * width; };

    // Ring slot k holds the horizontal sums of row band.top - r + k, then of every span-th
    // row after it; `column` is the sum of the ring, the window's total.
    std::vector<quint32> ring(size_t(span) * width);
    std::vector<quint32> column(size_t(width), 0);
    std::vector<quint32> entering(static_cast<size_t>(width));
    for (int k = 0; k < span; ++k) {
        quint32 *slot = ring.data() + size_t(k) * width;
        horizontalSums(lumaRow(band.top - r + k), slot, width, r);
        for (int x = 0; x < width; ++x)
            column[x] += slot[x];
    }
    const qint64 reciprocal = ((qint64(1) << 32) + span * span - 1) / (span * span); // rounded up: flat stays flat
    const int amount = t.sharpenAmount;
    for (int y = band.top; y < band.bottom; ++y) {
        const quint16 *centre = lumaRow(y);
        auto *px = reinterpret_cast<QRgb *>(outBits + y * outStride);
        for (int x = 0; x < width; ++x) {
            const int blurred = int((column[x] * reciprocal) >> 32);
            const int delta = ((centre[x] - blurred) * amount + (1 << 11)) >> 12; // 12 bits to 8
            if (delta != 0) {
                const QRgb p = px[x];
                px[x] = (p & 0xff000000u) | (uint(std::clamp(qRed(p) + delta, 0, 255)) << 16)
                    | (uint(std::clamp(qGreen(p) + delta, 0, 255)) << 8) | uint(std::clamp(qBlue(p) + delta, 0, 255));
            }
        }
        if (y + 1 < band.bottom) {
            // Row y - r leaves the window and row y + r + 1 enters it, in the same slot.
            quint32 *slot = ring.data() + size_t((y - band.top) % span) * width;
            horizontalSums(lumaRow(y + r + 1), entering.data(), width, r);
            for (int x = 0; x < width; ++x) {
                column[x] += entering[x] - slot[x];
                slot[x] = entering[x];
            }
        }
    }
}

// The pool the bands run on when the caller gives none. It is the adjustments' own, so a
// caller that is itself a thread of the global pool never waits for a thread it occupies.
QThreadPool &bandPool()
{
    static QThreadPool pool;
    return pool;
}

} // namespace

bool PhotoAdjustments::isNeutral() const
{
    return *this == PhotoAdjustments{};
}

QImage PhotoAdjustments::applyTo(const QImage &image) const
{
    return applyTo(image, bandPool());
}

QImage PhotoAdjustments::applyTo(const QImage &image, QThreadPool &pool) const
{
    if (image.isNull() || isNeutral())
        return image;
    const QImage::Format format = image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const QImage source = image.format() == format ? image : image.convertToFormat(format);
    if (source.isNull())
        return {}; // out of memory
    QImage out(source.size(), format);
    if (out.isNull())
        return {};
    out.setDevicePixelRatio(image.devicePixelRatio());
    out.setDotsPerMeterX(image.dotsPerMeterX());
    out.setDotsPerMeterY(image.dotsPerMeterY());
    out.setColorSpace(image.colorSpace());

    const Tables tables = makeTables(*this, source.size());
    const int width = source.width(), height = source.height();
    std::vector<quint16> luma;
    try {
        if (tables.sharpenAmount > 0)
            luma.resize(size_t(width) * height);
    } catch (const std::bad_alloc &) {
        return {};
    }

    // The workers write through plain pointers taken here: QImage's accessors are not for use
    // from several threads at once.
    const uchar *inBits = source.constBits();
    const qsizetype inStride = source.bytesPerLine();
    uchar *outBits = out.bits();
    const qsizetype outStride = out.bytesPerLine();
    std::vector<Band> bands;
    for (int y = 0; y < height; y += kBandRows)
        bands.push_back(Band{y, std::min(y + kBandRows, height)});
    QtConcurrent::blockingMap(&pool, bands, [&](const Band &band) {
        for (int y = band.top; y < band.bottom; ++y) {
            quint16 *lumaRow = luma.empty() ? nullptr : luma.data() + size_t(y) * width;
            const auto *in = reinterpret_cast<const QRgb *>(inBits + y * inStride);
            auto *out = reinterpret_cast<QRgb *>(outBits + y * outStride);
            if (lumaRow)
                toneRowFastest<true>(in, out, lumaRow, width, tables);
            else
                toneRowFastest<false>(in, out, nullptr, width, tables);
        }
    });
    if (tables.sharpenAmount > 0) {
        QtConcurrent::blockingMap(&pool, bands, [&](const Band &band) {
            sharpenBand(band, outBits, outStride, width, height, luma, tables);
        });
    }
    return out;
}
