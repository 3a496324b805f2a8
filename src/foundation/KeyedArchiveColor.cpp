#include "foundation/KeyedArchiveColor.h"

#include "foundation/PlistUid.h"
#include "foundation/PlistValue.h"
#include "foundation/PropertyList.h"

#include <QList>
#include <QSet>
#include <QVariantList>
#include <QVariantMap>

#include <algorithm>
#include <cmath>

namespace {

// Named colours point at their fallback colour; a crafted archive can make that a loop.
constexpr int kMaxReferenceDepth = 8;

// Parses the space-separated component text of "NSRGB", "NSWhite", "NSCMYK" and "NSComponents";
// the platform writes it with a trailing NUL. Every token must be a finite number.
std::optional<QList<double>> components(const QVariant &value)
{
    if (value.typeId() != QMetaType::QByteArray && value.typeId() != QMetaType::QString)
        return std::nullopt;
    QByteArray text = value.typeId() == QMetaType::QByteArray ? value.toByteArray() : value.toString().toUtf8();
    const int nul = text.indexOf('\0');
    if (nul >= 0)
        text.truncate(nul);
    const QList<QByteArray> tokens = text.simplified().split(' ');
    QList<double> result;
    for (const QByteArray &token : tokens) {
        if (token.isEmpty())
            continue;
        bool ok = false;
        const double d = token.toDouble(&ok);
        if (!ok || !std::isfinite(d))
            return std::nullopt;
        result.append(std::clamp(d, 0.0, 1.0));
    }
    if (result.isEmpty())
        return std::nullopt;
    return result;
}

std::optional<QColor> rgb(const QList<double> &c)
{
    if (c.size() < 3)
        return std::nullopt;
    return QColor::fromRgbF(float(c[0]), float(c[1]), float(c[2]), float(c.size() > 3 ? c[3] : 1.0));
}

std::optional<QColor> white(const QList<double> &c)
{
    return QColor::fromRgbF(float(c[0]), float(c[0]), float(c[0]), float(c.size() > 1 ? c[1] : 1.0));
}

std::optional<QColor> cmyk(const QList<double> &c)
{
    if (c.size() < 4)
        return std::nullopt;
    return QColor::fromCmykF(float(c[0]), float(c[1]), float(c[2]), float(c[3]), float(c.size() > 4 ? c[4] : 1.0));
}

double unit(const QVariant &v, double fallback)
{
    if (!v.isValid() || !PlistValue::isNumber(v))
        return fallback;
    const double d = PlistValue::doubleValue(v);
    return std::isfinite(d) ? std::clamp(d, 0.0, 1.0) : fallback;
}

class ArchiveReader
{
public:
    explicit ArchiveReader(const QVariantList &objects) : m_objects(objects) {}

    std::optional<QColor> colorAt(const QVariant &reference, int depth)
    {
        if (depth > kMaxReferenceDepth || reference.userType() != qMetaTypeId<PlistUid>())
            return std::nullopt;
        const quint64 index = reference.value<PlistUid>().value;
        if (index >= quint64(m_objects.size()) || m_visited.contains(index))
            return std::nullopt;
        m_visited.insert(index);
        const QVariant object = m_objects.at(qsizetype(index));
        if (object.typeId() != QMetaType::QVariantMap)
            return std::nullopt;
        return color(object.toMap(), depth);
    }

private:
    std::optional<QColor> color(const QVariantMap &o, int depth)
    {
        // Phone colours carry their components as numbers.
        if (o.contains(QStringLiteral("UIRed")) || o.contains(QStringLiteral("UIGreen")) || o.contains(QStringLiteral("UIBlue"))) {
            const QVariant r = o.value(QStringLiteral("UIRed")), g = o.value(QStringLiteral("UIGreen")), b = o.value(QStringLiteral("UIBlue"));
            if (!PlistValue::isNumber(r) || !PlistValue::isNumber(g) || !PlistValue::isNumber(b))
                return std::nullopt;
            return QColor::fromRgbF(float(unit(r, 0)), float(unit(g, 0)), float(unit(b, 0)),
                                    float(unit(o.value(QStringLiteral("UIAlpha")), 1.0)));
        }
        if (o.contains(QStringLiteral("UIWhite"))) {
            const QVariant w = o.value(QStringLiteral("UIWhite"));
            if (!PlistValue::isNumber(w))
                return std::nullopt;
            const float level = float(unit(w, 0));
            return QColor::fromRgbF(level, level, level, float(unit(o.value(QStringLiteral("UIAlpha")), 1.0)));
        }

        const qint64 space = PlistValue::integerValue(o.value(QStringLiteral("NSColorSpace")));
        switch (space) {
        case 1: // calibrated RGB
        case 2: // device RGB
            if (auto c = components(o.value(QStringLiteral("NSRGB"))))
                return rgb(*c);
            break;
        case 3: // calibrated white
        case 4: // device white
            if (auto c = components(o.value(QStringLiteral("NSWhite"))))
                return white(*c);
            break;
        case 5: // device CMYK
            if (auto c = components(o.value(QStringLiteral("NSCMYK"))))
                return cmyk(*c);
            break;
        case 6: // a catalogue colour: use the colour it falls back to
            if (o.contains(QStringLiteral("NSColor")))
                return colorAt(o.value(QStringLiteral("NSColor")), depth + 1);
            break;
        default:
            break;
        }
        // Colours in a custom colour space give their components in "NSComponents"; any of the
        // component texts is better than nothing when the space number is missing or odd.
        if (auto c = components(o.value(QStringLiteral("NSComponents")))) {
            if (c->size() >= 3)
                return rgb(*c);
            return white(*c);
        }
        if (auto c = components(o.value(QStringLiteral("NSRGB"))))
            return rgb(*c);
        if (auto c = components(o.value(QStringLiteral("NSWhite"))))
            return white(*c);
        if (o.contains(QStringLiteral("NSColor")))
            return colorAt(o.value(QStringLiteral("NSColor")), depth + 1);
        return std::nullopt;
    }

    const QVariantList &m_objects;
    QSet<quint64> m_visited;
};

QByteArray componentText(const QList<double> &values)
{
    QByteArray text;
    for (double v : values) {
        if (!text.isEmpty())
            text += ' ';
        text += QByteArray::number(v, 'g', 10);
    }
    text += '\0';
    return text;
}

} // namespace

std::optional<QColor> KeyedArchiveColor::decode(const QByteArray &archive)
{
    if (archive.isEmpty())
        return std::nullopt;
    const PropertyList::ReadResult read = PropertyList::fromBytes(archive, QStringLiteral("colour archive"));
    if (!read.ok() || read.value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap root = read.value.toMap();
    const QVariant objects = root.value(QStringLiteral("$objects"));
    const QVariant top = root.value(QStringLiteral("$top"));
    if (objects.typeId() != QMetaType::QVariantList || top.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap topMap = top.toMap();
    QVariant rootRef = topMap.value(QStringLiteral("root"));
    if (!rootRef.isValid() && !topMap.isEmpty())
        rootRef = topMap.first();
    const QVariantList objectList = objects.toList();
    ArchiveReader reader(objectList);
    return reader.colorAt(rootRef, 0);
}

QByteArray KeyedArchiveColor::encode(const QColor &color)
{
    const QColor c = color.toRgb();
    QList<double> values{c.redF(), c.greenF(), c.blueF()};
    if (c.alphaF() < 1.0f)
        values.append(c.alphaF());

    QVariantMap colorObject;
    colorObject.insert(QStringLiteral("NSColorSpace"), qint64(1));
    colorObject.insert(QStringLiteral("NSRGB"), componentText(values));
    // The phone reader looks for these; the desktop reader ignores them.
    colorObject.insert(QStringLiteral("UIColorComponentCount"), qint64(4));
    colorObject.insert(QStringLiteral("UIRed"), double(c.redF()));
    colorObject.insert(QStringLiteral("UIGreen"), double(c.greenF()));
    colorObject.insert(QStringLiteral("UIBlue"), double(c.blueF()));
    colorObject.insert(QStringLiteral("UIAlpha"), double(c.alphaF()));
    colorObject.insert(QStringLiteral("$class"), QVariant::fromValue(PlistUid{2}));

    QVariantMap classObject;
    classObject.insert(QStringLiteral("$classname"), QStringLiteral("NSColor"));
    classObject.insert(QStringLiteral("$classes"), QVariantList{QStringLiteral("NSColor"), QStringLiteral("NSObject")});

    QVariantMap top;
    top.insert(QStringLiteral("root"), QVariant::fromValue(PlistUid{1}));

    QVariantMap archive;
    archive.insert(QStringLiteral("$version"), qint64(100000));
    archive.insert(QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver"));
    archive.insert(QStringLiteral("$top"), top);
    archive.insert(QStringLiteral("$objects"), QVariantList{QStringLiteral("$null"), colorObject, classObject});
    return PropertyList::toBinary(archive);
}
