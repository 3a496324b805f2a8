#include "templates/TemplatesFile.h"

#include "foundation/PlistValue.h"
#include "foundation/PropertyList.h"

namespace {
const QString kTemplates = QStringLiteral("templates");
}

TemplatesFile::ReadResult TemplatesFile::fromFile(const QString &path)
{
    const PropertyList::ReadResult read = PropertyList::fromFile(path);
    if (!read.ok()) {
        ReadResult result;
        result.error = read.error;
        return result;
    }
    return fromDictionary(read.value, path);
}

TemplatesFile::ReadResult TemplatesFile::fromDictionary(const QVariant &root, const QString &sourceName)
{
    ReadResult result;
    if (root.typeId() != QMetaType::QVariantMap) {
        result.error = QStringLiteral("%1: not a templates file (the property list is a %2, not a dictionary)")
                           .arg(sourceName, PropertyList::typeName(root));
        return result;
    }
    const QVariant templates = root.toMap().value(kTemplates);
    if (templates.typeId() != QMetaType::QVariantList) {
        result.error = QStringLiteral("%1: not a templates file (no \"templates\" array)").arg(sourceName);
        return result;
    }
    result.templates = templates.toList();
    return result;
}

QVariantMap TemplatesFile::makeTemplateDictionaryWithTemplates(const QVariantList &templates)
{
    return QVariantMap{{kTemplates, templates}};
}

QVariantMap TemplatesFile::makeTemplateDictionaryWithTemplateData(const QVariantMap &templateData)
{
    return makeTemplateDictionaryWithTemplates(QVariantList{templateData});
}

QString TemplatesFile::describe(int index, const QVariantMap &t)
{
    const QVariant modules = t.value(QStringLiteral("savedTessaryDataModules"));
    const QVariant thumbnail = t.value(QStringLiteral("thumbnail"));
    const bool hasThumbnail = thumbnail.typeId() == QMetaType::QByteArray && !thumbnail.toByteArray().isEmpty();
    return QStringLiteral("%1\tnbrModules=%2\tcontent=%3x%4\tmodule=%5\tborder=%6\tmodules=%7\tthumbnail=%8")
        .arg(index)
        .arg(PlistValue::integerValue(t.value(QStringLiteral("nbrModules"))))
        .arg(PlistValue::doubleValue(t.value(QStringLiteral("contentSizeWidth"))))
        .arg(PlistValue::doubleValue(t.value(QStringLiteral("contentSizeHeight"))))
        .arg(PlistValue::integerValue(t.value(QStringLiteral("moduleSizeInPoints"))))
        .arg(PlistValue::integerValue(t.value(QStringLiteral("borderWidth"))))
        .arg(modules.typeId() == QMetaType::QVariantList ? modules.toList().size() : 0)
        .arg(hasThumbnail ? QStringLiteral("yes") : QStringLiteral("no"));
}
