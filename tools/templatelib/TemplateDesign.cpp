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
    QVariantList modules;
    modules.reserve(qsizetype(m_tiles.size()));
    for (size_t i = 0; i < m_tiles.size(); ++i) {
        TessaryData module = TessaryData::initDefault();
        const QUuid id = QUuid::createUuidV5(kModuleNamespace, QStringLiteral("%1/%2").arg(m_name).arg(i));
        module.setImageFilename(id.toString(QUuid::WithoutBraces).toUpper() + QStringLiteral(".png"));
        module.setWidthFactor(m_tiles[i].width());
        module.setHeightFactor(m_tiles[i].height());
        module.setTileAlpha(m_style.alpha);
        module.setTileBorderWidth(m_style.borderWidth);
        module.setTileCornerRadius(m_style.cornerRadius);
        module.setTileBorderColor(m_style.borderColor);
        modules.append(module.dictionaryRepresentation());
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
