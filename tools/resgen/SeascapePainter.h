#pragma once

#include "SceneRequest.h"

#include <QImage>

// Sea and sky scenes for the factory photos: sunsets over the sea, beaches, boats in a
// harbour, big skies of clouds, and night skies with stars or the northern lights.
class SeascapePainter
{
public:
    static QImage sunset(const SceneRequest &request);
    static QImage beach(const SceneRequest &request);
    static QImage boats(const SceneRequest &request);
    static QImage cloudscape(const SceneRequest &request);
    static QImage night(const SceneRequest &request);
};
