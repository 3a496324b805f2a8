// Writes the seed corpora of the fuzz targets: colour archives of each form and small templates
// files, binary and XML.   tool_fuzz_seeds CORPUS_ROOT
#include "foundation/KeyedArchiveColor.h"
#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"
#include "model/TessaryData.h"
#include "templates/TemplatesFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(bytes);
}

QByteArray phoneColour()
{
    const QVariantMap colour{{QStringLiteral("UIRed"), 0.2}, {QStringLiteral("UIGreen"), 0.4}, {QStringLiteral("UIBlue"), 0.6},
                             {QStringLiteral("UIAlpha"), 1.0}, {QStringLiteral("$class"), QVariant::fromValue(PlistUid{2})}};
    const QVariantMap cls{{QStringLiteral("$classname"), QStringLiteral("UIColor")},
                          {QStringLiteral("$classes"), QVariantList{QStringLiteral("UIColor"), QStringLiteral("NSObject")}}};
    return PropertyList::toBinary(QVariantMap{{QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver")},
                                              {QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), QVariant::fromValue(PlistUid{1})}}},
                                              {QStringLiteral("$objects"), QVariantList{QStringLiteral("$null"), colour, cls}}});
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2)
        return 2;
    const QDir root(QString::fromLocal8Bit(argv[1]));
    root.mkpath(QStringLiteral("color_archive"));
    root.mkpath(QStringLiteral("templates_file"));
    write(root.filePath(QStringLiteral("color_archive/desktop-rgb.bplist")), KeyedArchiveColor::encode(QColor(200, 30, 60, 128)));
    write(root.filePath(QStringLiteral("color_archive/phone-rgb.bplist")), phoneColour());
    const auto xml = PropertyList::fromBytes(KeyedArchiveColor::encode(Qt::white), QStringLiteral("seed"));
    write(root.filePath(QStringLiteral("color_archive/desktop-white.xml")), PropertyList::toXml(xml.value));

    QVariantList modules;
    for (int i = 0; i < 3; ++i) {
        TessaryData m = TessaryData::initDefault();
        m.setWidthFactor(1 + i);
        m.setTitle(QStringLiteral("tile %1").arg(i));
        modules.append(m.dictionaryRepresentation());
    }
    const QVariantMap t{{QStringLiteral("nbrModules"), qint64(3)}, {QStringLiteral("savedTessaryDataModules"), modules},
                        {QStringLiteral("contentSizeWidth"), 600.0}, {QStringLiteral("contentSizeHeight"), 400.0},
                        {QStringLiteral("moduleSizeInPoints"), qint64(100)}, {QStringLiteral("borderWidth"), qint64(0)},
                        {QStringLiteral("thumbnail"), QByteArray("\x89PNG\r\n", 6)}};
    const QVariantMap file = TemplatesFile::makeTemplateDictionaryWithTemplateData(t);
    write(root.filePath(QStringLiteral("templates_file/one.bplist")), PropertyList::toBinary(file));
    write(root.filePath(QStringLiteral("templates_file/one.xml")), PropertyList::toXml(file));
    return 0;
}
