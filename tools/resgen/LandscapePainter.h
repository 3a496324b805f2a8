#pragma once

#include "SceneRequest.h"

#include <QImage>

// Land scenes for the factory photos: rolling hills, mountain ranges (some over a lake),
// lavender rows, a misty forest and desert dunes.
class LandscapePainter
{
public:
    static QImage hills(const SceneRequest &request);
    static QImage mountains(const SceneRequest &request);
    static QImage lavender(const SceneRequest &request);
    static QImage forest(const SceneRequest &request);
    static QImage dunes(const SceneRequest &request);
};
