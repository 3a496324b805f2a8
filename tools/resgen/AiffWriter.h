#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <vector>

// Writes uncompressed AIFF: a FORM container of type AIFF with a COMM chunk (channels, frames,
// bits per sample, sample rate as an 80-bit IEEE extended number) and an SSND chunk of
// big-endian signed samples.
class AiffWriter
{
public:
    // `samples` are interleaved frames of `channels` 16-bit samples each.
    static QByteArray write(const std::vector<qint16> &samples, int channels, int sampleRate);
    // The 10-byte big-endian IEEE 754 extended-precision form of a non-negative value.
    static QByteArray extended80(double value);
};
