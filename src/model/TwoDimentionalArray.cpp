#include "model/TwoDimentionalArray.h"

#include <stdexcept>

TwoDimentionalArray::TwoDimentionalArray(quint64 columns, quint64 rows)
    : m_rows(rows)
    , m_columns(columns)
{
    // A grid of absurd size (a template claiming billions of cells) must not take the process
    // down; it becomes an empty grid in which nothing fits.
    constexpr quint64 kMaxCells = quint64(1) << 26;
    if (columns != 0 && rows > kMaxCells / columns) {
        m_rows = 0;
        m_columns = 0;
        return;
    }
    m_objectArray.assign(size_t(columns * rows), nullptr);
}

quint64 TwoDimentionalArray::elementIndexWithColumn(quint64 column, quint64 row) const
{
    if (column >= m_columns || row >= m_rows)
        return kOutside;
    return m_columns * row + column;
}

TwoDimentionalArray::Object TwoDimentionalArray::objectAtColumn(quint64 column, quint64 row) const
{
    const quint64 index = elementIndexWithColumn(column, row);
    if (index == kOutside || index >= m_objectArray.size())
        return nullptr;
    return m_objectArray[size_t(index)];
}

void TwoDimentionalArray::setObject(Object object, quint64 column, quint64 row)
{
    const quint64 index = elementIndexWithColumn(column, row);
    if (index == kOutside || index >= m_objectArray.size())
        throw std::out_of_range("TwoDimentionalArray: cell outside the grid");
    m_objectArray[size_t(index)] = std::move(object);
}
