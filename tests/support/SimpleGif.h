#pragma once

// Writes GIF files for tests (Qt reads GIF but does not write it): a global palette of the
// picture's colours (at most 256) and image data as plain LZW literals, with a clear code often
// enough that the code width stays at 9 bits.

#include <QByteArray>
#include <QHash>
#include <QImage>

namespace testimages {

inline QByteArray simpleGif(const QImage &image)
{
    const QImage img = image.convertToFormat(QImage::Format_RGB32);
    QList<QRgb> palette;
    QHash<QRgb, int> index;
    QList<int> pixels;
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            const QRgb c = img.pixel(x, y) & 0xffffff;
            if (!index.contains(c) && palette.size() < 256) {
                index.insert(c, int(palette.size()));
                palette.append(c);
            }
            pixels.append(index.value(c, 0));
        }
    }
    while (palette.size() < 256)
        palette.append(0);

    auto put16 = [](QByteArray &out, int v) { out.append(char(v & 0xff)).append(char(v >> 8)); };
    QByteArray out("GIF89a");
    put16(out, img.width());
    put16(out, img.height());
    out.append(char(0xF7)).append('\0').append('\0'); // global table of 256 colours
    for (QRgb c : palette)
        out.append(char(qRed(c))).append(char(qGreen(c))).append(char(qBlue(c)));
    out.append(char(0x2C));
    put16(out, 0);
    put16(out, 0);
    put16(out, img.width());
    put16(out, img.height());
    out.append('\0');
    out.append(char(8)); // minimum code size: codes start 9 bits wide

    QByteArray data;
    quint32 bits = 0;
    int count = 0;
    auto putCode = [&](int code) {
        bits |= quint32(code) << count;
        count += 9;
        while (count >= 8) {
            data.append(char(bits & 0xff));
            bits >>= 8;
            count -= 8;
        }
    };
    const int clear = 256, end = 257;
    for (qsizetype i = 0; i < pixels.size(); ++i) {
        if (i % 200 == 0)
            putCode(clear);
        putCode(pixels.at(i));
    }
    putCode(end);
    if (count > 0)
        data.append(char(bits & 0xff));
    for (qsizetype at = 0; at < data.size(); at += 255) {
        const QByteArray block = data.mid(at, 255);
        out.append(char(block.size())).append(block);
    }
    out.append('\0');
    out.append(char(0x3B));
    return out;
}

} // namespace testimages
