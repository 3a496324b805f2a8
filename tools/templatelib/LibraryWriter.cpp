#include "LibraryWriter.h"

#include "foundation/PropertyList.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

namespace {

const QString kMain = QStringLiteral("templates.plist");
const QString kAdditional = QStringLiteral("templates_additional.plist");
const QString kFolder = QStringLiteral("Templates");

} // namespace

QString LibraryWriter::destinationFor(const TemplateDesign &design)
{
    if (design.moduleCount() > 49)
        return kFolder + QStringLiteral("/Large.plist");
    const QString &f = design.family();
    if (f == QLatin1String("grid") || f == QLatin1String("strip"))
        return kMain;
    if (f == QLatin1String("feature") || f == QLatin1String("frame"))
        return kAdditional;
    if (f == QLatin1String("columns"))
        return kFolder + QStringLiteral("/Columns.plist");
    if (f == QLatin1String("rows"))
        return kFolder + QStringLiteral("/Rows.plist");
    return kFolder + QStringLiteral("/Mosaics.plist");
}

QStringList LibraryWriter::destinations(const std::vector<Entry> &entries)
{
    QStringList files;
    for (const Entry &e : entries) {
        const QString file = destinationFor(e.design);
        if (!files.contains(file))
            files << file;
    }
    std::sort(files.begin(), files.end(), [](const QString &a, const QString &b) {
        auto rank = [](const QString &f) { return f == kMain ? 0 : f == kAdditional ? 1 : 2; };
        return rank(a) != rank(b) ? rank(a) < rank(b) : a < b;
    });
    return files;
}

bool LibraryWriter::write(const QString &resourcesFolder, const std::vector<Entry> &entries, QString *error)
{
    QMap<QString, QVariantList> files;
    for (const Entry &e : entries)
        files[destinationFor(e.design)].append(e.dictionary);

    const QDir root(resourcesFolder);
    if (!root.mkpath(kFolder)) {
        if (error)
            *error = QStringLiteral("cannot create %1").arg(root.filePath(kFolder));
        return false;
    }
    // Files of an earlier run that no design belongs in any more would still be loaded.
    const QDir folder(root.filePath(kFolder));
    for (const QString &name : folder.entryList({QStringLiteral("*.plist")}, QDir::Files)) {
        if (!files.contains(kFolder + QLatin1Char('/') + name))
            QFile::remove(folder.filePath(name));
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        const QString path = root.filePath(it.key());
        // The main file stays XML, readable by people and the XML reader; the rest are binary,
        // which loads many times faster at start-up.
        const auto format = it.key() == kMain ? PropertyList::Format::Xml : PropertyList::Format::Binary;
        QString why;
        if (!PropertyList::writeFile(path, TemplatesFile::makeTemplateDictionaryWithTemplates(it.value()), format, &why)) {
            if (error)
                *error = QStringLiteral("cannot write %1: %2").arg(path, why);
            return false;
        }
    }
    return true;
}
