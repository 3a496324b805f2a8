#pragma once

#include "model/TessaryData.h"

#include <QtGlobal>

#include <limits>
#include <memory>
#include <vector>

// A fixed grid of columns by rows cells, stored row after row. An empty cell holds nothing
// (a null pointer stands for the null placeholder) and reads as nullptr, as does any cell
// outside the grid.
class TwoDimentionalArray
{
public:
    using Object = std::shared_ptr<TessaryData>;
    // The index of every cell outside the grid: all 64 bits set.
    static constexpr quint64 kOutside = std::numeric_limits<quint64>::max();

    TwoDimentionalArray() = default;
    static TwoDimentionalArray initWithColumns(quint64 columns, quint64 rows) { return TwoDimentionalArray(columns, rows); }
    TwoDimentionalArray(quint64 columns, quint64 rows);

    quint64 columns() const { return m_columns; }
    quint64 rows() const { return m_rows; }
    const std::vector<Object> &objectArray() const { return m_objectArray; }

    // columns x row + column, or kOutside when either coordinate is outside the grid.
    quint64 elementIndexWithColumn(quint64 column, quint64 row) const;
    Object objectAtColumn(quint64 column, quint64 row) const;
    // Throws std::out_of_range for a cell outside the grid (or after removeAllObjects);
    // callers store only where a fit test has passed.
    void setObject(Object object, quint64 column, quint64 row);
    // Drops every cell but keeps the counts; reading afterwards reads nothing.
    void removeAllObjects() { m_objectArray.clear(); }

private:
    std::vector<Object> m_objectArray;
    quint64 m_rows = 0;
    quint64 m_columns = 0;
};
