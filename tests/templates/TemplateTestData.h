#pragma once

#include "foundation/PropertyList.h"
#include "support/TestImages.h"
#include "templates/TemplateStore.h"

#include <QImage>
#include <QString>
#include <QVariantMap>

// Small templates for tests. Each carries an id in "contentSizeWidth" so a test can tell
// templates apart; "nbrModules" is what sorting looks at.
namespace TemplateTestData {

inline QByteArray pngThumbnail(int width = 8, int height = 6)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    return testimages::encode(image, "png");
}

inline QVariantMap makeTemplate(qint64 nbrModules, double id, bool withThumbnail = true)
{
    QVariantList modules;
    for (qint64 i = 0; i < nbrModules; ++i)
        modules << QVariantMap{{QStringLiteral("widthFactor"), qint64(1)}, {QStringLiteral("heightFactor"), qint64(1)}};
    QVariantMap t{{QStringLiteral("nbrModules"), nbrModules},
                  {QStringLiteral("contentSizeWidth"), id},
                  {QStringLiteral("contentSizeHeight"), 100.0},
                  {QStringLiteral("moduleSizeInPoints"), qint64(100)},
                  {QStringLiteral("borderWidth"), qint64(0)},
                  {QStringLiteral("savedTessaryDataModules"), modules}};
    if (withThumbnail)
        t.insert(QStringLiteral("thumbnail"), pngThumbnail());
    return t;
}

inline QVariantMap file(const QVariantList &templates)
{
    return QVariantMap{{QStringLiteral("templates"), templates}};
}

inline double idOf(const TemplateStore::Template &t)
{
    return t ? t->value(QStringLiteral("contentSizeWidth")).toDouble() : -1;
}

inline std::vector<double> ids(const TemplateStore::Templates &templates)
{
    std::vector<double> out;
    for (const auto &t : templates)
        out.push_back(idOf(t));
    return out;
}

inline bool writePlist(const QString &path, const QVariant &value, PropertyList::Format format = PropertyList::Format::Xml)
{
    return PropertyList::writeFile(path, value, format);
}

} // namespace TemplateTestData
