#include "Noise.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cmath>
#include <numeric>

Noise::Noise(quint32 seed)
{
    std::array<quint8, 256> base{};
    std::iota(base.begin(), base.end(), 0);
    QRandomGenerator rng(seed);
    // Fisher-Yates with the generator's own bounded draws keeps the order portable.
    for (int i = 255; i > 0; --i)
        std::swap(base[i], base[rng.bounded(i + 1)]);
    for (int i = 0; i < 512; ++i)
        m_perm[i] = base[i & 255];
}

double Noise::gradient(int hash, double dx, double dy) const
{
    // Eight gradient directions, the diagonals shortened to keep the range even.
    switch (hash & 7) {
    case 0: return dx + dy;
    case 1: return -dx + dy;
    case 2: return dx - dy;
    case 3: return -dx - dy;
    case 4: return 1.4142 * dx;
    case 5: return -1.4142 * dx;
    case 6: return 1.4142 * dy;
    default: return -1.4142 * dy;
    }
}

static inline double fade(double t)
{
    return t * t * t * (t * (t * 6 - 15) + 10);
}

double Noise::at(double x, double y) const
{
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const int xi = int(static_cast<long long>(fx) & 255);
    const int yi = int(static_cast<long long>(fy) & 255);
    const double dx = x - fx;
    const double dy = y - fy;
    const double u = fade(dx);
    const double v = fade(dy);

    const int a = m_perm[xi] + yi;
    const int b = m_perm[xi + 1] + yi;
    const double n00 = gradient(m_perm[a], dx, dy);
    const double n10 = gradient(m_perm[b], dx - 1, dy);
    const double n01 = gradient(m_perm[a + 1], dx, dy - 1);
    const double n11 = gradient(m_perm[b + 1], dx - 1, dy - 1);
    const double nx0 = n00 + u * (n10 - n00);
    const double nx1 = n01 + u * (n11 - n01);
    return (nx0 + v * (nx1 - nx0)) * 0.9;
}

double Noise::fbm(double x, double y, int octaves, double lacunarity, double gain) const
{
    double sum = 0;
    double amplitude = 1;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        // A fixed offset per octave keeps the layers from lining up at the origin.
        sum += amplitude * at(x + i * 17.13, y - i * 9.71);
        total += amplitude;
        x *= lacunarity;
        y *= lacunarity;
        amplitude *= gain;
    }
    return sum / total;
}

double Noise::ridged(double x, double y, int octaves) const
{
    double sum = 0;
    double amplitude = 1;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        const double n = 1.0 - std::abs(at(x + i * 31.7, y + i * 12.3));
        sum += amplitude * n * n;
        total += amplitude;
        x *= 2;
        y *= 2;
        amplitude *= 0.5;
    }
    return sum / total;
}
