#pragma once

#include <QtGlobal>

#include <array>

// Seeded 2-D gradient noise and its fractal sum. The permutation table comes from the seed
// alone, so the same seed paints the same picture on every run and every machine.
class Noise
{
public:
    explicit Noise(quint32 seed);

    // Smooth noise in about [-1, 1], one feature per unit.
    double at(double x, double y) const;

    // Sum of `octaves` layers, each `lacunarity` times finer and `gain` times weaker,
    // normalised back to about [-1, 1].
    double fbm(double x, double y, int octaves, double lacunarity = 2.0, double gain = 0.5) const;

    // Like fbm but of absolute values folded into ridges: 1 on the ridge lines, 0 between.
    double ridged(double x, double y, int octaves) const;

private:
    double gradient(int hash, double dx, double dy) const;

    std::array<quint8, 512> m_perm{};
};
