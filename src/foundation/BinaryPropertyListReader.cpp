#include "foundation/BinaryPropertyListReader.h"

#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <QDateTime>
#include <QHash>
#include <QStringDecoder>
#include <QTimeZone>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr qint64 kTrailerSize = 32;
constexpr qint64 kPlistEpochMs = 978307200000LL;

class Parser
{
public:
    explicit Parser(const QByteArray &bytes)
        : m_data(reinterpret_cast<const uchar *>(bytes.constData()))
        , m_size(bytes.size())
    {
    }

    QVariant parse(QString *error)
    {
        QVariant result = parseTrailerAndRoot();
        if (!m_error.isEmpty()) {
            *error = m_error;
            return {};
        }
        return result;
    }

private:
    QVariant fail(const QString &what)
    {
        if (m_error.isEmpty())
            m_error = what;
        return {};
    }

    // Big-endian unsigned integer of `width` bytes at offset; the caller checked the bounds.
    // Offsets and references may be stored wider than 8 bytes; one that does not fit in 64 bits
    // reads as the largest value, which names no object.
    quint64 readUInt(qint64 offset, int width) const
    {
        quint64 v = 0;
        for (int i = 0; i < width; ++i) {
            if (i < width - 8 && m_data[offset + i] != 0)
                return ~quint64(0);
            v = (v << 8) | m_data[offset + i];
        }
        return v;
    }

    bool inBounds(qint64 offset, qint64 length) const
    {
        return offset >= 0 && length >= 0 && offset <= m_size && length <= m_size - offset;
    }

    QVariant parseTrailerAndRoot()
    {
        if (m_size < 8 + kTrailerSize || std::memcmp(m_data, "bplist00", 8) != 0)
            return fail(QStringLiteral("truncated binary property list"));
        const qint64 t = m_size - kTrailerSize;
        m_offsetSize = m_data[t + 6];
        m_refSize = m_data[t + 7];
        const quint64 objectCount = readUInt(t + 8, 8);
        const quint64 top = readUInt(t + 16, 8);
        const quint64 tableOffset = readUInt(t + 24, 8);
        if (m_offsetSize < 1 || m_refSize < 1)
            return fail(QStringLiteral("malformed binary property list (bad integer sizes in the trailer)"));
        if (objectCount == 0 || top >= objectCount || tableOffset < 8 || tableOffset > quint64(t)
            || objectCount > (quint64(t) - tableOffset) / quint64(m_offsetSize))
            return fail(QStringLiteral("malformed binary property list (the object table lies outside the file)"));
        m_objectCount = qint64(objectCount);
        m_tableOffset = qint64(tableOffset);
        return object(qint64(top), 0);
    }

    qint64 objectOffset(qint64 index)
    {
        const quint64 offset = readUInt(m_tableOffset + index * m_offsetSize, m_offsetSize);
        if (offset < 8 || offset >= quint64(m_tableOffset)) {
            fail(QStringLiteral("malformed binary property list (object %1 lies outside the object area)").arg(index));
            return -1;
        }
        return qint64(offset);
    }

    // The length that follows a marker: the low nibble, or an integer object when it is 0xF.
    bool length(qint64 &pos, int nibble, qint64 &out)
    {
        if (nibble != 0xF) {
            out = nibble;
            return true;
        }
        if (!inBounds(pos, 1) || (m_data[pos] & 0xF0) != 0x10) {
            fail(QStringLiteral("malformed binary property list (bad length at offset %1)").arg(pos));
            return false;
        }
        const int width = 1 << (m_data[pos] & 0x0F);
        if (width > 8 || !inBounds(pos + 1, width)) {
            fail(QStringLiteral("malformed binary property list (bad length at offset %1)").arg(pos));
            return false;
        }
        const quint64 v = readUInt(pos + 1, width);
        pos += 1 + width;
        if (v > quint64(m_size)) {
            fail(QStringLiteral("malformed binary property list (a length larger than the file)"));
            return false;
        }
        out = qint64(v);
        return true;
    }

    struct Parsed {
        QVariant value;
        qint64 weight = 0; // values in the expanded subtree, itself included
        int height = 0;    // container levels below it
        bool inProgress = true;
    };

    // Whether the expanded tree may grow by this many values; refuses the input if not.
    bool mayExpand(qint64 values)
    {
        if (values <= BinaryPropertyListReader::kMaxExpandedValues - m_expanded)
            return true;
        fail(QStringLiteral("binary property list expands into more than %1 values").arg(BinaryPropertyListReader::kMaxExpandedValues));
        return false;
    }

    bool addExpanded(qint64 values)
    {
        if (!mayExpand(values))
            return false;
        m_expanded += values;
        return true;
    }

    // Parses object `index` found `depth` containers down; afterwards m_height holds the number
    // of container levels below it.
    QVariant object(qint64 index, int depth)
    {
        m_height = 0;
        if (!m_error.isEmpty())
            return {};
        if (index < 0 || index >= m_objectCount)
            return fail(QStringLiteral("malformed binary property list (reference to object %1 of %2)").arg(index).arg(m_objectCount));
        if (depth > PropertyList::kMaxDepth)
            return fail(QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth));
        // Writers store a repeated value once and refer to it from every place it occurs. Each
        // object is parsed once and its value reused (QVariant copies share their data); the
        // limits apply to the tree as expanded: its number of values and its depth.
        const auto seen = m_parsed.constFind(index);
        if (seen != m_parsed.cend()) {
            if (seen->inProgress)
                return fail(QStringLiteral("malformed binary property list (object %1 contains itself)").arg(index));
            if (depth + seen->height > PropertyList::kMaxDepth)
                return fail(QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth));
            if (!addExpanded(seen->weight))
                return {};
            m_height = seen->height;
            return seen->value;
        }
        m_parsed.insert(index, Parsed{});
        const qint64 before = m_expanded;
        QVariant value = parseObject(index, depth);
        if (!m_error.isEmpty() || !addExpanded(1))
            return {};
        m_parsed.insert(index, Parsed{value, m_expanded - before, m_height, false});
        return value;
    }

    // Parses the referenced child objects of a container; false once the input was refused.
    template<typename Visit>
    bool children(qint64 pos, qint64 count, int depth, Visit visit)
    {
        int height = 0;
        for (qint64 i = 0; i < count; ++i) {
            QVariant child = object(qint64(readUInt(pos + i * m_refSize, m_refSize)), depth + 1);
            if (!m_error.isEmpty())
                return false;
            height = std::max(height, m_height + 1);
            if (!visit(i, std::move(child)))
                return false;
        }
        m_height = height;
        return true;
    }

    QVariant parseObject(qint64 index, int depth)
    {
        qint64 pos = objectOffset(index);
        if (pos < 0)
            return {};
        const uchar marker = m_data[pos++];
        const int type = marker >> 4;
        const int nibble = marker & 0x0F;
        switch (type) {
        case 0x0:
            if (marker == 0x08)
                return false;
            if (marker == 0x09)
                return true;
            return fail(QStringLiteral("binary property list holds a null or fill value, which has no place in a property list"));
        case 0x1: {
            const int width = 1 << nibble;
            if (width > 16 || !inBounds(pos, width))
                return fail(QStringLiteral("malformed binary property list (bad integer at offset %1)").arg(pos - 1));
            if (width < 16)
                return qint64(readUInt(pos, width)); // 8 bytes are signed, fewer unsigned
            // 16 bytes hold a 128-bit signed value; writers use them for unsigned values above
            // the signed 64-bit range, which read back as unsigned.
            const quint64 high = readUInt(pos, 8);
            const quint64 low = readUInt(pos + 8, 8);
            if (high == 0)
                return low > quint64(std::numeric_limits<qint64>::max()) ? QVariant(low) : QVariant(qint64(low));
            if (high == ~quint64(0) && low > quint64(std::numeric_limits<qint64>::max()))
                return qint64(low);
            return fail(QStringLiteral("binary property list holds an integer wider than 64 bits"));
        }
        case 0x2: {
            if (nibble == 2 && inBounds(pos, 4)) {
                const quint32 bits = quint32(readUInt(pos, 4));
                float f;
                std::memcpy(&f, &bits, 4);
                return double(f);
            }
            if (nibble == 3 && inBounds(pos, 8)) {
                const quint64 bits = readUInt(pos, 8);
                double d;
                std::memcpy(&d, &bits, 8);
                return d;
            }
            return fail(QStringLiteral("malformed binary property list (bad real at offset %1)").arg(pos - 1));
        }
        case 0x3: {
            if (marker != 0x33 || !inBounds(pos, 8))
                return fail(QStringLiteral("malformed binary property list (bad date at offset %1)").arg(pos - 1));
            const quint64 bits = readUInt(pos, 8);
            double seconds;
            std::memcpy(&seconds, &bits, 8);
            if (!(seconds > -1e11 && seconds < 1e11))
                return fail(QStringLiteral("binary property list holds a date out of range"));
            // Rounded: a date written to the millisecond is rarely exact as a double.
            return QDateTime::fromMSecsSinceEpoch(kPlistEpochMs + std::llround(seconds * 1000.0), QTimeZone::utc());
        }
        case 0x4:
        case 0x5:
        case 0x6: {
            qint64 count = 0;
            if (!length(pos, nibble, count))
                return {};
            const qint64 bytes = type == 0x6 ? count * 2 : count;
            if (count > m_size || !inBounds(pos, bytes))
                return fail(QStringLiteral("malformed binary property list (text or data runs past the end)"));
            const char *start = reinterpret_cast<const char *>(m_data + pos);
            if (type == 0x4)
                return QByteArray(start, qsizetype(bytes));
            if (type == 0x5)
                return asciiText(start, qsizetype(bytes));
            QString text(qsizetype(count), Qt::Uninitialized);
            for (qint64 i = 0; i < count; ++i)
                text[qsizetype(i)] = QChar(char16_t(readUInt(pos + 2 * i, 2)));
            return text;
        }
        case 0x8: {
            const int width = nibble + 1;
            if (width > 8)
                return fail(QStringLiteral("malformed binary property list (a keyed-archive reference wider than 8 bytes at offset %1)").arg(pos - 1));
            if (!inBounds(pos, width))
                return fail(QStringLiteral("malformed binary property list (bad reference at offset %1)").arg(pos - 1));
            return QVariant::fromValue(PlistUid{readUInt(pos, width)});
        }
        case 0xA:
        case 0xC: { // a set reads as an array, as libplist reads it
            qint64 count = 0;
            if (!length(pos, nibble, count))
                return {};
            // A container's size is bounded by the bytes of its references, not by the number
            // of objects: many references may name the same object.
            if (!inBounds(pos, count * m_refSize))
                return fail(QStringLiteral("malformed binary property list (array runs past the end)"));
            // Every element adds at least one value to the expanded tree.
            if (!mayExpand(count))
                return {};
            QVariantList list;
            list.reserve(qsizetype(count));
            if (!children(pos, count, depth, [&](qint64, QVariant &&item) {
                    list.append(std::move(item));
                    return true;
                }))
                return {};
            return list;
        }
        case 0xD: {
            qint64 count = 0;
            if (!length(pos, nibble, count))
                return {};
            if (!inBounds(pos, 2 * count * m_refSize))
                return fail(QStringLiteral("malformed binary property list (dictionary runs past the end)"));
            if (!mayExpand(2 * count))
                return {};
            // Keys first, then the values; every key must be text.
            QStringList keys;
            keys.reserve(qsizetype(count));
            if (!children(pos, count, depth, [&](qint64, QVariant &&key) {
                    if (key.typeId() != QMetaType::QString) {
                        fail(QStringLiteral("malformed binary property list (a dictionary key is not text)"));
                        return false;
                    }
                    keys.append(key.toString());
                    return true;
                }))
                return {};
            QVariantMap map;
            if (!children(pos + count * m_refSize, count, depth, [&](qint64 i, QVariant &&value) {
                    map.insert(keys[qsizetype(i)], std::move(value));
                    return true;
                }))
                return {};
            return map;
        }
        default:
            return fail(QStringLiteral("malformed binary property list (unknown object type 0x%1 at offset %2)")
                            .arg(marker, 2, 16, QLatin1Char('0')).arg(pos - 1));
        }
    }

    // Text marked ASCII should hold only ASCII. Some writers put UTF-8 there (and libplist
    // reads it so); any other byte above 0x7F reads as Latin-1.
    static QString asciiText(const char *start, qsizetype size)
    {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        QString text = utf8(QByteArrayView(start, size));
        return utf8.hasError() ? QString::fromLatin1(start, size) : text;
    }

    const uchar *m_data;
    qint64 m_size;
    int m_offsetSize = 0;
    int m_refSize = 0;
    qint64 m_objectCount = 0;
    qint64 m_tableOffset = 0;
    qint64 m_expanded = 0;
    int m_height = 0;
    QHash<qint64, Parsed> m_parsed;
    QString m_error;
};

} // namespace

QVariant BinaryPropertyListReader::read(const QByteArray &bytes, QString *error)
{
    Parser parser(bytes);
    return parser.parse(error);
}
