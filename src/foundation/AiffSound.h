#pragma once

#include <QByteArray>
#include <QString>

// A sound read from an AIFF (or uncompressed AIFF-C) file into memory: its samples as signed
// 16-bit little-endian PCM, interleaved, ready for an audio output. Reading never fails loudly:
// a file that is missing or not such a sound gives an invalid sound and the reason.
struct AiffSound {
    int channels = 0;
    int sampleRate = 0;
    QByteArray pcm; // signed 16-bit little-endian, interleaved frames
    QString error;  // why the sound is invalid; empty when it is valid

    bool isValid() const { return error.isEmpty() && channels > 0 && sampleRate > 0 && !pcm.isEmpty(); }
    qint64 frameCount() const { return channels > 0 ? pcm.size() / (2 * channels) : 0; }

    static AiffSound fromData(const QByteArray &data);
    static AiffSound fromFile(const QString &path);
    // The 80-bit IEEE extended value of an AIFF sample rate (10 bytes, big-endian).
    static double extended80(const char *bytes);
};
