// tessary-iconpaint --out DIR: writes the application icon into DIR/hicolor/NxN/apps/ for every
// standard size, as the hicolor icon theme lays its folders out.
#include "IconPainter.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const qsizetype at = args.indexOf(QStringLiteral("--out"));
    if (at < 0 || at + 1 >= args.size()) {
        std::fprintf(stderr, "usage: tessary-iconpaint --out DIR\n");
        return 2;
    }
    const QDir out(args.at(at + 1));
    for (int size : IconPainter::standardSizes()) {
        const QString folder = out.filePath(QStringLiteral("hicolor/%1x%1/apps").arg(size));
        const QString file = QDir(folder).filePath(QStringLiteral("org.tessary.Tessary.png"));
        if (!QDir().mkpath(folder) || !IconPainter::paint(size).save(file, "PNG")) {
            std::fprintf(stderr, "tessary-iconpaint: cannot write %s\n", qUtf8Printable(file));
            return 1;
        }
    }
    return 0;
}
