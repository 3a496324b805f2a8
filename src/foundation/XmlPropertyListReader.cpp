#include "foundation/XmlPropertyListReader.h"

#include "foundation/PlistUid.h"
#include "foundation/PropertyList.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTimeZone>
#include <QXmlStreamReader>

#include <cmath>
#include <limits>

namespace {

class Parser
{
public:
    explicit Parser(const QByteArray &bytes) : m_xml(bytes) {}

    QVariant parseDocument(QString *error)
    {
        QVariant result;
        if (nextElement()) {
            if (m_xml.name() == QLatin1String("plist")) {
                if (nextElement())
                    result = parseValue(0); // <plist> is a wrapper, not a level of nesting
                else if (m_error.isEmpty())
                    fail(QStringLiteral("the <plist> element holds no value"));
                if (m_error.isEmpty() && nextElement())
                    fail(QStringLiteral("more than one value inside <plist>"));
            } else {
                result = parseValue(0);
            }
        } else if (m_error.isEmpty()) {
            fail(QStringLiteral("no property-list element"));
        }
        if (m_error.isEmpty()) {
            // The rest of the document must still be well-formed.
            while (!m_xml.atEnd()) {
                m_xml.readNext();
                if (m_xml.isStartElement()) {
                    fail(QStringLiteral("unexpected <%1> after the value").arg(m_xml.name()));
                    break;
                }
            }
            if (m_error.isEmpty() && m_xml.hasError())
                fail(m_xml.errorString());
        }
        if (!m_error.isEmpty()) {
            *error = m_error;
            return {};
        }
        return result;
    }

private:
    void fail(const QString &what)
    {
        if (m_error.isEmpty())
            m_error = QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(what);
    }

    // Moves to the next start element inside the current one; false at its end element.
    bool nextElement()
    {
        while (!m_xml.atEnd()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::StartElement:
                return true;
            case QXmlStreamReader::EndElement:
                return false;
            case QXmlStreamReader::Characters:
                if (!m_xml.isWhitespace()) {
                    fail(QStringLiteral("unexpected text \"%1\"").arg(m_xml.text().left(40)));
                    return false;
                }
                break;
            case QXmlStreamReader::Invalid:
                fail(m_xml.errorString());
                return false;
            default:
                break;
            }
        }
        if (m_xml.hasError())
            fail(m_xml.errorString());
        return false;
    }

    // The text of the current element up to its end. An entity reference the reader could not
    // resolve (one a document with a DOCTYPE may leave to its external DTD) is refused rather
    // than dropped from the text, as QXmlStreamReader::readElementText would.
    QString elementText()
    {
        QString text;
        while (!m_xml.atEnd()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::Characters:
                text += m_xml.text();
                break;
            case QXmlStreamReader::EndElement:
                return text;
            case QXmlStreamReader::EntityReference:
                fail(QStringLiteral("unknown entity &%1;").arg(m_xml.name().left(40)));
                return {};
            case QXmlStreamReader::StartElement:
                fail(QStringLiteral("<%1> inside a text element").arg(m_xml.name()));
                return {};
            case QXmlStreamReader::Invalid:
                fail(m_xml.errorString());
                return {};
            default: // comments, processing instructions
                break;
            }
        }
        fail(m_xml.hasError() ? m_xml.errorString() : QStringLiteral("the document ends inside an element"));
        return {};
    }

    QVariant parseValue(int depth)
    {
        if (!m_error.isEmpty())
            return {};
        if (depth > PropertyList::kMaxDepth) {
            fail(QStringLiteral("containers nested deeper than %1 levels").arg(PropertyList::kMaxDepth));
            return {};
        }
        const QStringView name = m_xml.name();
        if (name == QLatin1String("dict"))
            return parseDict(depth);
        if (name == QLatin1String("array")) {
            QVariantList list;
            while (m_error.isEmpty() && nextElement())
                list.append(parseValue(depth + 1));
            return list;
        }
        if (name == QLatin1String("string"))
            return elementText();
        if (name == QLatin1String("integer"))
            return parseInteger(elementText().trimmed());
        if (name == QLatin1String("real"))
            return parseReal(elementText().trimmed());
        if (name == QLatin1String("true") || name == QLatin1String("false")) {
            const bool value = name == QLatin1String("true");
            if (!elementText().isEmpty())
                fail(QStringLiteral("<%1/> holds text").arg(value ? QStringLiteral("true") : QStringLiteral("false")));
            return value;
        }
        if (name == QLatin1String("data")) {
            QByteArray encoded = elementText().toLatin1();
            encoded.replace(' ', QByteArray()).replace('\n', QByteArray()).replace('\t', QByteArray()).replace('\r', QByteArray());
            const auto decoded = QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded) {
                fail(QStringLiteral("<data> is not Base64"));
                return {};
            }
            return decoded.decoded;
        }
        if (name == QLatin1String("date")) {
            // ISO 8601 as property lists spell it, "2024-02-29T13:14:15Z", and its shorter and
            // zoned forms; a date without a zone is in UTC.
            static const QRegularExpression iso(QStringLiteral(
                "^\\d{4}-\\d{2}-\\d{2}(T\\d{2}:\\d{2}(:\\d{2}(\\.\\d+)?)?)?(Z|[+-]\\d{2}:\\d{2})?$"));
            const QString text = elementText().trimmed();
            QDateTime date = iso.match(text).hasMatch() ? QDateTime::fromString(text, Qt::ISODate) : QDateTime();
            if (!date.isValid()) {
                fail(QStringLiteral("<date> \"%1\" is not an ISO 8601 date").arg(text.left(40)));
                return {};
            }
            if (date.timeSpec() == Qt::LocalTime)
                date = QDateTime(date.date(), date.time(), QTimeZone::utc());
            return date.toUTC();
        }
        fail(QStringLiteral("unknown element <%1>").arg(name));
        return {};
    }

    QVariant parseDict(int depth)
    {
        QVariantMap map;
        while (m_error.isEmpty() && nextElement()) {
            if (m_xml.name() != QLatin1String("key")) {
                fail(QStringLiteral("<%1> where a <key> was expected").arg(m_xml.name()));
                return {};
            }
            const QString key = elementText();
            if (!m_error.isEmpty())
                return {};
            if (!nextElement()) {
                fail(QStringLiteral("the key \"%1\" has no value").arg(key.left(40)));
                return {};
            }
            map.insert(key, parseValue(depth + 1));
        }
        // Keyed archives in XML spell object references as {CF$UID: n}.
        if (map.size() == 1) {
            const QVariant uid = map.value(QStringLiteral("CF$UID"));
            if (uid.typeId() == QMetaType::LongLong && uid.toLongLong() >= 0)
                return QVariant::fromValue(PlistUid{quint64(uid.toLongLong())});
            if (uid.typeId() == QMetaType::ULongLong)
                return QVariant::fromValue(PlistUid{uid.toULongLong()});
        }
        return map;
    }

    // Whole numbers in the signed 64-bit range read as qint64; larger ones, up to 2^64 - 1, as
    // quint64, so that unsigned values survive a round trip.
    QVariant parseInteger(const QString &text)
    {
        bool ok = false;
        const bool negative = text.startsWith(QLatin1Char('-'));
        const QString digits = text.mid(negative || text.startsWith(QLatin1Char('+')) ? 1 : 0);
        const bool hex = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
        const quint64 magnitude = hex ? digits.mid(2).toULongLong(&ok, 16) : digits.toULongLong(&ok, 10);
        // QString::toULongLong tolerates a sign and surrounding space of its own.
        ok = ok && !digits.isEmpty() && digits.front().isDigit() && digits.back().isLetterOrNumber();
        if (ok && !negative && magnitude > quint64(std::numeric_limits<qint64>::max()))
            return magnitude;
        if (ok && negative && magnitude > quint64(std::numeric_limits<qint64>::max()) + 1)
            ok = false;
        if (!ok) {
            fail(QStringLiteral("<integer> \"%1\" is not a whole number in 64 bits").arg(text.left(40)));
            return {};
        }
        return negative ? qint64(0 - magnitude) : qint64(magnitude);
    }

    QVariant parseReal(const QString &text)
    {
        const QString lower = text.toLower();
        if (lower == QLatin1String("nan"))
            return std::numeric_limits<double>::quiet_NaN();
        if (lower == QLatin1String("inf") || lower == QLatin1String("+inf") || lower == QLatin1String("infinity") || lower == QLatin1String("+infinity"))
            return std::numeric_limits<double>::infinity();
        if (lower == QLatin1String("-inf") || lower == QLatin1String("-infinity"))
            return -std::numeric_limits<double>::infinity();
        bool ok = false;
        const double value = text.toDouble(&ok);
        if (!ok) {
            fail(QStringLiteral("<real> \"%1\" is not a number").arg(text.left(40)));
            return {};
        }
        return value;
    }

    QXmlStreamReader m_xml;
    QString m_error;
};

} // namespace

QVariant XmlPropertyListReader::read(const QByteArray &bytes, QString *error)
{
    Parser parser(bytes);
    return parser.parseDocument(error);
}
