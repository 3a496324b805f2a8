#include "images/PhotoAdjustments.h"

bool PhotoAdjustments::isNeutral() const
{
    return *this == PhotoAdjustments{};
}

QImage PhotoAdjustments::applyTo(const QImage &image) const
{
    // Not built yet: every adjustment leaves the picture as it is.
    return image;
}
