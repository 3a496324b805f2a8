// Paints and synthesises the application's picture and sound resources. Run at build time:
//   tessary-resgen --out <resources folder> [--contact-sheet <png>] [--only name,name...]
#include "ContactSheet.h"
#include "ResourceCatalog.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSaveFile>
#include <QtConcurrent>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

struct Outcome
{
    QString name;
    qint64 bytes = -1;       // -1: failed
    QSize size;
    QImage thumbnail;
    qint64 milliseconds = 0;
};

Outcome run(const ResourceJob &job, const QDir &out, bool wantThumbnail)
{
    Outcome outcome;
    outcome.name = job.name;
    QElapsedTimer timer;
    timer.start();
    QImage picture;
    const QByteArray bytes = job.make(&picture);
    if (bytes.isEmpty())
        return outcome;
    QSaveFile file(out.filePath(job.name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return outcome;
    outcome.bytes = bytes.size();
    outcome.milliseconds = timer.elapsed();
    // Keep only a small copy: the full pictures together would not fit comfortably in memory.
    outcome.size = picture.size();
    if (wantThumbnail && !picture.isNull())
        outcome.thumbnail = picture.scaled(440, 440, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return outcome;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Generates the application's pictures and sound."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("out"), QStringLiteral("Folder to write the resources into."), QStringLiteral("folder")});
    parser.addOption({QStringLiteral("contact-sheet"), QStringLiteral("Also write a PNG of all pictures, labelled."), QStringLiteral("file")});
    parser.addOption({QStringLiteral("only"), QStringLiteral("Comma-separated resource names to make (default: all)."), QStringLiteral("names")});
    parser.addOption({QStringLiteral("list"), QStringLiteral("Print the resource names and exit.")});
    parser.addOption({QStringLiteral("verbose"), QStringLiteral("Print each resource with its size and time.")});
    parser.process(app);

    std::vector<ResourceJob> jobs = ResourceCatalog::all();
    if (parser.isSet(QStringLiteral("list"))) {
        for (const auto &job : jobs)
            std::printf("%s\n", qPrintable(job.name));
        return 0;
    }
    if (!parser.isSet(QStringLiteral("out"))) {
        std::fprintf(stderr, "tessary-resgen: --out is required\n");
        return 2;
    }
    if (parser.isSet(QStringLiteral("only"))) {
        const QStringList wanted = parser.value(QStringLiteral("only")).split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (const QString &name : wanted) {
            if (std::none_of(jobs.begin(), jobs.end(), [&](const ResourceJob &j) { return j.name == name; })) {
                std::fprintf(stderr, "tessary-resgen: unknown resource %s\n", qPrintable(name));
                return 2;
            }
        }
        std::erase_if(jobs, [&](const ResourceJob &j) { return !wanted.contains(j.name); });
    }
    const QDir out(parser.value(QStringLiteral("out")));
    if (!QDir().mkpath(out.absolutePath())) {
        std::fprintf(stderr, "tessary-resgen: cannot create %s\n", qPrintable(out.absolutePath()));
        return 1;
    }
    const QString sheetPath = parser.value(QStringLiteral("contact-sheet"));
    const bool wantSheet = !sheetPath.isEmpty();

    QElapsedTimer timer;
    timer.start();
    const std::clock_t cpuStart = std::clock();
    // Slowest first, so the threads finish together; results keep the catalogue's order.
    std::vector<size_t> order(jobs.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return jobs[a].cost > jobs[b].cost; });
    std::vector<Outcome> outcomes(jobs.size());
    QtConcurrent::blockingMap(order, [&](size_t i) { outcomes[i] = run(jobs[i], out, wantSheet); });

    qint64 total = 0;
    int failures = 0;
    for (const Outcome &o : outcomes) {
        if (parser.isSet(QStringLiteral("verbose")))
            std::printf("%-26s %9lld bytes %6lld ms\n", qPrintable(o.name), o.bytes, o.milliseconds);
        if (o.bytes < 0) {
            std::fprintf(stderr, "tessary-resgen: could not make %s\n", qPrintable(o.name));
            ++failures;
        } else {
            total += o.bytes;
        }
    }
    std::printf("tessary-resgen: %zu resources, %.1f MB, %.1f s (%.1f s of processor time)\n",
                outcomes.size() - size_t(failures), double(total) / (1024.0 * 1024.0),
                double(timer.elapsed()) / 1000.0, double(std::clock() - cpuStart) / CLOCKS_PER_SEC);
    std::fflush(stdout);

    if (wantSheet) {
        std::vector<ContactSheet::Entry> entries;
        for (const Outcome &o : outcomes)
            if (!o.thumbnail.isNull())
                entries.emplace_back(QStringLiteral("%1  %2x%3").arg(o.name).arg(o.size.width()).arg(o.size.height()),
                                     o.thumbnail);
        QSaveFile file(sheetPath);
        const QImage sheet = ContactSheet::render(entries);
        if (!file.open(QIODevice::WriteOnly) || !sheet.save(&file, "png") || !file.commit()) {
            std::fprintf(stderr, "tessary-resgen: cannot write %s\n", qPrintable(sheetPath));
            return 1;
        }
    }
    return failures == 0 ? 0 : 1;
}
