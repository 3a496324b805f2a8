#include "blend/BlendPreferences.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// What the preferences say becomes the blender's options; the feather and the input scaling
// fall back to 50 and 100 when they were never set (not when they were set to something small).
TEST(BlendPreferences, OptionsFollowThePreferences)
{
    using U = PhotoBlender::UniformSize;
    const struct {
        const char *what;
        QVariantMap set;
        int feather;
        int scaling;
        U uniform;
        double megapixels;
    } cases[] = {
        {"nothing set", {}, 50, 100, U::Fit, PhotoBlender::kMegapixelLimit},
        {"set, even to zero",
         {{Preferences::BlendingMarginWidth, qint64(0)}, {Preferences::InputImageScaling, qint64(25)}},
         0, 25, U::Fit, PhotoBlender::kMegapixelLimit},
        {"cropping, no limit",
         {{Preferences::UniformlyCropFit, false}, {Preferences::MegapixelLimit, false}},
         50, 100, U::Crop, 0.0},
        {"no uniform size", {{Preferences::UniformlyCrop, false}}, 50, 100, U::None, PhotoBlender::kMegapixelLimit},
    };
    for (const auto &k : cases) {
        QTemporaryDir dir;
        UserDefaults defaults(dir.filePath(QStringLiteral("defaults")));
        for (auto it = k.set.cbegin(); it != k.set.cend(); ++it)
            defaults.setObject(it.value(), it.key());
        const PhotoBlender::Options o = BlendPreferences::options(defaults);
        EXPECT_EQ(o.blendingMarginWidth, k.feather) << k.what;
        EXPECT_EQ(o.inputImageScaling, k.scaling) << k.what;
        EXPECT_EQ(o.uniformSize, k.uniform) << k.what;
        EXPECT_EQ(o.megapixelLimit, k.megapixels) << k.what;
    }
}

} // namespace
