// Generates the template gallery shipped with Tessary into the resources folder: a page of
// themed template sets, their pictures and their templates files. Run at build time.

#include "GallerySets.h"
#include "GalleryWriter.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream out(stdout), err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Generates Tessary's template gallery."));
    parser.addHelpOption();
    const QCommandLineOption outputOption(QStringLiteral("output"), QStringLiteral("Gallery folder to write into."),
                                          QStringLiteral("folder"));
    parser.addOption(outputOption);
    parser.process(app);
    if (!parser.isSet(outputOption)) {
        err << "tessary-gallery: --output is required\n";
        return 2;
    }
    const std::vector<GallerySets::Set> sets = GallerySets::all();
    QString error;
    if (!GalleryWriter::write(parser.value(outputOption), sets, &error)) {
        err << "tessary-gallery: " << error << '\n';
        return 1;
    }
    int templates = 0;
    for (const GallerySets::Set &s : sets)
        templates += int(s.designs.size());
    out << sets.size() << " sets, " << templates << " templates in " << QDir(parser.value(outputOption)).absolutePath()
        << '\n';
    return 0;
}
