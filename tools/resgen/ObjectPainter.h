#pragma once

#include "SceneRequest.h"

#include <QImage>

// Scenes built around things for the factory photos: fruit on a table, hot-air and party
// balloons, glowing lanterns, and out-of-focus city lights.
class ObjectPainter
{
public:
    static QImage fruit(const SceneRequest &request);
    static QImage hotAirBalloons(const SceneRequest &request);
    static QImage partyBalloons(const SceneRequest &request);
    static QImage lanterns(const SceneRequest &request);
    static QImage bokeh(const SceneRequest &request);
};
