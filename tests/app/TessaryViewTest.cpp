#include "CollageFixture.h"

#include "photos/ImageCache.h"
#include "model/CoordinateTransform.h"
#include "model/LayoutEngine.h"
#include "model/TilePainter.h"
#include "support/LogCapture.h"
#include "templates/TemplateStore.h"

#include <QButtonGroup>
#include <QSpinBox>
#include <QFileInfo>
#include <QLabel>
#include <QSignalSpy>
#include <QWheelEvent>

namespace {

using TessaryViewTest = CollageFixture;

// The tiles are the core layout, applied: same count, tags, frames and photos, for every
// transform chosen on the control; the label beside the control names the transform.
TEST_F(TessaryViewTest, TilesFollowTheCoreLayoutForEveryTransform)
{
    const QVariantMap chosen = *view->templateStore().builtInTemplates().at(TemplateSelection::kDefaultBuiltInRow);
    const struct {
        int transform;
        const char *name;
    } cases[] = {
        {1, "Flipped Horizontally"}, {2, "Flipped Vertically"}, {3, "Rotated 90\u00BA Left"},
        {4, "Rotated 90\u00BA Right"}, {0, "No Transform"},
    };
    for (const auto &c : cases) {
        bar->transformGroup()->button(c.transform)->click();
        EXPECT_EQ(bar->transformNameLabel()->text(), QString::fromUtf8(c.name)) << c.transform;

        LayoutEngine engine(view->layoutEngine().defaultImage());
        engine.setCoordinateTransform(c.transform);
        CollageLayout expected = engine.layoutTemplate(chosen, view->availableSize(), browser.get());
        CoordinateTransform::applyCoordinateTransform(expected);

        const QList<TessaryDataView *> tiles = view->tiles();
        ASSERT_EQ(size_t(tiles.size()), expected.tiles.size()) << c.transform;
        ASSERT_EQ(tiles.size(), 49);
        EXPECT_EQ(view->documentView()->size(), expected.contentSize.toSize()) << c.transform;
        for (qsizetype i = 0; i < tiles.size(); ++i) {
            const TileLayout &t = expected.tiles[size_t(i)];
            EXPECT_EQ(tiles[i]->tag(), t.tag);
            EXPECT_EQ(tiles[i]->geometry(), t.frame.toRect()) << "transform " << c.transform << " tile " << i;
            EXPECT_EQ(tiles[i]->parentWidget(), view->documentView());
            // Tool tips name each tile's file; the index label numbers it from 1 at its
            // origin, the bottom-left corner.
            EXPECT_EQ(tiles[i]->toolTip(), QFileInfo(t.imagePath).fileName());
            ASSERT_NE(tiles[i]->indexLabel(), nullptr);
            EXPECT_EQ(tiles[i]->indexLabel()->text(), QString::number(t.tag + 1));
            EXPECT_EQ(tiles[i]->indexLabel()->geometry().bottomLeft(), tiles[i]->rect().bottomLeft());
        }
    }
}

// Only the selected photo's tile has its photo inset by 3 and the blue outline.
TEST_F(TessaryViewTest, SelectedTileHasTheOutlineAndInsetPhoto)
{
    browser->selectIndex(2);
    ASSERT_EQ(browser->selectedItem(), 2);
    for (TessaryDataView *tile : view->tiles()) {
        const QRect expected = tile->tag() == 2 ? tile->rect().adjusted(3, 3, -3, -3) : tile->rect();
        EXPECT_EQ(tile->imageView()->geometry(), expected) << tile->tag();
        EXPECT_EQ(tile->isSelected(), tile->tag() == 2);
    }
    TessaryDataView *selected = view->tileWithTag(2);
    ASSERT_NE(selected, nullptr);
    const QImage picture = selected->grab().toImage();
    const QColor edge = picture.pixelColor(0, picture.height() / 2);
    EXPECT_EQ(edge.rgb(), TilePainter::selectionColor().rgb());
    EXPECT_EQ(picture.pixelColor(picture.width() / 2, 0).rgb(), TilePainter::selectionColor().rgb());
    const QImage other = view->tileWithTag(3)->grab().toImage();
    EXPECT_NE(other.pixelColor(0, other.height() / 2).rgb(), TilePainter::selectionColor().rgb());
}

// Dropping one tile on another exchanges the two photos, logs both 1-based numbers and
// selects the dragged photo; a tile dropped on itself only selects. Placeholder tiles (past the
// photo list, tool tip the placeholder picture's) take part in no drag, and data without the
// private type does nothing. A photo tile is highlighted while a tile drag hovers over it.
TEST_F(TessaryViewTest, DropSwapsPhotos)
{
    browser->clearImages();
    const QStringList factory = browser->imageBookmarks().builtInImages();
    browser->addImagesWithPaths(factory.mid(0, 6));
    ASSERT_EQ(browser->count(), 6);
    const struct {
        const char *name;
        qint64 source; // -1: plain text
        qint64 target;
        bool taken, swaps;
    } cases[] = {
        {"tile 2 onto tile 5", 1, 4, true, true},
        {"onto itself", 3, 3, true, false},
        {"onto a placeholder", 1, 10, false, false},
        {"foreign data", -1, 0, false, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        const QStringList before = browser->images();
        const qsizetype selected = browser->selectedItem();
        TessaryDataView *target = view->tileWithTag(c.target);
        ASSERT_NE(target, nullptr);
        std::unique_ptr<QMimeData> data(c.source >= 0 ? DragDropImageView::mimeDataForTag(c.source) : new QMimeData);
        if (c.source < 0)
            data->setText(QStringLiteral("3"));
        EXPECT_EQ(dragAndDrop(target->imageView(), data.get()), c.taken);
        QStringList expected = before;
        if (c.swaps)
            expected.swapItemsAt(c.source, c.target);
        EXPECT_EQ(browser->images(), expected);
        EXPECT_EQ(browser->selectedItem(), c.taken ? c.source : selected);
        const QStringList lines = log.lines().filter(QStringLiteral("Item "));
        if (c.swaps)
            EXPECT_EQ(lines, (QStringList{QStringLiteral("Item 1 = %1").arg(c.target + 1),
                                          QStringLiteral("Item 2 = %1").arg(c.source + 1)}));
        else
            EXPECT_TRUE(lines.isEmpty());
        // The new layout shows the exchanged photos.
        if (c.taken) {
            EXPECT_EQ(view->tileWithTag(c.target)->imagePath(), expected.at(c.target));
        }
    }
    TessaryDataView *placeholder = view->tileWithTag(10);
    EXPECT_TRUE(placeholder->isPlaceholder());
    EXPECT_FALSE(placeholder->imageView()->canBeSourceOrDestination());
    EXPECT_TRUE(view->tileWithTag(2)->imageView()->canBeSourceOrDestination());
    EXPECT_EQ(view->toolTipStrings().at(10), QStringLiteral("defaultImage.png"));
    EXPECT_EQ(view->toolTipStrings().at(1), QFileInfo(browser->images().at(1)).fileName());

    std::unique_ptr<QMimeData> data(DragDropImageView::mimeDataForTag(1));
    DragDropImageView *photo = view->tileWithTag(2)->imageView();
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(photo, &enter);
    EXPECT_TRUE(photo->highlight());
    QDragLeaveEvent leave;
    QApplication::sendEvent(photo, &leave);
    EXPECT_FALSE(photo->highlight());
}

// The jumble buttons reach the collage's jumble and the view shows it (the scatter, the undo
// swaps and the alert coming once are the jumble's own tests): jumble scatters the tiles, undo
// puts them back, a relayout of photos, spacing or size is refused with the alert, and unjumble
// lays the template out again.
TEST_F(TessaryViewTest, JumbleUndoUnjumble)
{
    QSignalSpy jumbled(view, &TessaryView::jumbledChanged);
    const auto frames = [this] {
        QList<QRect> r;
        for (TessaryDataView *tile : view->tiles())
            r.append(tile->geometry());
        return r;
    };
    const QList<QRect> original = frames();
    EXPECT_FALSE(bar->undoJumbleButton()->isEnabled());
    EXPECT_FALSE(bar->unjumbleButton()->isEnabled());

    bar->jumbleButton()->click();
    EXPECT_TRUE(view->isJumbled());
    EXPECT_TRUE(bar->undoJumbleButton()->isEnabled());
    EXPECT_TRUE(bar->unjumbleButton()->isEnabled());
    EXPECT_NE(frames(), original);
    bar->undoJumbleButton()->click();
    EXPECT_EQ(frames(), original);
    EXPECT_TRUE(view->isJumbled());

    const quint64 generation = view->layoutGeneration();
    browser->insertBlankImage();
    bar->widthSpacing()->setValue(20);
    view->setFixedSize(600, 450);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->layoutGeneration(), generation);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].messageText, QStringLiteral("Tessary is Jumbled."));

    bar->unjumbleButton()->click();
    EXPECT_FALSE(view->isJumbled());
    EXPECT_FALSE(bar->undoJumbleButton()->isEnabled());
    EXPECT_GT(view->layoutGeneration(), generation);
    for (TessaryDataView *tile : view->tiles())
        EXPECT_EQ(tile->geometry(), view->currentLayout().tileForModule(tile->tag())->frame.toRect());
    EXPECT_EQ(jumbled.size(), 2);
}

// A frame change with an unchanged size rebuilds nothing; a new size lays out anew.
TEST_F(TessaryViewTest, FrameChangeRelaysOutOnlyForANewSize)
{
    const quint64 generation = view->layoutGeneration();
    const QWidget *firstTile = view->tiles().value(0);
    view->frameDidChangeNotification();
    EXPECT_EQ(view->layoutGeneration(), generation);
    EXPECT_EQ(view->tiles().value(0), firstTile);

    view->setFixedSize(500, 400);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->layoutGeneration(), generation + 1);
    EXPECT_LE(view->documentView()->width(), 500);
    EXPECT_LE(view->documentView()->height(), 400);
}

// With a cold cache the tiles show the loading look (not the placeholder picture) and fill in
// as the photos are decoded; a later relayout with the warm cache shows no loading tile.
TEST_F(TessaryViewTest, ColdCacheTilesFillIn)
{
    QSignalSpy filled(view, &TessaryView::tilesFilled);
    qsizetype loading = 0;
    for (TessaryDataView *tile : view->tiles())
        loading += tile->imageView()->isLoading() && tile->imageView()->image().isNull();
    EXPECT_GT(loading, 0);
    ASSERT_TRUE(waitFilled());
    EXPECT_GE(filled.size(), 1);
    for (TessaryDataView *tile : view->tiles()) {
        EXPECT_FALSE(tile->imageView()->isLoading()) << tile->tag();
        const QImage photo = tile->imageView()->image();
        ASSERT_FALSE(photo.isNull()) << tile->tag();
        // Fitted to the tile's image size (centred crop by default), to the whole pixel.
        const QSizeF wanted = view->currentLayout().tileForModule(tile->tag())->imageSize;
        EXPECT_NEAR(photo.width(), wanted.width(), 1.0) << tile->tag();
        EXPECT_NEAR(photo.height(), wanted.height(), 1.0) << tile->tag();
    }

    // A relayout that leaves every tile's size alone shows the fitted pictures again at once.
    const quint64 generation = view->layoutGeneration();
    browser->selectIndex(5);
    EXPECT_GT(view->layoutGeneration(), generation);
    EXPECT_TRUE(view->allTilesFilled());

    // New sizes in quick succession (a live resize): every tile keeps showing its photo, scaled,
    // while the photos are fitted anew; none looks like loading.
    for (const QSize size : {QSize(640, 480), QSize(620, 470), QSize(600, 460)}) {
        view->setFixedSize(size);
        QCoreApplication::sendPostedEvents();
        for (TessaryDataView *tile : view->tiles()) {
            EXPECT_FALSE(tile->imageView()->isLoading()) << tile->tag();
            EXPECT_FALSE(tile->imageView()->shownImage().isNull()) << tile->tag();
        }
    }
    ASSERT_TRUE(waitFilled());
}

// A photo that cannot be read shows the mark in its tile and does not hold the others up,
// neither when it fails nor in later layouts.
TEST_F(TessaryViewTest, UnreadablePhotoDoesNotHoldUpFilling)
{
    QFile broken(dir.filePath(QStringLiteral("broken.jpg")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("not a picture");
    broken.close();
    browser->insertImage(broken.fileName(), 0);
    ASSERT_EQ(view->tileWithTag(0)->imagePath(), broken.fileName());
    ASSERT_TRUE(waitFilled());
    EXPECT_FALSE(view->tileWithTag(0)->imageView()->isLoading());
    EXPECT_TRUE(view->tileWithTag(0)->imageView()->isUnreadable());
    view->setFixedSize(650, 450);
    QCoreApplication::processEvents();
    ASSERT_TRUE(waitFilled());
    EXPECT_TRUE(view->tileWithTag(0)->imageView()->isUnreadable());
}

// Alt+drag in the selected tile pans its photo and Ctrl+wheel over a tile zooms it about the
// pointer, each stored with the photo once the gesture ends (the geometry is PhotoFraming's);
// Alt+double-click ends the framing. Pictures of the tile are saved for a person to look at.
TEST_F(TessaryViewTest, AltDragPansAndCtrlWheelZoomsAPhotoInItsTile)
{
    browser->selectIndex(0);
    ASSERT_TRUE(waitFilled());
    const auto image = [this] { return view->tileWithTag(0)->imageView(); };
    const auto save = [&](const char *name) {
        QCoreApplication::processEvents();
        const QImage shot = view->tileWithTag(0)->grab().toImage();
        EXPECT_TRUE(shot.save(QStringLiteral(TESSARY_BINARY_DIR "/%1.png").arg(QLatin1String(name))));
        return shot;
    };
    const auto mouse = [&](QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
        QMouseEvent event(type, QPointF(at), image()->mapToGlobal(QPointF(at)), Qt::LeftButton, buttons, Qt::AltModifier);
        QApplication::sendEvent(image(), &event);
    };
    // The centred crop's arithmetic rounds, so framings compare to a thousandth.
    const auto same = [](const PhotoFraming &a, const PhotoFraming &b) {
        return a.isNull() == b.isNull() && std::abs(a.center().x() - b.center().x()) < 1e-3
               && std::abs(a.center().y() - b.center().y()) < 1e-3 && std::abs(a.zoom() - b.zoom()) < 1e-3;
    };
    const QImage before = save("framing-before");
    const QSizeF photo(view->imageCache().cachedImageForPath(browser->images().at(0))->bestRepresentation().size());
    const QSizeF fit = view->tileWithTag(0)->tile().imageSize;

    const QPoint from = image()->rect().center();
    mouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
    mouse(QEvent::MouseMove, from + QPoint(8, 0), Qt::LeftButton);
    mouse(QEvent::MouseMove, from + QPoint(15, 3), Qt::LeftButton);
    EXPECT_TRUE(image()->hasFramingPreview());
    EXPECT_TRUE(browser->framingAtIndex(0).isNull()); // stored only when the drag ends
    mouse(QEvent::MouseButtonRelease, from + QPoint(15, 3), Qt::NoButton);
    const PhotoFraming panned = PhotoFraming(QPointF(0.5, 0.5), 1).clamped(photo, fit).panned(photo, fit, QPointF(15, 3));
    EXPECT_TRUE(same(browser->framingAtIndex(0), panned));
    ASSERT_TRUE(waitFilled());
    EXPECT_NE(save("framing-after-alt-drag"), before);

    // Ctrl+wheel: one notch zooms by a fifth about the pointer; stored once the wheel rests.
    const QPoint at = image()->rect().topLeft() + QPoint(10, 10);
    QWheelEvent wheel(QPointF(at), image()->mapToGlobal(QPointF(at)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(image(), &wheel);
    const PhotoFraming zoomed = panned.zoomedAbout(photo, fit, image()->pointInPicture(QPointF(at), fit), 1.2);
    EXPECT_TRUE(same(view->framingInProgress(), zoomed));
    ASSERT_TRUE(QTest::qWaitFor([&] { return same(browser->framingAtIndex(0), zoomed); }, 2000));
    ASSERT_TRUE(waitFilled());
    save("framing-zoomed");

    // A wheel without Ctrl scrolls the collage and frames nothing; Alt+double-click resets.
    QWheelEvent scroll(QPointF(at), image()->mapToGlobal(QPointF(at)), QPoint(), QPoint(0, 120), Qt::NoButton,
                       Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(image(), &scroll);
    EXPECT_TRUE(view->framingInProgress().isNull());
    mouse(QEvent::MouseButtonDblClick, at, Qt::LeftButton);
    EXPECT_TRUE(browser->framingAtIndex(0).isNull());
}

} // namespace
