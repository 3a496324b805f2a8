#pragma once

#include "blend/PhotoBlender.h"

class UserDefaults;

// The blend settings a person chose in the preferences, as the blender's options: the feather
// (BlendingMarginWidth, 50 when never set), the input scaling (InputImageScaling, 100 when never
// set), uniform cropping (none, fit or crop) and the megapixel limit. The border and background
// come from elsewhere (the matching margin and the collage's colour).
class BlendPreferences
{
public:
    static PhotoBlender::Options options(UserDefaults &defaults);
};
