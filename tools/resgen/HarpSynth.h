#pragma once

#include <QtGlobal>

#include <vector>

// The completion sound: a major chord plucked on harp-like strings, strummed from the lowest
// note up. Each string is a Karplus-Strong delay line (a noise burst circulating through a
// lossy averaging filter), tuned exactly with a fractional all-pass delay.
class HarpSynth
{
public:
    static constexpr int sampleRate = 44100;
    static constexpr int channels = 2;
    static constexpr double seconds = 2.0;

    // Interleaved stereo 16-bit frames; the same seed gives the same sound.
    static std::vector<qint16> strummedChord(quint32 seed);

    // One string: `count` mono samples of a pluck at `frequency` Hz.
    static std::vector<double> pluck(double frequency, int count, double brightness, double sustain, quint32 seed);
};
