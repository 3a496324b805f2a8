#pragma once

#include "SlotPattern.h"

#include <vector>

// Even grids: columns x rows tiles of one size. A grid one tile high or wide is a strip.
class GridPatterns
{
public:
    static constexpr int kMaxSide = 10;
    static std::vector<SlotPattern> make();
};
