#include "foundation/PlainColorArchive.h"

#include <QList>

#include <cmath>

QByteArray PlainColorArchive::encode(const QColor &color)
{
    const QColor c = color.toRgb();
    return QByteArrayLiteral("RGBA ") + QByteArray::number(c.redF(), 'g', 9) + ' ' + QByteArray::number(c.greenF(), 'g', 9)
         + ' ' + QByteArray::number(c.blueF(), 'g', 9) + ' ' + QByteArray::number(c.alphaF(), 'g', 9);
}

std::optional<QColor> PlainColorArchive::decode(const QByteArray &data)
{
    const QList<QByteArray> parts = data.simplified().split(' ');
    if (parts.size() != 5 || parts[0] != "RGBA")
        return std::nullopt;
    float v[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        const double d = parts[i + 1].toDouble(&ok);
        if (!ok || !std::isfinite(d))
            return std::nullopt;
        v[i] = float(std::clamp(d, 0.0, 1.0));
    }
    return QColor::fromRgbF(v[0], v[1], v[2], v[3]);
}
