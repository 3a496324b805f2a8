#pragma once

#include "model/TileLayout.h"

#include <QSizeF>

#include <vector>

// The result of one layout pass: every placed tile in module order, the modules that fit
// nowhere, and the sizes the collage is drawn at. The window, the renderer and the command line
// all consume this value; none of them recomputes geometry.
struct CollageLayout {
    std::vector<TileLayout> tiles;
    // Indexes of the modules that fit nowhere in the grid; their photos are not shown.
    std::vector<qsizetype> skippedModules;
    // Number of modules the layout was made from.
    qsizetype moduleCount = 0;

    // Grid and scaling, as set up from the template (see LayoutEngine::setup).
    quint64 columns = 0;
    quint64 rows = 0;
    quint64 moduleSizeInPoints = 0;
    quint64 borderWidth = 0;
    double contentSizeWidth = 0.0;
    double contentSizeHeight = 0.0;

    // The tiles' extent before any coordinate transform: right and bottom edges of the grid
    // rectangles, truncated to whole points.
    QSizeF extent;
    // The size of the collage as shown: the extent, with width and height swapped for the two
    // rotations (coordinate transforms 3 and 4).
    QSizeF contentSize;

    // Inputs the layout was made with.
    int coordinateTransform = 0;
    int spacingType = 0;
    int imageFrameStyle = 0;

    // The tile of module i, or nullptr when that module was skipped or does not exist.
    const TileLayout *tileForModule(qsizetype index) const
    {
        for (const TileLayout &t : tiles)
            if (t.tag == index)
                return &t;
        return nullptr;
    }
};
