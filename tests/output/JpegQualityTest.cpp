#include "output/JpegQuality.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

namespace {

class JpegQualityTest : public ::testing::TestWithParam<int> {};

// Qt writes JPEGs with the common encoder's scaled tables, so the estimate is exact.
TEST_P(JpegQualityTest, FindsTheQualityQtWroteWith)
{
    const QByteArray jpeg = testimages::encode(testimages::gradient(64, 64), "jpeg", GetParam());
    EXPECT_EQ(JpegQuality::estimate(jpeg), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Qualities, JpegQualityTest, ::testing::Values(5, 25, 50, 60, 75, 85, 90, 95, 98, 100));

TEST(JpegQualityBadInputTest, NoTableGivesNoEstimate)
{
    const QByteArray jpeg = testimages::encode(testimages::gradient(64, 64), "jpeg", 80);
    const struct {
        const char *name;
        QByteArray bytes;
    } cases[] = {{"empty", QByteArray()},
                 {"png", testimages::encode(testimages::gradient(8, 8), "png")},
                 {"start only", jpeg.left(2)},
                 {"cut inside the headers", jpeg.left(30)},
                 {"garbage after the start", QByteArray("\xFF\xD8\x00\x01\x02\x03", 6)},
                 {"segment longer than the file", QByteArray("\xFF\xD8\xFF\xDB\xFF\xFF\x00", 7)}};
    for (const auto &c : cases) {
        EXPECT_EQ(JpegQuality::estimate(c.bytes), -1) << c.name;
        EXPECT_EQ(JpegQuality::estimateOrDefault(c.bytes), JpegQuality::kDefaultQuality) << c.name;
    }
}

} // namespace
