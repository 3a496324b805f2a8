#include "HarpSynth.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The pitch of a signal by autocorrelation, refined by parabolic interpolation of the peak.
double pitchOf(const std::vector<double> &s, double expected)
{
    const int rate = HarpSynth::sampleRate;
    const int lo = int(rate / (expected * 1.1)), hi = int(rate / (expected * 0.9)) + 1;
    const size_t window = 8192;
    auto corr = [&](int lag) {
        double sum = 0;
        for (size_t i = 0; i < window; ++i)
            sum += s[i] * s[i + size_t(lag)];
        return sum;
    };
    int best = lo;
    double bestValue = -1e300;
    for (int lag = lo; lag <= hi; ++lag) {
        const double c = corr(lag);
        if (c > bestValue) {
            bestValue = c;
            best = lag;
        }
    }
    const double a = corr(best - 1), b = bestValue, c = corr(best + 1);
    const double offset = 0.5 * (a - c) / (a - 2 * b + c);
    return rate / (best + offset);
}

TEST(HarpSynth, StringsAreInTune)
{
    // Whole-sample delay lines alone are off by up to a quarter tone at high notes; the
    // fractional all-pass must bring every string within a few cents.
    for (double f : {110.0, 261.63, 329.63, 440.0, 659.26, 783.99, 1046.5}) {
        const auto s = HarpSynth::pluck(f, 20000, 0.6, 0.999, 7);
        const double measured = pitchOf(s, f);
        const double cents = 1200 * std::log2(measured / f);
        EXPECT_LT(std::abs(cents), 5.0) << f << " Hz measured " << measured;
    }
}

TEST(HarpSynth, PlucksDecayAndCarryNoOffset)
{
    const auto s = HarpSynth::pluck(261.63, 44100, 0.6, 0.998, 3);
    double early = 0, late = 0, mean = 0;
    for (size_t i = 0; i < 4410; ++i) {
        early += s[i] * s[i];
        late += s[s.size() - 1 - i] * s[s.size() - 1 - i];
    }
    for (double v : s)
        mean += v;
    EXPECT_LT(late, early * 0.2);
    EXPECT_LT(std::abs(mean / double(s.size())), 1e-3);
}

TEST(HarpSynth, ChordIsStereoOfTheStatedLengthAndRepeatable)
{
    const auto a = HarpSynth::strummedChord(1);
    const auto b = HarpSynth::strummedChord(1);
    EXPECT_EQ(a.size(), size_t(HarpSynth::sampleRate * HarpSynth::seconds) * HarpSynth::channels);
    EXPECT_EQ(a, b);
    // The strum starts on the low strings, panned left: the left channel leads at first.
    double left = 0, right = 0;
    for (size_t i = 0; i < 1500; ++i) {
        left += std::abs(double(a[2 * i]));
        right += std::abs(double(a[2 * i + 1]));
    }
    EXPECT_GT(left, right);
}

TEST(HarpSynth, DegenerateRequestsGiveEmptyOrShortOutput)
{
    EXPECT_TRUE(HarpSynth::pluck(440, 0, 0.5, 0.99, 1).empty());
    EXPECT_TRUE(HarpSynth::pluck(440, -5, 0.5, 0.99, 1).empty());
    // A pitch above what the delay line can hold still gives finite samples.
    for (double v : HarpSynth::pluck(40000, 100, 0.5, 0.99, 1))
        ASSERT_TRUE(std::isfinite(v));
}

} // namespace
