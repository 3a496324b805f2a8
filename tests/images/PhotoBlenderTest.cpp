#include "TestImages.h"

#include "images/PhotoBlender.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

QImage flat(int w, int h, int grey)
{
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(QColor(grey, grey, grey));
    return img;
}

// A scene with detail everywhere and no repeats, like a landscape: overlapping soft blobs of
// many colours on a wavy background.
QImage scene(int w, int h)
{
    QImage img(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            img.setPixel(x, y, qRgb(int(127 + 60 * std::sin(x / 23.0) * std::cos(y / 31.0)),
                                    int(127 + 60 * std::sin((x + 2 * y) / 41.0)),
                                    int(127 + 60 * std::cos((3 * x - y) / 57.0))));
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    QRandomGenerator random(42);
    for (int i = 0; i < w * h / 900; ++i) {
        p.setPen(Qt::NoPen);
        p.setBrush(QColor::fromHsv(random.bounded(360), 80 + random.bounded(170), 60 + random.bounded(190)));
        const int r = 4 + random.bounded(18);
        p.drawEllipse(QPoint(random.bounded(w), random.bounded(h)), r, r + random.bounded(8));
    }
    return img;
}

int greyAt(const QImage &img, int x, int y) { return qGray(img.pixel(x, y)); }

PhotoBlender::Options fixedJoins(int margin, int scaling = 100)
{
    PhotoBlender::Options o;
    o.blendingMarginWidth = margin;
    o.inputImageScaling = scaling;
    return o;
}

TEST(PhotoBlender, OutputSizeOfEachArrangement)
{
    using A = PhotoBlender::Arrangement;
    struct Case {
        const char *name;
        A arrangement;
        int photos, margin, scaling;
        QSize expected;
    } cases[] = {
        {"left to right", A::LeftToRight, 3, 20, 100, {3 * 200 - 2 * 20, 150}},
        {"bottom to top", A::BottomToTop, 3, 20, 100, {200, 3 * 150 - 2 * 20}},
        {"square of the first 4 of 5", A::Square, 5, 20, 100, {2 * 200 - 20, 2 * 150 - 20}},
        {"square of the first 9 of 10", A::Square, 10, 10, 100, {3 * 200 - 2 * 10, 3 * 150 - 2 * 10}},
        {"scaled to half first", A::LeftToRight, 2, 20, 50, {2 * 100 - 20, 75}},
        {"no margin: side by side", A::LeftToRight, 2, 0, 100, {400, 150}},
        {"too few for a square: nothing", A::Square, 3, 20, 100, {0, 0}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QList<QImage> photos;
        for (int i = 0; i < c.photos; ++i)
            photos.append(flat(200, 150, 40 + 20 * i));
        const QImage out = PhotoBlender::blendImages(photos, c.arrangement, fixedJoins(c.margin, c.scaling));
        EXPECT_EQ(out.size(), c.expected);
    }
    EXPECT_EQ(PhotoBlender::photosUsed(A::Square, 20), 16);
    EXPECT_EQ(PhotoBlender::photosUsed(A::LeftToRight, 20), 20);
}

// Across the overlap of a dark and a light photo the brightness climbs smoothly: no step
// larger than a few times the average slope, and it never goes back (by more than rounding).
TEST(PhotoBlender, NoStepInTheBrightnessAcrossTheOverlap)
{
    using A = PhotoBlender::Arrangement;
    const int margin = 40, dark = 60, light = 180;
    struct Case {
        const char *name;
        A arrangement;
    } cases[] = {{"left to right", A::LeftToRight}, {"bottom to top", A::BottomToTop}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = PhotoBlender::blendImages({flat(200, 160, dark), flat(200, 160, light)}, c.arrangement, fixedJoins(margin));
        ASSERT_FALSE(out.isNull());
        // The first photo is on the left, or at the bottom.
        QList<int> profile;
        if (c.arrangement == A::LeftToRight) {
            for (int x = 0; x < out.width(); ++x)
                profile.append(greyAt(out, x, out.height() / 2));
        } else {
            for (int y = out.height() - 1; y >= 0; --y)
                profile.append(greyAt(out, out.width() / 2, y));
        }
        EXPECT_NEAR(profile.first(), dark, 1);
        EXPECT_NEAR(profile.last(), light, 1);
        int largestStep = 0;
        for (qsizetype i = 1; i < profile.size(); ++i) {
            EXPECT_GE(profile[i], profile[i - 1] - 1) << "at " << i;
            largestStep = std::max(largestStep, profile[i] - profile[i - 1]);
        }
        EXPECT_LE(largestStep, 3 * (light - dark) / margin) << "a seam";
    }
}

// A panorama shot in three overlapping pieces is put back where it was taken from.
TEST(PhotoBlender, PanoramaPiecesAreJoinedWhereTheyOverlap)
{
    using A = PhotoBlender::Arrangement;
    const QImage wide = scene(900, 240);
    const QList<QImage> across{wide.copy(0, 0, 400, 240), wide.copy(250, 3, 400, 237), wide.copy(500, 0, 400, 240)};
    EXPECT_EQ(PhotoBlender::findJoin(across[0], across[1], false, 50).offset, QPoint(250, 3));
    EXPECT_TRUE(PhotoBlender::findJoin(across[0], across[1], false, 50).matched);

    // Stacked: the lowest piece comes first.
    const QImage column = scene(240, 700);
    const QList<QImage> upward{column.copy(0, 400, 240, 300), column.copy(0, 200, 240, 300), column.copy(0, 0, 240, 300)};

    struct Case {
        const char *name;
        A arrangement;
        QList<QImage> pieces;
        QImage original;
    } cases[] = {
        {"left to right", A::LeftToRight, {wide.copy(0, 0, 400, 240), wide.copy(250, 0, 400, 240), wide.copy(500, 0, 400, 240)}, wide},
        {"bottom to top", A::BottomToTop, upward, column},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const QImage out = PhotoBlender::blendImages(c.pieces, c.arrangement, fixedJoins(30));
        ASSERT_EQ(out.size(), c.original.size());
        EXPECT_LT(testimages::meanDifference(out, c.original), 1.0);
    }
}

// A photo's transparent part (the empty bands of a photo scaled to fit) lets its neighbour show
// through the overlap, and stays transparent where nothing covers it.
TEST(PhotoBlender, TransparentPartsShowTheNeighbour)
{
    QImage banded(100, 80, QImage::Format_ARGB32);
    banded.fill(Qt::transparent);
    QPainter(&banded).fillRect(0, 40, 100, 40, Qt::blue);
    const QImage out = PhotoBlender::blendImages({flat(100, 80, 200), banded}, PhotoBlender::Arrangement::LeftToRight, fixedJoins(20));
    ASSERT_EQ(out.size(), QSize(180, 80));
    ASSERT_TRUE(out.hasAlphaChannel());
    EXPECT_EQ(out.pixelColor(90, 10), QColor(200, 200, 200)) << "the first photo through the overlap";
    EXPECT_EQ(out.pixelColor(150, 10).alpha(), 0) << "nothing there";
    EXPECT_EQ(out.pixelColor(150, 60), QColor(Qt::blue));
    EXPECT_EQ(out.pixelColor(10, 60), QColor(200, 200, 200));
}

TEST(PhotoBlender, UnrelatedOrFeaturelessNeighboursGetTheFixedOverlap)
{
    struct Case {
        const char *name;
        QImage first, second;
        bool vertical;
        QPoint expected;
    } cases[] = {
        {"flat fields", flat(200, 150, 60), flat(200, 150, 180), false, {200 - 25, 0}},
        {"smooth ramps", testimages::ramps(200, 150), testimages::ramps(200, 150), false, {200 - 25, 0}},
        {"different scenes", scene(200, 150), scene(300, 150).copy(100, 0, 200, 150).mirrored(true, true), false, {175, 0}},
        {"below, narrower photo centred", flat(200, 150, 60), flat(100, 150, 90), true, {50, 150 - 25}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const PhotoBlender::Join join = PhotoBlender::findJoin(c.first, c.second, c.vertical, 25);
        EXPECT_FALSE(join.matched);
        EXPECT_EQ(join.offset, c.expected);
    }
}

TEST(PhotoBlender, BlendsFilesOnItsThreadAndReportsProgress)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QStringList files;
    for (int i = 0; i < 2; ++i) {
        files.append(dir.filePath(QStringLiteral("p%1.jpg").arg(i)));
        ASSERT_TRUE(flat(120, 90, 80 + 60 * i).save(files.last()));
    }
    files.append(dir.filePath(QStringLiteral("not-a-photo.jpg")));
    ASSERT_TRUE(testimages::writeFile(files.last(), "text"));

    PhotoBlender blender;
    QSignalSpy done(&blender, &PhotoBlender::finished);
    QSignalSpy fractions(&blender, &PhotoBlender::progressFraction);
    QSignalSpy previews(&blender, &PhotoBlender::progressImage);
    QStringList prepared;
    blender.start(files, PhotoBlender::Arrangement::LeftToRight, fixedJoins(20), [&](const QStringList &in) {
        prepared = in;
        return in;
    });
    ASSERT_TRUE(done.wait(20000));
    EXPECT_EQ(prepared, files);
    // The unreadable file is left out.
    EXPECT_EQ(done.first().first().value<QImage>().size(), QSize(2 * 120 - 20, 90));
    ASSERT_FALSE(fractions.isEmpty());
    EXPECT_EQ(fractions.last().first().toDouble(), 1.0);
    EXPECT_FALSE(previews.isEmpty());
}

} // namespace
