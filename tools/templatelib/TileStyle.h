#pragma once

#include <QColor>

// The look every tile of a template shares, in the module's own terms: opacity, border width
// and corner radius as fractions of half the tile's smaller side, and the border colour.
struct TileStyle
{
    double alpha = 1.0;
    double borderWidth = 0.0;
    double cornerRadius = 0.0;
    QColor borderColor = Qt::white;
    // The collage's border width in points, stored at the top of the template.
    int collageBorderWidth = 0;
};
