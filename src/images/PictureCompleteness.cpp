#include "PictureCompleteness.h"

#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// Bounds-checked reads of little- or big-endian integers; every read says whether it fitted.
class ByteReader
{
public:
    ByteReader(const QByteArray &bytes, bool bigEndian)
        : m_data(reinterpret_cast<const uchar *>(bytes.constData()))
        , m_size(quint64(bytes.size()))
        , m_bigEndian(bigEndian)
    {
    }

    quint64 size() const { return m_size; }
    bool within(quint64 at, quint64 length) const { return at <= m_size && length <= m_size - at; }

    bool read(quint64 at, int width, quint64 *value) const
    {
        if (!within(at, quint64(width)))
            return false;
        const uchar *p = m_data + at;
        switch (width) {
        case 1: *value = *p; break;
        case 2: *value = m_bigEndian ? qFromBigEndian<quint16>(p) : qFromLittleEndian<quint16>(p); break;
        case 4: *value = m_bigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p); break;
        case 8: *value = m_bigEndian ? qFromBigEndian<quint64>(p) : qFromLittleEndian<quint64>(p); break;
        default: return false;
        }
        return true;
    }

private:
    const uchar *m_data;
    quint64 m_size;
    bool m_bigEndian;
};

// GIF data sub-blocks from `pos`: each a length byte and that many bytes, ended by a zero length.
bool skipSubBlocks(const QByteArray &bytes, qsizetype &pos)
{
    while (pos < bytes.size()) {
        const int length = quint8(bytes.at(pos));
        pos += 1 + length;
        if (length == 0)
            return true;
    }
    return false;
}

// Bytes per value of the TIFF field types (0 for types this check does not know).
int tiffTypeWidth(quint64 type)
{
    switch (type) {
    case 1: case 2: case 6: case 7: return 1; // BYTE, ASCII, SBYTE, UNDEFINED
    case 3: case 8: return 2;                 // SHORT, SSHORT
    case 4: case 9: case 11: case 13: return 4; // LONG, SLONG, FLOAT, IFD
    case 5: case 10: case 12: case 16: case 17: case 18: return 8; // RATIONAL, SRATIONAL, DOUBLE, LONG8, SLONG8, IFD8
    default: return 0;
    }
}

// Whether a value that does not fit in its entry lies within the file.
bool tiffValueWithin(const ByteReader &in, quint64 type, quint64 count, quint64 entry, int offsetWidth)
{
    const int width = tiffTypeWidth(type);
    if (width == 0 || count > in.size())
        return width == 0;
    if (count * quint64(width) <= quint64(offsetWidth))
        return true;
    quint64 at = 0;
    return in.read(entry, offsetWidth, &at) && in.within(at, count * quint64(width));
}

struct TiffField {
    quint64 type = 0;
    quint64 count = 0;
    quint64 entry = 0; // where the entry's value or value offset sits
};

// A strip or tile table: where its values are and how wide each is. Empty (count 0) when the
// field is absent or of a type such tables never have. Its place was checked with the entry.
struct TiffTable {
    quint64 at = 0;
    int width = 0;
    quint64 count = 0;

    TiffTable(const ByteReader &in, const TiffField &field, int offsetWidth)
    {
        width = tiffTypeWidth(field.type);
        if (width != 2 && width != 4 && width != 8)
            return;
        at = field.entry;
        if (field.count * quint64(width) > quint64(offsetWidth) && !in.read(field.entry, offsetWidth, &at))
            return;
        count = field.count;
    }
    quint64 value(const ByteReader &in, quint64 i) const
    {
        quint64 v = 0;
        in.read(at + i * quint64(width), width, &v);
        return v;
    }
};

} // namespace

bool PictureCompleteness::isComplete(const QByteArray &bytes, const QByteArray &format, int maxPages)
{
    if (format == "jpeg")
        return jpegIsComplete(bytes);
    if (format == "png")
        return pngIsComplete(bytes);
    if (format == "gif")
        return gifIsComplete(bytes);
    if (format == "bmp")
        return bmpIsComplete(bytes);
    if (format == "tiff")
        return tiffIsComplete(bytes, maxPages);
    if (format == "webp")
        return webpIsComplete(bytes);
    return true;
}

QByteArray PictureCompleteness::formatOf(const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xD8"))
        return "jpeg";
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return "png";
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return "gif";
    if (bytes.startsWith("BM"))
        return "bmp";
    if (bytes.startsWith(QByteArrayView("II*\0", 4)) || bytes.startsWith(QByteArrayView("MM\0*", 4))
        || bytes.startsWith(QByteArrayView("II+\0", 4)) || bytes.startsWith(QByteArrayView("MM\0+", 4)))
        return "tiff";
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return "webp";
    return {};
}

QString PictureCompleteness::displayName(const QByteArray &format)
{
    if (format == "webp")
        return QStringLiteral("WebP");
    return QString::fromLatin1(format.toUpper());
}

bool PictureCompleteness::jpegIsComplete(const QByteArray &bytes)
{
    // Inside entropy-coded data every 0xFF byte is followed by 0x00 or a restart marker, so the
    // last start-of-scan marker begins the final scan, and a complete file has an end-of-image
    // marker after it. (An embedded thumbnail ends earlier, before the main image's scans.)
    // Searched from the cheap ends: the end-of-image marker of a complete file sits at its very
    // end, and the first start-of-scan near its beginning, so no search crosses the scan data.
    const QByteArrayView startOfScan("\xFF\xDA", 2);
    const qsizetype lastEnd = bytes.lastIndexOf(QByteArrayView("\xFF\xD9", 2));
    if (lastEnd < 0)
        return false;
    const qsizetype firstScan = bytes.indexOf(startOfScan);
    return firstScan >= 0 && firstScan < lastEnd && bytes.indexOf(startOfScan, lastEnd + 2) < 0;
}

bool PictureCompleteness::pngIsComplete(const QByteArray &bytes)
{
    // After the 8-byte signature: chunks of length, type, data and CRC, the last one IEND.
    const ByteReader in(bytes, true);
    quint64 pos = 8;
    quint64 length = 0;
    while (in.read(pos, 4, &length)) {
        const bool end = in.within(pos + 4, 4) && std::memcmp(bytes.constData() + pos + 4, "IEND", 4) == 0;
        if (!in.within(pos, 12 + length))
            return false;
        if (end)
            return true;
        pos += 12 + length;
    }
    return false;
}

bool PictureCompleteness::gifIsComplete(const QByteArray &bytes)
{
    // Header (6), logical screen (7), an optional global colour table, then blocks up to the
    // trailer: extensions (introducer, label, sub-blocks) and images (descriptor, optional local
    // colour table, code size, image data sub-blocks).
    if (bytes.size() < 13)
        return false;
    const auto colourTable = [](quint8 flags) { return (flags & 0x80) ? 3 * (2 << (flags & 7)) : 0; };
    qsizetype pos = 13 + colourTable(quint8(bytes.at(10)));
    bool sawImage = false;
    while (pos < bytes.size()) {
        switch (quint8(bytes.at(pos))) {
        case 0x3B:
            return true;
        case 0x21:
            pos += 2;
            if (!skipSubBlocks(bytes, pos))
                return false;
            break;
        case 0x2C:
            if (pos + 10 > bytes.size())
                return false;
            pos += 10 + colourTable(quint8(bytes.at(pos + 9))) + 1;
            if (!skipSubBlocks(bytes, pos))
                return false;
            sawImage = true;
            break;
        default:
            // Bytes that start no block after a whole image: junk after the picture, which
            // decoders ignore like a missing trailer.
            return sawImage;
        }
    }
    return false;
}

bool PictureCompleteness::bmpIsComplete(const QByteArray &bytes)
{
    const ByteReader in(bytes, false);
    quint64 offBits = 0, headerSize = 0;
    if (!in.read(10, 4, &offBits) || !in.read(14, 4, &headerSize))
        return false;
    quint64 width = 0, height = 0, bpp = 0, compression = 0, sizeImage = 0;
    if (headerSize == 12) {
        if (!in.read(18, 2, &width) || !in.read(20, 2, &height) || !in.read(24, 2, &bpp))
            return false;
    } else if (headerSize >= 40) {
        if (!in.read(18, 4, &width) || !in.read(22, 4, &height) || !in.read(28, 2, &bpp) || !in.read(30, 4, &compression)
            || !in.read(34, 4, &sizeImage))
            return false;
        // Negative heights mark top-down rows.
        height = quint64(std::llabs(qint64(qint32(quint32(height)))));
        width = quint64(std::llabs(qint64(qint32(quint32(width)))));
    } else {
        return true; // a header this reader does not know: left to the decoder
    }
    quint64 needed = sizeImage;
    // Uncompressed rows (plain or with bit-field masks): each padded to 4 bytes, except that the
    // last row needs no padding.
    if (compression == 0 || compression == 3 || compression == 6) {
        const quint64 rowBits = width * bpp;
        const quint64 stride = (rowBits + 31) / 32 * 4;
        if (height > 0 && stride > 0 && height - 1 > (in.size() + 1) / stride)
            return false; // more rows than the whole file could hold
        needed = height == 0 ? 0 : stride * (height - 1) + (rowBits + 7) / 8;
    }
    return in.within(offBits, needed);
}

bool PictureCompleteness::tiffIsComplete(const QByteArray &bytes, int maxPages)
{
    if (bytes.size() < 8 || (!bytes.startsWith("II") && !bytes.startsWith("MM")))
        return false;
    const ByteReader in(bytes, bytes.startsWith("MM"));
    quint64 magic = 0, ifd = 0;
    in.read(2, 2, &magic);
    const bool big = magic == 43;
    if (!big && magic != 42)
        return false;
    const int offsetWidth = big ? 8 : 4;
    const int countWidth = big ? 8 : 2;
    const quint64 entryWidth = big ? 20 : 12;
    if (!in.read(big ? 8 : 4, offsetWidth, &ifd))
        return false;
    for (int page = 0; page < maxPages && ifd != 0; ++page) {
        quint64 entries = 0;
        if (!in.read(ifd, countWidth, &entries) || entries > in.size() || !in.within(ifd + countWidth, entries * entryWidth + offsetWidth))
            return false; // the page, or the pointer to the next one, lies beyond the end
        TiffField offsets, counts;
        for (quint64 i = 0; i < entries; ++i) {
            const quint64 at = ifd + countWidth + i * entryWidth;
            quint64 tag = 0;
            TiffField field;
            in.read(at, 2, &tag);
            in.read(at + 2, 2, &field.type);
            in.read(at + 4, big ? 8 : 4, &field.count);
            field.entry = at + (big ? 12 : 8);
            if (!tiffValueWithin(in, field.type, field.count, field.entry, offsetWidth))
                return false;
            if (tag == 273 || tag == 324)
                offsets = field;
            else if (tag == 279 || tag == 325)
                counts = field;
        }
        const TiffTable starts(in, offsets, offsetWidth), lengths(in, counts, offsetWidth);
        for (quint64 i = 0; i < std::min(starts.count, lengths.count); ++i) {
            if (!in.within(starts.value(in, i), lengths.value(in, i)))
                return false;
        }
        in.read(ifd + countWidth + entries * entryWidth, offsetWidth, &ifd);
    }
    return true;
}

bool PictureCompleteness::webpIsComplete(const QByteArray &bytes)
{
    const ByteReader in(bytes, false);
    quint64 riffSize = 0;
    return bytes.startsWith("RIFF") && in.read(4, 4, &riffSize) && bytes.mid(8, 4) == "WEBP" && in.within(8, riffSize);
}
