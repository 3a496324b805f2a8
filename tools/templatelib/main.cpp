// Generates the built-in template library into the resources folder, proving every template
// with the layout engine and drawing its thumbnail; optionally writes a contact sheet of all
// thumbnails. Run at build time.

#include "ContactSheet.h"
#include "DesignCatalogue.h"
#include "LayoutProof.h"
#include "LibraryWriter.h"
#include "TemplateThumbnail.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTextStream>

#include <map>

int main(int argc, char **argv)
{
    // Thumbnails need no screen; the contact sheet's labels need fonts, which the off-screen
    // platform provides anywhere, build machines included.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream out(stdout), err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Generates Tessary's built-in templates."));
    parser.addHelpOption();
    const QCommandLineOption outputOption(QStringLiteral("output"), QStringLiteral("Resources folder to write into."),
                                          QStringLiteral("folder"));
    const QCommandLineOption sheetOption(QStringLiteral("contact-sheet"),
                                         QStringLiteral("Also write a PNG of all thumbnails."), QStringLiteral("file"));
    const QCommandLineOption quietOption(QStringLiteral("quiet"), QStringLiteral("Print only errors."));
    parser.addOptions({outputOption, sheetOption, quietOption});
    parser.process(app);
    if (!parser.isSet(outputOption)) {
        err << "tessary-templatelib: --output is required\n";
        return 2;
    }

    QElapsedTimer timer;
    timer.start();
    QString error;
    const std::vector<TemplateDesign> designs = DesignCatalogue::build(&error);
    const qint64 designedAt = timer.elapsed();
    if (designs.empty()) {
        err << "tessary-templatelib: " << error << '\n';
        return 1;
    }

    std::vector<LibraryWriter::Entry> entries;
    entries.reserve(designs.size());
    for (const TemplateDesign &d : designs) {
        const QImage thumbnail = TemplateThumbnail::render(d.columns(), d.rows(), d.tiles(), d.style().cornerRadius,
                                                           d.colourSeed());
        LibraryWriter::Entry entry{d, TemplateThumbnail::png(thumbnail), {}};
        entry.dictionary = d.templateDictionary(entry.thumbnail);
        const QString problem = LayoutProof::check(d, entry.dictionary);
        if (!problem.isEmpty()) {
            err << "tessary-templatelib: template \"" << d.name() << "\" (" << d.moduleCount()
                << " modules) fails: " << problem << '\n';
            return 1;
        }
        entries.push_back(std::move(entry));
    }
    const qint64 provedAt = timer.elapsed();
    if (!LibraryWriter::write(parser.value(outputOption), entries, &error)) {
        err << "tessary-templatelib: " << error << '\n';
        return 1;
    }

    // The rows of the built-in list: files in load order, then a stable sort by module count.
    std::vector<const LibraryWriter::Entry *> rows;
    for (const QString &file : LibraryWriter::destinations(entries)) {
        for (const LibraryWriter::Entry &e : entries) {
            if (LibraryWriter::destinationFor(e.design) == file)
                rows.push_back(&e);
        }
    }
    std::stable_sort(rows.begin(), rows.end(), [](auto *a, auto *b) {
        return a->design.moduleCount() < b->design.moduleCount();
    });

    const qint64 writtenAt = timer.elapsed();
    qint64 sheetTime = 0;
    if (parser.isSet(sheetOption)) {
        std::vector<ContactSheet::Item> items;
        for (size_t i = 0; i < rows.size(); ++i) {
            QImage t;
            t.loadFromData(rows[i]->thumbnail, "PNG");
            items.push_back({t, QStringLiteral("%1 \u00b7 %2").arg(i).arg(rows[i]->design.moduleCount())});
        }
        if (!ContactSheet::render(items).save(parser.value(sheetOption), "PNG")) {
            err << "tessary-templatelib: cannot write " << parser.value(sheetOption) << '\n';
            return 1;
        }
        sheetTime = timer.elapsed() - writtenAt;
    }

    if (!parser.isSet(quietOption)) {
        std::map<int, int> perCount;
        for (const TemplateDesign &d : designs)
            perCount[d.moduleCount()]++;
        out << designs.size() << " templates in " << writtenAt << " ms (designed " << designedAt
            << " ms, drawn and proved " << provedAt - designedAt << " ms, written " << writtenAt - provedAt
            << " ms; contact sheet " << sheetTime << " ms); row "
            << DesignCatalogue::kFirstStartRow << " is \"" << rows[DesignCatalogue::kFirstStartRow]->design.name()
            << "\"\n";
        QStringList summary;
        for (auto [n, c] : perCount)
            summary << QStringLiteral("%1:%2").arg(n).arg(c);
        out << "modules:templates " << summary.join(QLatin1Char(' ')) << '\n';
    }
    return 0;
}
