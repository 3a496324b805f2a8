#pragma once

#include "SceneRequest.h"

#include <QImage>

// Close-up surfaces for the factory photos: wooden boards, pebbles, marble, rippled sand,
// woven fabric and fallen leaves, each under soft directional light.
class TexturePainter
{
public:
    static QImage wood(const SceneRequest &request);
    static QImage pebbles(const SceneRequest &request);
    static QImage marble(const SceneRequest &request);
    static QImage sandRipples(const SceneRequest &request);
    static QImage fabric(const SceneRequest &request);
    static QImage leaves(const SceneRequest &request);
};
