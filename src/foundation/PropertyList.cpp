#include "foundation/PropertyList.h"

#include "foundation/PlistUid.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
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

// Binary and XML inputs can nest containers without limit; a crafted file could otherwise
// exhaust the stack while we convert it.
class NodeReader
{
public:
    QString error;

    QVariant read(plist_t node, int depth)
    {
        if (!error.isEmpty())
            return {};
        if (depth > PropertyList::kMaxDepth) {
            error = QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth);
            return {};
        }
        switch (plist_get_node_type(node)) {
        case PLIST_DICT: {
            QVariantMap map;
            plist_dict_iter it = nullptr;
            plist_dict_new_iter(node, &it);
            for (;;) {
                char *key = nullptr;
                plist_t value = nullptr;
                plist_dict_next_item(node, it, &key, &value);
                if (!value) {
                    std::free(key);
                    break;
                }
                const QString k = QString::fromUtf8(key ? key : "");
                std::free(key);
                map.insert(k, read(value, depth + 1));
                if (!error.isEmpty())
                    break;
            }
            std::free(it);
            return map;
        }
        case PLIST_ARRAY: {
            QVariantList list;
            const uint32_t n = plist_array_get_size(node);
            list.reserve(int(std::min<uint32_t>(n, 1u << 20)));
            for (uint32_t i = 0; i < n && error.isEmpty(); ++i)
                list.append(read(plist_array_get_item(node, i), depth + 1));
            return list;
        }
        case PLIST_STRING:
        case PLIST_KEY: {
            char *s = nullptr;
            if (plist_get_node_type(node) == PLIST_KEY)
                plist_get_key_val(node, &s);
            else
                plist_get_string_val(node, &s);
            QString result = QString::fromUtf8(s ? s : "");
            std::free(s);
            return result;
        }
        case PLIST_BOOLEAN: {
            uint8_t b = 0;
            plist_get_bool_val(node, &b);
            return bool(b);
        }
        case PLIST_UINT: {
            uint64_t v = 0;
            plist_get_uint_val(node, &v);
            // libplist keeps every integer as 64 unsigned bits; negative numbers are stored in
            // two's complement, so the signed reading is the right one.
            return qint64(v);
        }
        case PLIST_REAL: {
            double d = 0;
            plist_get_real_val(node, &d);
            return d;
        }
        case PLIST_DATA: {
            char *data = nullptr;
            uint64_t length = 0;
            plist_get_data_val(node, &data, &length);
            QByteArray result(data ? data : "", data ? qsizetype(length) : 0);
            std::free(data);
            return result;
        }
        case PLIST_DATE: {
            int32_t sec = 0, usec = 0;
            plist_get_date_val(node, &sec, &usec);
            const qint64 ms = (qint64(sec) + kPlistEpochOffset) * 1000 + usec / 1000;
            return QDateTime::fromMSecsSinceEpoch(ms, QTimeZone::utc());
        }
        case PLIST_UID: {
            uint64_t v = 0;
            plist_get_uid_val(node, &v);
            return QVariant::fromValue(PlistUid{v});
        }
        default:
            error = QStringLiteral("an element of unknown type");
            return {};
        }
    }
};

class NodeWriter
{
public:
    QString error;

    plist_t write(const QVariant &value, int depth)
    {
        if (!error.isEmpty())
            return nullptr;
        if (depth > PropertyList::kMaxDepth) {
            error = QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth);
            return nullptr;
        }
        if (value.userType() == qMetaTypeId<PlistUid>())
            return plist_new_uid(value.value<PlistUid>().value);
        switch (value.typeId()) {
        case QMetaType::QVariantMap: {
            plist_t dict = plist_new_dict();
            const QVariantMap map = value.toMap();
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
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
        case QMetaType::QString:
            return plist_new_string(value.toString().toUtf8().constData());
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
            return plist_new_uint(value.toULongLong());
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

PropertyList::ReadResult PropertyList::fromBytes(const QByteArray &bytes, const QString &sourceName)
{
    ReadResult result;
    const QString where = sourceName.isEmpty() ? QStringLiteral("property list") : sourceName;
    if (bytes.isEmpty()) {
        result.error = QStringLiteral("%1: empty input, not a property list").arg(where);
        return result;
    }
    if (bytes.size() > kMaxInputBytes) {
        result.error = QStringLiteral("%1: too large (%2 bytes; at most %3 are read)")
                           .arg(where).arg(bytes.size()).arg(kMaxInputBytes);
        return result;
    }
    plist_t root = nullptr;
    if (looksBinary(bytes))
        plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    else
        plist_from_xml(bytes.constData(), uint32_t(bytes.size()), &root);
    PlistPtr owner(root);
    if (!root) {
        result.error = looksBinary(bytes)
            ? QStringLiteral("%1: malformed or truncated binary property list").arg(where)
            : QStringLiteral("%1: not a property list (neither binary nor well-formed XML)").arg(where);
        return result;
    }
    NodeReader reader;
    QVariant value = reader.read(root, 0);
    if (!reader.error.isEmpty()) {
        result.error = QStringLiteral("%1: %2").arg(where, reader.error);
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
    if (format == Format::Xml)
        plist_to_xml_free(out);
    else
        plist_to_bin_free(out);
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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = QStringLiteral("%1: cannot be written (%2)").arg(path, file.errorString());
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
