#include "blend/BlendFrame.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// "MatchingMarginWidth" truncated: below 2 the picture is left alone, else it is framed by
// half the margin in the blend background colour.
TEST(BlendFrame, MatchingMarginFramesTheBlend)
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults")));
    QImage picture(100, 80, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const struct {
        double margin;
        int stored, inset;
    } cases[] = {{1.9, 1, 0}, {2.0, 2, 1}, {7, 7, 3}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.margin);
        defaults.setDouble(c.margin, Preferences::MatchingMarginWidth);
        const BlendFrame frame = BlendFrame::fromPreferences(defaults, Qt::blue);
        EXPECT_EQ(frame.matchingMargin, c.stored);
        EXPECT_EQ(frame.inset, c.inset);
        const QImage out = frame.applied(picture);
        ASSERT_EQ(out.size(), picture.size());
        if (c.inset == 0) {
            EXPECT_EQ(out.cacheKey(), picture.cacheKey()) << "the very picture";
            continue;
        }
        EXPECT_EQ(out.pixelColor(c.inset - 1, c.inset - 1), QColor(Qt::blue));
        EXPECT_EQ(out.pixelColor(50, c.inset - 1), QColor(Qt::blue));
        EXPECT_EQ(out.pixelColor(c.inset, c.inset), QColor(Qt::red));
        EXPECT_EQ(out.pixelColor(99 - c.inset, 79 - c.inset), QColor(Qt::red));
    }
    EXPECT_TRUE(BlendFrame::fromPreferences(defaults, Qt::blue).applied(QImage()).isNull());
}

} // namespace
