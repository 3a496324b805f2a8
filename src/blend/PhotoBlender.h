#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

// Joins photos into one seamless picture: side by side from left to right, stacked from the
// bottom up, or as a square of 2 x 2, 3 x 3 or 4 x 4 photos (the first 4, 9 or 16, in reading
// order from the top left).
//
// The picture has no gaps: photos side by side are first brought to one height (the smallest),
// photos stacked to one width, and the rows of a square each to the narrowest row's width;
// fully transparent borders of a photo (the empty bands of a photo fitted into a size) are cut
// off first. Neighbours overlap by the blending margin and are feathered across the whole
// overlap, so no seam shows. Where neighbours show the same scene (a panorama shot in pieces),
// the join is found by correlation of their overlapping parts instead, and the picture is cut
// to the part that every photo covers.
//
// Memory stays bounded: the geometry is planned from the photos' headers, each photo is
// decoded while the picture is made (at a reduced scale where the format allows) and never held
// whole, and with a megapixel limit the photos are scaled before they are joined so the picture
// never exists at more than the limit; a square's large rows wait for their joins on disk.
// The pixel work is done by libvips; this class is the only place that talks to it. Every call
// works on the calling thread and can be cancelled through its Progress: it then returns within
// a fraction of a second, having written nothing.
class PhotoBlender
{
public:
    enum class Arrangement { LeftToRight, BottomToTop, Square };
    // Bringing the photos to one size first ("UniformlyCrop", "UniformlyCropFit"): the smallest
    // width and the smallest height among them, each photo scaled to fit inside it or cropped to
    // cover it, centred.
    enum class UniformSize { None, Fit, Crop };

    // The ceiling of a picture kept within "MegapixelLimit", in megapixels.
    static constexpr double kMegapixelLimit = 8.0;

    struct Options {
        int blendingMarginWidth = 50; // overlap of neighbours, in pixels (after scaling)
        int inputImageScaling = 100;  // percent, applied to every photo first
        bool findJoins = true;        // look for overlapping content
        UniformSize uniformSize = UniformSize::None;
        double megapixelLimit = 0;    // megapixels; 0: no limit
        int border = 0;               // pixels of `background` around the picture
        QColor background = Qt::white;
        // A square's rows larger than this (bytes) wait for their joins in a temporary file
        // in `temporaryFolder` (empty: the system's), not in memory; it goes with the blend.
        qint64 rowBytesInMemory = qint64(128) << 20;
        QString temporaryFolder;
    };

    // Reports and the cancel check, on the thread doing the work; each may be empty.
    struct Progress {
        std::function<void(const QString &message)> message;
        std::function<void(double fraction)> fraction; // 0 .. 1
        std::function<void(const QImage &preview)> image;
        std::function<bool()> canceled;
    };

    struct Outcome {
        QImage picture;              // null when written to a file, cancelled or failed
        QSize size;                  // of the picture made
        double wholeMegapixels = 0;  // the picture's size without the megapixel limit
        bool scaledToLimit = false;
        bool canceled = false;
        QString error;               // why there is no picture
        bool ok() const { return !canceled && error.isEmpty(); }
    };

    // Where one photo joins its neighbour: the neighbour's top-left corner relative to the
    // photo's (to its right, or below it), and whether correlation found it.
    struct Join {
        QPoint offset;
        bool matched = false;
    };

    // How many photos an arrangement uses of `count`: all, or the largest square of at most 16.
    static qsizetype photosUsed(Arrangement arrangement, qsizetype count);
    // The side of the square made of `count` photos: 4, 3, 2, or 0 for fewer than 4.
    static int squareSide(qsizetype count);

    // Photos that cannot be read are left out.
    static Outcome blend(const QStringList &files, Arrangement arrangement, const Options &options,
                         const Progress &progress = {});
    // The same picture streamed into `output` (PNG, TIFF, JPEG or WebP by its extension), whole
    // or not at all: a failed or cancelled blend leaves no file.
    static Outcome blendToFile(const QStringList &files, Arrangement arrangement, const Options &options,
                               const QString &output, const Progress &progress = {});
    static Outcome blendImages(const QList<QImage> &photos, Arrangement arrangement, const Options &options,
                               const Progress &progress = {});
    // Where `second` joins `first` (to its right, or below it when `vertical`): found by
    // correlation when the two overlap in content, else the fixed overlap of `margin` pixels,
    // centred across.
    static Join findJoin(const QImage &first, const QImage &second, bool vertical, int margin);
};
