#pragma once

// Writes minimal uncompressed grayscale multi-page TIFF files (Qt writes single pages only).

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QtEndian>

namespace testimages {

inline QByteArray multiPageTiff(const QList<QSize> &pages, quint8 grey = 128)
{
    QByteArray out("II*\0", 4);
    auto put16 = [&](quint16 v) { char b[2]; qToLittleEndian(v, b); out.append(b, 2); };
    auto put32 = [&](quint32 v) { char b[4]; qToLittleEndian(v, b); out.append(b, 4); };
    auto patch32 = [&](qsizetype at, quint32 v) { qToLittleEndian(v, out.data() + at); };
    qsizetype nextPointer = out.size();
    put32(0);
    for (const QSize &page : pages) {
        const quint32 w = quint32(page.width()), h = quint32(page.height());
        const quint32 pixels = quint32(out.size());
        out.append(QByteArray(qsizetype(w) * h, char(grey)));
        if (out.size() % 2)
            out.append('\0');
        patch32(nextPointer, quint32(out.size()));
        struct Entry { quint16 tag, type; quint32 value; };
        const Entry entries[] = {
            {256, 4, w}, {257, 4, h}, {258, 3, 8}, {259, 3, 1}, {262, 3, 1},
            {273, 4, pixels}, {277, 3, 1}, {278, 4, h}, {279, 4, w * h},
        };
        put16(quint16(std::size(entries)));
        for (const Entry &e : entries) {
            put16(e.tag);
            put16(e.type);
            put32(1);
            if (e.type == 3) {
                put16(quint16(e.value));
                put16(0);
            } else {
                put32(e.value);
            }
        }
        nextPointer = out.size();
        put32(0);
    }
    return out;
}

} // namespace testimages
