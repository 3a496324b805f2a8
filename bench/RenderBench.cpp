#include "model/CollageRenderer.h"
#include "model/LayoutEngine.h"
#include "model/ParallelPngWriter.h"
#include "model/RenderScale.h"
#include "images/TessaryViewDelegate.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

// Rendering a 7 x 7 collage of 49 photos: decoding each at a reduced scale, fitting it to its
// tile and drawing it, with one and with two decoding threads; and the scale search, which reads
// every photo's header. The photos are 6-megapixel JPEGs made here once (bench/race.sh runs the
// full-size comparison with other tools).

namespace {

constexpr int kPhotoCount = 49;

class Photos : public TessaryViewDelegate
{
public:
    Photos()
    {
        for (int i = 0; i < kPhotoCount; ++i) {
            const bool portrait = i % 3 == 1;
            QImage image(portrait ? QSize(2000, 3000) : QSize(3000, 2000), QImage::Format_RGB32);
            image.fill(QColor::fromHsv((i * 47) % 360, 160, 200));
            QPainter p(&image);
            quint32 seed = 977u * quint32(i + 1);
            for (int k = 0; k < 400; ++k) {
                seed = seed * 1664525u + 1013904223u;
                p.fillRect(int(seed % 2900), int((seed >> 12) % 2900), 60, 40, QColor::fromRgb(seed | 0xff000000u));
            }
            p.end();
            m_paths << m_dir.filePath(QStringLiteral("photo-%1.jpg").arg(i));
            image.save(m_paths.last(), "jpeg", 88);
        }
    }
    QStringList pickedPhotos() const override { return m_paths; }
    int alignmentIndexAtIndex(qsizetype) const override { return 0; }
    qsizetype selectedItem() const override { return -1; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}

private:
    QTemporaryDir m_dir;
    QStringList m_paths;
};

const Photos &photos()
{
    static const Photos instance;
    return instance;
}

CollageLayout gridLayout()
{
    LayoutEngine engine;
    engine.setIncrements(0, 0);
    engine.setup(104, 0, 728, 728, QSizeF(728, 728));
    QVariantList modules;
    for (int i = 0; i < kPhotoCount; ++i)
        modules << QVariantMap{{QStringLiteral("widthFactor"), 1}, {QStringLiteral("heightFactor"), 1}};
    engine.loadTessaryDataModules(modules, true);
    return engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), &photos());
}

// Arguments: threads, scale factor (7 gives 5096 x 5096 pixels).
void BM_RenderScaled7x7(benchmark::State &state)
{
    const CollageLayout layout = gridLayout();
    CollageRenderer::Options options;
    options.background = Qt::white;
    options.threads = int(state.range(0));
    QSize size;
    for (auto _ : state) {
        const CollageRenderer::Result r = CollageRenderer::renderScaled(layout, state.range(1), options);
        size = r.image.size();
        benchmark::DoNotOptimize(r.image.constBits());
    }
    state.SetLabel(QStringLiteral("%1x%2").arg(size.width()).arg(size.height()).toStdString());
    state.SetItemsProcessed(state.iterations() * kPhotoCount);
}
BENCHMARK(BM_RenderScaled7x7)->Args({1, 7})->Args({2, 7})->Args({2, 2})->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_LargestScaleFactor(benchmark::State &state)
{
    const CollageLayout layout = gridLayout();
    for (auto _ : state)
        benchmark::DoNotOptimize(RenderScale::largestScaleFactor(layout));
    state.SetItemsProcessed(state.iterations() * kPhotoCount);
}
BENCHMARK(BM_LargestScaleFactor)->Unit(benchmark::kMillisecond);

// Writing a rendered 12-megapixel collage as PNG at zlib level 1: the parallel writer with one
// and two threads, and Qt's single-threaded writer at the same level for comparison.
const QImage &collagePicture()
{
    static const QImage picture = [] {
        CollageRenderer::Options options;
        options.background = Qt::white;
        return CollageRenderer::renderScaled(gridLayout(), 5, options).image; // 3640 x 3640
    }();
    return picture;
}

void BM_WritePngParallel(benchmark::State &state)
{
    ParallelPngWriter::Options options;
    options.threads = int(state.range(0));
    qint64 bytes = 0;
    for (auto _ : state)
        bytes = ParallelPngWriter::encode(collagePicture(), options).size();
    state.SetLabel(std::to_string(bytes / 1000) + " kB");
    state.SetBytesProcessed(state.iterations() * collagePicture().sizeInBytes());
}
BENCHMARK(BM_WritePngParallel)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WritePngQt(benchmark::State &state)
{
    qint64 bytes = 0;
    for (auto _ : state) {
        QByteArray out;
        QBuffer buffer(&out);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, "png");
        writer.setCompression(15); // Qt maps 11-22 to zlib level 1
        writer.write(collagePicture());
        bytes = out.size();
    }
    state.SetLabel(std::to_string(bytes / 1000) + " kB");
    state.SetBytesProcessed(state.iterations() * collagePicture().sizeInBytes());
}
BENCHMARK(BM_WritePngQt)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
