#pragma once

#include "CollageShape.h"
#include "SlotPattern.h"
#include "TileStyle.h"

#include <QByteArray>
#include <QRect>
#include <QString>
#include <QVariantMap>

#include <vector>

// One built-in template as designed: a grid of cells, the tiles as rectangles of cells, the
// size of a cell in points and the tiles' look.
//
// The layout engine places modules in order, each at the first free cell in reading order
// where it fits. For a set of tiles that covers the grid exactly, handing the modules over
// sorted by their top edge, then their left edge, puts every one of them exactly where it was
// drawn: the first free cell is always the top-left corner of the next tile in that order.
class TemplateDesign
{
public:
    TemplateDesign() = default;
    // The pattern scaled by the slot size (in cells) for the given shape.
    TemplateDesign(const SlotPattern &pattern, const CollageShape &shape, QSize slotSize);

    const QString &name() const { return m_name; }
    const QString &family() const { return m_family; }
    const QString &shape() const { return m_shape; }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    int moduleCount() const { return int(m_tiles.size()); }
    int moduleSizeInPoints() const { return m_moduleSize; }
    double contentWidth() const { return double(m_columns) * m_moduleSize; }
    double contentHeight() const { return double(m_rows) * m_moduleSize; }
    const TileStyle &style() const { return m_style; }
    // Where the thumbnail's palette starts, so that neighbouring templates differ in colour.
    int colourSeed() const;
    // A hash of the design's name that is the same in every run (Qt's string hashes are
    // seeded per process), so that choices made from it give the same files on every build.
    quint32 stableHash() const;
    void setStyle(const TileStyle &style) { m_style = style; }

    // The tiles in module order (top to bottom, then left to right), in cells.
    const std::vector<QRect> &tiles() const { return m_tiles; }
    // The smallest width / height ratio among the tiles and the largest.
    double narrowestTile() const;
    double widestTile() const;

    // The template dictionary the application reads, with the given thumbnail data.
    // Module image file names are derived from the design's name, so the output is the same
    // on every run.
    QVariantMap templateDictionary(const QByteArray &thumbnail) const;

    // The long side of a collage in points; the cell size is chosen to come close to it.
    static constexpr int kLongSidePoints = 960;

private:
    QString m_name;
    QString m_family;
    QString m_shape;
    int m_columns = 0;
    int m_rows = 0;
    int m_moduleSize = 0;
    std::vector<QRect> m_tiles;
    TileStyle m_style;
};
