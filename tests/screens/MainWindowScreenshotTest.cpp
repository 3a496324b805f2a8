#include "MainWindowScreenFixture.h"

#include "app/WelcomeSheet.h"
#include "images/UIImage.h"
#include "app/collage/TessaryView.h"

#include <QTest>

namespace {

// The windows as the X server shows them: each screenshot is grabbed from the screen (so
// sheets and windows on top are in it), saved into the build folder for people to look at,
// and checked against the layout the window computed.
class MainWindowScreenshotTest : public MainWindowScreenFixture
{
protected:
    MainWindowScreenshotTest() { showWelcome = true; }
    void SetUp() override
    {
        MainWindowScreenFixture::SetUp();
        ASSERT_TRUE(waitForTiles());
    }

    TessaryView &view() const { return controller->mainWindow().tessaryView(); }
    bool waitForTiles()
    {
        return QTest::qWaitFor([&] { return !view().currentLayout().tiles.empty() && view().allTilesFilled(); }, 30000);
    }
    // A point of the collage's document view in the grabbed picture of the main window.
    QPoint inGrab(const QPointF &documentPoint) const
    {
        MainWindow &w = controller->mainWindow();
        const QPoint global = view().documentView()->mapToGlobal(documentPoint.toPoint());
        return global - w.frameGeometry().topLeft();
    }
    static QColor meanColour(const QImage &image, const QRect &area)
    {
        qint64 r = 0, g = 0, b = 0, n = 0;
        const QRect clipped = area.intersected(image.rect());
        for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
            for (int x = clipped.left(); x <= clipped.right(); ++x) {
                const QColor c = image.pixelColor(x, y);
                r += c.red(), g += c.green(), b += c.blue(), ++n;
            }
        }
        return n ? QColor(int(r / n), int(g / n), int(b / n)) : QColor();
    }
    static int distance(const QColor &a, const QColor &b)
    {
        return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
    }
    // Each tile's centre shows its own photo (the photo fitted as the tile fits it), unless
    // something covers that point: a window on top or a tile drawn later (jumbled tiles may
    // overlap); returns how many tiles were checked.
    int checkTileCentres(const QImage &grab, const QList<QRect> &covered = {})
    {
        int checked = 0;
        const std::vector<TileLayout> &tiles = view().currentLayout().tiles;
        for (size_t i = 0; i < tiles.size(); ++i) {
            const TileLayout &tile = tiles[i];
            const QPoint centre = inGrab(tile.frame.center());
            bool hidden = false;
            for (const QRect &r : covered)
                hidden = hidden || r.contains(centre);
            for (size_t later = i + 1; later < tiles.size(); ++later)
                hidden = hidden || tiles[later].frame.adjusted(-3, -3, 3, 3).contains(tile.frame.center());
            if (hidden || !grab.rect().contains(centre))
                continue;
            const QImage fitted =
                UIImage::initWithContentsOfFileFittedToSize(tile.imagePath, tile.imageSize, tile.imageAlignment).bestRepresentation();
            const QPoint mid(fitted.width() / 2, fitted.height() / 2);
            // For the two rotations the picture is fitted to the swapped size and shown turned:
            // a small square around the centre is the same either way.
            const QColor want = meanColour(fitted, QRect(mid - QPoint(2, 2), QSize(5, 5)));
            const QColor got = meanColour(grab, QRect(centre - QPoint(2, 2), QSize(5, 5)));
            EXPECT_LE(distance(want, got), 48) << "tile " << tile.tag << " at " << centre.x() << "," << centre.y();
            ++checked;
        }
        return checked;
    }

};

// First start: the factory photos in the 7 x 7 template, the welcome sheet on top, the first
// photo selected with its blue outline.
TEST_F(MainWindowScreenshotTest, FirstStart)
{
    ASSERT_EQ(view().currentLayout().tiles.size(), 49u);
    QWidget *sheet = controller->mainWindow().findChild<WelcomeSheet *>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return sheet->isVisible(); }, 5000));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet, 5000));
    const QImage grab = grabMainWindow();
    save(grab, "main-window-first-start");
    const QRect sheetArea(sheet->frameGeometry().topLeft() - controller->mainWindow().frameGeometry().topLeft(),
                          sheet->frameGeometry().size());
    EXPECT_GE(checkTileCentres(grab, {sheetArea}), 10);

    // The selected photo's tile: the outline runs along its edge, inside the tile.
    const TileLayout *selected = nullptr;
    for (const TileLayout &tile : view().currentLayout().tiles)
        selected = tile.selected ? &tile : selected;
    ASSERT_NE(selected, nullptr);
    // The 3-pixel line starts where the tile starts, which falls between two screen pixels.
    const QColor outline(48, 140, 255);
    QColor closest;
    for (int dx = -1; dx <= 4; ++dx) {
        const QColor c = grab.pixelColor(inGrab(QPointF(selected->frame.left(), selected->frame.center().y())) + QPoint(dx, 0));
        if (!closest.isValid() || distance(c, outline) < distance(closest, outline))
            closest = c;
    }
    EXPECT_LE(distance(closest, outline), 24) << "outline colour " << closest.name().toStdString();

    save(sheet->grab().toImage(), "welcome-sheet");
}

} // namespace
