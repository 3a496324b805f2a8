#include "templates/TemplateTables.h"

#include "foundation/PlistValue.h"

#include <QBuffer>
#include <QImageReader>

double TemplateTables::thumbnailHeight(const TemplateStore::Template &t)
{
    if (!t)
        return 0.0;
    const QVariant v = t->value(QStringLiteral("thumbnail"));
    if (v.typeId() != QMetaType::QByteArray)
        return 0.0;
    QByteArray data = v.toByteArray();
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (size.isValid())
        return size.height();
    // Formats that do not tell their size up front are decoded.
    const QImage image = reader.read();
    return image.isNull() ? 0.0 : image.height();
}

QImage TemplateTables::thumbnailImage(const TemplateStore::Template &t)
{
    if (!t)
        return QImage();
    const QVariant v = t->value(QStringLiteral("thumbnail"));
    if (v.typeId() != QMetaType::QByteArray)
        return QImage();
    return QImage::fromData(v.toByteArray());
}

double TemplateTables::rowHeight(const TemplateStore::Template &t, double sliderPercent, TemplateTable table)
{
    const double height = thumbnailHeight(t);
    if (height <= 0.0)
        return table == TemplateTable::User ? kFallbackRowHeight : 0.0;
    return sliderPercent * height / 100.0;
}

QString TemplateTables::selectedRowLabel(qsizetype row)
{
    return row < 0 ? QStringLiteral(" ") : QString::number(numberOfRow(row));
}

qsizetype TemplateTables::findFirstTemplateMatchingPhotoCount(const TemplateStore::Templates &builtIn, qsizetype photoCount)
{
    for (qsizetype i = 0; i < builtIn.size(); ++i) {
        if (PlistValue::integerValue(builtIn[i]->value(QStringLiteral("nbrModules"))) == photoCount)
            return i;
    }
    return builtIn.size();
}
