#pragma once

#include <QByteArray>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <optional>

struct CollageLayout;

// Chooses the whole-number factor by which the collage is enlarged for its result picture: as
// large as the sharpest photo needs, never more than the free memory allows, and never above
// 26 megapixels of output. The pieces are pure functions of their figures (free memory is an
// argument), so every case can be checked without touching the machine.
class RenderScale
{
public:
    // The fixed ceiling of the output, in megapixels.
    static constexpr double kMegapixelCeiling = 26.0;

    // The "MemAvailable" figure of a /proc/meminfo text in MB (millions of bytes, truncated);
    // nothing when the text has no such line.
    static std::optional<qint64> memAvailableMB(const QByteArray &meminfo);
    // The free memory of this machine in MB, read from the file (normally /proc/meminfo). When it
    // cannot be read the failure is logged and 0 is used, which leaves the smallest factor.
    // Logs "freeMemory = N MB".
    static qint64 freeMemoryMB(const QString &meminfoPath = QStringLiteral("/proc/meminfo"));

    // The factor at which a photo of `pixelSize` shows at its own resolution in a tile
    // `tileWidth` points wide: the larger side over the tile's width (also for portrait photos),
    // rounded half away from zero. 0 for an unreadable photo or an empty tile.
    static qint64 photoScaleFactor(const QSize &pixelSize, double tileWidth);
    // The pixel size a picture file claims in its header (no pixels are decoded), upright (the
    // recorded orientation applied); an invalid size when it cannot be read.
    static QSize photoPixelSize(const QString &path);
    // The largest photoScaleFactor over the layout's tiles, each photo measured from its file
    // (the placeholder picture included). 0 when no photo can be read.
    static qint64 largestScaleFactor(const CollageLayout &layout);

    // The megapixel budget for `freeMB`: a tenth of the free memory, at most the ceiling.
    static float megapixelBudget(qint64 freeMB);
    // The largest factor whose output stays within the budget for a canvas of `canvas` points,
    // rounded half away from zero.
    static qint64 memoryLimitFactor(qint64 freeMB, const QSizeF &canvas);
    // min(largest, memory limit) when some photo gave a factor, else the memory limit; never
    // below 1, so the collage can always be drawn at the size it is shown. Logs
    // "scaleFactor = N" and "largest_scaleFactor= N".
    static qint64 scaleFactor(qint64 freeMB, const QSizeF &canvas, qint64 largest);
};
