#include "model/TwoDimentionalArray.h"

#include <gtest/gtest.h>

namespace {

TEST(TwoDimentionalArray, IndexesRowByRowAndReadsNothingOutside)
{
    TwoDimentionalArray grid(4, 3);
    EXPECT_EQ(grid.objectArray().size(), 12u);
    struct Case {
        quint64 column, row, index;
    };
    for (const Case c : {Case{0, 0, 0}, Case{3, 0, 3}, Case{0, 1, 4}, Case{3, 2, 11}, Case{4, 0, TwoDimentionalArray::kOutside},
                         Case{0, 3, TwoDimentionalArray::kOutside}, Case{quint64(-1), 0, TwoDimentionalArray::kOutside}}) {
        EXPECT_EQ(grid.elementIndexWithColumn(c.column, c.row), c.index) << c.column << "," << c.row;
        EXPECT_EQ(grid.objectAtColumn(c.column, c.row), nullptr);
    }
}

TEST(TwoDimentionalArray, EmptyAndAbsurdGridsHoldNoCells)
{
    for (auto [c, r] : {std::pair<quint64, quint64>{0, 5}, {5, 0}, {quint64(1) << 40, quint64(1) << 40}}) {
        TwoDimentionalArray grid(c, r);
        EXPECT_TRUE(grid.objectArray().empty());
        EXPECT_EQ(grid.objectAtColumn(0, 0), nullptr);
    }
}

} // namespace
