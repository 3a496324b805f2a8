#include "model/TileJumble.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "support/QtPrinters.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

class RecordingAlerts : public AlertPresenter
{
public:
    void presentAlert(const Alert &alert, std::function<void(int)>) override { alerts.push_back(alert); }
    void beep() override {}
    std::vector<Alert> alerts;
};

struct RangeCase {
    qint64 a, b;
    qint64 lo, hi; // every result lies in [lo, hi]
    size_t distinctAtLeast;
};

class RandomIntegerRange : public ::testing::TestWithParam<RangeCase> {};

TEST_P(RandomIntegerRange, StaysWithinBothEndsAndSpreads)
{
    const RangeCase &c = GetParam();
    QRandomGenerator random(42);
    std::set<qint64> seen;
    for (int i = 0; i < 4000; ++i) {
        const qint64 v = TileJumble::randomIntegerBetween(c.a, c.b, random);
        ASSERT_GE(v, c.lo);
        ASSERT_LE(v, c.hi);
        seen.insert(v);
    }
    EXPECT_GE(seen.size(), c.distinctAtLeast);
}

INSTANTIATE_TEST_SUITE_P(Cases, RandomIntegerRange,
                         ::testing::Values(RangeCase{5, 5, 5, 5, 1},      // equal ends: that value
                                           RangeCase{7, 8, 7, 8, 2},      // one apart: a coin toss
                                           RangeCase{8, 7, 7, 8, 2},      // order does not matter
                                           RangeCase{0, 10, 0, 10, 11},   // both ends reachable
                                           RangeCase{-20, -10, -20, -10, 11},
                                           RangeCase{50, 350, 50, 350, 250}));

TEST(TileJumble, SeededSourceRepeatsTheSameScatter)
{
    QRandomGenerator r1(7), r2(7);
    TileJumble j1(&r1), j2(&r2);
    std::vector<QRectF> f1{QRectF(0, 0, 100, 50), QRectF(100, 0, 100, 50)}, f2 = f1;
    j1.jumble(f1, QSizeF(400, 300));
    j2.jumble(f2, QSizeF(400, 300));
    EXPECT_EQ(f1, f2);
}

// Every tile keeps its size and stays inside the collage up to the rounding of its centre.
TEST(TileJumble, ScatteredTilesKeepTheirSizeInsideTheCollage)
{
    QRandomGenerator random(1);
    TileJumble jumble(&random);
    const QSizeF collage(400, 300);
    const std::vector<QRectF> original{QRectF(0, 0, 100, 50), QRectF(100, 0, 101, 51), QRectF(0, 50, 400, 20),
                                       QRectF(5, 5, 7, 300)};
    for (int round = 0; round < 200; ++round) {
        std::vector<QRectF> frames = original;
        jumble.jumble(frames, collage);
        for (size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(frames[i].size(), original[i].size());
            EXPECT_GE(frames[i].left(), -1.0);
            EXPECT_GE(frames[i].top(), -1.0);
            EXPECT_LE(frames[i].right(), collage.width() + 1.0);
            EXPECT_LE(frames[i].bottom(), collage.height() + 1.0);
        }
        // As wide as the collage: only moved vertically; as tall: only horizontally.
        EXPECT_EQ(frames[2].center().x(), 200.0);
        EXPECT_EQ(frames[3].center().y(), 150.0);
    }
    EXPECT_TRUE(jumble.isJumbled());
}

TEST(TileJumble, UndoSwapsBetweenTheTwoSetsOfPlaces)
{
    QRandomGenerator random(3);
    TileJumble jumble(&random);
    const std::vector<QRectF> laidOut{QRectF(0, 0, 100, 50), QRectF(100, 0, 100, 50), QRectF(200, 100, 60, 80)};
    std::vector<QRectF> frames = laidOut;
    jumble.jumble(frames, QSizeF(400, 300));
    const std::vector<QRectF> scattered = frames;
    ASSERT_NE(scattered, laidOut);
    ASSERT_EQ(jumble.jumbled_cx().size(), 3);
    EXPECT_EQ(jumble.jumbled_cx()[2], 230.0f);
    EXPECT_EQ(jumble.jumbled_cy()[2], 140.0f);

    jumble.undojumble(frames);
    EXPECT_EQ(frames, laidOut);
    jumble.undojumble(frames);
    EXPECT_EQ(frames, scattered);
    jumble.undojumble(frames);
    EXPECT_EQ(frames, laidOut);
    EXPECT_TRUE(jumble.isJumbled()); // back at the laid-out places, still jumbled

    // Jumbling again from the jumbled state records the current places for undo.
    jumble.undojumble(frames);
    jumble.jumble(frames, QSizeF(400, 300));
    jumble.undojumble(frames);
    EXPECT_EQ(frames, scattered);
}

TEST(TileJumble, UndoWithMoreTilesThanPlacesLeavesTheExtraTilesAlone)
{
    QRandomGenerator random(3);
    TileJumble jumble(&random);
    std::vector<QRectF> frames{QRectF(0, 0, 10, 10)};
    jumble.jumble(frames, QSizeF(100, 100));
    frames.push_back(QRectF(20, 20, 10, 10));
    jumble.undojumble(frames);
    EXPECT_EQ(frames[0], QRectF(0, 0, 10, 10));
    EXPECT_EQ(frames[1], QRectF(20, 20, 10, 10));
    EXPECT_EQ(jumble.jumbled_cx().size(), 2);
}

TEST(TileJumble, RelayoutIsRefusedWhileJumbledAndTheAlertComesOnce)
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("d.sqlite")));
    RecordingAlerts alerts;
    QRandomGenerator random(9);
    TileJumble jumble(&random);
    EXPECT_TRUE(jumble.shouldRelayout(alerts));

    std::vector<QRectF> frames{QRectF(0, 0, 10, 10)};
    jumble.jumble(frames, QSizeF(100, 100));
    EXPECT_FALSE(jumble.shouldRelayout(alerts));
    EXPECT_FALSE(jumble.shouldRelayout(alerts));
    ASSERT_EQ(alerts.alerts.size(), 1u);
    EXPECT_EQ(alerts.alerts[0].messageText, QStringLiteral("Tessary is Jumbled."));
    EXPECT_EQ(alerts.alerts[0].informativeText,
              QStringLiteral("Changes cannot be displayed until the tessary is unjumbled.\n\nThis message will not be "
                             "displayed again."));

    EXPECT_TRUE(jumble.unjumble(defaults, 12));
    EXPECT_EQ(defaults.integerForKey(Preferences::SelectedTemplateTableRow), 12);
    EXPECT_TRUE(jumble.shouldRelayout(alerts));

    // Once per run: a second jumble in the same run refuses silently.
    jumble.jumble(frames, QSizeF(100, 100));
    EXPECT_FALSE(jumble.shouldRelayout(alerts));
    EXPECT_EQ(alerts.alerts.size(), 1u);
    EXPECT_FALSE(jumble.unjumble(defaults, -5));
    EXPECT_EQ(defaults.integerForKey(Preferences::SelectedTemplateTableRow), -1);
    EXPECT_FALSE(jumble.isJumbled());
}

} // namespace
