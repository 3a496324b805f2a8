#include "DesignCatalogue.h"
#include "LibraryGenerator.h"

#include <benchmark/benchmark.h>

// Choosing the designs of the built-in library: every pattern tried in every shape, quotas met.
void BM_TemplateLibraryDesign(benchmark::State &state)
{
    for (auto _ : state) {
        QString error;
        const auto designs = DesignCatalogue::build(&error);
        benchmark::DoNotOptimize(designs.data());
    }
}
BENCHMARK(BM_TemplateLibraryDesign)->Unit(benchmark::kMillisecond);

// The whole library in memory as the build makes it: designs, thumbnails, template
// dictionaries and the layout engine's proof of each.
void BM_TemplateLibraryGenerate(benchmark::State &state)
{
    for (auto _ : state) {
        QString error;
        const auto entries = LibraryGenerator::generate(&error);
        if (!entries)
            state.SkipWithError(qPrintable(error));
        benchmark::DoNotOptimize(entries);
    }
}
BENCHMARK(BM_TemplateLibraryGenerate)->Unit(benchmark::kMillisecond);
