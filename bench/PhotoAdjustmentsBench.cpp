#include "SyntheticPhoto.h"
#include "editor/PhotoAdjustments.h"

#include <QImage>

#include <benchmark/benchmark.h>

namespace {


// A 24-megapixel photo (6000 x 4000) and its screen-sized proxy (fitted into 1920 x 1280),
// made once per run.
const QImage &fullPhoto()
{
    static const QImage photo = syntheticPhoto(6000, 4000);
    return photo;
}

const QImage &proxyPhoto()
{
    static const QImage proxy = fullPhoto().scaled(1920, 1280, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return proxy;
}

// Arg 0: one slider moved (exposure); arg 1: all nine away from neutral (the slowest case,
// with the luma curves, saturation and sharpening).
PhotoAdjustments adjustmentsFor(int all, int step)
{
    PhotoAdjustments a;
    a.exposure = 0.5 + 0.01 * (step % 50);
    if (all) {
        a.brightness = 0.1;
        a.contrast = 0.2;
        a.saturation = 0.3;
        a.temperature = 0.2;
        a.tint = -0.1;
        a.highlights = -0.4;
        a.shadows = 0.4;
        a.sharpness = 0.5;
    }
    return a;
}

// One slider step of the live preview: the proxy of a 24 MP photo adjusted anew.
void BM_AdjustPreviewStep24MPProxy(benchmark::State &state)
{
    const QImage &proxy = proxyPhoto();
    int step = 0;
    for (auto _ : state) {
        const QImage out = adjustmentsFor(int(state.range(0)), step++).applyTo(proxy);
        benchmark::DoNotOptimize(out.constBits());
    }
    state.counters["megapixels"] = proxy.width() * proxy.height() / 1e6;
}
BENCHMARK(BM_AdjustPreviewStep24MPProxy)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

// Applying at full resolution to the 24 MP photo. (Both report the CPU time of the whole
// process beside the wall time: the bands run on pool threads.)
void BM_AdjustApplyFull24MP(benchmark::State &state)
{
    const QImage &photo = fullPhoto();
    int step = 0;
    for (auto _ : state) {
        const QImage out = adjustmentsFor(int(state.range(0)), step++).applyTo(photo);
        benchmark::DoNotOptimize(out.constBits());
    }
}
BENCHMARK(BM_AdjustApplyFull24MP)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()->Iterations(5);

} // namespace
