#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <functional>

class QIODevice;

// Writes a large picture as PNG on every core. The rows are cut into bands; each band is filtered
// and deflated on its own (zlib level 1 by default, "Sub" row filters, which suit photos) and the
// pieces are joined into one zlib stream, so the file is an ordinary PNG that any reader opens.
// A collage of 26 megapixels is written several times faster than by a single-threaded encoder,
// which would otherwise take longer than rendering the collage itself.
//
// Opaque pictures are written as 8-bit RGB, pictures with an alpha channel as 8-bit RGBA (not
// premultiplied).
class ParallelPngWriter
{
public:
    struct Options {
        int level = 1;   // zlib level 0-9
        int threads = 0; // 0: one per core
        int bandRows = 0; // 0: chosen from the picture's size
        // The resolution written into the file (a pHYs chunk, pixels per metre); 0 writes none.
        int dotsPerMeter = 0;
        // Called as bands are compressed (from worker threads, one call at a time).
        std::function<void(int done, int total)> progress = {};
        // Asked before each band (from worker threads): true gives the write up, with nothing
        // more written to the device.
        std::function<bool()> canceled = {};
    };

    // The PNG file's bytes, written to `device`; false with `error` set when the picture is null
    // or the device refuses the data.
    static bool write(const QImage &image, QIODevice &device, const Options &options, QString *error = nullptr);
    // The whole PNG in memory (for tests and small pictures).
    static QByteArray encode(const QImage &image, const Options &options);
};
