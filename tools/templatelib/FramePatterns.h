#pragma once

#include "SlotPattern.h"

#include <vector>

// A large centre bordered by small tiles: a ring all round, bands above and below, or bands
// left and right.
class FramePatterns
{
public:
    static std::vector<SlotPattern> make();
};
