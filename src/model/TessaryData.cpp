#include "model/TessaryData.h"

#include "foundation/KeyedArchiveColor.h"
#include "foundation/PlistValue.h"

#include <QUuid>

namespace {

const QString kImageFilename = QStringLiteral("imageFilename");
const QString kWidthFactor = QStringLiteral("widthFactor");
const QString kHeightFactor = QStringLiteral("heightFactor");
const QString kTitle = QStringLiteral("title");
const QString kEmpty = QStringLiteral("empty");
const QString kAlpha = QStringLiteral("alpha");
const QString kBorderWidth = QStringLiteral("borderWidth");
const QString kCornerRadius = QStringLiteral("cornerRadius");
const QString kBorderColor = QStringLiteral("borderColor");

// The shared white every module without a readable border colour starts from.
TessaryData::ColorRef whiteColor()
{
    return std::make_shared<const QColor>(Qt::white);
}

QString stringOrNull(const QVariant &v)
{
    return v.typeId() == QMetaType::QString ? v.toString() : QString();
}

double floatOr(const QVariantMap &d, const QString &key, double fallback)
{
    const auto it = d.constFind(key);
    return it == d.cend() ? fallback : PlistValue::floatValue(*it);
}

} // namespace

TessaryData TessaryData::initWithDictionary(const QVariantMap &d)
{
    TessaryData m;
    m.m_imageFilename = stringOrNull(d.value(kImageFilename));
    m.m_widthFactor = PlistValue::integerValue(d.value(kWidthFactor));
    m.m_heightFactor = PlistValue::integerValue(d.value(kHeightFactor));
    m.m_title = stringOrNull(d.value(kTitle));
    m.m_empty = PlistValue::boolValue(d.value(kEmpty));
    m.m_tileAlpha = floatOr(d, kAlpha, 1.0);
    m.m_tileBorderWidth = floatOr(d, kBorderWidth, 0.0);
    m.m_tileCornerRadius = floatOr(d, kCornerRadius, 0.0);
    m.m_tileBorderColor = whiteColor();
    const QVariant archive = d.value(kBorderColor);
    if (archive.typeId() == QMetaType::QByteArray) {
        if (auto color = KeyedArchiveColor::decode(archive.toByteArray()))
            m.m_tileBorderColor = std::make_shared<const QColor>(*color);
    }
    return m;
}

TessaryData TessaryData::initWithModule(const TessaryData &module)
{
    return module; // field by field; QString and the colour pointer are shared, not duplicated
}

TessaryData TessaryData::initDefault()
{
    QVariantMap d;
    d.insert(kImageFilename, uid() + QStringLiteral(".png"));
    d.insert(kWidthFactor, qint64(2));
    d.insert(kHeightFactor, qint64(2));
    d.insert(kTitle, QString(QLatin1String("")));
    d.insert(kEmpty, false);
    d.insert(kAlpha, double(1.0f));
    d.insert(kBorderWidth, qint64(0));
    d.insert(kCornerRadius, qint64(0));
    d.insert(kBorderColor, KeyedArchiveColor::encode(Qt::white));
    return initWithDictionary(d);
}

QString TessaryData::uid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QVariantMap TessaryData::dictionaryRepresentation() const
{
    QVariantMap d;
    if (!m_imageFilename.isNull())
        d.insert(kImageFilename, m_imageFilename);
    d.insert(kWidthFactor, m_widthFactor);
    d.insert(kHeightFactor, m_heightFactor);
    if (!m_title.isNull())
        d.insert(kTitle, m_title);
    d.insert(kEmpty, m_empty);
    d.insert(kAlpha, m_tileAlpha);
    d.insert(kBorderWidth, m_tileBorderWidth);
    d.insert(kCornerRadius, m_tileCornerRadius);
    d.insert(kBorderColor, KeyedArchiveColor::encode(borderColorOrWhite()));
    return d;
}

void TessaryData::resetModule()
{
    m_widthFactor = 2;
    m_heightFactor = 2;
    m_tileAlpha = 1.0;
    m_tileBorderWidth = 0.0;
    m_tileCornerRadius = 0.0;
    m_tileBorderColor = whiteColor();
}

QString TessaryData::description() const
{
    return QStringLiteral("<TessaryData: %1x%2> %3").arg(m_widthFactor).arg(m_heightFactor).arg(m_title);
}
