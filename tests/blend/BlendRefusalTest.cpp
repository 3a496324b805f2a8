#include "blend/BlendRefusal.h"

#include <gtest/gtest.h>

namespace {

// No photos beep for every arrangement; a square needs at least the four of 2 x 2 (the blender
// takes the largest square of a longer list), the other arrangements any count.
TEST(BlendRefusal, EachArrangementChecksItsPhotos)
{
    using A = PhotoBlender::Arrangement;
    using K = BlendRefusal::Kind;
    const struct {
        A arrangement;
        qsizetype photos;
        K kind;
    } cases[] = {
        {A::LeftToRight, 0, K::Beep}, {A::BottomToTop, 0, K::Beep}, {A::Square, 0, K::Beep},
        {A::LeftToRight, 1, K::None}, {A::BottomToTop, 3, K::None}, {A::Square, 3, K::Alert},
        {A::Square, 4, K::None},      {A::Square, 20, K::None},
    };
    for (const auto &c : cases) {
        const BlendRefusal refusal = BlendRefusal::check(c.arrangement, c.photos);
        EXPECT_EQ(refusal.kind, c.kind) << int(c.arrangement) << " of " << c.photos;
    }
    const AlertPresenter::Alert alert = BlendRefusal::check(A::Square, 3).alert;
    EXPECT_EQ(alert.messageText, QStringLiteral("There must be enough images to make a perfect square."));
    EXPECT_EQ(alert.informativeText, QStringLiteral("4 = 2x2, 9 = 3x3 or 16 = 4x4"));
    EXPECT_EQ(alert.style, AlertPresenter::Style::Critical);
}

} // namespace
