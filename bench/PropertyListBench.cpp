#include "foundation/PropertyList.h"

#include <benchmark/benchmark.h>

namespace {

QVariantMap sampleTemplatesFile(int templates)
{
    QVariantList list;
    for (int t = 0; t < templates; ++t) {
        QVariantList modules;
        for (int m = 0; m < 16; ++m)
            modules.append(QVariantMap{{QStringLiteral("widthFactor"), qint64(2)}, {QStringLiteral("heightFactor"), qint64(1)},
                                       {QStringLiteral("alpha"), 1.0}, {QStringLiteral("title"), QStringLiteral("tile")}});
        list.append(QVariantMap{{QStringLiteral("nbrModules"), qint64(16)}, {QStringLiteral("savedTessaryDataModules"), modules},
                                {QStringLiteral("thumbnail"), QByteArray(4096, 'x')}});
    }
    return QVariantMap{{QStringLiteral("templates"), list}};
}

void BM_ReadBinaryTemplatesFile(benchmark::State &state)
{
    const QByteArray bytes = PropertyList::toBinary(sampleTemplatesFile(int(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(PropertyList::fromBytes(bytes, QStringLiteral("bench")));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_ReadBinaryTemplatesFile)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_ReadXmlTemplatesFile(benchmark::State &state)
{
    const QByteArray bytes = PropertyList::toXml(sampleTemplatesFile(int(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(PropertyList::fromBytes(bytes, QStringLiteral("bench")));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(BM_ReadXmlTemplatesFile)->Arg(100)->Unit(benchmark::kMillisecond);

} // namespace
