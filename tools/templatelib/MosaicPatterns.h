#pragma once

#include "SlotPattern.h"

#include <vector>

// Mosaics of mixed spans: the slot grid filled in reading order, each free slot starting a
// block of a size drawn from a weighted set (singles, dominoes, squares, larger oblongs).
// The draws come from a seeded Mersenne Twister, whose sequence the C++ standard fixes, so
// every build makes the same mosaics.
class MosaicPatterns
{
public:
    static std::vector<SlotPattern> make();
};
