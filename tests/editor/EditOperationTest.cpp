#include "editor/EditOperation.h"
#include "editor/StraightenGeometry.h"

#include "support/ExifJpeg.h"
#include "support/TestImages.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace {

using testimages::quarterColours;
using testimages::quarters;

struct TurnCase {
    const char *name;
    EditOperation::Kind kind;
    const char *colours; // the quarters after the edit, read as in quarterColours
    QSize size;
};

class TurnTest : public ::testing::TestWithParam<TurnCase> {};

TEST_P(TurnTest, TurnsAndFlipsMoveTheQuarters)
{
    const QImage photo = quarters(120, 80);
    const EditOperation op = EditOperation::turn(GetParam().kind);
    const QImage out = op.apply(photo);
    EXPECT_EQ(out.size(), GetParam().size);
    EXPECT_EQ(op.resultSize(photo.size()), GetParam().size);
    EXPECT_EQ(quarterColours(out), QString::fromLatin1(GetParam().colours));
}

INSTANTIATE_TEST_SUITE_P(Kinds, TurnTest,
                         ::testing::Values(TurnCase{"Right", EditOperation::TurnRight, "BRWG", {80, 120}},
                                           TurnCase{"Left", EditOperation::TurnLeft, "GWRB", {80, 120}},
                                           TurnCase{"FlipHorizontal", EditOperation::FlipHorizontal, "GRWB", {120, 80}},
                                           TurnCase{"FlipVertical", EditOperation::FlipVertical, "BWRG", {120, 80}}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(EditOperationTest, FourQuarterTurnsGiveBackTheExactPixels)
{
    const QImage photo = testimages::gradient(64, 48);
    QImage out = photo;
    for (int i = 0; i < 4; ++i)
        out = EditOperation::turn(EditOperation::TurnRight).apply(out);
    EXPECT_EQ(out.convertToFormat(QImage::Format_RGB32), photo.convertToFormat(QImage::Format_RGB32));
}

TEST(EditOperationTest, CropKeepsThePixelsOfTheRectangle)
{
    const QImage photo = testimages::gradient(200, 100);
    struct Case {
        QRect crop;
        QSize size;
    } cases[] = {{QRect(10, 20, 50, 30), QSize(50, 30)},
                 {QRect(150, 50, 100, 100), QSize(50, 50)}, // cut to the picture
                 {QRect(300, 300, 10, 10), QSize(200, 100)}}; // outside: unchanged
    for (const Case &c : cases) {
        const EditOperation op = EditOperation::cropTo(c.crop);
        const QImage out = op.apply(photo);
        EXPECT_EQ(out.size(), c.size);
        EXPECT_EQ(op.resultSize(photo.size()), c.size);
        const QRect kept = c.crop.intersected(photo.rect());
        if (!kept.isEmpty()) {
            EXPECT_EQ(out, photo.copy(kept));
        }
    }
}

// A blue picture with a red middle, straightened by a few degrees: the kept part shows no
// uncovered background at its corners, and the middle stays in the middle.
TEST(EditOperationTest, StraighteningCutsTheUncoveredCornersAway)
{
    QImage photo(400, 300, QImage::Format_RGB32);
    photo.fill(QColor(0, 0, 255));
    QPainter(&photo).fillRect(QRect(180, 130, 40, 40), Qt::red);
    for (double degrees : {5.0, -5.0, 12.0}) {
        const EditOperation op = EditOperation::straighten(degrees);
        const QImage out = op.apply(photo);
        EXPECT_EQ(out.size(), StraightenGeometry::straightenedSize(photo.size(), degrees));
        EXPECT_EQ(op.resultSize(photo.size()), out.size());
        EXPECT_LT(out.width(), 400);
        for (const QPoint corner : {QPoint(0, 0), QPoint(out.width() - 1, 0), QPoint(0, out.height() - 1),
                                    QPoint(out.width() - 1, out.height() - 1)}) {
            const QColor c = out.pixelColor(corner);
            EXPECT_GE(c.blue(), 200) << degrees << " at " << corner.x() << "," << corner.y();
            EXPECT_EQ(c.alpha(), 255);
        }
        const QColor middle = out.pixelColor(out.width() / 2, out.height() / 2);
        EXPECT_GE(middle.red(), 240);
        EXPECT_LE(middle.blue(), 15);
    }
}

struct AnnotationCase {
    const char *name;
    Annotation annotation;
    QList<QPoint> marked;   // pixels that take the colour
    QList<QPoint> untouched; // pixels that stay white
};

class AnnotationTest : public ::testing::TestWithParam<AnnotationCase> {};

TEST_P(AnnotationTest, BurnsTheMarkIntoThePixels)
{
    QImage photo(100, 100, QImage::Format_RGB32);
    photo.fill(Qt::white);
    const AnnotationCase &c = GetParam();
    const QImage out = EditOperation::annotate({c.annotation}).apply(photo);
    ASSERT_EQ(out.size(), photo.size());
    for (const QPoint p : c.marked) {
        const QColor got = out.pixelColor(p);
        EXPECT_TRUE(std::abs(got.red() - c.annotation.colour.red()) < 40 && std::abs(got.green() - c.annotation.colour.green()) < 40 &&
                    std::abs(got.blue() - c.annotation.colour.blue()) < 40)
            << p.x() << "," << p.y() << " is " << got.name().toStdString();
    }
    for (const QPoint p : c.untouched)
        EXPECT_EQ(out.pixelColor(p), QColor(Qt::white)) << p.x() << "," << p.y();
    // The mark stays within its bounding rectangle.
    const QRect box = c.annotation.boundingRect().toAlignedRect();
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            if (!box.contains(x, y)) {
                ASSERT_EQ(out.pixelColor(x, y), QColor(Qt::white)) << x << "," << y;
            }
}

Annotation mark(Annotation::Kind kind, QList<QPointF> points, QColor colour = Qt::red, double width = 4)
{
    Annotation a;
    a.kind = kind;
    a.points = std::move(points);
    a.colour = colour;
    a.width = width;
    return a;
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, AnnotationTest,
    ::testing::Values(
        AnnotationCase{"Rectangle", mark(Annotation::Rectangle, {{20, 20}, {80, 70}}), {{20, 40}, {50, 20}, {80, 60}, {50, 70}},
                       {{50, 45}, {5, 5}, {95, 95}}},
        AnnotationCase{"Ellipse", mark(Annotation::Ellipse, {{20, 20}, {80, 80}}, Qt::blue), {{20, 50}, {50, 20}, {80, 50}},
                       {{50, 50}, {22, 22}}},
        AnnotationCase{"Arrow", mark(Annotation::Arrow, {{10, 50}, {90, 50}}, QColor(0, 160, 0)), {{30, 50}, {60, 50}, {88, 50}},
                       {{30, 30}, {30, 70}}},
        AnnotationCase{"Freehand", mark(Annotation::Freehand, {{10, 10}, {50, 10}, {50, 90}}, Qt::black, 6),
                       {{30, 10}, {50, 50}}, {{30, 50}, {80, 80}}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(EditOperationTest, TextIsDrawnInItsColourInsideItsBox)
{
    QImage photo(200, 100, QImage::Format_RGB32);
    photo.fill(Qt::white);
    Annotation text = mark(Annotation::Text, {{10, 10}}, Qt::red, 4);
    text.text = QStringLiteral("HELLO");
    const QImage out = EditOperation::annotate({text}).apply(photo);
    const QRect box = text.boundingRect().toAlignedRect();
    int red = 0, outside = 0;
    for (int y = 0; y < out.height(); ++y) {
        for (int x = 0; x < out.width(); ++x) {
            const QColor c = out.pixelColor(x, y);
            if (c != QColor(Qt::white))
                (box.contains(x, y) ? red : outside) += 1;
        }
    }
    EXPECT_GT(red, 50);
    EXPECT_EQ(outside, 0);
    EXPECT_TRUE(mark(Annotation::Text, {{1, 1}}).isEmpty()); // no text
    EXPECT_TRUE(mark(Annotation::Arrow, {{1, 1}, {1.5, 1.5}}).isEmpty()); // a click, not a drag
}

TEST(EditOperationTest, NamesForTheUndoHistory)
{
    EXPECT_EQ(EditOperation::cropTo(QRect(0, 0, 1, 1)).name(), QStringLiteral("Crop"));
    EXPECT_EQ(EditOperation::straighten(5).name(), QStringLiteral("Straighten 5.0°"));
    EXPECT_EQ(EditOperation::adjust({}).name(), QStringLiteral("Adjustments"));
    // Neutral adjustments leave the pixels alone.
    const QImage photo = testimages::gradient(30, 20);
    EXPECT_EQ(EditOperation::adjust({}).apply(photo), photo);
}

} // namespace
