#include "AiffWriter.h"

#include <QtEndian>

#include <cmath>

namespace {

void appendBig32(QByteArray &out, quint32 v)
{
    char b[4];
    qToBigEndian(v, b);
    out.append(b, 4);
}

void appendBig16(QByteArray &out, quint16 v)
{
    char b[2];
    qToBigEndian(v, b);
    out.append(b, 2);
}

} // namespace

QByteArray AiffWriter::extended80(double value)
{
    QByteArray out(10, '\0');
    if (!(value > 0) || !std::isfinite(value))
        return out;
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);   // value = fraction * 2^exponent, fraction in [0.5, 1)
    // The mantissa keeps its leading 1 bit explicitly: fraction * 2^64 fills all 64 bits.
    const quint64 mantissa = quint64(std::ldexp(fraction, 64));
    const quint16 biased = quint16(exponent - 1 + 16383);
    qToBigEndian(biased, out.data());
    qToBigEndian(mantissa, out.data() + 2);
    return out;
}

QByteArray AiffWriter::write(const std::vector<qint16> &samples, int channels, int sampleRate)
{
    const quint32 frames = channels > 0 ? quint32(samples.size() / size_t(channels)) : 0;
    const quint32 soundBytes = frames * quint32(channels) * 2;
    QByteArray comm;
    appendBig16(comm, quint16(channels));
    appendBig32(comm, frames);
    appendBig16(comm, 16);
    comm.append(extended80(sampleRate));

    QByteArray out;
    out.append("FORM");
    appendBig32(out, 4 + (8 + quint32(comm.size())) + (8 + 8 + soundBytes));
    out.append("AIFF");
    out.append("COMM");
    appendBig32(out, quint32(comm.size()));
    out.append(comm);
    out.append("SSND");
    appendBig32(out, 8 + soundBytes);
    appendBig32(out, 0);   // offset
    appendBig32(out, 0);   // block size
    out.reserve(out.size() + int(soundBytes));
    for (size_t i = 0; i < size_t(frames) * size_t(channels); ++i)
        appendBig16(out, quint16(samples[i]));
    return out;
}
