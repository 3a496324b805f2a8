#include "LibplistTree.h"

#include "foundation/PlistUid.h"

#include <QDateTime>
#include <QTimeZone>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

// Milliseconds between the Unix epoch and the property-list epoch (2001-01-01T00:00:00Z).
constexpr qint64 kPlistEpochMs = 978307200000LL;

// libplist 2.2 keeps whether an integer is unsigned only inside its nodes; its XML writer shows
// it: an unsigned value above the signed range is written as such, a negative one with its sign.
QVariant integerValue(plist_t node)
{
    uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    if (bits <= uint64_t(std::numeric_limits<qint64>::max()))
        return qint64(bits);
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const bool negative = QByteArray(xml, length).contains("<integer>-");
    free(xml);
    return negative ? QVariant(qint64(bits)) : QVariant(quint64(bits));
}

plist_t unsignedNode(quint64 value)
{
    if (value <= quint64(std::numeric_limits<qint64>::max()))
        return plist_new_uint(value);
    // Only libplist's XML reader makes the unsigned 16-byte form of a value above 2^63.
    const QByteArray xml = "<plist version=\"1.0\"><integer>" + QByteArray::number(value) + "</integer></plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &node);
    return node;
}

} // namespace

QVariant LibplistTree::read(const QByteArray &bytes)
{
    plist_t root = nullptr;
    if (bytes.startsWith("bplist00"))
        plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    else
        plist_from_xml(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return {};
    QVariant value = toVariant(root);
    plist_free(root);
    return value;
}

QByteArray LibplistTree::write(const QVariant &value, PropertyList::Format format)
{
    plist_t root = fromVariant(value);
    char *out = nullptr;
    uint32_t length = 0;
    if (format == PropertyList::Format::Xml)
        plist_to_xml(root, &out, &length);
    else
        plist_to_bin(root, &out, &length);
    QByteArray bytes(out, qsizetype(length));
    free(out);
    plist_free(root);
    return bytes;
}

QVariant LibplistTree::toVariant(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t b = 0;
        plist_get_bool_val(node, &b);
        return bool(b);
    }
    case PLIST_UINT:
        return integerValue(node);
    case PLIST_REAL: {
        double d = 0;
        plist_get_real_val(node, &d);
        return d;
    }
    case PLIST_STRING:
    case PLIST_KEY: {
        char *s = nullptr;
        plist_get_string_val(node, &s);
        const QString text = QString::fromUtf8(s);
        free(s);
        return text;
    }
    case PLIST_DATA: {
        char *d = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &d, &length);
        const QByteArray bytes(d, qsizetype(length));
        free(d);
        return bytes;
    }
    case PLIST_DATE: {
        int32_t sec = 0;
        int32_t usec = 0;
        plist_get_date_val(node, &sec, &usec);
        // libplist 2.2's binary reader drops the sign of the fraction of a second of a date
        // before 2001 (it reads -1.5 seconds as -1 and +0.5).
        if (sec < 0 && usec > 0)
            usec = -usec;
        return QDateTime::fromMSecsSinceEpoch(kPlistEpochMs + qint64(sec) * 1000 + std::llround(usec / 1000.0), QTimeZone::utc());
    }
    case PLIST_UID: {
        uint64_t uid = 0;
        plist_get_uid_val(node, &uid);
        return QVariant::fromValue(PlistUid{uid});
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t n = plist_array_get_size(node);
        for (uint32_t i = 0; i < n; ++i)
            list.append(toVariant(plist_array_get_item(node, i)));
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char *key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, it, &key, &item);
            if (!item) {
                free(key);
                break;
            }
            map.insert(QString::fromUtf8(key), toVariant(item));
            free(key);
        }
        free(it);
        return map;
    }
    default:
        return {};
    }
}

plist_t LibplistTree::fromVariant(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<PlistUid>())
        return plist_new_uid(value.value<PlistUid>().value);
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), fromVariant(it.value()));
        return dict;
    }
    case QMetaType::QVariantList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(array, fromVariant(item));
        return array;
    }
    case QMetaType::QString:
        return plist_new_string(value.toString().toUtf8().constData());
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::LongLong:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::ULongLong:
        return unsignedNode(value.toULongLong());
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), uint64_t(bytes.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 ms = value.toDateTime().toMSecsSinceEpoch() - kPlistEpochMs;
        const qint64 sec = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
        return plist_new_date(int32_t(sec), int32_t((ms - sec * 1000) * 1000));
    }
    default:
        return nullptr;
    }
}
