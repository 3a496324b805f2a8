#include "templates/TemplateExporter.h"

#include "foundation/AlertPresenter.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/Log.h"
#include "foundation/PropertyList.h"
#include "templates/TemplateEditor.h"
#include "templates/TemplatesFile.h"

#include <QBuffer>
#include <QDir>
#include <QImageWriter>
#include <QStringEncoder>

namespace {

const QString kThumbnail = QStringLiteral("thumbnail");

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QString error;
    if (!AtomicFileWriter::write(path, bytes, &error)) {
        qCInfo(lcTessary, "Could not write %s: %s", qPrintable(path), qPrintable(error));
        return false;
    }
    return true;
}

QString iconFileName(const QString &folderName, qsizetype k)
{
    return QStringLiteral("Tessary-Icon-%1-%2.png").arg(folderName).arg(k);
}

QString templateFileName(const QString &folderName, qsizetype k)
{
    return QStringLiteral("Tessary-Template-%1-%2.plist").arg(folderName).arg(k);
}

QString indexFileName(const QString &folderName)
{
    return QStringLiteral("Tessary-Templates-%1.html").arg(folderName);
}

QString folderNameOf(const QString &folder)
{
    return QFileInfo(QDir::cleanPath(folder)).fileName();
}

QByteArray thumbnailData(const QVariantMap &t)
{
    const QVariant v = t.value(kThumbnail);
    return v.typeId() == QMetaType::QByteArray ? v.toByteArray() : QByteArray();
}

} // namespace

TemplateExporter::TemplateExporter(const TemplateStore &store, AlertPresenter &alerts)
    : m_store(store)
    , m_alerts(alerts)
{
}

QVariantMap TemplateExporter::getTemplatesFileDictionaryForTemplateMenu(TemplateTable table) const
{
    const TemplateStore::Templates &templates =
        table == TemplateTable::User ? m_store.userTemplates() : m_store.builtInTemplates();
    return TemplatesFile::makeTemplateDictionaryWithTemplates(TemplateStore::toVariantList(templates));
}

TemplateStore::Template TemplateExporter::getTemplate(TemplateTable table, qsizetype clickedRow) const
{
    return table == TemplateTable::User ? m_store.userTemplateAt(clickedRow) : m_store.builtInTemplateAt(clickedRow);
}

void TemplateExporter::exportTemplates(TemplateTable table,
                                       const std::function<void(const QVariantMap &, const QString &)> &saveOne,
                                       const std::function<void()> &manyFiles)
{
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Save As One File Or Many?");
    alert.informativeText = QStringLiteral(
        "You can save all templates in one file, or individually as many files with associated icon files.\n\n"
        "For the latter an HTML file is also output with iconic image links to all the templates. You will be "
        "prompted for the destination folder whose name is also inserted into each file name generated.\n\n"
        "HTML is named:\n\nTessary-Templates-<folder-name>.html\n\nFiles are named:\n\n"
        "Tessary-Template-<folder-name>-<n>.plist\nTessary-Icon-<folder-name>-<n>.png\n");
    alert.defaultButton = QStringLiteral("Save One");
    alert.alternateButton = QStringLiteral("Many Files");
    alert.otherButton = QStringLiteral("Cancel");
    alert.style = AlertPresenter::Style::Informational;
    const QVariantMap file = getTemplatesFileDictionaryForTemplateMenu(table);
    m_alerts.presentAlert(alert, [file, saveOne, manyFiles](int response) {
        if (response == AlertPresenter::DefaultButton && saveOne)
            saveOne(file, QStringLiteral("Templates Export"));
        else if (response == AlertPresenter::AlternateButton && manyFiles)
            manyFiles();
    });
}

bool TemplateExporter::writeTemplatesFile(const QString &path, const QVariantMap &templatesFile, QString *error)
{
    return PropertyList::writeFile(path, templatesFile, PropertyList::Format::Xml, error);
}

QString TemplateExporter::htmlIndex(const QList<std::pair<QString, QString>> &links)
{
    QString page = QStringLiteral("<html>\n<head>\n<title>Templates</title>\n</head>\n<body>\n");
    for (const auto &[templateName, iconName] : links)
        page += QStringLiteral("<a href=\"%1\"><img src=\"%2\" border=\"0\" /></a>\n&nbsp;\n").arg(templateName, iconName);
    page += QStringLiteral("</body>\n</html>");
    return page;
}

TemplateExporter::ManyFilesResult TemplateExporter::saveAllIconsAndTemplates(const QString &folder) const
{
    ManyFilesResult result;
    const QDir dir(folder);
    const QString name = folderNameOf(folder);
    QList<std::pair<QString, QString>> links;
    const TemplateStore::Templates &templates = m_store.userTemplates();
    for (qsizetype i = 0; i < templates.size(); ++i) {
        const QVariantMap &t = *templates[i];
        if (!t.contains(kThumbnail))
            continue; // no icon, no entry: the numbering keeps the gap
        const qsizetype k = i + 1;
        const QString iconName = iconFileName(name, k);
        const QString templateName = templateFileName(name, k);
        links.append({templateName, iconName});
        result.ok &= writeBytes(dir.filePath(iconName), thumbnailData(t));
        result.ok &= writeTemplatesFile(dir.filePath(templateName), TemplatesFile::makeTemplateDictionaryWithTemplateData(t));
        result.iconFiles << iconName;
        result.templateFiles << templateName;
    }
    // UTF-16 in the machine's byte order, led by a byte-order mark.
    QStringEncoder encoder(QStringConverter::Utf16, QStringConverter::Flag::WriteBom);
    const QByteArray page = encoder.encode(htmlIndex(links));
    result.indexFile = indexFileName(name);
    result.ok &= writeBytes(dir.filePath(result.indexFile), page);
    return result;
}

QStringList TemplateExporter::existingManyFiles(const QString &folder) const
{
    const QDir dir(folder);
    const QString name = folderNameOf(folder);
    QStringList names;
    const TemplateStore::Templates &templates = m_store.userTemplates();
    for (qsizetype i = 0; i < templates.size(); ++i)
        if (templates[i]->contains(kThumbnail))
            names << iconFileName(name, i + 1) << templateFileName(name, i + 1);
    names << indexFileName(name);
    QStringList existing;
    for (const QString &n : std::as_const(names))
        if (dir.exists(n))
            existing << n;
    return existing;
}

QImage TemplateExporter::getIconForTemplateMenu(TemplateTable table, qsizetype clickedRow) const
{
    const TemplateStore::Template t = getTemplate(table, clickedRow);
    if (!t)
        return QImage();
    return QImage::fromData(thumbnailData(*t));
}

QByteArray TemplateExporter::pngData(const QImage &image)
{
    if (image.isNull())
        return QByteArray();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    // Points are pixels here: the image is written at its own size.
    QImage copy = image;
    copy.setDevicePixelRatio(1.0);
    if (!writer.write(copy))
        return QByteArray();
    return bytes;
}

bool TemplateExporter::saveIconImage(TemplateTable table, qsizetype clickedRow,
                                     const std::function<void(const QByteArray &, const QString &)> &save)
{
    const QImage icon = getIconForTemplateMenu(table, clickedRow);
    if (icon.isNull())
        return false;
    const QByteArray png = pngData(icon);
    if (png.isEmpty()) {
        AlertPresenter::Alert alert;
        alert.messageText = QStringLiteral("The image could not be saved.");
        alert.informativeText = QStringLiteral(" ");
        m_alerts.presentAlert(alert, {});
        return false;
    }
    if (save)
        save(png, TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".png")));
    return true;
}

bool TemplateExporter::saveIconAndTemplate(TemplateTable table, qsizetype clickedRow, const QString &folder,
                                           const QDateTime &now) const
{
    const QByteArray png = pngData(getIconForTemplateMenu(table, clickedRow));
    const TemplateStore::Template t = getTemplate(table, clickedRow);
    if (png.isEmpty() || !t)
        return false;
    const QDir dir(folder);
    const QString iconName =
        TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".png"), now) + QStringLiteral(".png");
    if (!writeBytes(dir.filePath(iconName), png))
        return false;
    const QString templateName = TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".plist"), now);
    return writeTemplatesFile(dir.filePath(templateName), TemplatesFile::makeTemplateDictionaryWithTemplateData(*t));
}

bool TemplateExporter::exportTemplate(TemplateTable table, qsizetype clickedRow, const QString &path) const
{
    const TemplateStore::Template t = getTemplate(table, clickedRow);
    return t && writeTemplatesFile(path, TemplatesFile::makeTemplateDictionaryWithTemplateData(*t));
}

QString TemplateExporter::saveTemplate(TemplateTable table, qsizetype clickedRow, const QString &folder, const QDateTime &now) const
{
    const QString path =
        QDir(folder).filePath(TemplateEditor::generateTemplateFileOrIconNameWithExtension(QStringLiteral(".plist"), now));
    return exportTemplate(table, clickedRow, path) ? path : QString();
}
