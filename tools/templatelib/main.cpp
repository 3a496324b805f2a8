// Generates the built-in template library into the resources folder, proving every template
// with the layout engine and drawing its thumbnail; optionally writes a contact sheet of all
// thumbnails. Run at build time.

#include "ContactSheet.h"
#include "DesignCatalogue.h"
#include "LibraryGenerator.h"
#include "LibraryWriter.h"

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
    const auto entries = LibraryGenerator::generate(&error);
    if (!entries) {
        err << "tessary-templatelib: " << error << '\n';
        return 1;
    }
    const qint64 generatedAt = timer.elapsed();
    if (!LibraryWriter::write(parser.value(outputOption), *entries, &error)) {
        err << "tessary-templatelib: " << error << '\n';
        return 1;
    }
    const qint64 writtenAt = timer.elapsed();

    const std::vector<const LibraryWriter::Entry *> rows = LibraryGenerator::builtInRows(*entries);
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
    }

    if (!parser.isSet(quietOption)) {
        out << entries->size() << " templates in " << writtenAt << " ms (designed, drawn and proved "
            << generatedAt << " ms, written " << writtenAt - generatedAt << " ms); row "
            << DesignCatalogue::kFirstStartRow << " is \"" << rows[DesignCatalogue::kFirstStartRow]->design.name()
            << "\"\n";
        std::map<int, int> perCount;
        std::map<QString, int> perFamily, perShape;
        for (const LibraryWriter::Entry &e : *entries) {
            perCount[e.design.moduleCount()]++;
            perFamily[e.design.family()]++;
            perShape[e.design.shape()]++;
        }
        QStringList counts, families, shapes;
        for (auto [n, c] : perCount)
            counts << QStringLiteral("%1:%2").arg(n).arg(c);
        for (const auto &[f, c] : perFamily)
            families << QStringLiteral("%1:%2").arg(f).arg(c);
        for (const auto &[f, c] : perShape)
            shapes << QStringLiteral("%1=%2").arg(f).arg(c);
        out << "modules:templates " << counts.join(QLatin1Char(' ')) << '\n'
            << "kinds: " << families.join(QLatin1Char(' ')) << "; shapes: " << shapes.join(QLatin1Char(' ')) << '\n';
    }
    return 0;
}
