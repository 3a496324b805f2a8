#include "foundation/KeyedArchiveNumber.h"

#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <QVariantList>
#include <QVariantMap>

QByteArray KeyedArchiveNumber::encode(qint64 number)
{
    // A number is archived inline: the root reference points straight at it, no class record.
    QVariantMap archive;
    archive.insert(QStringLiteral("$version"), qint64(100000));
    archive.insert(QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver"));
    archive.insert(QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), QVariant::fromValue(PlistUid{1})}});
    archive.insert(QStringLiteral("$objects"), QVariantList{QStringLiteral("$null"), number});
    return PropertyList::toBinary(archive);
}

std::optional<qint64> KeyedArchiveNumber::decode(const QByteArray &archive)
{
    const PropertyList::ReadResult read = PropertyList::fromBytes(archive, QStringLiteral("drag data"));
    if (!read.ok() || read.value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = read.value.toMap();
    const QVariant root = map.value(QStringLiteral("$top")).toMap().value(QStringLiteral("root"));
    if (root.metaType() != QMetaType::fromType<PlistUid>())
        return std::nullopt;
    const quint64 index = root.value<PlistUid>().value;
    const QVariantList objects = map.value(QStringLiteral("$objects")).toList();
    if (index >= quint64(objects.size()))
        return std::nullopt;
    const QVariant object = objects.at(qsizetype(index));
    if (object.typeId() != QMetaType::LongLong && object.typeId() != QMetaType::ULongLong && object.typeId() != QMetaType::Int)
        return std::nullopt;
    return object.toLongLong();
}
