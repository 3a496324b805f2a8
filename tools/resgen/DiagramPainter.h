#pragma once

#include <QImage>

// Small flat pictures of the user interface: the blank picture, the placeholder tile, the
// "cannot edit" picture, the explanatory icons beside the preferences, and the crossed circle.
// No text is drawn, so they do not depend on the fonts of the build machine.
class DiagramPainter
{
public:
    static QImage blank();
    static QImage placeholder();
    static QImage cannotEdit();
    static QImage matchingMargin();
    static QImage blendingMargin();
    static QImage inputScaling();
    static QImage homographyScaling();
    static QImage cropResult();
    static QImage uniformCrop();
    static QImage crossedCircle();

    static constexpr int iconSize = 128;
};
