#pragma once

#include "SlotPattern.h"

#include <vector>

// Columns of tiles, each column cut into its own number of tiles: even cuts, and staggered
// columns whose tiles sit half a tile lower than their neighbours'. Rows are the same
// patterns turned on their side.
class ColumnPatterns
{
public:
    // Slots in a column: divisible by every cut count used.
    static constexpr int kHeight = 12;
    static std::vector<SlotPattern> columns();
    static std::vector<SlotPattern> rows();
};
