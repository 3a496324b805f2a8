#pragma once

#include <QRectF>
#include <QSizeF>

// Where an image of its natural size lands in a target rectangle for each of the thirteen
// content modes, and whether the drawing is clipped to the target. Rectangles have their origin
// at the lower left, so a mode that sets dy = y puts the picture on the lower edge of the target.
class ContentModeGeometry
{
public:
    enum ContentMode {
        ContentScaleToFill = 0,
        ContentScaleAspectFit = 1,
        ContentScaleAspectFill = 2,
        ContentRedraw = 3,
        ContentCenter = 4,
        ContentTop = 5,
        ContentBottom = 6,
        ContentLeft = 7,
        ContentRight = 8,
        ContentTopLeft = 9,
        ContentTopRight = 10,
        ContentBottomLeft = 11,
        ContentBottomRight = 12,
    };

    struct Placement {
        QRectF destination;
        bool clip = false;
    };

    // Values outside 1-12 behave as ContentScaleToFill. An image already of the target's size
    // is drawn into the target unclipped, whatever the mode.
    static Placement place(const QSizeF &imageSize, const QRectF &target, int mode);
};
