#include "output/ParallelPngWriter.h"

#include "foundation/AtomicFileWriter.h"

#include <QBuffer>
#include <QMutex>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>
#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

// One band of rows, filtered and deflated: a raw deflate piece that ends on a byte boundary
// (or finishes the stream, for the last band), and the Adler-32 sum of its filtered bytes.
struct Band {
    int firstRow = 0;
    int rows = 0;
    bool last = false;
    QByteArray deflated;
    uLong adler = 1;
    uLong length = 0;
    bool ok = false;
};

void appendChunk(QByteArray &out, const char *type, const QByteArray &data)
{
    char header[8];
    qToBigEndian<quint32>(quint32(data.size()), header);
    std::copy(type, type + 4, header + 4);
    out.append(header, 8);
    out.append(data);
    uLong crc = crc32(0L, reinterpret_cast<const Bytef *>(type), 4);
    crc = crc32(crc, reinterpret_cast<const Bytef *>(data.constData()), uInt(data.size()));
    char tail[4];
    qToBigEndian<quint32>(quint32(crc), tail);
    out.append(tail, 4);
}

// Filters the band's rows ("Sub": each byte minus the byte of the pixel to its left) and
// deflates them.
void encodeBand(const QImage &image, int channels, int level, Band &band)
{
    const QImage::Format format = channels == 4 ? QImage::Format_RGBA8888 : QImage::Format_RGB888;
    const QImage rows = image.copy(0, band.firstRow, image.width(), band.rows).convertToFormat(format);
    const qsizetype rowBytes = qsizetype(image.width()) * channels;
    QByteArray filtered(qsizetype(band.rows) * (rowBytes + 1), Qt::Uninitialized);
    auto *dst = reinterpret_cast<uchar *>(filtered.data());
    for (int y = 0; y < band.rows; ++y) {
        const uchar *src = rows.constScanLine(y);
        *dst++ = 1; // filter type Sub
        std::copy(src, src + channels, dst);
        for (qsizetype i = channels; i < rowBytes; ++i)
            dst[i] = uchar(src[i] - src[i - channels]);
        dst += rowBytes;
    }
    band.length = uLong(filtered.size());
    band.adler = adler32(1L, reinterpret_cast<const Bytef *>(filtered.constData()), uInt(filtered.size()));

    z_stream z{};
    if (deflateInit2(&z, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return;
    band.deflated.resize(qsizetype(deflateBound(&z, band.length)) + 64);
    z.next_in = reinterpret_cast<Bytef *>(filtered.data());
    z.avail_in = uInt(filtered.size());
    z.next_out = reinterpret_cast<Bytef *>(band.deflated.data());
    z.avail_out = uInt(band.deflated.size());
    // A full flush ends the piece on a byte boundary with nothing carried into the next piece,
    // so the pieces can simply follow one another; the last one closes the stream.
    const int result = deflate(&z, band.last ? Z_FINISH : Z_FULL_FLUSH);
    band.ok = band.last ? result == Z_STREAM_END : (result == Z_OK && z.avail_in == 0);
    band.deflated.resize(qsizetype(z.total_out));
    deflateEnd(&z);
}

} // namespace

bool ParallelPngWriter::write(const QImage &image, QIODevice &device, const Options &options, QString *error)
{
    const auto fail = [error](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    if (image.isNull())
        return fail(QStringLiteral("there is no picture to write"));
    const int channels = image.hasAlphaChannel() ? 4 : 3;
    const int width = image.width();
    const int height = image.height();

    // Bands of about a megabyte of pixels each, and at least two per thread so that the work
    // evens out.
    const int threads = std::max(1, options.threads > 0 ? options.threads : QThread::idealThreadCount());
    int bandRows = options.bandRows > 0 ? options.bandRows : std::max(16, int((1 << 20) / (qint64(width) * channels + 1)));
    bandRows = std::min(bandRows, std::max(1, (height + 2 * threads - 1) / (2 * threads)));
    std::vector<Band> bands;
    for (int y = 0; y < height; y += bandRows)
        bands.push_back(Band{y, std::min(bandRows, height - y), false, {}, 1, 0, false});
    bands.back().last = true;

    const int level = std::clamp(options.level, 0, 9);
    QThreadPool pool;
    pool.setMaxThreadCount(threads);
    QMutex progressMutex;
    int bandsDone = 0;
    const int bandCount = int(bands.size());
    std::atomic<bool> canceled{false};
    QtConcurrent::blockingMap(&pool, bands, [&](Band &band) {
        if (canceled.load() || (options.canceled && options.canceled())) {
            canceled = true;
            return;
        }
        encodeBand(image, channels, level, band);
        if (options.progress) {
            QMutexLocker lock(&progressMutex);
            options.progress(++bandsDone, bandCount);
        }
    });

    if (canceled.load())
        return fail(QStringLiteral("the work was given up"));

    QByteArray header("\x89PNG\r\n\x1a\n", 8);
    QByteArray ihdr(13, '\0');
    qToBigEndian<quint32>(quint32(width), ihdr.data());
    qToBigEndian<quint32>(quint32(height), ihdr.data() + 4);
    ihdr[8] = 8;                          // bits per sample
    ihdr[9] = channels == 4 ? 6 : 2;      // RGBA or RGB
    appendChunk(header, "IHDR", ihdr);
    if (options.dotsPerMeter > 0) {
        QByteArray phys(9, '\0');
        qToBigEndian<quint32>(quint32(options.dotsPerMeter), phys.data());
        qToBigEndian<quint32>(quint32(options.dotsPerMeter), phys.data() + 4);
        phys[8] = 1; // the unit is the metre
        appendChunk(header, "pHYs", phys);
    }
    QString writeError;
    if (!AtomicFileWriter::writeAll(device, header, &writeError))
        return fail(writeError);

    uLong adler = 1;
    for (const Band &band : bands) {
        if (!band.ok)
            return fail(QStringLiteral("the picture could not be compressed (out of memory?)"));
        adler = adler32_combine(adler, band.adler, z_off_t(band.length));
    }
    // One IDAT chunk per band. The first opens the zlib stream with its two-byte header (deflate,
    // 32 KB window, no preset dictionary); the last closes it with the Adler-32 sum.
    QByteArray chunk;
    for (size_t i = 0; i < bands.size(); ++i) {
        QByteArray data = i == 0 ? QByteArray("\x78\x01", 2) + bands[i].deflated : bands[i].deflated;
        if (bands[i].last) {
            char sum[4];
            qToBigEndian<quint32>(quint32(adler), sum);
            data.append(sum, 4);
        }
        chunk.clear();
        appendChunk(chunk, "IDAT", data);
        if (!AtomicFileWriter::writeAll(device, chunk, &writeError))
            return fail(writeError);
    }
    chunk.clear();
    appendChunk(chunk, "IEND", QByteArray());
    if (!AtomicFileWriter::writeAll(device, chunk, &writeError))
        return fail(writeError);
    return true;
}

QByteArray ParallelPngWriter::encode(const QImage &image, const Options &options)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!write(image, buffer, options))
        return QByteArray();
    return bytes;
}
