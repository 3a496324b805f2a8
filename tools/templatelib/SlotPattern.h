#pragma once

#include <QRect>
#include <QSize>
#include <QString>

#include <optional>
#include <vector>

// An arrangement of tiles on a coarse grid of slots, before it is given a collage shape.
// Each block is a rectangle in slot units. Scaling every slot to the same number of cells
// turns the pattern into a layout of any proportions close enough to columns : rows.
class SlotPattern
{
public:
    SlotPattern() = default;
    SlotPattern(QString family, QString name, int columns, int rows, std::vector<QRect> blocks);

    const QString &family() const { return m_family; }
    const QString &name() const { return m_name; }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    const std::vector<QRect> &blocks() const { return m_blocks; }
    int blockCount() const { return int(m_blocks.size()); }

    // The same arrangement mirrored over the diagonal: columns become rows.
    SlotPattern transposed(const QString &family, const QString &name) const;
    // Mirrored left to right.
    SlotPattern mirrored(const QString &name) const;

    // The size of one slot in cells (at most maxSlotSide on each side) that gives the collage the
    // ratio width / height within tolerance, the smallest such size when several are equally
    // close; nothing when none comes close enough.
    std::optional<QSize> slotSizeFor(double ratio, double tolerance = 0.025, int maxSlotSide = 12) const;

    // Every block lies inside the slot grid, no two overlap and together they cover it.
    bool tilesExactly() const;

private:
    QString m_family;
    QString m_name;
    int m_columns = 0;
    int m_rows = 0;
    std::vector<QRect> m_blocks;
};
