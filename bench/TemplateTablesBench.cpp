#include "foundation/Paths.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"

#include <benchmark/benchmark.h>

namespace {

TemplateStore::Templates builtInTemplates()
{
    static const TemplateStore::Templates templates = TemplateStore::readBuiltInTemplates(Paths::resourcesFolder());
    return templates;
}

} // namespace

// What the template table does on the main thread when it is first laid out: the height of
// every built-in thumbnail, read from its header, for the row heights.
void BM_TemplateTableRowHeights(benchmark::State &state)
{
    const TemplateStore::Templates templates = builtInTemplates();
    if (templates.isEmpty())
        state.SkipWithError("no built-in templates; set TESSARY_RESOURCES");
    for (auto _ : state) {
        double sum = 0;
        for (const auto &t : templates)
            sum += TemplateTables::rowHeight(t, 100, TemplateTable::BuiltIn);
        benchmark::DoNotOptimize(sum);
    }
    state.counters["templates"] = double(templates.size());
}
BENCHMARK(BM_TemplateTableRowHeights)->Unit(benchmark::kMillisecond);

// What the table avoids doing on the main thread: decoding every built-in thumbnail.
void BM_TemplateTableDecodeAllThumbnails(benchmark::State &state)
{
    const TemplateStore::Templates templates = builtInTemplates();
    if (templates.isEmpty())
        state.SkipWithError("no built-in templates; set TESSARY_RESOURCES");
    for (auto _ : state) {
        qint64 pixels = 0;
        for (const auto &t : templates)
            pixels += TemplateTables::thumbnailImage(t).sizeInBytes();
        benchmark::DoNotOptimize(pixels);
    }
}
BENCHMARK(BM_TemplateTableDecodeAllThumbnails)->Unit(benchmark::kMillisecond);
