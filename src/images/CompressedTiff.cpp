// libvips (through glib) uses the word "signals", which Qt defines as a macro: it comes first.
#include <vips/vips8>

#include "images/CompressedTiff.h"

#include <QtEndian>

#include <cstring>
#include <mutex>
#include <vector>

namespace {

void ensureVips()
{
    static std::once_flag once;
    std::call_once(once, [] {
        VIPS_INIT("tessary");
        // Each picture is encoded once: keeping finished operations around only holds memory.
        vips_cache_set_max(0);
    });
}

// The TIFF compression tag of the first picture of the bytes; 0 when they are no TIFF.
quint16 firstCompression(const QByteArray &tiff)
{
    if (tiff.size() < 8)
        return 0;
    const bool little = tiff.startsWith("II*");
    if (!little && !tiff.startsWith("MM\0*"))
        return 0;
    const auto u16 = [&](qsizetype at) -> quint16 {
        const auto *p = reinterpret_cast<const uchar *>(tiff.constData() + at);
        return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    };
    const auto *p4 = reinterpret_cast<const uchar *>(tiff.constData() + 4);
    const quint32 ifd = little ? qFromLittleEndian<quint32>(p4) : qFromBigEndian<quint32>(p4);
    if (qint64(ifd) + 2 > tiff.size())
        return 0;
    const quint16 count = u16(ifd);
    for (quint32 i = 0; i < count; ++i) {
        const qint64 at = qint64(ifd) + 2 + 12 * qint64(i);
        if (at + 12 > tiff.size())
            return 0;
        if (u16(at) == 259) // Compression, a SHORT
            return u16(at + 8);
    }
    return 1; // no tag: uncompressed
}

bool isOpaque(const QImage &image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            if (qAlpha(line[x]) != 255)
                return false;
        }
    }
    return true;
}

} // namespace

bool CompressedTiff::isCompressed(const QByteArray &tiff)
{
    const quint16 compression = firstCompression(tiff);
    return compression > 1;
}

QByteArray CompressedTiff::encode(const QImage &image)
{
    if (image.isNull())
        return {};
    ensureVips();
    // Decoded photos often carry an alpha channel that is opaque everywhere: only real
    // transparency needs the lossless form.
    const bool alpha = image.hasAlphaChannel() && !isOpaque(image);
    const QImage pixels = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    const int bands = alpha ? 4 : 3;
    const int width = pixels.width(), height = pixels.height();
    const size_t rowBytes = size_t(width) * bands;
    // libvips wants rows without the padding a QImage may have.
    std::vector<uchar> packed(rowBytes * height);
    for (int y = 0; y < height; ++y)
        std::memcpy(packed.data() + rowBytes * y, pixels.constScanLine(y), rowBytes);
    try {
        vips::VImage in = vips::VImage::new_from_memory(packed.data(), packed.size(), width, height, bands, VIPS_FORMAT_UCHAR);
        vips::VOption *options = vips::VImage::option();
        if (alpha)
            options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE)->set("predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL);
        else
            options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_JPEG)->set("Q", kJpegQuality);
        options->set("strip", true);
        VipsBlob *blob = in.tiffsave_buffer(options);
        size_t length = 0;
        const void *data = vips_blob_get(blob, &length);
        QByteArray bytes(static_cast<const char *>(data), qsizetype(length));
        vips_area_unref(VIPS_AREA(blob));
        return bytes;
    } catch (const vips::VError &) {
        vips_error_clear();
        return {};
    }
}
