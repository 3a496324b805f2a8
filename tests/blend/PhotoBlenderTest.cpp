#include "support/TestImages.h"

#include "blend/PhotoBlender.h"

#include <QRandomGenerator>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
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
        const QImage out = PhotoBlender::blendImages(photos, c.arrangement, fixedJoins(c.margin, c.scaling)).picture;
        EXPECT_EQ(out.size(), c.expected);
    }
    EXPECT_EQ(PhotoBlender::photosUsed(A::Square, 20), 16);
    EXPECT_EQ(PhotoBlender::photosUsed(A::LeftToRight, 20), 20);
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
        const QImage out = PhotoBlender::blendImages(c.pieces, c.arrangement, fixedJoins(30)).picture;
        ASSERT_EQ(out.size(), c.original.size());
        EXPECT_LT(testimages::meanDifference(out, c.original), 1.0);
    }
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

// Photos of any mix of shapes and sizes, in every arrangement and with every uniform sizing,
// give a picture without holes: opaque everywhere, no pixel darker or lighter than the photos
// (a gap would be black or transparent), and across each join the brightness goes from one
// photo's to the next without a step. Photos alternate between a dark and a light grey.
TEST(PhotoBlender, NoHolesForAnyMixOfShapes)
{
    using A = PhotoBlender::Arrangement;
    using U = PhotoBlender::UniformSize;
    const int margin = 20, dark = 60, light = 180;
    const QList<QSize> mixed{{300, 200}, {200, 300}, {400, 300}, {90, 160}, {160, 90}, {250, 250}, {320, 180}, {150, 200}};
    QList<QSize> sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen.append(mixed[i % mixed.size()]);
    struct Case {
        const char *name;
        A arrangement;
        U uniform;
        QList<QSize> sizes;
        QSize expected; // empty: not checked
        bool letterboxed = false; // the second photo sits in transparent bands
    } cases[] = {
        {"3:2 beside 4:3: one height", A::LeftToRight, U::None, {{300, 200}, {400, 300}}, {300 + 267 - margin, 200}},
        {"3:2 below 4:3: one width", A::BottomToTop, U::None, {{300, 200}, {400, 300}}, {300, 200 + 225 - margin}},
        {"portrait, landscape, portrait", A::LeftToRight, U::None, {{200, 300}, {300, 200}, {200, 300}}, {133 + 300 + 133 - 2 * margin, 200}},
        {"tiny with huge", A::LeftToRight, U::None, {{40, 30}, {2000, 1500}}, {40 + 40 - margin, 30}},
        {"sixteen of all shapes, left to right", A::LeftToRight, U::None, sixteen, {}},
        {"sixteen of all shapes, bottom to top", A::BottomToTop, U::None, sixteen, {}},
        {"square of sixteen", A::Square, U::None, sixteen, {}},
        {"square of four, fitted", A::Square, U::Fit, mixed.mid(0, 4), {}},
        {"fitted to one size, left to right", A::LeftToRight, U::Fit, mixed.mid(0, 5), {}},
        {"cropped to one size, bottom to top", A::BottomToTop, U::Crop, mixed.mid(0, 5), {}},
        {"square of nine, cropped", A::Square, U::Crop, mixed.mid(0, 9), {}},
        {"a letterboxed photo", A::LeftToRight, U::None, {{300, 200}, {300, 300}}, {300 + 300 - margin, 200}, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QList<QImage> photos;
        for (qsizetype i = 0; i < c.sizes.size(); ++i)
            photos.append(flat(c.sizes[i].width(), c.sizes[i].height(), i % 2 ? light : dark));
        if (c.letterboxed) {
            // A 300 x 200 photo fitted into 300 x 300: empty bands above and below.
            QImage boxed(300, 300, QImage::Format_ARGB32);
            boxed.fill(Qt::transparent);
            QPainter(&boxed).fillRect(0, 50, 300, 200, QColor(light, light, light));
            photos[1] = boxed;
        }
        PhotoBlender::Options options = fixedJoins(margin);
        options.uniformSize = c.uniform;
        const QImage out = PhotoBlender::blendImages(photos, c.arrangement, options).picture;
        ASSERT_FALSE(out.isNull());
        if (!c.expected.isEmpty()) {
            EXPECT_EQ(out.size(), c.expected);
        }
        if (c.arrangement == A::Square) {
            // The rows kept in a file while they wait for their joins: the same picture, and
            // the file gone with the blend.
            QTemporaryDir aside;
            options.rowBytesInMemory = 0;
            options.temporaryFolder = aside.path();
            EXPECT_EQ(PhotoBlender::blendImages(photos, c.arrangement, options).picture, out);
            EXPECT_EQ(QDir(aside.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
        }
        int darkest = 255, lightest = 0, transparent = 0;
        for (int y = 0; y < out.height(); ++y) {
            for (int x = 0; x < out.width(); ++x) {
                const QRgb p = out.pixel(x, y);
                transparent += qAlpha(p) < 255;
                darkest = std::min(darkest, qGray(p));
                lightest = std::max(lightest, qGray(p));
            }
        }
        EXPECT_EQ(transparent, 0);
        EXPECT_GE(darkest, dark - 3) << "a gap";
        EXPECT_LE(lightest, light + 3);
        // Along the middle line(s) across the joins: no step sharper than the feather allows.
        QList<QList<int>> profiles{{}, {}};
        for (int x = 0; x < out.width(); ++x)
            profiles[0].append(greyAt(out, x, c.arrangement == A::Square ? out.height() / 8 : out.height() / 2));
        for (int y = 0; y < out.height(); ++y)
            profiles[1].append(greyAt(out, out.width() / 2, y));
        for (const QList<int> &profile : profiles) {
            int largestStep = 0;
            for (qsizetype i = 1; i < profile.size(); ++i)
                largestStep = std::max(largestStep, std::abs(profile[i] - profile[i - 1]));
            EXPECT_LE(largestStep, 3 * (light - dark) / margin) << "a seam";
        }
    }
}

// Beyond the megapixel limit the photos are scaled before they are joined, and the sheet's
// message says so; the picture can be framed and streamed into a file, which a cancel leaves
// unwritten. Unreadable files are left out.
TEST(PhotoBlender, BlendsFilesWithinTheLimitIntoAFileOrNotAtAll)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QStringList files;
    for (int i = 0; i < 4; ++i) {
        files.append(dir.filePath(QStringLiteral("p%1.jpg").arg(i)));
        ASSERT_TRUE(flat(1000, 800, 80 + 40 * i).save(files.last()));
    }
    files.append(dir.filePath(QStringLiteral("not-a-photo.jpg")));
    ASSERT_TRUE(testimages::writeFile(files.last(), "text"));

    PhotoBlender::Options options = fixedJoins(50);
    options.megapixelLimit = 1.0;
    options.border = 10;
    options.background = Qt::red;
    QStringList messages;
    QList<double> fractions;
    int previews = 0;
    PhotoBlender::Progress progress;
    progress.message = [&](const QString &m) { messages.append(m); };
    progress.fraction = [&](double f) { fractions.append(f); };
    progress.image = [&](const QImage &) { ++previews; };
    const QString out = dir.filePath(QStringLiteral("out.png"));
    const PhotoBlender::Outcome made = PhotoBlender::blendToFile(files, PhotoBlender::Arrangement::LeftToRight, options, out, progress);
    ASSERT_TRUE(made.ok()) << made.error.toStdString();
    EXPECT_TRUE(made.scaledToLimit);
    EXPECT_NEAR(made.wholeMegapixels, (4 * 1000 - 3 * 50) * 800 / 1e6, 0.01);
    const QImage written(out);
    ASSERT_EQ(written.size(), made.size);
    EXPECT_LE((made.size.width() - 20) * (made.size.height() - 20), 1'000'000);
    EXPECT_GT((made.size.width() - 20) * (made.size.height() - 20), 950'000);
    EXPECT_EQ(written.pixelColor(3, 3), QColor(Qt::red));
    EXPECT_TRUE(messages.last().contains(QStringLiteral("megapixel limit"))) << messages.last().toStdString();
    EXPECT_EQ(fractions.last(), 1.0);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_EQ(previews, 4);

    // Cancelled once the reading is done: nothing is written, nothing is left behind.
    const QStringList before = QDir(dir.path()).entryList(QDir::Files | QDir::Hidden);
    progress.canceled = [&] { return fractions.size() > 8; };
    fractions.clear();
    const PhotoBlender::Outcome stopped = PhotoBlender::blendToFile(files, PhotoBlender::Arrangement::LeftToRight, options,
                                                                    dir.filePath(QStringLiteral("stopped.png")), progress);
    EXPECT_TRUE(stopped.canceled);
    EXPECT_TRUE(stopped.error.isEmpty());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), before);
}

} // namespace
