#pragma once

#include "SceneRequest.h"

#include <QImage>

// The sample photos: one flower each, of nine kinds (daisy, sunflower, poppy, cosmos, aster,
// rose, tulip, water lily, a cluster of small blue flowers), on a stem with leaves in front of
// a soft, out-of-focus background.
class FlowerPainter
{
public:
    static constexpr int kinds = 9;
    static QImage paint(const SceneRequest &request);   // the variant picks the kind
};
