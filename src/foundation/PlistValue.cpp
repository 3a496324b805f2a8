#include "foundation/PlistValue.h"

#include <cmath>
#include <limits>

bool PlistValue::isNumber(const QVariant &v)
{
    switch (v.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

double PlistValue::doubleValue(const QVariant &v)
{
    if (isNumber(v))
        return v.toDouble();
    if (v.typeId() == QMetaType::QString) {
        bool ok = false;
        const double d = v.toString().trimmed().toDouble(&ok);
        return ok ? d : 0.0;
    }
    return 0.0;
}

qint64 PlistValue::integerValue(const QVariant &v)
{
    switch (v.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return v.toLongLong();
    default:
        break;
    }
    const double d = doubleValue(v);
    if (!std::isfinite(d))
        return 0;
    if (d >= 9.2e18)
        return std::numeric_limits<qint64>::max();
    if (d <= -9.2e18)
        return std::numeric_limits<qint64>::min();
    return qint64(std::trunc(d));
}

bool PlistValue::boolValue(const QVariant &v)
{
    if (v.typeId() == QMetaType::QString) {
        const QString s = v.toString().trimmed().toLower();
        if (s == QLatin1String("yes") || s == QLatin1String("true"))
            return true;
        return integerValue(v) != 0;
    }
    if (isNumber(v))
        return v.toDouble() != 0.0;
    return false;
}
