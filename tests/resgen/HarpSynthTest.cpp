#include "HarpSynth.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(HarpSynth, ChordIsOfTheStatedLengthAndRepeatable)
{
    const auto a = HarpSynth::strummedChord(1);
    const auto b = HarpSynth::strummedChord(1);
    EXPECT_EQ(a.size(), size_t(HarpSynth::sampleRate * HarpSynth::seconds) * HarpSynth::channels);
    EXPECT_EQ(a, b);
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
