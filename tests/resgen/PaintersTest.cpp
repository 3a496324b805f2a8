// Every painter at small and awkward sizes: right size, repeatable, and a picture rather than
// a flat fill. Painting small keeps this fast.
#include "DiagramPainter.h"
#include "FlowerPainter.h"
#include "LandscapePainter.h"
#include "ObjectPainter.h"
#include "ResourceCatalog.h"
#include "SeascapePainter.h"
#include "TexturePainter.h"

#include <QSet>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Painter = QImage (*)(const SceneRequest &);

struct SceneCase
{
    const char *name;
    Painter paint;
    int variants;
};

void PrintTo(const SceneCase &c, std::ostream *os)
{
    *os << c.name;
}

double spreadOf(const QImage &image)
{
    const QImage g = image.convertToFormat(QImage::Format_Grayscale8);
    double sum = 0, sumSq = 0;
    for (int y = 0; y < g.height(); ++y)
        for (int x = 0; x < g.width(); ++x) {
            const double v = g.constScanLine(y)[x];
            sum += v;
            sumSq += v * v;
        }
    const double n = double(g.width()) * g.height();
    return std::sqrt(std::max(0.0, sumSq / n - (sum / n) * (sum / n)));
}

class ScenePainters : public ::testing::TestWithParam<SceneCase> {};

TEST_P(ScenePainters, PaintRepeatablePicturesOfAnySize)
{
    const SceneCase c = GetParam();
    for (int variant = 0; variant < c.variants; ++variant) {
        for (QSize size : {QSize(240, 160), QSize(97, 301), QSize(300, 100)}) {
            const SceneRequest request{size, 1234u + quint32(variant), variant};
            const QImage a = c.paint(request);
            ASSERT_EQ(a.size(), size) << c.name << " variant " << variant;
            EXPECT_EQ(a, c.paint(request)) << c.name << " variant " << variant << " is not repeatable";
            EXPECT_GT(spreadOf(a), 6.0) << c.name << " variant " << variant << " is flat";
        }
        const QImage one = c.paint({QSize(200, 150), 1, variant});
        const QImage other = c.paint({QSize(200, 150), 2, variant});
        EXPECT_NE(one, other) << c.name << " ignores its seed";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Painters, ScenePainters,
    ::testing::Values(SceneCase{"hills", LandscapePainter::hills, 4}, SceneCase{"mountains", LandscapePainter::mountains, 4},
                      SceneCase{"lavender", LandscapePainter::lavender, 2}, SceneCase{"forest", LandscapePainter::forest, 2},
                      SceneCase{"dunes", LandscapePainter::dunes, 2}, SceneCase{"sunset", SeascapePainter::sunset, 3},
                      SceneCase{"beach", SeascapePainter::beach, 2}, SceneCase{"boats", SeascapePainter::boats, 3},
                      SceneCase{"cloudscape", SeascapePainter::cloudscape, 3}, SceneCase{"night", SeascapePainter::night, 2},
                      SceneCase{"wood", TexturePainter::wood, 3}, SceneCase{"pebbles", TexturePainter::pebbles, 2},
                      SceneCase{"marble", TexturePainter::marble, 1}, SceneCase{"sand", TexturePainter::sandRipples, 1},
                      SceneCase{"fabric", TexturePainter::fabric, 3}, SceneCase{"leaves", TexturePainter::leaves, 2},
                      SceneCase{"fruit", ObjectPainter::fruit, 3}, SceneCase{"hotair", ObjectPainter::hotAirBalloons, 2},
                      SceneCase{"party", ObjectPainter::partyBalloons, 1}, SceneCase{"lanterns", ObjectPainter::lanterns, 2},
                      SceneCase{"bokeh", ObjectPainter::bokeh, 2}, SceneCase{"flower", FlowerPainter::paint, FlowerPainter::kinds}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(ResourceCatalog, NamesEveryResourceTheApplicationLooksUpOnce)
{
    QSet<QString> expected;
    for (int i = 0; i < 49; ++i)
        expected.insert(QStringLiteral("images-%1.jpg").arg(i));
    for (int i = 0; i < 9; ++i)
        expected.insert(QStringLiteral("flower-%1.jpg").arg(i));
    for (const char *name : {"blank.png", "defaultImage.png", "ximage.png", "MatchingMarginWidth.tif",
                             "BlendingMarginWidth.tif", "InputImageScaling.tif", "HomographyScaling.tif",
                             "CropResult.tif", "UniformlyCrop.png", "xcircle.tiff", "harp.aif"})
        expected.insert(QString::fromLatin1(name));
    QSet<QString> names;
    for (const ResourceJob &job : ResourceCatalog::all()) {
        EXPECT_FALSE(names.contains(job.name)) << qPrintable(job.name) << " twice";
        EXPECT_TRUE(bool(job.make)) << qPrintable(job.name);
        EXPECT_GT(job.cost, 0) << qPrintable(job.name);
        names.insert(job.name);
    }
    EXPECT_EQ(names, expected);
}

} // namespace
