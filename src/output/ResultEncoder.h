#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <algorithm>
#include <functional>

// Turns a result picture into file bytes: in the format and with the options chosen in the save
// dialog, optionally resampled to a print size with its resolution, and as the LZW-compressed
// TIFF that the clipboard and the pending output path carry. PNG goes through the parallel
// writer, so a 26-megapixel collage is written on every core. Every encode can be given up half
// way (quitting does): PNG between bands, JPEG, TIFF and BMP at their next write, WebP through
// its encoder's progress.
//
// Everything here may run on a worker thread; nothing touches a window.
class ResultEncoder
{
public:
    struct Settings {
        QByteArray format = "png"; // one of ResultFormat::writableFormats()
        int quality = 90;          // JPEG and WebP, 0-100
        int tiffCompression = 1;   // TIFF: 0 none, 1 LZW
        QSize pixelSize;           // resample to this size first; empty keeps the picture's
        int dotsPerMeter = 0;      // resolution written into the file; 0 leaves the picture's
        int pngLevel = 1;          // PNG: zlib level 0-9, fast by default
        int threads = 0;           // PNG: compressing threads; 0 one per core
    };
    // The PNG level a quality of 0-100 asks for: 100 stores, lower values compress harder.
    static int pngLevel(int quality) { return (100 - std::clamp(quality, 0, 100)) * 9 / 100; }

    // Called as the work advances (from the calling or a worker thread, one call at a time).
    using Progress = std::function<void(int done, int total)>;
    // Asked as the work advances (from the calling or worker threads): true gives the work up
    // (the program is quitting). The write then fails soon after, saying so, and leaves no file.
    using Canceled = std::function<bool()>;

    // The picture as it is written: resampled to the settings' pixel size (filling it, centred,
    // with the picture's proportions kept), with their resolution, and flattened on white for a
    // format without transparency.
    static QImage prepared(const QImage &image, const Settings &settings);
    // The picture scaled to cover `size` keeping its proportions, the overflow cut equally from
    // both ends; the picture itself when it already has that size.
    static QImage resampled(const QImage &image, const QSize &size);

    // Writes the file atomically: a failed or cancelled write leaves any earlier file in place
    // (and no other) and says why.
    static bool writeFile(const QImage &image, const QString &path, const Settings &settings,
                          QString *error = nullptr, const Progress &progress = {}, const Canceled &canceled = {});
    // The file's bytes in memory; empty with `error` set on failure.
    static QByteArray encode(const QImage &image, const Settings &settings, QString *error = nullptr,
                             const Progress &progress = {}, const Canceled &canceled = {});
    // The reason a cancelled write gives.
    static QString canceledReason();

    // The picture as a TIFF file with LZW compression.
    static QByteArray lzwTiff(const QImage &image, const Canceled &canceled = {});
    // The picture as a PNG file, compressed on every core.
    static QByteArray png(const QImage &image, const Canceled &canceled = {});
};
