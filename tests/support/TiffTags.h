#pragma once

#include <QByteArray>
#include <QtEndian>

// The value of a SHORT tag of the first directory of a little- or big-endian TIFF file; -1 if
// absent. 259 is the compression (1 none, 5 LZW).
inline int tiffTag(const QByteArray &tiff, quint16 wanted)
{
    if (tiff.size() < 8)
        return -1;
    const bool little = tiff.startsWith("II");
    const auto u16 = [&](qsizetype at) {
        const auto *p = reinterpret_cast<const uchar *>(tiff.constData() + at);
        return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    };
    const auto *ifdAt = reinterpret_cast<const uchar *>(tiff.constData() + 4);
    const quint32 ifd = little ? qFromLittleEndian<quint32>(ifdAt) : qFromBigEndian<quint32>(ifdAt);
    if (ifd + 2 > quint32(tiff.size()))
        return -1;
    for (int i = 0; i < u16(ifd); ++i) {
        const qsizetype entry = ifd + 2 + 12 * i;
        if (entry + 12 > tiff.size())
            return -1;
        if (u16(entry) == wanted)
            return u16(entry + 8); // a SHORT value sits at the start of the value field
    }
    return -1;
}
