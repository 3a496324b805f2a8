#include "Noise.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(Noise, SameSeedSameFieldOtherSeedOtherField)
{
    const Noise a(42), b(42), c(43);
    int differing = 0;
    for (int i = 0; i < 200; ++i) {
        const double x = i * 0.37, y = i * 0.11 + 0.5;
        ASSERT_EQ(a.at(x, y), b.at(x, y));
        ASSERT_EQ(a.fbm(x, y, 5), b.fbm(x, y, 5));
        differing += std::abs(a.at(x, y) - c.at(x, y)) > 1e-6;
    }
    EXPECT_GT(differing, 150);
}

TEST(Noise, StaysInRangeIsSmoothAndNotConstant)
{
    const Noise n(7);
    double lo = 1e9, hi = -1e9;
    for (int j = 0; j < 300; ++j) {
        for (int i = 0; i < 300; ++i) {
            const double x = i * 0.093 - 5, y = j * 0.071 - 300;   // negative coordinates too
            const double v = n.at(x, y);
            lo = std::min(lo, v);
            hi = std::max(hi, v);
            ASSERT_LE(std::abs(v - n.at(x + 1e-3, y)), 0.01) << x << "," << y;
            for (double f : {n.fbm(x, y, 6), n.ridged(x, y, 4)})
                ASSERT_LE(std::abs(f), 1.05);
            ASSERT_GE(n.ridged(x, y, 4), 0.0);
        }
    }
    EXPECT_GE(lo, -1.05);
    EXPECT_LE(hi, 1.05);
    EXPECT_LT(lo, -0.4);
    EXPECT_GT(hi, 0.4);
}

TEST(Noise, WrapsWithoutSeamsFarFromTheOrigin)
{
    // The lattice repeats every 256 units; crossing a repeat must not jump.
    const Noise n(9);
    for (double x : {255.999, 511.999, -0.001, 1e6 - 0.001})
        EXPECT_LE(std::abs(n.at(x, 3.3) - n.at(x + 0.002, 3.3)), 0.02) << x;
}

} // namespace
