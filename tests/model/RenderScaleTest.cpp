#include "model/RenderScale.h"

#include "model/CollageLayout.h"

#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct ScaleCase {
    const char *name;
    qint64 freeMB;
    QSizeF canvas;
    qint64 largest;
    float budget;
    qint64 expected;
};

void PrintTo(const ScaleCase &c, std::ostream *os) { *os << c.name; }

class ScaleFactor : public ::testing::TestWithParam<ScaleCase> {};

TEST_P(ScaleFactor, ChoosesTheSmallerOfPhotoAndMemoryLimits)
{
    const ScaleCase &c = GetParam();
    EXPECT_FLOAT_EQ(RenderScale::megapixelBudget(c.freeMB), c.budget);
    EXPECT_EQ(RenderScale::scaleFactor(c.freeMB, c.canvas, c.largest), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ScaleFactor,
    ::testing::Values(
        // 26 MP ceiling: sqrt(26 / 0.5) = 7.2 -> 7, below the photos' 10.
        ScaleCase{"ceiling", 2000, QSizeF(1000, 500), 10, 26.0f, 7},
        ScaleCase{"photosDecide", 2000, QSizeF(1000, 500), 3, 26.0f, 3},
        // A tenth of 100 MB: 10 MP; sqrt(10 / 0.5) = 4.47 -> 4.
        ScaleCase{"littleMemory", 100, QSizeF(1000, 500), 0, 10.0f, 4},
        // sqrt(26 / 0.53) = 7.004 for the 7 x 7 grid of 104-point cells.
        ScaleCase{"noPhotos", 8000, QSizeF(728, 728), 0, 26.0f, 7},
        // sqrt(2.2) = 1.48 -> 1; sqrt(25 / 4) = 2.5 exactly, rounded away from zero -> 3.
        ScaleCase{"smallBudget", 22, QSizeF(1000, 1000), 0, 2.2f, 1},
        ScaleCase{"halfRoundsUp", 250, QSizeF(2000, 2000), 0, 25.0f, 3},
        // No memory at all or an empty canvas still gives the collage at its own size.
        ScaleCase{"noMemory", 0, QSizeF(1000, 500), 10, 0.0f, 1},
        ScaleCase{"emptyCanvas", 2000, QSizeF(0, 0), 4, 26.0f, 1},
        ScaleCase{"negativeMemoryFigure", -50, QSizeF(1000, 500), 0, 0.0f, 1}));

struct RatioCase {
    QSize pixels;
    double tileWidth;
    qint64 expected;
};

TEST(RenderScale, PhotoFactorDividesTheLargerSideByTheTileWidth)
{
    const RatioCase cases[] = {
        {QSize(3000, 2000), 300, 10},
        {QSize(2000, 3000), 400, 8}, // portrait: 3000 / 400 = 7.5 -> 8, the width is the divisor
        {QSize(1000, 1000), 400, 3}, // 2.5 -> 3
        {QSize(100, 50), 400, 0},    // 0.25 -> 0
        {QSize(), 400, 0},           // unreadable photo
        {QSize(3000, 2000), 0, 0},   // empty tile
    };
    for (const RatioCase &c : cases)
        EXPECT_EQ(RenderScale::photoScaleFactor(c.pixels, c.tileWidth), c.expected)
            << c.pixels.width() << "x" << c.pixels.height() << " in " << c.tileWidth;
}

TEST(RenderScale, MemAvailableIsReadFromMeminfo)
{
    const QByteArray meminfo = "MemTotal:       16318480 kB\nMemFree:          512000 kB\n"
                               "MemAvailable:    1953125 kB\nBuffers:          123 kB\n";
    EXPECT_EQ(RenderScale::memAvailableMB(meminfo), 2000); // 1953125 KiB = 2,000,000,000 bytes
    EXPECT_FALSE(RenderScale::memAvailableMB("MemTotal: 100 kB\n").has_value());
    EXPECT_FALSE(RenderScale::memAvailableMB("MemAvailable: lots kB\n").has_value());
    EXPECT_FALSE(RenderScale::memAvailableMB(QByteArray()).has_value());
    // A figure above 4 GB does not wrap here: the kernel reports bytes, not page counts.
    EXPECT_EQ(RenderScale::memAvailableMB("MemAvailable: 8000000 kB\n"), 8192);
    EXPECT_GT(RenderScale::freeMemoryMB(), 0);
    EXPECT_EQ(RenderScale::freeMemoryMB(QStringLiteral("/nonexistent/meminfo")), 0);
}

TEST(RenderScale, LargestFactorReadsPhotoHeadersOnly)
{
    QTemporaryDir dir;
    const QString wide = dir.filePath(QStringLiteral("wide.png"));
    const QString tall = dir.filePath(QStringLiteral("tall.jpg"));
    QImage(1200, 300, QImage::Format_RGB32).save(wide);
    QImage(200, 1600, QImage::Format_RGB32).save(tall);
    CollageLayout layout;
    TileLayout a;
    a.imagePath = wide;
    a.frame = QRectF(0, 0, 200, 100); // 1200 / 200 = 6
    TileLayout b;
    b.imagePath = tall;
    b.frame = QRectF(200, 0, 200, 400); // 1600 / 200 = 8
    TileLayout missing;
    missing.imagePath = dir.filePath(QStringLiteral("gone.jpg"));
    missing.frame = QRectF(0, 100, 1, 1);
    layout.tiles = {a, b, missing};
    EXPECT_EQ(RenderScale::photoPixelSize(tall), QSize(200, 1600));
    EXPECT_EQ(RenderScale::largestScaleFactor(layout), 8);
    layout.tiles = {missing};
    EXPECT_EQ(RenderScale::largestScaleFactor(layout), 0);
}

} // namespace
