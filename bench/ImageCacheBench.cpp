#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageCache.h"
#include "photos/TessaryViewDelegate.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QElapsedTimer>
#include <QFile>
#include <QtConcurrent/QtConcurrentMap>

#include <benchmark/benchmark.h>

#include <cmath>

// Filling the image cache from a folder of 49 large photos, as at the first layout after the
// photos were chosen. The photos are 12-megapixel JPEGs made here, deterministically, the first
// time (in $TESSARY_BENCH_PHOTOS, else a folder in the temporary folder), so the comparison
// script can hand the very same files to other tools. $TESSARY_BENCH_PHOTO_COUNT asks for
// another number of photos (1000 for the thousand-photo figures).

namespace {

const int kPhotoCount = [] {
    const int asked = qEnvironmentVariableIntValue("TESSARY_BENCH_PHOTO_COUNT");
    return asked > 0 ? asked : 49;
}();
// 4000 x 3000 unless $TESSARY_BENCH_PHOTO_SIZE asks for another size ("6000x4000" for the
// window's cold start with 24-megapixel photos).
QSize photoSize()
{
    const QList<QByteArray> parts = qgetenv("TESSARY_BENCH_PHOTO_SIZE").split('x');
    const QSize asked = parts.size() == 2 ? QSize(parts[0].toInt(), parts[1].toInt()) : QSize();
    return asked.isValid() && !asked.isEmpty() ? asked : QSize(4000, 3000);
}

QString photoFolder()
{
    const QByteArray env = qgetenv("TESSARY_BENCH_PHOTOS");
    return env.isEmpty() ? QDir(QDir::tempPath()).filePath(QStringLiteral("tessary-bench-photos")) : QString::fromLocal8Bit(env);
}

// A photo-like picture: smooth colour fields, some edges and a little grain, different for
// each number. Grain matters: it keeps the JPEG as busy to decode as a real photo.
QImage syntheticPhoto(int number)
{
    const int width = photoSize().width(), height = photoSize().height();
    QImage image(width, height, QImage::Format_RGB32);
    quint32 seed = 0x9e3779b9u * quint32(number + 1);
    const double phase = number * 0.37;
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const double fy = double(y) / height;
        for (int x = 0; x < width; ++x) {
            const double fx = double(x) / width;
            seed = seed * 1664525u + 1013904223u; // a fixed linear congruential sequence
            const int grain = int(seed >> 28) - 8;
            const double wave = std::sin(fx * 23.0 + phase) * std::cos(fy * 17.0 - phase);
            const int r = int(120 + 90 * fx + 30 * wave) + grain;
            const int g = int(100 + 80 * fy + 40 * wave * (((x / 250) + (y / 250)) % 2 ? 1 : -1)) + grain;
            const int b = int(140 + 60 * std::sin(fx * 5.0 + fy * 3.0 + phase)) + grain;
            line[x] = qRgb(qBound(0, r, 255), qBound(0, g, 255), qBound(0, b, 255));
        }
    }
    return image;
}

QStringList benchPhotos()
{
    static QStringList paths;
    if (!paths.isEmpty())
        return paths;
    const QString folder = photoFolder();
    QDir().mkpath(folder);
    QStringList all;
    for (int i = 0; i < kPhotoCount; ++i)
        all.append(QDir(folder).filePath(QStringLiteral("photo-%1.jpg").arg(i, 2, 10, QLatin1Char('0'))));
    // Made on every core: a thousand photos take a while.
    const QList<bool> made = QtConcurrent::blockingMapped<QList<bool>>(all, [&all](const QString &path) {
        return QImageReader(path).size() == photoSize() || syntheticPhoto(int(all.indexOf(path))).save(path, "JPEG", 90);
    });
    if (made.contains(false))
        return {};
    paths = all;
    return paths;
}

class PhotoList : public TessaryViewDelegate
{
public:
    explicit PhotoList(QStringList photos) : m_photos(std::move(photos)) {}
    QStringList pickedPhotos() const override { return m_photos; }
    int alignmentIndexAtIndex(qsizetype) const override { return 0; }
    qsizetype selectedItem() const override { return -1; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}

private:
    QStringList m_photos;
};

// A cold cache asked for every photo in list order, as a layout does; threads = decoders.
void BM_ImageCacheColdFill(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount) {
        state.SkipWithError("the benchmark photos could not be written");
        return;
    }
    const PhotoList list(photos);
    QThreadPool pool;
    pool.setMaxThreadCount(int(state.range(0)));
    QSize size;
    for (auto _ : state) {
        ImageCache cache(&list, &pool);
        for (const QString &path : photos)
            size = cache.getImageForPath(path).pixelSize();
        benchmark::DoNotOptimize(cache.count());
        if (cache.count() != kPhotoCount)
            state.SkipWithError("not every photo was cached");
    }
    state.SetItemsProcessed(state.iterations() * kPhotoCount);
    // The size of each cached copy, for the comparison script.
    state.SetLabel(QStringLiteral("%1x%2").arg(size.width()).arg(size.height()).toStdString());
}
// CPU time counts every thread of the process, so the figure holds on a busy machine too.
BENCHMARK(BM_ImageCacheColdFill)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(3);

// Every lookup of a warm cache checks every listed file's date: 49 x 49 attribute reads.
void BM_ImageCacheWarmLayout(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount) {
        state.SkipWithError("the benchmark photos could not be written");
        return;
    }
    const PhotoList list(photos);
    ImageCache cache(&list);
    cache.fillCache(photos);
    for (auto _ : state) {
        for (const QString &path : photos)
            benchmark::DoNotOptimize(cache.getImageForPath(path));
    }
    state.SetItemsProcessed(state.iterations() * kPhotoCount);
}
BENCHMARK(BM_ImageCacheWarmLayout)->Unit(benchmark::kMillisecond);

} // namespace

namespace {

// Saving a full cache at termination, and restoring it at the next start.
void BM_ImageCacheSave(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount) {
        state.SkipWithError("the benchmark photos could not be written");
        return;
    }
    const PhotoList list(photos);
    ImageCache cache(&list);
    cache.fillCache(photos);
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    for (auto _ : state)
        cache.saveImageCacheToUserDefaults(defaults);
    // The size of the stored record.
    state.counters["record_MB"] =
        double(PropertyList::toBinary(defaults.objectForKey(QStringLiteral("image cache"))).size()) / (1024 * 1024);
}
BENCHMARK(BM_ImageCacheSave)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

void BM_ImageCacheRestore(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount) {
        state.SkipWithError("the benchmark photos could not be written");
        return;
    }
    const PhotoList list(photos);
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    {
        ImageCache cache(&list);
        cache.fillCache(photos);
        cache.saveImageCacheToUserDefaults(defaults);
    }
    qsizetype restored = 0;
    for (auto _ : state) {
        ImageCache cache(&list);
        cache.restoreImageCacheFromUserDefaults(defaults);
        restored = cache.count();
    }
    // How many of the photos fit the stored record.
    state.counters["restored"] = double(restored);
}
BENCHMARK(BM_ImageCacheRestore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

} // namespace

namespace {

// The figures of a long photo list with the cache kept one row per photo: the bytes each photo
// takes in the store, the first save (every entry new), the start (opening the store, learning
// the names, showing the first screenful), and the quit of a session that showed 40 photos and
// added 10 (only those 10 written). Run with TESSARY_BENCH_PHOTO_COUNT=1000 and 4-megapixel
// photos (TESSARY_BENCH_PHOTO_SIZE=2310x1732) for the thousand-photo figures; the time is the
// cold fill of every photo on two threads.
void BM_ImageCacheLongList(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount || kPhotoCount < 60) {
        state.SkipWithError("the benchmark photos could not be written (or fewer than 60 asked for)");
        return;
    }
    const QStringList known = photos.mid(0, kPhotoCount - 10);
    // $TESSARY_BENCH_STORE keeps the store for the window's start (bench/window-start.sh).
    QTemporaryDir dir;
    const QString kept = qEnvironmentVariable("TESSARY_BENCH_STORE");
    const QString store = kept.isEmpty() ? dir.filePath(QStringLiteral("defaults.sqlite")) : kept;
    UserDefaults(store).removeObject(QStringLiteral("image cache"));
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    QElapsedTimer clock;
    double firstSaveMs = 0;
    for (auto _ : state) {
        PhotoList list(known);
        ImageCache cache(&list, &pool);
        cache.fillCache(known);
        state.PauseTiming();
        UserDefaults defaults(store);
        clock.start();
        cache.saveImageCacheToUserDefaults(defaults);
        firstSaveMs = double(clock.nsecsElapsed()) / 1e6;
        state.ResumeTiming();
    }
    qint64 rowBytes = 0;
    double openMs = 0, restoreMs = 0, firstScreenMs = 0, quitMs = 0;
    {
        clock.start();
        UserDefaults defaults(store);
        openMs = double(clock.nsecsElapsed()) / 1e6;
        for (const qint64 size : defaults.entrySizesForKey(QStringLiteral("image cache")))
            rowBytes += size;
        // The next session: 10 more photos at the end of the list.
        const PhotoList list(photos);
        ImageCache cache(&list, &pool);
        clock.start();
        cache.restoreImageCacheFromUserDefaults(defaults);
        restoreMs = double(clock.nsecsElapsed()) / 1e6;
        clock.start();
        cache.fillCache(photos.mid(0, 20));
        firstScreenMs = double(clock.nsecsElapsed()) / 1e6;
        cache.fillCache(photos.mid(kPhotoCount - 30));
        clock.start();
        cache.saveImageCacheToUserDefaults(defaults);
        quitMs = double(clock.nsecsElapsed()) / 1e6;
    }
    state.counters["photos"] = double(kPhotoCount);
    state.counters["row_KB_per_photo"] = double(rowBytes) / known.size() / 1024;
    state.counters["file_KB_per_photo"] = double(QFileInfo(store).size() + QFileInfo(store + QStringLiteral("-wal")).size()) / kPhotoCount / 1024;
    state.counters["first_save_ms"] = firstSaveMs;
    state.counters["open_store_ms"] = openMs;
    state.counters["restore_ms"] = restoreMs;
    state.counters["first_20_ms"] = firstScreenMs;
    state.counters["quit_save_ms"] = quitMs;
}
BENCHMARK(BM_ImageCacheLongList)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

} // namespace

namespace {

// The browser's thumbnails of every photo made cold, straight from the files at the reduced-
// decode floor, on `threads` decoding threads (the browser uses one per core). The comparison
// script hands the same files to vipsthumbnail at the same size.
void BM_BrowserThumbnailsCold(benchmark::State &state)
{
    const QStringList photos = benchPhotos();
    if (photos.size() != kPhotoCount) {
        state.SkipWithError("the benchmark photos could not be written");
        return;
    }
    constexpr int kSide = 256; // the browser's thumbnail side
    QThreadPool pool;
    pool.setMaxThreadCount(int(state.range(0)));
    for (auto _ : state) {
        const QList<QSize> sizes = QtConcurrent::blockingMapped<QList<QSize>>(
            &pool, photos, [](const QString &path) { return UIImage::loadFileWithin(path, kSide).image.pixelSize(); });
        if (sizes.contains(QSize()))
            state.SkipWithError("a thumbnail could not be made");
    }
    state.SetItemsProcessed(state.iterations() * kPhotoCount);
    state.SetLabel(QStringLiteral("%1x%1").arg(kSide).toStdString());
}
BENCHMARK(BM_BrowserThumbnailsCold)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(3);

} // namespace
