#pragma once

#include <QString>
#include <QVariantList>
#include <QVariantMap>

// A templates file: a property-list dictionary whose "templates" key holds an array of template
// dictionaries. The templates themselves are not checked; a file without that array is the
// only form refused.
class TemplatesFile
{
public:
    struct ReadResult {
        QVariantList templates;
        QString error; // empty on success
        bool ok() const { return error.isEmpty(); }
    };

    static ReadResult fromFile(const QString &path);
    static ReadResult fromDictionary(const QVariant &root, const QString &sourceName);

    static QVariantMap makeTemplateDictionaryWithTemplates(const QVariantList &templates);
    static QVariantMap makeTemplateDictionaryWithTemplateData(const QVariantMap &templateData);

    // One line describing a template: index, "nbrModules", content size, module size, border
    // width, number of modules and whether it has a thumbnail.
    static QString describe(int index, const QVariantMap &templateData);
};
