#include "foundation/DisclosureFold.h"

#include <gtest/gtest.h>

namespace {

TEST(DisclosureFold, FoldedHeightGivesBackHalfTheVerticalOrigin)
{
    const struct {
        const char *name;
        double saved;
        bool disclosed;
        double viewHeight;
        double viewOrigin;
        double height;
    } cases[] = {
        {"a view of 120 at origin 40 folds 100 points", 300, false, 120, 40, 200},
        {"disclosed keeps the saved height", 300, true, 120, 40, 300},
        {"a view on the bottom edge folds whole", 300, false, 120, 0, 180},
        {"odd origins keep their half point", 250.5, false, 100, 15, 158},
    };
    for (const auto &c : cases)
        EXPECT_DOUBLE_EQ(DisclosureFold::sheetHeight(c.saved, c.disclosed, c.viewHeight, c.viewOrigin), c.height) << c.name;
}

TEST(DisclosureFold, VerticalOriginIsMeasuredFromTheBottomEdge)
{
    // A 300-high sheet with a 120-high part whose top is 140 below the sheet's top: 40 above the
    // bottom edge.
    EXPECT_DOUBLE_EQ(DisclosureFold::verticalOrigin(300, 140, 120), 40);
    EXPECT_DOUBLE_EQ(DisclosureFold::verticalOrigin(300, 180, 120), 0);
}

} // namespace
