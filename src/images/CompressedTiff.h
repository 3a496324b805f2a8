#pragma once

#include <QByteArray>
#include <QImage>

// TIFF bytes of a picture made small: JPEG compression inside the TIFF for pictures without
// transparency, Deflate for those with it. Both are compressions every TIFF reader knows (Qt's
// TIFF plugin, libtiff, libvips), so the bytes stay "TIFF bytes" for whoever reads them; a
// half-megapixel photo takes about a tenth of its uncompressed size.
class CompressedTiff
{
public:
    // The JPEG quality: the cached copy is drawn at screen size, where this is not told apart
    // from the original.
    static constexpr int kJpegQuality = 88;

    // The picture as compressed TIFF bytes (safe on any thread); empty for a null picture or
    // when the encoder fails.
    static QByteArray encode(const QImage &image);
    // Whether the bytes are TIFF bytes whose pictures are compressed (how a store written by an
    // earlier version, which kept them uncompressed, is told apart).
    static bool isCompressed(const QByteArray &tiff);
};
