#include "blend/BlendFrame.h"

#include "foundation/Preferences.h"
#include "images/UIImage.h"

#include <cmath>

BlendFrame BlendFrame::fromPreferences(UserDefaults &defaults, const QColor &background)
{
    const Preferences prefs(defaults);
    BlendFrame frame;
    frame.matchingMargin = int(std::trunc(prefs.matchingMarginWidth()));
    frame.inset = frame.matchingMargin >= 2 ? frame.matchingMargin / 2 : 0;
    frame.megapixelLimit = prefs.megapixelLimit();
    frame.background = background;
    frame.byCropping = prefs.insetByCropping();
    return frame;
}

QImage BlendFrame::applied(const QImage &image) const
{
    if (inset <= 0 || image.isNull())
        return image;
    return UIImage(image).imageWithInsetContent(inset, megapixelLimit, background, byCropping).bestRepresentation();
}
