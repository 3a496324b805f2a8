#include "blend/BlendPreferences.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

PhotoBlender::Options BlendPreferences::options(UserDefaults &defaults)
{
    const Preferences prefs(defaults);
    PhotoBlender::Options options;
    options.blendingMarginWidth =
        defaults.hasObject(Preferences::BlendingMarginWidth) ? int(prefs.blendingMarginWidth()) : 50;
    options.inputImageScaling = defaults.hasObject(Preferences::InputImageScaling) ? int(prefs.inputImageScaling()) : 100;
    options.uniformSize = !prefs.uniformlyCrop() ? PhotoBlender::UniformSize::None
        : prefs.uniformlyCropFit()               ? PhotoBlender::UniformSize::Fit
                                                 : PhotoBlender::UniformSize::Crop;
    options.megapixelLimit = prefs.megapixelLimit() ? PhotoBlender::kMegapixelLimit : 0.0;
    return options;
}
