#include "model/LayoutEngine.h"

#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/TessaryViewDelegate.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace {

// Truncates a non-negative real to an unsigned count; NaN, negative and infinite values (a
// template with a zero module size, say) count as nothing rather than as garbage.
quint64 truncateToCount(double v)
{
    if (!(v >= 1.0) || !std::isfinite(v))
        return 0;
    if (v >= 9.0e18)
        return quint64(9.0e18);
    return quint64(v);
}

// A scale factor that can be applied: finite and not negative. A template of zero width gives
// none (the division has no value), and its sizes stay as they were.
bool usableScale(double s)
{
    return std::isfinite(s) && s >= 0.0;
}

// The rectangle inset by dx on the left and right and dy at the top and bottom; negative
// amounts grow it. When a side would become negative the rectangle collapses to zero along it,
// centred where it was, so an extreme spacing gives an empty tile and never a flipped one.
QRectF insetRect(const QRectF &r, double dx, double dy)
{
    QRectF out = r.normalized().adjusted(dx, dy, -dx, -dy);
    if (out.width() < 0)
        out = QRectF(r.normalized().center().x(), out.y(), 0, out.height());
    if (out.height() < 0)
        out = QRectF(out.x(), r.normalized().center().y(), out.width(), 0);
    return out;
}

bool isRotation(int transform)
{
    return transform == 3 || transform == 4;
}

} // namespace

LayoutEngine::LayoutEngine(QString defaultImage)
    : m_defaultImage(std::move(defaultImage))
{
}

QString LayoutEngine::defaultImagePathInFolder(const QString &resourcesFolder)
{
    return QDir(resourcesFolder).filePath(QStringLiteral("defaultImage.png"));
}

void LayoutEngine::setIncrements(double widthPercent, double heightPercent)
{
    m_widthIncrement = widthPercent;
    m_heightIncrement = heightPercent;
}

void LayoutEngine::setup(UserDefaults &defaults, const QSizeF &available)
{
    const Preferences prefs(defaults);
    setup(prefs.moduleSizeInPoints(), prefs.borderWidth(), double(prefs.contentSizeWidth()),
          double(prefs.contentSizeHeight()), available);
}

void LayoutEngine::setup(qint64 moduleSizeInPoints, qint64 borderWidth, double contentSizeWidth,
                         double contentSizeHeight, const QSizeF &available)
{
    m_moduleSizeInPoints = moduleSizeInPoints > 0 ? quint64(moduleSizeInPoints) : 0;
    m_borderWidth = borderWidth > 0 ? quint64(borderWidth) : 0;
    m_contentSizeWidth = std::isfinite(contentSizeWidth) ? contentSizeWidth : 0.0;
    m_contentSizeHeight = std::isfinite(contentSizeHeight) ? contentSizeHeight : 0.0;

    // The grid is the unscaled template's: how many whole cells fit across and down.
    const double unit = double(m_moduleSizeInPoints);
    m_maxElementsX = unit > 0 ? truncateToCount(m_contentSizeWidth / unit) : 0;
    m_maxElementsY = unit > 0 ? truncateToCount(m_contentSizeHeight / unit) : 0;

    // Fit to the available width, then, if still too tall, to the available height. The cell
    // size and border width are truncated after each step, so a cell can lose a point at each.
    const auto scaleBy = [this](double s) {
        if (!usableScale(s))
            return;
        m_contentSizeWidth *= s;
        m_contentSizeHeight *= s;
        m_moduleSizeInPoints = truncateToCount(s * double(m_moduleSizeInPoints));
        m_borderWidth = truncateToCount(s * double(m_borderWidth));
    };
    scaleBy(available.width() / m_contentSizeWidth);
    if (m_contentSizeHeight > available.height())
        scaleBy(available.height() / m_contentSizeHeight);
    m_contentSize = QSizeF(m_contentSizeWidth, m_contentSizeHeight);
}

CollageLayout LayoutEngine::reloadData(UserDefaults &defaults, const TessaryViewDelegate *delegate)
{
    loadTessaryDataModulesEmpty(defaults, true);
    const Preferences prefs(defaults);
    setIncrements(prefs.collageWidthIncrement(), prefs.collageHeightIncrement());
    return setupLayoutWithTessaryElements(m_tessaryDataModules, delegate);
}

void LayoutEngine::loadTessaryDataModulesEmpty(UserDefaults &defaults, bool empty)
{
    loadTessaryDataModules(Preferences(defaults).savedTessaryDataModules(), empty);
}

void LayoutEngine::loadTessaryDataModules(const QVariantList &moduleDictionaries, bool empty)
{
    m_tessaryDataModules.clear();
    m_tessaryDataModules.reserve(size_t(moduleDictionaries.size()));
    for (const QVariant &entry : moduleDictionaries) {
        // An entry that is not a dictionary reads like an empty one: a module of no size.
        auto module = std::make_shared<TessaryData>(TessaryData::initWithDictionary(entry.toMap()));
        if (empty)
            module->setEmpty(true);
        m_tessaryDataModules.push_back(std::move(module));
    }
}

void LayoutEngine::resetDataModules()
{
    for (const Module &m : m_tessaryDataModules)
        m->resetModule();
}

CollageLayout LayoutEngine::setupLayoutWithTessaryElements(const Modules &modules, const TessaryViewDelegate *delegate)
{
    CollageLayout layout;
    layout.moduleCount = qsizetype(modules.size());
    layout.coordinateTransform = m_coordinateTransform;
    layout.spacingType = m_spacingType;
    layout.imageFrameStyle = m_imageFrameStyle;
    layout.moduleSizeInPoints = m_moduleSizeInPoints;
    layout.borderWidth = m_borderWidth;
    layout.contentSizeWidth = m_contentSizeWidth;
    layout.contentSizeHeight = m_contentSizeHeight;
    layout.columns = m_maxElementsX;
    layout.rows = m_maxElementsY;

    // No modules: no tiles, and the collage keeps the size it had.
    if (modules.empty()) {
        layout.contentSize = m_contentSize;
        layout.extent = isRotation(m_coordinateTransform) ? m_contentSize.transposed() : m_contentSize;
        return layout;
    }

    const QStringList photos = delegate ? delegate->pickedPhotos() : QStringList();
    double maxX = 0.0;
    double maxY = 0.0;
    const bool gridUsable = m_maxElementsX != 0 && m_maxElementsY != 0
                            && m_maxElementsY <= kMaxGridCells / m_maxElementsX;
    if (!gridUsable) {
        // A template smaller than one cell (or absurdly fine) gives an empty collage.
        resetGrid(0, 0);
        for (qsizetype i = 0; i < qsizetype(modules.size()); ++i)
            layout.skippedModules.push_back(i);
    } else {
        resetGrid(m_maxElementsX, m_maxElementsY);
        layout.tiles.reserve(modules.size());
        for (qsizetype i = 0; i < qsizetype(modules.size()); ++i) {
            const Module &module = modules[size_t(i)];
            const std::optional<QPoint> coord = coordArrayForCGSize(module->widthFactor(), module->heightFactor());
            if (!coord) {
                // Fits nowhere: no tile, and photo i is not shown anywhere.
                layout.skippedModules.push_back(i);
                continue;
            }
            tessaryDataModules2DArraySetModule(module, module->widthFactor(), module->heightFactor(), coord->x(), coord->y());
            TileLayout tile = makeTile(module, i, *coord, photos, delegate);
            maxX = std::trunc(std::max(tile.cellFrame.x() + tile.cellFrame.width(), maxX));
            maxY = std::trunc(std::max(tile.cellFrame.y() + tile.cellFrame.height(), maxY));
            layout.tiles.push_back(std::move(tile));
        }
    }

    layout.extent = QSizeF(maxX, maxY);
    layout.contentSize = isRotation(m_coordinateTransform) ? QSizeF(maxY, maxX) : QSizeF(maxX, maxY);
    m_contentSize = layout.contentSize;
    return layout;
}

TileLayout LayoutEngine::makeTile(const Module &module, qsizetype index, const QPoint &cell, const QStringList &photos,
                                  const TessaryViewDelegate *delegate) const
{
    TileLayout tile;
    tile.tag = index;
    tile.module = module;
    tile.cell = cell;
    tile.imageAlignment = delegate ? delegate->alignmentIndexAtIndex(index) : 0;
    tile.framing = delegate ? delegate->framingAtIndex(index) : PhotoFraming();
    tile.selected = delegate && delegate->selectedItem() == index;

    // The grid rectangle: whole cells of the scaled module size.
    const double u = double(m_moduleSizeInPoints);
    tile.cellFrame = QRectF(u * cell.x(), u * cell.y(), double(module->widthFactor()) * u, double(module->heightFactor()) * u);
    const double w = tile.cellFrame.width();
    const double h = tile.cellFrame.height();

    // Spacing: a share of the tile's half-size given by the increments, inset for spacing type 0,
    // outset for any other. With the defaults (5 %) each side moves by 2.25 % of the tile's size.
    const double sign = m_spacingType == 0 ? 1.0 : -1.0;
    const double aw = w * 0.5 * 0.9;
    const double ah = h * 0.5 * 0.9;
    const double dx = sign * (aw * (m_widthIncrement / 100.0 - 1.0) + aw);
    const double dy = sign * (ah * (m_heightIncrement / 100.0 - 1.0) + ah);
    tile.frame = insetRect(tile.cellFrame, dx, dy);

    tile.imageSize = tile.frame.size();
    if (isRotation(m_coordinateTransform))
        tile.imageSize.transpose();

    if (index >= photos.size()) {
        tile.imagePath = m_defaultImage;
        tile.placeholder = true;
    } else {
        tile.imagePath = photos[index];
    }

    // Border and corner radius are fractions of half the grid rectangle's smaller side.
    const double half = std::min(w, h) * 0.5;
    tile.alpha = module->tileAlpha();
    tile.borderWidth = module->tileBorderWidth() > 0 ? half * module->tileBorderWidth() : 0.0;
    tile.cornerRadius = module->tileCornerRadius() * half;
    tile.borderColor = module->borderColorOrWhite();
    return tile;
}

std::optional<QPoint> LayoutEngine::coordArrayForCGSize(qint64 width, qint64 height) const
{
    if (m_maxElementsY == 0)
        return std::nullopt;
    // A module that covers cells can only start where it still ends inside the grid; the
    // coordinates beyond would fail the fit test's bounds check anyway, so skipping them gives
    // the same answer without scanning a large grid for a module that cannot fit.
    quint64 lastRow = m_maxElementsY;
    quint64 lastColumn = m_maxElementsX;
    if (width > 0 && height > 0) {
        if (quint64(width) > m_maxElementsX || quint64(height) > m_maxElementsY)
            return std::nullopt;
        lastRow = m_maxElementsY - quint64(height) + 1;
        lastColumn = m_maxElementsX - quint64(width) + 1;
    }
    quint64 firstRow = 0;
    quint64 firstColumn = 0;
    if (width > 0 && height > 0 && gridMatchesSize()) {
        const quint64 cells = m_maxElementsX * m_maxElementsY;
        if (quint64(width) * quint64(height) > cells - m_filledCells)
            return std::nullopt;
        firstRow = m_firstFree / m_maxElementsX;
        firstColumn = m_firstFree % m_maxElementsX;
    }
    for (quint64 r = firstRow; r < lastRow; ++r) {
        for (quint64 c = r == firstRow ? firstColumn : 0; c < lastColumn; ++c) {
            if (doesModuleWithCGSize(width, height, qint64(c), qint64(r)))
                return QPoint(int(c), int(r));
        }
    }
    return std::nullopt;
}

bool LayoutEngine::doesModuleWithCGSize(qint64 width, qint64 height, qint64 column, qint64 row) const
{
    if (height <= 0)
        return true;
    if (column < 0 || row < 0)
        return false;
    // Without width no row has a cell to test, however many rows the module claims; answer
    // at once rather than walk billions of empty rows of a hostile template.
    if (width <= 0)
        return true;
    for (qint64 j = 0; j < height; ++j) {
        for (qint64 k = 0; k < width; ++k) {
            const quint64 c = quint64(column) + quint64(k);
            const quint64 r = quint64(row) + quint64(j);
            if (c >= m_maxElementsX || r >= m_maxElementsY)
                return false;
            if (m_grid.objectAtColumn(c, r))
                return false;
        }
    }
    return true;
}

void LayoutEngine::tessaryDataModules2DArraySetModule(const Module &module, qint64 width, qint64 height, qint64 column, qint64 row)
{
    if (column < 0 || row < 0)
        return;
    // Only cells inside the grid are ever marked; after a passed fit test that is all of them.
    const qint64 rows = std::min<qint64>(height, qint64(m_grid.rows()) - row);
    const qint64 columns = std::min<qint64>(width, qint64(m_grid.columns()) - column);
    for (qint64 j = 0; j < rows; ++j) {
        for (qint64 k = 0; k < columns; ++k) {
            const quint64 c = quint64(column) + quint64(k);
            const quint64 r = quint64(row) + quint64(j);
            if (!m_grid.objectAtColumn(c, r))
                ++m_filledCells;
            m_grid.setObject(module, c, r);
        }
    }
    if (gridMatchesSize()) {
        const quint64 cells = m_maxElementsX * m_maxElementsY;
        while (m_firstFree < cells && m_grid.objectAtColumn(m_firstFree % m_maxElementsX, m_firstFree / m_maxElementsX))
            ++m_firstFree;
    }
}

void LayoutEngine::resetGrid(quint64 columns, quint64 rows)
{
    m_grid = columns && rows ? TwoDimentionalArray::initWithColumns(columns, rows) : TwoDimentionalArray();
    m_filledCells = 0;
    m_firstFree = 0;
}

bool LayoutEngine::frameSizeChanged(const QSizeF &frameSize)
{
    if (frameSize == m_frameSize)
        return false;
    m_frameSize = frameSize;
    return true;
}

CollageLayout LayoutEngine::layoutTemplate(const QVariantMap &t, const QSizeF &available, const TessaryViewDelegate *delegate)
{
    // The values are read as the defaults store reads them once a template is applied:
    // integers for the module size and border width, single-precision reals for the sizes.
    setup(PlistValue::integerValue(t.value(Preferences::ModuleSizeInPoints)),
          PlistValue::integerValue(t.value(Preferences::BorderWidth)),
          PlistValue::floatValue(t.value(Preferences::ContentSizeWidth)),
          PlistValue::floatValue(t.value(Preferences::ContentSizeHeight)), available);
    loadTessaryDataModules(t.value(Preferences::SavedTessaryDataModules).toList(), true);
    return setupLayoutWithTessaryElements(m_tessaryDataModules, delegate);
}
