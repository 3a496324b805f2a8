#pragma once

#include "blend/PhotoBlender.h"
#include "foundation/AlertPresenter.h"

// Whether a blend of the listed photos may start: with no photos it beeps; a square of fewer
// photos than the smallest square (2 x 2) is refused with an alert that says which counts make
// one. A longer list blends its largest square.
class BlendRefusal
{
public:
    enum class Kind { None, Beep, Alert };

    static BlendRefusal check(PhotoBlender::Arrangement arrangement, qsizetype photoCount);

    Kind kind = Kind::None;
    AlertPresenter::Alert alert; // when kind is Alert
};
