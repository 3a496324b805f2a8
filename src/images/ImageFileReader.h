#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

// Decodes untrusted picture files through QImageReader, defensively: the header is read first
// and pictures claiming more than MaxPixels are refused before any pixel is decoded; Qt's image
// allocation limit is raised so that real photos up to that size load; truncated JPEGs, empty
// files, folders and files that are not pictures are refused with a message naming the file.
// The format is decided by content, never by the file name extension. No orientation tag is
// applied: pixels are used in the order in which they are stored.
class ImageFileReader
{
public:
    static constexpr qint64 MaxPixels = 100'000'000;        // per frame: 100 megapixels
    static constexpr qint64 MaxFileBytes = 1024LL * 1024 * 1024; // 1 GiB
    static constexpr int MaxFrames = 64;

    struct Header {
        QByteArray format;   // Qt's name for the format, e.g. "jpeg", "tiff"
        QSize size;          // largest frame width and largest frame height
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
    // What the picture claims to be, without decoding pixels.
    static Header readHeader(const QByteArray &bytes, const QString &name);
    // Every frame: at most MaxFrames, and later pages only while all of them together stay
    // within MaxPixels.
    static Frames decode(const QByteArray &bytes, const QString &name);
    // One frame of a single-frame JPEG decoded at the smallest of 1/2, 1/4 or 1/8 scale that
    // is still at least `atLeast` in both directions (the decoder's scaled IDCT makes this much
    // cheaper than a full decode). An error for anything else, so callers fall back to decode().
    static Frames decodeReducedJpeg(const QByteArray &bytes, const QString &name, const QSize &atLeast);

    // True unless the JPEG data stops before its end-of-image marker.
    static bool jpegIsComplete(const QByteArray &bytes);
    // Raises Qt's per-image allocation limit so that MaxPixels fit at 8 bytes per pixel.
    static void raiseAllocationLimit();
};
