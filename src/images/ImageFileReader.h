#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

// Decodes untrusted picture files through QImageReader, defensively: the header is read first
// and pictures claiming more than MaxPixels are refused before any pixel is decoded; Qt's image
// allocation limit is raised so that real photos up to that size load; truncated pictures (see
// PictureCompleteness), empty files, folders and files that are not pictures are refused with a
// message naming the file. The format is decided by content, never by the file name extension.
// Photos are upright: the orientation a camera records (the EXIF tag of a JPEG, the orientation
// of a TIFF page) is applied to the pixels, and every size reported is the upright size.
class ImageFileReader
{
public:
    static constexpr qint64 MaxPixels = 100'000'000;        // per frame: 100 megapixels
    static constexpr qint64 MaxFileBytes = 1024LL * 1024 * 1024; // 1 GiB
    static constexpr int MaxFrames = 64;

    struct Header {
        QByteArray format;   // Qt's name for the format, e.g. "jpeg", "tiff"
        QSize size;          // largest frame width and largest frame height, upright
        int frameCount = 0;
        QString error;       // empty when the header is usable
        bool ok() const { return error.isEmpty(); }
    };

    struct Frames {
        QList<QImage> frames;
        QSize size;          // largest frame width and largest frame height
        QString error;
        bool ok() const { return error.isEmpty(); }
    };

    // The whole file in memory, or false with a message naming it.
    static bool readFile(const QString &path, QByteArray *bytes, QString *error);
    // What the picture claims to be, without decoding pixels; an error when its data ends early.
    static Header readHeader(const QByteArray &bytes, const QString &name);
    // The same read from the file itself, for callers that want only the size: just the header
    // is read, so whether the data ends early is left to decoding.
    static Header readHeaderOfFile(const QString &path);
    // Every frame: at most MaxFrames, and later pages only while all of them together stay
    // within MaxPixels.
    static Frames decode(const QByteArray &bytes, const QString &name);
    // One frame of a single-frame JPEG decoded at the smallest of 1/2, 1/4 or 1/8 scale that
    // is still at least `atLeast` (upright) in both directions (the decoder's scaled IDCT makes this much
    // cheaper than a full decode). An error for anything else, so callers fall back to decode().
    static Frames decodeReducedJpeg(const QByteArray &bytes, const QString &name, const QSize &atLeast);

    // Raises Qt's per-image allocation limit so that MaxPixels fit at 8 bytes per pixel.
    static void raiseAllocationLimit();
};
