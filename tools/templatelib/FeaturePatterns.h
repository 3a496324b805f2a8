#pragma once

#include "SlotPattern.h"

#include <vector>

// One large tile among small ones: a grid of single slots in which one block of several slots
// takes a corner, the middle of a side or the centre. Also two large tiles in opposite corners.
class FeaturePatterns
{
public:
    static std::vector<SlotPattern> make();
};
