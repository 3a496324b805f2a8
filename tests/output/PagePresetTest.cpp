#include "output/PagePreset.h"

#include <gtest/gtest.h>

namespace {

struct PageCase {
    const char *name;
    const char *text; // as typed on the command line
    double dpi;
    QSizeF points;
    QSize pixels;
    double margin; // the preset's own, in millimetres
};

void PrintTo(const PageCase &c, std::ostream *os) { *os << c.name; }

class PagePresetTable : public ::testing::TestWithParam<PageCase> {};

TEST_P(PagePresetTable, SizeInPointsAndPixelsAtTheResolution)
{
    const PageCase &c = GetParam();
    std::optional<PagePreset> page = PagePreset::parse(QString::fromLatin1(c.text));
    ASSERT_TRUE(page.has_value());
    page->setDotsPerInch(c.dpi);
    EXPECT_NEAR(page->sizeInPoints().width(), c.points.width(), 0.01);
    EXPECT_NEAR(page->sizeInPoints().height(), c.points.height(), 0.01);
    EXPECT_EQ(page->pixelSize(), c.pixels);
    EXPECT_EQ(page->margin(), c.margin);
    EXPECT_TRUE(page->isValid());
    // The PDF page is the same paper, turned the same way.
    const QPageLayout layout = page->pageLayout();
    EXPECT_NEAR(layout.fullRect(QPageLayout::Point).width(), c.points.width(), 0.6);
    EXPECT_NEAR(layout.fullRect(QPageLayout::Point).height(), c.points.height(), 0.6);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PagePresetTable,
    ::testing::Values(PageCase{"A4At72", "A4", 72, {595.28, 841.89}, {595, 842}, 10},
                      PageCase{"A4At150", "a4", 150, {595.28, 841.89}, {1240, 1754}, 10},
                      PageCase{"A4At300", "A4", 300, {595.28, 841.89}, {2480, 3508}, 10},
                      PageCase{"A4LandscapeAt300", "A4,Landscape", 300, {841.89, 595.28}, {3508, 2480}, 10},
                      PageCase{"LetterAt300", "LETTER", 300, {612, 792}, {2550, 3300}, 10},
                      PageCase{"PhotoTenByFifteenAt300", "10x15CM", 300, {283.46, 425.20}, {1181, 1772}, 0},
                      PageCase{"PhotoTwentyByThirtyLandscapeAt72", "20x30cm,landscape", 72, {850.39, 566.93},
                               {850, 567}, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(PagePreset, NamesAndBadTextsAreRefusedWithTheReason)
{
    EXPECT_EQ(PagePreset::names().size(), 11);
    QString error;
    EXPECT_FALSE(PagePreset::parse(QStringLiteral("B5"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("'B5' is not a page"))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("A5 A4 A3 A2 A1 Letter Legal Tabloid 10x15cm 13x18cm 20x30cm")));
    EXPECT_FALSE(PagePreset::parse(QStringLiteral("A4,sideways"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("'sideways' is neither landscape nor portrait")));
    EXPECT_FALSE(PagePreset::parse(QStringLiteral("A4,landscape,x"), &error));
}

struct FitCase {
    const char *name;
    const char *page;
    double margin;
    PagePreset::Fit fit;
    QSizeF collage;
    QSize render;  // at 300 dpi
    QRect source;  // of the rendered picture
    QRect target;  // on the page
};

void PrintTo(const FitCase &c, std::ostream *os) { *os << c.name; }

class PagePresetFit : public ::testing::TestWithParam<FitCase> {};

TEST_P(PagePresetFit, RenderSizeAndPlacement)
{
    const FitCase &c = GetParam();
    PagePreset page = *PagePreset::parse(QString::fromLatin1(c.page));
    page.setMargin(c.margin).setFit(c.fit);
    EXPECT_EQ(page.renderSize(c.collage), c.render);
    const PagePreset::Placement p = page.place(c.render);
    EXPECT_EQ(p.source, c.source);
    EXPECT_EQ(p.target, c.target);
    EXPECT_TRUE(page.area().contains(p.target));
}

// A4 at 300 dpi is 2480 × 3508 pixels; a 10 mm margin is 118 pixels, leaving 2244 × 3272.
INSTANTIATE_TEST_SUITE_P(
    Rules, PagePresetFit,
    ::testing::Values(
        // A wide collage fitted inside: as wide as the area, centred up and down.
        FitCase{"WideFitsInsideTheMargins", "A4", 10, PagePreset::Fit::Inside, {800, 400}, {2244, 1122},
                {0, 0, 2244, 1122}, {118, 1193, 2244, 1122}},
        // The same filling the area: as high as it, the sides cut evenly.
        FitCase{"WideFillsAndCropsEvenly", "A4", 10, PagePreset::Fit::Fill, {800, 400}, {6544, 3272},
                {2150, 0, 2244, 3272}, {118, 118, 2244, 3272}},
        FitCase{"NoMarginCoversTheWholePage", "A4,landscape", 0, PagePreset::Fit::Fill, {300, 300}, {3508, 3508},
                {0, 514, 3508, 2480}, {0, 0, 3508, 2480}},
        FitCase{"SameProportionsCoverExactly", "10x15cm", 0, PagePreset::Fit::Fill, {100, 150}, {1181, 1772},
                {0, 0, 1181, 1772}, {0, 0, 1181, 1772}},
        // 13 × 18 cm turned is 2126 × 1535 pixels; a 5 mm margin is 59 of them.
        FitCase{"TallOnLandscapeFitsTheHeight", "13x18cm,landscape", 5, PagePreset::Fit::Inside, {250, 600},
                {590, 1417}, {0, 0, 590, 1417}, {768, 59, 590, 1417}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(PagePreset, MarginsThatLeaveNoRoomAndTheSharpnessWarning)
{
    PagePreset page = *PagePreset::named(QStringLiteral("10x15cm"));
    EXPECT_FALSE(page.setMargin(50).isValid()); // 100 mm wide, 2 × 50 mm of margin
    EXPECT_FALSE(page.setMargin(-1).isValid());
    EXPECT_FALSE(page.setMargin(0).setDotsPerInch(0).isValid());
    EXPECT_TRUE(page.renderSize(QSizeF(10, 10)).isEmpty());

    // A 1000 × 500 picture on an A4 landscape page at 300 dpi is rendered 3272 × 1636
    // (the area is 3272 × 2244): 3.27 times enlarged. A picture whose sharpest photo holds
    // 4 pixels on each of its own is sharp enough; one at its photos' resolution is not.
    PagePreset a4 = *PagePreset::parse(QStringLiteral("A4,landscape"));
    EXPECT_NEAR(a4.enlargement(QSize(1000, 500)), 3.272, 1e-9);
    EXPECT_FALSE(a4.enlargesBeyond(QSize(1000, 500), 4.0));
    EXPECT_TRUE(a4.enlargesBeyond(QSize(1000, 500), 1.0));
    EXPECT_FALSE(a4.setDotsPerInch(72).enlargesBeyond(QSize(1000, 500), 1.0)); // 786 wide: shrinks
}

} // namespace
