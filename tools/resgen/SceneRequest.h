#pragma once

#include <QSize>
#include <QtGlobal>

// What a painter is asked for: the picture size, the seed that fixes every random choice, and
// which variant of its scene (palette, time of day) to paint.
struct SceneRequest
{
    QSize size;
    quint32 seed = 0;
    int variant = 0;
};
