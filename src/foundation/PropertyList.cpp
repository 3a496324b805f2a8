#include "foundation/PropertyList.h"

#include "foundation/AtomicFileWriter.h"

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/PlistUid.h"
#include "foundation/XmlPropertyListReader.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

namespace {

// Seconds between the Unix epoch and the property-list epoch (2001-01-01T00:00:00Z).
constexpr qint64 kPlistEpochOffset = 978307200;

struct PlistDeleter {
    void operator()(void *node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

class NodeWriter
{
public:
    QString error;

    // libplist writes its integer nodes as signed 64-bit values, except those it read as
    // unsigned from text; an unsigned value above the signed range is made that way so it is
    // written in the 16-byte form that keeps it unsigned.
    static plist_t unsignedNode(quint64 value)
    {
        if (value <= quint64(std::numeric_limits<qint64>::max()))
            return plist_new_uint(value);
        const QByteArray xml = "<plist version=\"1.0\"><integer>" + QByteArray::number(value) + "</integer></plist>";
        plist_t node = nullptr;
        plist_from_xml(xml.constData(), uint32_t(xml.size()), &node);
        return node;
    }

    plist_t write(const QVariant &value, int depth)
    {
        if (!error.isEmpty())
            return nullptr;
        if (depth > PropertyList::kMaxDepth) {
            error = QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth);
            return nullptr;
        }
        if (value.userType() == qMetaTypeId<PlistUid>()) {
            // libplist writes references in at most 4 bytes (keyed archives index their objects
            // with 32 bits); a larger one would be cut short.
            const quint64 uid = value.value<PlistUid>().value;
            if (uid > std::numeric_limits<quint32>::max()) {
                error = QStringLiteral("a keyed-archive reference above %1").arg(std::numeric_limits<quint32>::max());
                return nullptr;
            }
            return plist_new_uid(uid);
        }
        switch (value.typeId()) {
        case QMetaType::QVariantMap: {
            plist_t dict = plist_new_dict();
            const QVariantMap map = value.toMap();
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                if (it.key().contains(QChar(0))) {
                    error = QStringLiteral("a dictionary key with a NUL character");
                    plist_free(dict);
                    return nullptr;
                }
                plist_t child = write(it.value(), depth + 1);
                if (!child) {
                    plist_free(dict);
                    return nullptr;
                }
                plist_dict_set_item(dict, it.key().toUtf8().constData(), child);
            }
            return dict;
        }
        case QMetaType::QVariantHash: {
            QVariantMap map;
            const QVariantHash hash = value.toHash();
            for (auto it = hash.cbegin(); it != hash.cend(); ++it)
                map.insert(it.key(), it.value());
            return write(map, depth);
        }
        case QMetaType::QVariantList:
        case QMetaType::QStringList: {
            plist_t array = plist_new_array();
            const QVariantList list = value.toList();
            for (const QVariant &item : list) {
                plist_t child = write(item, depth + 1);
                if (!child) {
                    plist_free(array);
                    return nullptr;
                }
                plist_array_append_item(array, child);
            }
            return array;
        }
        case QMetaType::QString: {
            const QString text = value.toString();
            if (text.contains(QChar(0))) {
                error = QStringLiteral("text with a NUL character");
                return nullptr;
            }
            return plist_new_string(text.toUtf8().constData());
        }
        case QMetaType::Bool:
            return plist_new_bool(value.toBool());
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::Short:
        case QMetaType::Long:
        case QMetaType::Char:
        case QMetaType::SChar:
            return plist_new_uint(uint64_t(value.toLongLong()));
        case QMetaType::UInt:
        case QMetaType::ULongLong:
        case QMetaType::UShort:
        case QMetaType::ULong:
        case QMetaType::UChar:
            return unsignedNode(value.toULongLong());
        case QMetaType::Double:
        case QMetaType::Float:
            return plist_new_real(value.toDouble());
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            return plist_new_data(bytes.constData(), uint64_t(bytes.size()));
        }
        case QMetaType::QDateTime: {
            const qint64 ms = value.toDateTime().toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
            qint64 sec = ms / 1000;
            qint64 rem = ms % 1000;
            if (rem < 0) {
                rem += 1000;
                sec -= 1;
            }
            if (sec < std::numeric_limits<int32_t>::min() || sec > std::numeric_limits<int32_t>::max()) {
                error = QStringLiteral("a date outside the range a property list can hold");
                return nullptr;
            }
            return plist_new_date(int32_t(sec), int32_t(rem * 1000));
        }
        default:
            error = QStringLiteral("a value of type '%1' that a property list cannot hold")
                        .arg(QString::fromLatin1(value.typeName() ? value.typeName() : "invalid"));
            return nullptr;
        }
    }
};

bool looksBinary(const QByteArray &bytes)
{
    return bytes.startsWith("bplist00");
}

} // namespace

PropertyList::ReadResult PropertyList::fromBytes(const QByteArray &bytes, const QString &sourceName, qint64 maxBytes)
{
    ReadResult result;
    const QString where = sourceName.isEmpty() ? QStringLiteral("property list") : sourceName;
    if (bytes.isEmpty()) {
        result.error = QStringLiteral("%1: empty input, not a property list").arg(where);
        return result;
    }
    if (bytes.size() > maxBytes) {
        result.error = QStringLiteral("%1: too large (%2 bytes; at most %3 are read)")
                           .arg(where).arg(bytes.size()).arg(maxBytes);
        return result;
    }
    // Reading uses parsers of our own, checked against hostile input; libplist's readers abort
    // the process on some malformed inputs (text with embedded NUL characters, for one).
    QString error;
    QVariant value = looksBinary(bytes) ? BinaryPropertyListReader::read(bytes, &error)
                                        : XmlPropertyListReader::read(bytes, &error);
    if (!value.isValid()) {
        result.error = looksBinary(bytes) ? QStringLiteral("%1: %2").arg(where, error)
                                          : QStringLiteral("%1: not a valid XML property list (%2)").arg(where, error);
        return result;
    }
    result.value = std::move(value);
    return result;
}

PropertyList::ReadResult PropertyList::fromFile(const QString &path)
{
    ReadResult result;
    QFileInfo info(path);
    if (!info.exists()) {
        result.error = QStringLiteral("%1: no such file").arg(path);
        return result;
    }
    if (info.isDir()) {
        result.error = QStringLiteral("%1: is a folder, not a property list").arg(path);
        return result;
    }
    if (info.size() > kMaxInputBytes) {
        result.error = QStringLiteral("%1: too large (%2 bytes; at most %3 are read)")
                           .arg(path).arg(info.size()).arg(kMaxInputBytes);
        return result;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = QStringLiteral("%1: cannot be read (%2)").arg(path, file.errorString());
        return result;
    }
    // Read one byte past the cap so a file that grew since the size check is still refused.
    const QByteArray bytes = file.read(kMaxInputBytes + 1);
    return fromBytes(bytes, path);
}

QByteArray PropertyList::toBytes(const QVariant &value, Format format, QString *error)
{
    NodeWriter writer;
    PlistPtr root(writer.write(value, 0));
    if (!root) {
        if (error)
            *error = writer.error.isEmpty() ? QStringLiteral("cannot encode the value") : writer.error;
        return {};
    }
    char *out = nullptr;
    uint32_t length = 0;
    if (format == Format::Xml) {
        plist_to_xml(root.get(), &out, &length);
    } else {
        plist_to_bin(root.get(), &out, &length);
    }
    QByteArray bytes(out ? out : "", out ? qsizetype(length) : 0);
    if (format == Format::Xml) {
        plist_to_xml_free(out);
        // XML readers turn a carriage return in text into a newline; written as a reference it
        // reads back as itself. The writer puts none into the markup, only into strings.
        bytes.replace("\r", "&#13;");
    } else {
        plist_to_bin_free(out);
    }
    if (bytes.isEmpty() && error)
        *error = QStringLiteral("the property-list writer produced nothing");
    return bytes;
}

bool PropertyList::writeFile(const QString &path, const QVariant &value, Format format, QString *error)
{
    QString encodeError;
    const QByteArray bytes = toBytes(value, format, &encodeError);
    if (bytes.isEmpty()) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, encodeError);
        return false;
    }
    QString writeError;
    if (!AtomicFileWriter::write(path, bytes, &writeError)) {
        if (error)
            *error = QStringLiteral("%1: cannot be written (%2)").arg(path, writeError);
        return false;
    }
    return true;
}

QString PropertyList::typeName(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<PlistUid>())
        return QStringLiteral("uid");
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return QStringLiteral("dictionary");
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return QStringLiteral("array");
    case QMetaType::QString:
        return QStringLiteral("string");
    case QMetaType::Bool:
        return QStringLiteral("boolean");
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return QStringLiteral("integer");
    case QMetaType::Double:
    case QMetaType::Float:
        return QStringLiteral("real");
    case QMetaType::QByteArray:
        return QStringLiteral("data");
    case QMetaType::QDateTime:
        return QStringLiteral("date");
    default:
        return QStringLiteral("invalid");
    }
}
