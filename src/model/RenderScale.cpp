#include "model/RenderScale.h"

#include "foundation/Log.h"
#include "images/ImageFileReader.h"
#include "model/CollageLayout.h"

#include <QFile>

#include <algorithm>
#include <cmath>

std::optional<qint64> RenderScale::memAvailableMB(const QByteArray &meminfo)
{
    for (const QByteArray &line : meminfo.split('\n')) {
        if (!line.startsWith("MemAvailable:"))
            continue;
        // "MemAvailable:   12345678 kB"
        const QList<QByteArray> fields = line.mid(13).simplified().split(' ');
        bool ok = false;
        const qint64 value = fields.value(0).toLongLong(&ok);
        if (!ok || value < 0)
            return std::nullopt;
        const QByteArray unit = fields.value(1).toLower();
        const qint64 factor = unit == "kb" ? 1024 : unit == "mb" ? 1024 * 1024 : unit.isEmpty() ? 1 : 0;
        if (factor == 0)
            return std::nullopt;
        return qint64((long double)value * factor / 1000000.0L);
    }
    return std::nullopt;
}

qint64 RenderScale::freeMemoryMB(const QString &meminfoPath)
{
    QFile file(meminfoPath);
    std::optional<qint64> mb;
    if (file.open(QIODevice::ReadOnly))
        mb = memAvailableMB(file.readAll());
    if (!mb) {
        qCInfo(lcTessary, "Failed to fetch vm statistics");
        mb = 0;
    }
    qCInfo(lcTessary, "freeMemory = %lld MB", static_cast<long long>(*mb));
    return *mb;
}

qint64 RenderScale::photoScaleFactor(const QSize &pixelSize, double tileWidth)
{
    if (!pixelSize.isValid() || pixelSize.isEmpty())
        return 0;
    const float r = float(std::max(pixelSize.width(), pixelSize.height())) / float(tileWidth);
    if (!std::isfinite(r) || r <= 0)
        return 0;
    return qint64(std::round(std::min(r, 1.0e9f)));
}

QSize RenderScale::photoPixelSize(const QString &path)
{
    // Upright, as the photo is drawn: a portrait phone photo stored on its side measures tall.
    const ImageFileReader::Header header = ImageFileReader::readHeaderOfFile(path);
    return header.ok() ? header.size : QSize();
}

qint64 RenderScale::largestScaleFactor(const CollageLayout &layout)
{
    qint64 largest = 0;
    for (const TileLayout &tile : layout.tiles)
        largest = std::max(largest, photoScaleFactor(photoPixelSize(tile.imagePath), tile.frame.width()));
    return largest;
}

float RenderScale::megapixelBudget(qint64 freeMB)
{
    const qint64 tenfold = std::max<qint64>(freeMB, 0) * 10;
    return std::min(float(double(tenfold) / 100.0), float(kMegapixelCeiling));
}

qint64 RenderScale::memoryLimitFactor(qint64 freeMB, const QSizeF &canvas)
{
    const float w = float(canvas.width());
    const float h = float(canvas.height());
    const float canvasMegapixels = h * w / 1000000.0f;
    if (!(canvasMegapixels > 0) || !std::isfinite(canvasMegapixels))
        return 1; // nothing to measure: the collage at its own size
    const double m = std::round(std::sqrt(double(megapixelBudget(freeMB)) / double(canvasMegapixels)));
    return qint64(std::min(m, 1.0e6));
}

qint64 RenderScale::scaleFactor(qint64 freeMB, const QSizeF &canvas, qint64 largest)
{
    const qint64 limit = memoryLimitFactor(freeMB, canvas);
    qint64 s = largest > 0 ? std::min(largest, limit) : limit;
    s = std::max<qint64>(s, 1);
    qCInfo(lcTessary, "scaleFactor = %lld", static_cast<long long>(s));
    qCInfo(lcTessary, "largest_scaleFactor= %lld", static_cast<long long>(largest));
    return s;
}
