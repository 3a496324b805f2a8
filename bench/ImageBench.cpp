#include "SyntheticPhoto.h"
#include "images/UIImage.h"

#include <QBuffer>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {


// The 12-megapixel (4000 x 3000) JPEG shared by the loading cases, written once per run.
const QString &twelveMegapixelJpeg()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString p = dir.filePath(QStringLiteral("photo-12mp.jpg"));
        QImageWriter writer(p, "jpeg");
        writer.setQuality(90);
        writer.write(syntheticPhoto(4000, 3000));
        return p;
    }();
    return path;
}

void BM_ImageLoadFull12MP(benchmark::State &state)
{
    const QString &path = twelveMegapixelJpeg();
    for (auto _ : state) {
        const UIImage img = UIImage::initWithContentsOfFile(path);
        benchmark::DoNotOptimize(img.pixelsWide());
    }
}
BENCHMARK(BM_ImageLoadFull12MP)->Unit(benchmark::kMillisecond);

// The image cache's path: the same result as loading fully and then scaling under 0.5 MP.
void BM_ImageLoadFullThenScaleUnderHalfMP(benchmark::State &state)
{
    const QString &path = twelveMegapixelJpeg();
    for (auto _ : state) {
        const UIImage img = UIImage::initWithContentsOfFile(path).scaleToUnderMegaPixels(0.5);
        benchmark::DoNotOptimize(img.pixelsWide());
    }
}
BENCHMARK(BM_ImageLoadFullThenScaleUnderHalfMP)->Unit(benchmark::kMillisecond);

void BM_ImageLoadScaledUnderHalfMP(benchmark::State &state)
{
    const QString &path = twelveMegapixelJpeg();
    for (auto _ : state) {
        const UIImage img = UIImage::initWithContentsOfFileUnderMegaPixels(path, 0.5);
        benchmark::DoNotOptimize(img.pixelsWide());
    }
}
BENCHMARK(BM_ImageLoadScaledUnderHalfMP)->Unit(benchmark::kMillisecond);

void BM_ImageFit12MPInto728Crop(benchmark::State &state)
{
    const UIImage img(syntheticPhoto(4000, 3000));
    for (auto _ : state) {
        const UIImage fitted = img.imageToFitSize(QSizeF(728, 728), 0);
        benchmark::DoNotOptimize(fitted.pixelsWide());
    }
}
BENCHMARK(BM_ImageFit12MPInto728Crop)->Unit(benchmark::kMillisecond);

// A render tile: the same 728 x 728 crop, straight from the file, decoded at a reduced scale.
void BM_ImageLoadFittedInto728Crop(benchmark::State &state)
{
    const QString &path = twelveMegapixelJpeg();
    for (auto _ : state) {
        const UIImage fitted = UIImage::initWithContentsOfFileFittedToSize(path, QSizeF(728, 728), 0);
        benchmark::DoNotOptimize(fitted.pixelsWide());
    }
}
BENCHMARK(BM_ImageLoadFittedInto728Crop)->Unit(benchmark::kMillisecond);

// A 12 MP result framed with a border, reduced to the 8 MP ceiling.
void BM_ImageBorderedFrame8MP(benchmark::State &state)
{
    const UIImage img(syntheticPhoto(4000, 3000));
    for (auto _ : state) {
        const UIImage framed = img.imageWithInsetContent(20, true, QColor(Qt::white), true);
        benchmark::DoNotOptimize(framed.pixelsWide());
    }
}
BENCHMARK(BM_ImageBorderedFrame8MP)->Unit(benchmark::kMillisecond);

} // namespace
