#include "PlistDiff.h"

#include "foundation/PlistUid.h"

#include <QDateTime>

#include <cstring>
#include <limits>

namespace {

QString describe(const QVariant &v)
{
    if (v.userType() == qMetaTypeId<PlistUid>())
        return QStringLiteral("uid %1").arg(v.value<PlistUid>().value);
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().toString(Qt::ISODateWithMs);
    if (v.typeId() == QMetaType::QByteArray)
        return QStringLiteral("<%1>").arg(QString::fromLatin1(v.toByteArray().left(16).toHex()));
    if (v.typeId() == QMetaType::Double)
        return QString::number(v.toDouble(), 'g', 17);
    return QStringLiteral("%1 %2").arg(QString::fromLatin1(v.typeName() ? v.typeName() : "invalid"), v.toString().left(60));
}

bool hasLoneSurrogate(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            return true;
    }
    return false;
}

bool within32BitSeconds(const QDateTime &date)
{
    const qint64 seconds = date.toSecsSinceEpoch() - 978307200;
    return seconds > std::numeric_limits<qint32>::min() && seconds < std::numeric_limits<qint32>::max();
}

QString withXmlLineEnds(QString text)
{
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

// The value with its text (not inside containers) and, for a dictionary, its keys so turned.
QVariant withXmlLineEnds(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString)
        return withXmlLineEnds(v.toString());
    if (v.typeId() != QMetaType::QVariantMap)
        return v;
    QVariantMap map;
    const QVariantMap original = v.toMap();
    for (auto it = original.cbegin(); it != original.cend(); ++it)
        map.insert(withXmlLineEnds(it.key()), it.value());
    return map;
}

class Comparer
{
public:
    explicit Comparer(const PlistDiff::Leniency &leniency) : m_leniency(leniency) {}

    QString compare(const QVariant &expected, const QVariant &a, const QString &path)
    {
        const QVariant e = m_leniency.xmlLineEnds ? withXmlLineEnds(expected) : expected;
        const auto differ = [&] {
            return QStringLiteral("%1: expected %2 but read %3").arg(path.isEmpty() ? QStringLiteral("/") : path, describe(e), describe(a));
        };
        const int et = e.userType();
        const int at = a.userType();
        const bool eInt = et == QMetaType::LongLong || et == QMetaType::ULongLong;
        const bool aInt = at == QMetaType::LongLong || at == QMetaType::ULongLong;
        if (eInt && aInt && m_leniency.integerBits)
            return e.toULongLong() == a.toULongLong() ? QString() : differ();
        if (m_leniency.uidAsDictionary && et == QMetaType::QVariantMap && at == qMetaTypeId<PlistUid>()) {
            const QVariantMap m = e.toMap();
            const QVariant n = m.value(QStringLiteral("CF$UID"));
            return m.size() == 1 && (n.typeId() == QMetaType::LongLong || n.typeId() == QMetaType::ULongLong)
                           && n.toULongLong() == a.value<PlistUid>().value
                       ? QString()
                       : differ();
        }
        if (m_leniency.undecodableText && et == QMetaType::QString && at == QMetaType::QString
            && (e.toString().contains(QChar::ReplacementCharacter) || hasLoneSurrogate(a.toString())
                || (a.toString().startsWith(QChar::ByteOrderMark) && a.toString().mid(1) == e.toString())))
            return {};
        if (et != at)
            return differ();
        if (et == qMetaTypeId<PlistUid>())
            return e.value<PlistUid>() == a.value<PlistUid>() ? QString() : differ();
        switch (et) {
        case QMetaType::QVariantList: {
            const QVariantList el = e.toList();
            const QVariantList al = a.toList();
            if (el.size() != al.size())
                return QStringLiteral("%1: expected %2 items but read %3").arg(path).arg(el.size()).arg(al.size());
            for (qsizetype i = 0; i < el.size(); ++i) {
                const QString d = compare(el[i], al[i], QStringLiteral("%1/%2").arg(path).arg(i));
                if (!d.isEmpty())
                    return d;
            }
            return {};
        }
        case QMetaType::QVariantMap: {
            const QVariantMap em = e.toMap();
            const QVariantMap am = a.toMap();
            const auto undecodable = [&](const QString &key) {
                return m_leniency.undecodableText
                       && (key.contains(QChar::ReplacementCharacter) || hasLoneSurrogate(key) || key.startsWith(QChar::ByteOrderMark));
            };
            if (em.keys() != am.keys()) {
                // A key libplist could not decode may come out as any text, even as another
                // key: such a dictionary is not compared.
                bool anyUndecodable = false;
                for (const QString &key : em.keys() + am.keys())
                    anyUndecodable = anyUndecodable || undecodable(key);
                if (anyUndecodable)
                    return {};
                return QStringLiteral("%1: expected keys [%2] but read [%3]").arg(path, em.keys().join(u','), am.keys().join(u','));
            }
            for (auto it = em.cbegin(); it != em.cend(); ++it) {
                const QString d = compare(it.value(), am.value(it.key()), QStringLiteral("%1/%2").arg(path, it.key()));
                if (!d.isEmpty())
                    return d;
            }
            return {};
        }
        case QMetaType::Double: {
            const double x = e.toDouble();
            const double y = a.toDouble();
            const bool same = std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y) || (m_leniency.signOfZero && x == 0 && y == 0);
            return same ? QString() : differ();
        }
        case QMetaType::QDateTime:
            if (m_leniency.narrowDates && !within32BitSeconds(a.toDateTime()))
                return {};
            return qAbs(e.toDateTime().toMSecsSinceEpoch() - a.toDateTime().toMSecsSinceEpoch()) <= m_leniency.dateSlackMs
                       ? QString()
                       : differ();
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            return e.toULongLong() == a.toULongLong() ? QString() : differ();
        default:
            return e == a ? QString() : differ();
        }
    }

private:
    const PlistDiff::Leniency &m_leniency;
};

} // namespace

QString PlistDiff::between(const QVariant &expected, const QVariant &actual, const Leniency &leniency)
{
    return Comparer(leniency).compare(expected, actual, QString());
}
