#include "TemplateDesign.h"

#include "model/TessaryData.h"

#include <QUuid>
#include <QVariantList>

#include <algorithm>

namespace {

// Fixed namespace for the module file names, so that a rebuild writes the same files.
const QUuid kModuleNamespace(QStringLiteral("{6c1f3b0e-6a52-4f1e-9d8e-2b7a0c5d9e41}"));

} // namespace

TemplateDesign::TemplateDesign(const SlotPattern &pattern, const CollageShape &shape, QSize slotSize)
    : m_name(QStringLiteral("%1 %2 %3").arg(pattern.family(), pattern.name(), shape.name)),
      m_family(pattern.family()), m_shape(shape.name),
      m_columns(pattern.columns() * slotSize.width()), m_rows(pattern.rows() * slotSize.height())
{
    m_tiles.reserve(pattern.blocks().size());
    for (const QRect &b : pattern.blocks()) {
        m_tiles.emplace_back(b.x() * slotSize.width(), b.y() * slotSize.height(), b.width() * slotSize.width(),
                             b.height() * slotSize.height());
    }
    std::stable_sort(m_tiles.begin(), m_tiles.end(), [](const QRect &a, const QRect &b) {
        return a.y() != b.y() ? a.y() < b.y() : a.x() < b.x();
    });
    m_moduleSize = std::max(1, kLongSidePoints / std::max(1, std::max(m_columns, m_rows)));
}

quint32 TemplateDesign::stableHash() const
{
    // FNV-1a over the UTF-16 code units.
    quint32 h = 2166136261u;
    for (QChar c : m_name) {
        h ^= c.unicode();
        h *= 16777619u;
    }
    return h;
}

int TemplateDesign::colourSeed() const
{
    return int((stableHash() >> 8) % 1024u);
}

double TemplateDesign::narrowestTile() const
{
    double r = 0;
    for (const QRect &t : m_tiles) {
        const double a = double(t.width()) / double(t.height());
        r = (r == 0) ? a : std::min(r, a);
    }
    return r;
}

double TemplateDesign::widestTile() const
{
    double r = 0;
    for (const QRect &t : m_tiles)
        r = std::max(r, double(t.width()) / double(t.height()));
    return r;
}

QVariantMap TemplateDesign::templateDictionary(const QByteArray &thumbnail) const
{
    // Every module shares the template's look, so one module's dictionary form serves as the
    // prototype for all; each copy gets its own size and file name. This also spares encoding
    // the same border colour archive once per module.
    TessaryData prototype = TessaryData::initDefault();
    prototype.setTileAlpha(m_style.alpha);
    prototype.setTileBorderWidth(m_style.borderWidth);
    prototype.setTileCornerRadius(m_style.cornerRadius);
    prototype.setTileBorderColor(m_style.borderColor);
    const QVariantMap prototypeDictionary = prototype.dictionaryRepresentation();

    QVariantList modules;
    modules.reserve(qsizetype(m_tiles.size()));
    for (size_t i = 0; i < m_tiles.size(); ++i) {
        QVariantMap module = prototypeDictionary;
        const QUuid id = QUuid::createUuidV5(kModuleNamespace, QStringLiteral("%1/%2").arg(m_name).arg(i));
        module.insert(QStringLiteral("imageFilename"), id.toString(QUuid::WithoutBraces).toUpper() + QStringLiteral(".png"));
        module.insert(QStringLiteral("widthFactor"), qint64(m_tiles[i].width()));
        module.insert(QStringLiteral("heightFactor"), qint64(m_tiles[i].height()));
        modules.append(module);
    }
    QVariantMap t;
    t.insert(QStringLiteral("nbrModules"), qint64(m_tiles.size()));
    t.insert(QStringLiteral("savedTessaryDataModules"), modules);
    t.insert(QStringLiteral("contentSizeWidth"), contentWidth());
    t.insert(QStringLiteral("contentSizeHeight"), contentHeight());
    t.insert(QStringLiteral("moduleSizeInPoints"), qint64(m_moduleSize));
    t.insert(QStringLiteral("borderWidth"), qint64(m_style.collageBorderWidth));
    t.insert(QStringLiteral("thumbnail"), thumbnail);
    return t;
}
