#include "foundation/AiffSound.h"

#include <QFile>
#include <QtEndian>

#include <cmath>
#include <cstring>

namespace {

constexpr qint64 kMaxFileBytes = 64LL * 1024 * 1024;

AiffSound failed(const QString &why)
{
    AiffSound sound;
    sound.error = why;
    return sound;
}

quint32 big32(const char *p) { return qFromBigEndian<quint32>(p); }
quint16 big16(const char *p) { return qFromBigEndian<quint16>(p); }

} // namespace

double AiffSound::extended80(const char *bytes)
{
    const quint16 signExponent = big16(bytes);
    const quint64 mantissa = qFromBigEndian<quint64>(bytes + 2);
    const int exponent = int(signExponent & 0x7fff);
    if (exponent == 0 && mantissa == 0)
        return 0.0;
    if (exponent == 0x7fff)
        return std::nan("");
    const double value = std::ldexp(double(mantissa), exponent - 16383 - 63);
    return (signExponent & 0x8000) ? -value : value;
}

AiffSound AiffSound::fromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(QStringLiteral("'%1' cannot be read: %2").arg(path, file.errorString()));
    if (file.size() > kMaxFileBytes)
        return failed(QStringLiteral("'%1' is too large for a sound").arg(path));
    AiffSound sound = fromData(file.readAll());
    if (!sound.error.isEmpty())
        sound.error = QStringLiteral("'%1': %2").arg(path, sound.error);
    return sound;
}

AiffSound AiffSound::fromData(const QByteArray &data)
{
    const char *p = data.constData();
    const qint64 size = data.size();
    if (size < 12 || std::memcmp(p, "FORM", 4) != 0)
        return failed(QStringLiteral("not an AIFF file"));
    const bool aifc = std::memcmp(p + 8, "AIFC", 4) == 0;
    if (!aifc && std::memcmp(p + 8, "AIFF", 4) != 0)
        return failed(QStringLiteral("not an AIFF file"));

    int channels = 0, bits = 0;
    quint32 frames = 0;
    double rate = 0.0;
    bool littleEndian = false;
    const char *sampleData = nullptr;
    qint64 sampleBytes = 0;
    const qint64 formEnd = std::min<qint64>(size, qint64(big32(p + 4)) + 8);
    for (qint64 at = 12; at + 8 <= formEnd;) {
        const char *chunk = p + at;
        const qint64 length = big32(chunk + 4);
        const qint64 body = at + 8;
        if (length > formEnd - body)
            return failed(QStringLiteral("a chunk runs past the end of the file"));
        if (std::memcmp(chunk, "COMM", 4) == 0) {
            if (length < 18)
                return failed(QStringLiteral("the format chunk is too short"));
            channels = big16(p + body);
            frames = big32(p + body + 2);
            bits = big16(p + body + 6);
            rate = extended80(p + body + 8);
            if (aifc) {
                if (length < 22)
                    return failed(QStringLiteral("the format chunk is too short"));
                const char *compression = p + body + 18;
                if (std::memcmp(compression, "sowt", 4) == 0)
                    littleEndian = true;
                else if (std::memcmp(compression, "NONE", 4) != 0 && std::memcmp(compression, "twos", 4) != 0)
                    return failed(QStringLiteral("compressed sound data is not supported"));
            }
        } else if (std::memcmp(chunk, "SSND", 4) == 0) {
            if (length < 8)
                return failed(QStringLiteral("the sound data chunk is too short"));
            const qint64 offset = big32(p + body);
            if (offset > length - 8)
                return failed(QStringLiteral("the sound data offset runs past its chunk"));
            sampleData = p + body + 8 + offset;
            sampleBytes = length - 8 - offset;
        }
        at = body + length + (length & 1); // chunks are padded to an even length
    }
    if (channels <= 0 || channels > 16)
        return failed(QStringLiteral("no usable format chunk"));
    if (bits < 1 || bits > 32)
        return failed(QStringLiteral("unsupported sample size %1").arg(bits));
    if (!(rate >= 1.0 && rate <= 1e6))
        return failed(QStringLiteral("unsupported sample rate"));
    if (!sampleData)
        return failed(QStringLiteral("no sound data"));

    const int bytesPerSample = (bits + 7) / 8;
    const qint64 available = sampleBytes / (qint64(bytesPerSample) * channels);
    const qint64 count = std::min<qint64>(frames, available) * channels;
    AiffSound sound;
    sound.channels = channels;
    sound.sampleRate = int(std::lround(rate));
    sound.pcm.resize(count * 2);
    char *out = sound.pcm.data();
    for (qint64 i = 0; i < count; ++i) {
        const uchar *s = reinterpret_cast<const uchar *>(sampleData + i * bytesPerSample);
        // The sample's two most significant bytes: AIFF stores big-endian, "sowt" little-endian.
        qint16 value;
        if (bytesPerSample == 1)
            value = qint16(qint8(s[0]) * 256);
        else if (littleEndian)
            value = qint16((s[bytesPerSample - 1] << 8) | s[bytesPerSample - 2]);
        else
            value = qint16((s[0] << 8) | s[1]);
        qToLittleEndian(value, out + 2 * i);
    }
    if (sound.pcm.isEmpty())
        return failed(QStringLiteral("no sound data"));
    return sound;
}
