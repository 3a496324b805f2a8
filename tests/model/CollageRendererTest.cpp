#include "model/CollageRenderer.h"

#include "photos/ImageCache.h"
#include "model/CoordinateTransform.h"
#include "model/LayoutEngine.h"
#include "output/PageRenderer.h"
#include "model/RenderScale.h"
#include "model/TileImageFitter.h"
#include "model/TilePainter.h"
#include "support/ExifJpeg.h"
#include "support/FakePhotoList.h"
#include "support/PdfFacts.h"
#include "support/TestImages.h"

#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>

#include <vector>

namespace {

// Colours far enough apart that JPEG noise never confuses them.
const QColor kColours[] = {QColor(220, 30, 30), QColor(30, 200, 40), QColor(40, 60, 220), QColor(230, 200, 20),
                           QColor(200, 40, 200), QColor(20, 200, 210)};
const QColor kBackground(250, 250, 250);

bool near(const QColor &a, const QColor &b, int tolerance = 12)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
           && std::abs(a.blue() - b.blue()) <= tolerance;
}

::testing::AssertionResult shows(const QImage &image, QPoint at, const QColor &expected)
{
    const QColor got = image.pixelColor(at);
    if (near(got, expected))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << at.x() << ", " << at.y() << ") is " << got.name().toStdString()
                                         << ", expected " << expected.name().toStdString();
}

class RendererTest : public ::testing::Test
{
protected:
    QString save(const QString &name, const QImage &image, int quality = -1)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(image.save(path, nullptr, quality));
        return path;
    }
    // A solid photo file; large JPEGs exercise the reduced decoding.
    QString photo(const QString &name, const QColor &colour, QSize size = QSize(1600, 1200))
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        return save(name, image);
    }
    // A photo whose first half (left, or top for a tall one) and second half differ.
    QString halves(const QString &name, QSize size, const QColor &first, const QColor &second)
    {
        const int w = size.width(), h = size.height();
        return save(name, w >= h ? testimages::leftRight(w, h, w / 2, first, second)
                                 : testimages::topBottom(w, h, h / 2, first, second));
    }

    // A grid of columns x rows cells of 100 points, one 1 x 1 module per cell.
    CollageLayout layout(int columns, int rows, const TessaryViewDelegate &photos, int transform = 0, int spacing = 0)
    {
        LayoutEngine engine(photo(QStringLiteral("defaultImage.png"), QColor(128, 128, 128), QSize(64, 64)));
        engine.setCoordinateTransform(transform);
        engine.setSpacingType(spacing);
        engine.setup(100, 0, columns * 100.0, rows * 100.0, QSizeF(columns * 100.0, rows * 100.0));
        QVariantList modules;
        for (int i = 0; i < columns * rows; ++i)
            modules << QVariantMap{{QStringLiteral("widthFactor"), 1}, {QStringLiteral("heightFactor"), 1}};
        engine.loadTessaryDataModules(modules, true);
        CollageLayout result = engine.setupLayoutWithTessaryElements(engine.tessaryDataModules(), &photos);
        CoordinateTransform::applyCoordinateTransform(result);
        return result;
    }

    static CollageRenderer::Options options(bool renderEmptyTiles = false)
    {
        CollageRenderer::Options o;
        o.background = kBackground;
        o.renderEmptyTiles = renderEmptyTiles;
        o.threads = 2;
        return o;
    }

    QTemporaryDir dir;
};

// Every tile's centre shows its own photo and every gap between tiles shows the background,
// whichever way the collage is turned.
TEST_F(RendererTest, TileCentresShowTheirPhotosAndGapsTheBackground)
{
    QStringList paths;
    for (int i = 0; i < 6; ++i)
        paths << photo(QStringLiteral("p%1.%2").arg(i).arg(i % 2 ? "png" : "jpg"), kColours[i],
                       i % 3 == 2 ? QSize(900, 1500) : QSize(1600, 1200));
    const FakePhotoList photos(paths, {0, 1, 2, 3, 0, 1});
    for (int transform = 0; transform < CoordinateTransform::kCount; ++transform) {
        SCOPED_TRACE(transform);
        const CollageLayout l = layout(3, 2, photos, transform);
        const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 2, options());
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_TRUE(r.warnings.isEmpty());
        EXPECT_EQ(r.image.size(), CoordinateTransform::isRotation(transform) ? QSize(400, 600) : QSize(600, 400));
        ASSERT_EQ(l.tiles.size(), 6u);
        for (const TileLayout &t : l.tiles) {
            const QRect px = CollageRenderer::pixelRect(t.frame, 2);
            EXPECT_TRUE(shows(r.image, px.center(), kColours[t.tag])) << "tile " << t.tag;
            // Just outside the tile, in the spacing around it.
            EXPECT_TRUE(shows(r.image, QPoint(px.left() - 2, px.center().y()), kBackground)) << "left of " << t.tag;
            EXPECT_TRUE(shows(r.image, QPoint(px.center().x(), px.bottom() + 2), kBackground)) << "below tile " << t.tag;
        }
        EXPECT_TRUE(shows(r.image, QPoint(0, 0), kBackground));
    }
}

// A cancelled render (the program quits) skips the tiles left and gives no picture.
TEST_F(RendererTest, CancelledRenderSkipsTheTilesLeft)
{
    QStringList paths;
    for (int i = 0; i < 6; ++i)
        paths << photo(QStringLiteral("c%1.jpg").arg(i), kColours[i]);
    const FakePhotoList photos(paths, {0, 0, 0, 0, 0, 0});
    std::atomic<int> drawn{0};
    CollageRenderer::Options o = options();
    o.threads = 1;
    o.progress = [&](int, int) { ++drawn; };
    o.cancelled = [&] { return drawn.load() >= 2; };
    const CollageRenderer::Result r = CollageRenderer::renderScaled(layout(3, 2, photos), 2, o);
    EXPECT_FALSE(r.ok());
    EXPECT_EQ(r.error, QStringLiteral("cancelled"));
    EXPECT_TRUE(r.warnings.isEmpty());
}

TEST_F(RendererTest, ResultIsTheShownSizeOrAWholeMultipleOfIt)
{
    // 400-pixel photos in 95-point tiles want a factor of 4, which memory allows unless this
    // machine has almost none free.
    const FakePhotoList photos({photo(QStringLiteral("a.jpg"), kColours[0], QSize(400, 300)),
                                photo(QStringLiteral("b.jpg"), kColours[1], QSize(300, 400))});
    const CollageLayout l = layout(3, 2, photos);
    const CollageRenderer::Result shown = CollageRenderer::imageCollage(l, false, options());
    EXPECT_EQ(shown.image.size(), QSize(300, 200));
    const CollageRenderer::Result enlarged = CollageRenderer::imageCollage(l, true, options());
    ASSERT_TRUE(enlarged.ok());
    const int factor = enlarged.image.width() / 300;
    EXPECT_GE(factor, 1);
    EXPECT_LE(factor, 4);
    EXPECT_EQ(enlarged.image.size(), QSize(300 * factor, 200 * factor));
    EXPECT_LE(qint64(enlarged.image.width()) * enlarged.image.height(), 26'000'000);
}

TEST_F(RendererTest, PlaceholderTilesAreDrawnOnlyWhenAskedFor)
{
    const FakePhotoList photos({photo(QStringLiteral("a.jpg"), kColours[0])});
    const CollageLayout l = layout(2, 1, photos);
    ASSERT_TRUE(l.tiles[1].placeholder);
    const QPoint emptyCentre = CollageRenderer::pixelRect(l.tiles[1].frame, 1).center();
    for (bool renderEmpty : {false, true}) {
        const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 1, options(renderEmpty));
        EXPECT_TRUE(shows(r.image, CollageRenderer::pixelRect(l.tiles[0].frame, 1).center(), kColours[0]));
        EXPECT_TRUE(shows(r.image, emptyCentre, renderEmpty ? QColor(128, 128, 128) : kBackground)) << renderEmpty;
    }
}

struct AlignmentCase {
    QSize size;
    int method;
    int expectedHalf; // 0 the first (left or top) half, 1 the second, -1 the background
};

TEST_F(RendererTest, AlignmentKeepsTheRightEndOfThePhoto)
{
    const QColor first(220, 30, 30), second(40, 60, 220);
    const AlignmentCase cases[] = {
        {QSize(1600, 400), 1, 0}, {QSize(1600, 400), 2, 1}, // too wide: keep the left / the right end
        {QSize(400, 1600), 1, 0}, {QSize(400, 1600), 2, 1}, // too tall: keep the upper / the lower end
    };
    for (const AlignmentCase &c : cases) {
        const FakePhotoList photos({halves(QStringLiteral("h.jpg"), c.size, first, second)}, {c.method});
        const CollageLayout l = layout(1, 1, photos);
        const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 3, options());
        const QRect px = CollageRenderer::pixelRect(l.tiles[0].frame, 3);
        EXPECT_TRUE(shows(r.image, px.center(), c.expectedHalf == 0 ? first : second))
            << c.size.width() << "x" << c.size.height() << " method " << c.method;
    }
    // Fitting the whole photo leaves bands of background above and below a wide photo.
    const FakePhotoList photos({photo(QStringLiteral("wide.jpg"), first, QSize(1600, 400))}, {3});
    const CollageLayout l = layout(1, 1, photos);
    const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 3, options());
    const QRect px = CollageRenderer::pixelRect(l.tiles[0].frame, 3);
    EXPECT_TRUE(shows(r.image, px.center(), first));
    EXPECT_TRUE(shows(r.image, QPoint(px.center().x(), px.top() + 5), kBackground));
}

// A framed photo and a Smart-aligned one show the same part of the photo in the tile (fitted
// from the reduced copy in the cache) as in the full-size render (decoded afresh, reduced JPEG).
TEST_F(RendererTest, TileAndRenderCropTheSamePartOfAFramedPhoto)
{
    // A grid of 100-pixel cells of distinct colours, with one bright subject off centre.
    QImage grid(1600, 1200, QImage::Format_RGB32);
    for (int y = 0; y < grid.height(); ++y)
        for (int x = 0; x < grid.width(); ++x)
            grid.setPixel(x, y, qRgb((x / 100) * 15, (y / 100) * 20, ((x / 100 + y / 100) % 4) * 60));
    QPainter(&grid).fillRect(QRect(1250, 150, 160, 160), QColor(255, 230, 0));
    const QString path = save(QStringLiteral("grid.jpg"), grid, 95);

    FakePhotoList photos({path, path}, {0, 4});
    photos.framings = {PhotoFraming(QPointF(0.7, 0.3), 3), PhotoFraming()};
    const CollageLayout l = layout(2, 1, photos);
    ImageCache cache(&photos);
    const QList<UIImage> tiles = TileImageFitter::fitAll(l, cache, UIImage());
    const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 3, options());
    ASSERT_TRUE(r.ok());
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        const QImage tile = tiles.at(i).bestRepresentation().convertToFormat(QImage::Format_RGB32);
        const QImage rendered = r.image.copy(CollageRenderer::pixelRect(l.tiles[size_t(i)].frame, 3))
                                    .scaled(tile.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                    .convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(tile.size(), rendered.size());
        double difference = 0;
        for (int y = 0; y < tile.height(); ++y)
            for (int x = 0; x < tile.width(); ++x) {
                const QRgb a = tile.pixel(x, y), b = rendered.pixel(x, y);
                difference += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
            }
        // A crop off by a tenth of the tile would differ by far more than JPEG noise and scaling.
        EXPECT_LT(difference / (tile.width() * tile.height() * 3), 6.0);
    }
}

TEST_F(RendererTest, OverlappingTilesStackInLayoutOrder)
{
    // The first photo is slow to decode (a large PNG is decoded whole), the others fast, so the
    // later tiles are ready first and must still end up on top where they overlap.
    QStringList paths{photo(QStringLiteral("slow.png"), kColours[0], QSize(3000, 3000))};
    for (int i = 1; i < 6; ++i)
        paths << photo(QStringLiteral("o%1.jpg").arg(i), kColours[i], QSize(300, 300));
    const FakePhotoList photos(paths);
    const CollageLayout l = layout(3, 2, photos, 0, 1); // outset: neighbours overlap
    ASSERT_TRUE(l.tiles[0].frame.intersects(l.tiles[1].frame));
    for (int run = 0; run < 3; ++run) {
        const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 2, options());
        // Where tile 0 and tile 1 overlap (around x = 200), the later tile 1 lies on top; where
        // the first row overlaps the second, the second row does.
        EXPECT_TRUE(shows(r.image, QPoint(201, 100), kColours[1]));
        EXPECT_TRUE(shows(r.image, QPoint(198, 100), kColours[1]));
        EXPECT_TRUE(shows(r.image, QPoint(100, 198), kColours[3]));
        EXPECT_TRUE(shows(r.image, QPoint(100, 100), kColours[0]));
    }
}

TEST_F(RendererTest, UnreadablePhotoLeavesItsTileEmptyAndIsNamed)
{
    const QString broken = dir.filePath(QStringLiteral("broken.jpg"));
    ASSERT_TRUE(testimages::writeFile(broken, "\xFF\xD8\xFF\xE0 not really a jpeg"));
    const FakePhotoList photos({photo(QStringLiteral("ok.jpg"), kColours[2]), broken,
                                dir.filePath(QStringLiteral("missing.jpg"))});
    const CollageLayout l = layout(3, 1, photos);
    const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 1, options());
    ASSERT_TRUE(r.ok());
    ASSERT_EQ(r.warnings.size(), 2);
    EXPECT_TRUE(r.warnings[0].contains(QStringLiteral("broken.jpg"))) << r.warnings[0].toStdString();
    EXPECT_TRUE(r.warnings[1].contains(QStringLiteral("missing.jpg"))) << r.warnings[1].toStdString();
    // The window tells them in one alert: numbered as in the list, named without their folder.
    const AlertPresenter::Alert alert = UnreadablePhotos::leftEmptyAlert(r.unreadable);
    EXPECT_EQ(alert.messageText, QStringLiteral("2 photos cannot be read; their tiles were left empty."));
    const QStringList lines = alert.informativeText.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 2) << alert.informativeText.toStdString();
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("Photo 2: \u201cbroken.jpg\u201d"))) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("Photo 3: \u201cmissing.jpg\u201d: no such file"))) << lines[1].toStdString();
    EXPECT_FALSE(alert.informativeText.contains(dir.path()));
    EXPECT_EQ(UnreadablePhotos::leftEmptyAlert(r.unreadable.mid(1)).messageText,
              QStringLiteral("1 photo cannot be read; its tile was left empty."));
    EXPECT_TRUE(shows(r.image, CollageRenderer::pixelRect(l.tiles[0].frame, 1).center(), kColours[2]));
    EXPECT_TRUE(shows(r.image, CollageRenderer::pixelRect(l.tiles[1].frame, 1).center(), kBackground));
}

// Photos stored sideways, mirrored or upside down with an EXIF orientation tag are measured
// and drawn upright: one tile per orientation, each showing its four quarters in place. The
// photos are large enough that the render decodes them at a reduced scale.
TEST_F(RendererTest, PhotosAreMeasuredAndDrawnUprightWhateverTheirOrientation)
{
    const QSize upright(1600, 800);
    const QImage picture = testimages::quarters(upright.width(), upright.height());
    QStringList paths;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        paths << dir.filePath(QStringLiteral("o%1.jpg").arg(orientation));
        ASSERT_TRUE(testimages::writeFile(paths.last(), testimages::orientedJpeg(picture, orientation)));
        EXPECT_EQ(RenderScale::photoPixelSize(paths.last()), upright) << "orientation " << orientation;
    }
    const FakePhotoList photos(paths, QList<int>(8, 0));
    const CollageLayout l = layout(4, 2, photos);
    const CollageRenderer::Result r = CollageRenderer::renderScaled(l, 2, options());
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    for (const TileLayout &t : l.tiles) {
        SCOPED_TRACE(testing::Message() << "orientation " << t.tag + 1);
        EXPECT_EQ(testimages::quarterColours(r.image.copy(CollageRenderer::pixelRect(t.frame, 2))), QStringLiteral("RGBW"));
    }
}

TEST_F(RendererTest, UnscaledRenderShowsOpacityBorderAndSelection)
{
    const QColor red(220, 30, 30);
    const FakePhotoList photos({photo(QStringLiteral("r.jpg"), red), photo(QStringLiteral("g.jpg"), kColours[1])}, {},
                               1);
    CollageLayout l = layout(2, 1, photos);
    ASSERT_TRUE(l.tiles[1].selected);
    l.tiles[0].alpha = 0.5;
    l.tiles[0].borderWidth = 6;
    l.tiles[0].borderColor = QColor(0, 0, 0);
    const CollageRenderer::Result r = CollageRenderer::renderUnscaled(l, options());
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.image.size(), QSize(200, 100));
    const QRect a = CollageRenderer::pixelRect(l.tiles[0].frame, 1);
    const QRect b = CollageRenderer::pixelRect(l.tiles[1].frame, 1);
    // Half-transparent red over the near-white background, and its half-transparent border.
    EXPECT_TRUE(shows(r.image, QPoint(a.center().x(), a.top() + 20), QColor(235, 140, 140)));
    EXPECT_TRUE(shows(r.image, QPoint(a.center().x(), a.top() + 3), QColor(125, 125, 125)));
    // The selected tile: the blue outline on its edge, then the 3-point margin, then the photo.
    EXPECT_TRUE(shows(r.image, QPoint(b.center().x(), b.top()), TilePainter::selectionColor()));
    EXPECT_TRUE(shows(r.image, QPoint(b.center().x(), b.top() + 2), kBackground));
    EXPECT_TRUE(shows(r.image, QPoint(b.center().x(), b.top() + 4), kColours[1]));
    // The scaled render shows none of that.
    const CollageRenderer::Result plain = CollageRenderer::renderScaled(l, 1, options());
    EXPECT_TRUE(shows(plain.image, QPoint(a.center().x(), a.top() + 3), red));
    EXPECT_TRUE(shows(plain.image, QPoint(b.center().x(), b.top()), kColours[1]));
}

// A 200 × 100 point collage on an A4 landscape page at 150 dpi (1754 × 1240 pixels, a 10 mm
// margin of 59): fitted it is rendered 1636 × 818; filling, 2244 × 1122 with the sides cut to the
// 1636-pixel area. The PDF holds exactly the part on the page, at its own pixels.
TEST_F(RendererTest, PagePdfHoldsTheCollageRenderedForThePage)
{
    const FakePhotoList photos({photo(QStringLiteral("a.jpg"), kColours[0]), photo(QStringLiteral("b.jpg"), kColours[1])});
    const CollageLayout l = layout(2, 1, photos);
    struct Case {
        PagePreset::Fit fit;
        QSize render;
        QSize embedded;
    };
    for (const Case &c : {Case{PagePreset::Fit::Inside, {1636, 818}, {1636, 818}},
                          Case{PagePreset::Fit::Fill, {2244, 1122}, {1636, 1122}}}) {
        SCOPED_TRACE(int(c.fit));
        PagePreset page = *PagePreset::parse(QStringLiteral("a4,landscape"));
        page.setDotsPerInch(150).setFit(c.fit);
        const CollageRenderer::Result r = CollageRenderer::renderAtScale(l, page.scaleFor(l.contentSize), options());
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_EQ(r.image.size(), c.render);

        // Painted on a page of its own: the margin stays paper, the tiles land centred.
        QImage sheet(page.pixelSize(), QImage::Format_RGB32);
        sheet.fill(Qt::white);
        QPainter painter(&sheet);
        PageRenderer::paint(painter, r.image, page, 150);
        painter.end();
        EXPECT_TRUE(shows(sheet, QPoint(30, 620), Qt::white));
        EXPECT_TRUE(shows(sheet, QPoint(877 - 300, 620), kColours[0]));
        EXPECT_TRUE(shows(sheet, QPoint(877 + 300, 620), kColours[1]));

        const QString pdf = dir.filePath(QStringLiteral("page.pdf"));
        QString error;
        ASSERT_TRUE(PageRenderer::writePdf(r.image, page, pdf, {QStringLiteral("Holiday"), QStringLiteral("Tessary")},
                                           &error))
            << error.toStdString();
        if (!PdfFacts::toolsPresent())
            GTEST_SKIP() << PdfFacts::kMissing;
        const PdfFacts facts = PdfFacts::of(pdf);
        EXPECT_EQ(facts.pages, 1);
        EXPECT_NEAR(facts.pageSize.width(), 842, 1);
        EXPECT_NEAR(facts.pageSize.height(), 595, 1);
        EXPECT_EQ(facts.title, QStringLiteral("Holiday"));
        EXPECT_EQ(facts.creator, QStringLiteral("Tessary"));
        ASSERT_EQ(facts.images.size(), 1u);
        EXPECT_EQ(facts.images[0], c.embedded);
    }
}

// A PDF that cannot be written leaves the file that was there; its name always ends in ".pdf".
TEST_F(RendererTest, AFailedPdfKeepsTheOldFile)
{
    QString error;
    const QString old = dir.filePath(QStringLiteral("old.pdf"));
    ASSERT_TRUE(testimages::writeFile(old, "old"));
    const PagePreset tooWide = PagePreset::named(QStringLiteral("10x15cm"))->setMargin(60);
    EXPECT_FALSE(PageRenderer::writePdf(QImage(10, 10, QImage::Format_RGB32), tooWide, old, {}, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("no room"))) << error.toStdString();
    EXPECT_EQ(QFileInfo(old).size(), 3);
    EXPECT_EQ(PageRenderer::pdfPath(QStringLiteral("/a/b")), QStringLiteral("/a/b.pdf"));
    EXPECT_EQ(PageRenderer::pdfPath(QStringLiteral("/a/b.PDF")), QStringLiteral("/a/b.PDF"));
    EXPECT_EQ(PageRenderer::pdfPath(QStringLiteral("/a/b.png")), QStringLiteral("/a/b.png.pdf"));
    EXPECT_FALSE(PageRenderer::writePdf(QImage(10, 10, QImage::Format_RGB32), *PagePreset::named(QStringLiteral("A5")),
                                        dir.filePath(QStringLiteral("no/such/folder/x.pdf")), {}, &error));
    EXPECT_FALSE(error.isEmpty());
}

} // namespace
