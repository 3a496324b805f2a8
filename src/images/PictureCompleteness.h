#pragma once

#include <QByteArray>
#include <QString>

// Tells whether the data of a picture file runs to its end, from the file's own structure and
// without decoding pixels. Decoders fill what a cut-short file lacks with black or drop its later
// pages without an error, so a truncated picture would otherwise be shown as if it were whole.
// Each check walks only the structure of its format (segments, chunks, blocks, page
// directories), never the compressed data itself.
class PictureCompleteness
{
public:
    // False when the data of a picture in `format` (Qt's name: "jpeg", "png", "gif", "bmp",
    // "tiff", "webp") stops before its end; true for formats without a check. Of a TIFF, the
    // first `maxPages` pages are checked (those that are shown).
    static bool isComplete(const QByteArray &bytes, const QByteArray &format, int maxPages);
    // The format that the first bytes announce (Qt's name), empty when none of those above.
    static QByteArray formatOf(const QByteArray &bytes);
    // The name of the format as people write it ("JPEG", "WebP"), for messages.
    static QString displayName(const QByteArray &format);

    // An end-of-image marker after the last start-of-scan.
    static bool jpegIsComplete(const QByteArray &bytes);
    // Every chunk whole, up to and including IEND.
    static bool pngIsComplete(const QByteArray &bytes);
    // Every block and image data sub-block whole, up to the trailer.
    static bool gifIsComplete(const QByteArray &bytes);
    // The pixel data the header describes lies within the file.
    static bool bmpIsComplete(const QByteArray &bytes);
    // Every page directory, and every strip or tile of every page (up to `maxPages`), within
    // the file. Classic and BigTIFF, either byte order.
    static bool tiffIsComplete(const QByteArray &bytes, int maxPages);
    // The RIFF container as long as its header says.
    static bool webpIsComplete(const QByteArray &bytes);
};
