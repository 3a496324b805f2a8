#pragma once

#include <QColor>
#include <QImage>

class UserDefaults;

// How a finished blend is framed, as the preferences say when it arrives: "MatchingMarginWidth"
// truncated to whole pixels; from 2 up the picture is framed by half of it in the blend
// background colour ("MegapixelLimit", "InsetByCropping"), below 2 it is left alone.
class BlendFrame
{
public:
    static BlendFrame fromPreferences(UserDefaults &defaults, const QColor &background);

    // The picture framed; the very picture when there is no frame or no picture.
    QImage applied(const QImage &image) const;
    bool framesAnything() const { return inset > 0; }

    int matchingMargin = 0;
    int inset = 0; // 0: no frame
    bool megapixelLimit = true;
    QColor background = Qt::white;
    bool byCropping = true;
};
