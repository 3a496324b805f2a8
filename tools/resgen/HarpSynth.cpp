#include "HarpSynth.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

std::vector<double> HarpSynth::pluck(double frequency, int count, double brightness, double sustain, quint32 seed)
{
    std::vector<double> out(size_t(std::max(0, count)), 0.0);
    // The loop reads a sample and averages it with the one after it, so a line of `length`
    // samples delays by length - 0.5; the all-pass adds the missing fraction (kept between 0.1
    // and 1.1 samples, where its delay is accurate).
    const double period = sampleRate / frequency;
    const int length = std::max(2, int(std::floor(period + 0.5 - 0.1)));
    const double fraction = period + 0.5 - length;
    const double coefficient = (1.0 - fraction) / (1.0 + fraction);

    QRandomGenerator rng(seed);
    std::vector<double> line(static_cast<size_t>(length));
    double previous = 0;
    for (double &v : line) {
        // A softened noise burst: lower brightness filters out more of the highs.
        const double noise = rng.generateDouble() * 2.0 - 1.0;
        previous = previous + brightness * (noise - previous);
        v = previous;
    }
    double mean = 0;
    for (double v : line)
        mean += v;
    mean /= length;
    for (double &v : line)
        v -= mean;   // no DC offset

    size_t index = 0;
    double apIn = 0, apOut = 0;
    for (size_t n = 0; n < out.size(); ++n) {
        const double current = line[index];
        out[n] = current;
        const double next = line[(index + 1) % line.size()];
        const double averaged = sustain * 0.5 * (current + next);
        const double y = coefficient * averaged + apIn - coefficient * apOut;
        apIn = averaged;
        apOut = y;
        line[index] = y;
        index = (index + 1) % line.size();
    }
    return out;
}

std::vector<qint16> HarpSynth::strummedChord(quint32 seed)
{
    const int frames = int(sampleRate * seconds);
    // C major across three octaves, strummed upwards.
    const double notes[] = {130.81, 196.00, 261.63, 329.63, 392.00, 523.25, 659.26, 783.99};
    const int count = int(std::size(notes));
    const double strum = 0.045;   // seconds between strings
    std::vector<double> left(size_t(frames), 0.0), right(size_t(frames), 0.0);
    for (int i = 0; i < count; ++i) {
        const int start = int(i * strum * sampleRate);
        const double sustain = 0.9985 - i * 0.0003;
        const auto string = pluck(notes[i], frames - start, 0.55, sustain, seed + quint32(i) * 101U);
        const double pan = 0.2 + 0.6 * i / (count - 1);   // low strings to the left
        const double gain = 1.0 - i * 0.05;
        for (size_t n = 0; n < string.size(); ++n) {
            left[size_t(start) + n] += string[n] * gain * std::cos(pan * M_PI / 2);
            right[size_t(start) + n] += string[n] * gain * std::sin(pan * M_PI / 2);
        }
    }
    // Gentle warmth (one-pole low-pass), a short fade-in against clicks and a fade-out to silence.
    double lpL = 0, lpR = 0;
    double peak = 1e-9;
    const int fadeIn = sampleRate / 500;
    const int fadeOut = int(sampleRate * 0.4);
    for (int n = 0; n < frames; ++n) {
        lpL += 0.6 * (left[size_t(n)] - lpL);
        lpR += 0.6 * (right[size_t(n)] - lpR);
        double envelope = 1.0;
        if (n < fadeIn)
            envelope = double(n) / fadeIn;
        if (n > frames - fadeOut) {
            const double t = double(frames - n) / fadeOut;
            envelope = t * t;
        }
        left[size_t(n)] = lpL * envelope;
        right[size_t(n)] = lpR * envelope;
        peak = std::max({peak, std::abs(left[size_t(n)]), std::abs(right[size_t(n)])});
    }
    const double scale = 0.8 * 32767.0 / peak;
    std::vector<qint16> samples(size_t(frames) * 2);
    for (int n = 0; n < frames; ++n) {
        samples[size_t(n) * 2] = qint16(std::lround(left[size_t(n)] * scale));
        samples[size_t(n) * 2 + 1] = qint16(std::lround(right[size_t(n)] * scale));
    }
    return samples;
}
