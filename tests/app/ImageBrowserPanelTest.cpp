#include "AppFixture.h"
#include "support/RecordingAlertPresenter.h"
#include "support/TestImages.h"
#include "support/UrlRecorder.h"

#include "foundation/ImagesFolder.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"
#include "app/photos/ImageBrowserDelegate.h"
#include "app/photos/ImageBrowserListView.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/photos/ImageBrowserPanel.h"
#include "app/templates/TemplateTableView.h"
#include "app/photos/PhotoPreview.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

namespace {

using Drop = ImageBrowserController::DropOperation;

class ImageBrowserPanelTest : public AppFixture
{
protected:
    void TearDown() override
    {
        dropPanel();
        AppFixture::TearDown();
    }
    // Ends the panel and its list, for the next case of a table.
    void dropPanel()
    {
        panel.reset();
        loader.reset();
        cache.reset();
        controller.reset();
        defaults->removeObject(Preferences::Bookmarks);
    }

    QString photosFolder() const { return dir.filePath(QStringLiteral("photos")); }
    QString imagesFolder() const { return dir.filePath(QStringLiteral("Documents/Images")); }

    // A small real picture, so that the cache can decode it.
    QString makePhoto(const QString &name, const QColor &color = Qt::darkCyan)
    {
        QDir().mkpath(photosFolder());
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(color);
        const QString path = QDir(photosFolder()).filePath(name);
        EXPECT_TRUE(image.save(path));
        return path;
    }

    // A panel over photos "a.png" .. (n of them; the factory photos of a first run when n < 0),
    // shown at a size where every photo is on screen.
    void makePanel(int n, QSize size = QSize(520, 760))
    {
        if (n >= 0)
            defaults->setBool(false, QStringLiteral("FirstRunLoadFactoryImages"));
        controller = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        controller->setCollageReloader([this] { ++collageReloads; });
        QStringList paths;
        for (int i = 0; i < n; ++i)
            paths.append(makePhoto(QStringLiteral("%1.png").arg(QChar('a' + i)), QColor::fromHsv(i * 40 % 360, 200, 200)));
        if (!paths.isEmpty())
            controller->addImagesWithPaths(paths);
        cache = std::make_unique<ImageCache>(controller.get());
        loader = std::make_unique<ImageCacheLoader>(*cache);
        panel = std::make_unique<ImageBrowserPanel>(*controller, *loader, *defaults);
        panel->resize(size);
        panel->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(panel.get()));
        controller->setInitialSelection();
        collageReloads = 0;
    }

    QString names() const
    {
        QString s;
        for (const QString &path : controller->images())
            s += QFileInfo(path).completeBaseName().left(1);
        return s;
    }
    QWidget *viewport() const { return panel->grid().viewport(); }
    QRect itemRect(int row) const { return panel->grid().visualRect(panel->model().index(row)); }
    // Points inside the grid: in the left quarter of an item (before it), its middle (on it),
    // the gap after the last item of its line, and below everything.
    QPoint beforeItem(int row) const { return itemRect(row).center() - QPoint(itemRect(row).width() * 3 / 8, 0); }
    QPoint onItem(int row) const { return itemRect(row).center(); }
    QPoint afterLastItem() const
    {
        const QRect r = itemRect(int(controller->count()) - 1);
        return QPoint(r.right() + 3, r.center().y());
    }
    QPoint belowEverything() const { return QPoint(10, viewport()->height() - 5); }

    // Drags the data over the grid to the point and drops it there, as a desktop would.
    bool dragAndDrop(const QMimeData &data, const QPoint &at, bool drop = true)
    {
        QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &enter);
        if (!enter.isAccepted())
            return false;
        QDragMoveEvent move(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &move);
        if (!drop)
            return move.isAccepted();
        QDropEvent dropEvent(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &dropEvent);
        return dropEvent.isAccepted();
    }
    static std::unique_ptr<QMimeData> filesData(const QStringList &paths)
    {
        auto data = std::make_unique<QMimeData>();
        QList<QUrl> urls;
        for (const QString &p : paths)
            urls.append(QUrl::fromLocalFile(p));
        data->setUrls(urls);
        return data;
    }
    int thumbnailState(int row) const
    {
        return panel->model().index(row).data(ImageBrowserModel::ThumbnailStateRole).toInt();
    }
    bool waitForCount(qsizetype n) { return QTest::qWaitFor([&] { return controller->count() == n; }, 5000); }
    // The grid shows every row of the list, and the selection of the controller.
    void expectGridInStep()
    {
        ASSERT_EQ(panel->model().rowCount(), controller->count());
        for (int row = 0; row < panel->model().rowCount(); ++row)
            EXPECT_EQ(panel->model().pathAtRow(row), controller->images().at(row)) << row;
        const QModelIndexList selected = panel->grid().selectionModel()->selectedIndexes();
        ASSERT_EQ(selected.size(), controller->selectedItem() >= 0 ? 1 : 0);
        if (!selected.isEmpty()) {
            EXPECT_EQ(selected.first().row(), controller->selectedItem());
        }
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<ImageBrowserController> controller;
    std::unique_ptr<ImageCache> cache;
    std::unique_ptr<ImageCacheLoader> loader;
    std::unique_ptr<ImageBrowserPanel> panel;
    int collageReloads = 0;
};

// One drop per kind of drag data and place (what the list makes of each is the controller's
// table): files from a file manager before an item (reversed when several), on one (the last
// wins), after the last item or below everything; another Tessary's photo is such a file,
// copied in; the grid's own photo moves between items, swaps on one and changes nothing on or
// next to itself; a web browser's picture is kept in Documents/Images; words and a template
// row are refused. While files hover, the grid shows where they would go; after the drop it
// shows the list and its selection.
TEST_F(ImageBrowserPanelTest, DropsByKindOfDataAndPlace)
{
    enum Kind { Files, OtherTessary, OwnPhoto, WebPicture, Words, TemplateRow };
    enum Where { Before, On, AfterLast, Below };
    QImage picture(20, 10, QImage::Format_RGB32);
    picture.fill(Qt::magenta);
    const QByteArray png = testimages::encode(picture, "PNG");
    const struct {
        const char *name;
        Kind kind;
        int from;
        Where where;
        int row;
        const char *expected; // null: a new photo of Documents/Images at the row
        qsizetype selected;
    } cases[] = {
        {"files before item 2", Files, 0, Before, 2, "abyxcd", 2},
        {"files on item 1", Files, 0, On, 1, "aycd", 1},
        {"files after the last one", Files, 0, AfterLast, 0, "abcdyx", 4},
        {"files below everything", Files, 0, Below, 0, "abcdyx", 4},
        {"from another Tessary", OtherTessary, 0, Before, 0, "yxabcd", 0},
        {"own photo between items", OwnPhoto, 0, Before, 3, "bcad", 2},
        {"own photo on another", OwnPhoto, 0, On, 3, "dbca", 3},
        {"own photo on itself", OwnPhoto, 1, On, 1, "abcd", 0},
        {"own photo next to itself", OwnPhoto, 1, Before, 2, "abcd", 0},
        {"a web browser's picture", WebPicture, 0, Before, 1, nullptr, 1},
        {"words", Words, 0, On, 0, "abcd", 0},
        {"a template row", TemplateRow, 0, On, 0, "abcd", 0},
    };
    for (const auto &k : cases) {
        SCOPED_TRACE(k.name);
        makePanel(4);
        std::unique_ptr<QMimeData> data;
        if (k.kind == Files || k.kind == OtherTessary)
            data = filesData({makePhoto(QStringLiteral("x.png")), makePhoto(QStringLiteral("y.png"))});
        else if (k.kind == OwnPhoto)
            data.reset(panel->grid().dragData(k.from));
        else
            data = std::make_unique<QMimeData>();
        if (k.kind == OtherTessary)
            data->setData(ImageBrowserListView::kItemMimeType, "1 0"); // process 1 is never us
        // What the grid itself puts into a drag of a photo: a file for other programs too.
        if (k.kind == OwnPhoto) {
            EXPECT_EQ(data->urls(), QList<QUrl>{QUrl::fromLocalFile(controller->images().at(k.from))});
        }
        if (k.kind == WebPicture)
            data->setData(QStringLiteral("image/png"), png);
        if (k.kind == Words)
            data->setText(QStringLiteral("just words"));
        // A template row offers its templates file as a local file URL; it is not a photo.
        if (k.kind == TemplateRow) {
            data->setData(TemplateTableView::kRowMimeType, QByteArrayLiteral("1 0 3"));
            data->setUrls({QUrl::fromLocalFile(imagesFolder() + QStringLiteral("/Tessary-Template-1.plist"))});
        }
        const QPoint at = k.where == Before    ? beforeItem(k.row)
                        : k.where == On        ? onItem(k.row)
                        : k.where == AfterLast ? afterLastItem()
                                               : belowEverything();
        if (k.kind == Files || k.kind == OtherTessary) {
            ASSERT_TRUE(dragAndDrop(*data, at, false));
            ASSERT_TRUE(panel->grid().shownDropTarget().has_value());
            EXPECT_EQ(panel->grid().shownDropTarget()->operation, k.where == On ? Drop::DropOn : Drop::DropBefore);
        }
        EXPECT_EQ(dragAndDrop(*data, at), k.kind != Words && k.kind != TemplateRow);
        EXPECT_FALSE(panel->grid().shownDropTarget().has_value());
        if (k.expected) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return names() == QLatin1String(k.expected); }, 5000)) << qPrintable(names());
        } else {
            ASSERT_TRUE(waitForCount(5));
            EXPECT_TRUE(ImagesFolder::isOwned(controller->images().at(k.row))) << qPrintable(controller->images().at(k.row));
        }
        EXPECT_EQ(controller->selectedItem(), k.selected);
        expectGridInStep();
        dropPanel();
    }
}

// The drop feedback is painted: an insertion line between items, a highlighted item for "on".
TEST_F(ImageBrowserPanelTest, DropFeedbackIsDrawn)
{
    makePanel(4, QSize(420, 520));
    ASSERT_TRUE(QTest::qWaitFor([&] { return thumbnailState(3) == ImageBrowserModel::ThumbnailReady; }, 5000));
    const auto data = filesData({makePhoto(QStringLiteral("x.png"))});
    const QColor red = ImageBrowserDelegate::selectionColor();
    const auto near = [](QRgb a, const QColor &b) {
        return std::abs(qRed(a) - b.red()) < 40 && qGreen(a) < 60 && qBlue(a) < 60;
    };
    ASSERT_TRUE(dragAndDrop(*data, beforeItem(2), false));
    QImage shot = viewport()->grab().toImage();
    shot.save(QStringLiteral(TESSARY_BINARY_DIR "/ImageBrowserDropBefore.png"));
    const QRect r = itemRect(2);
    const int gapX = r.left() - panel->grid().spacing();
    bool line = false;
    for (int dx = -2; dx <= 2; ++dx)
        line = line || near(shot.pixel(gapX + dx, r.center().y()), red);
    EXPECT_TRUE(line) << "no insertion line before item 2";

    ASSERT_TRUE(dragAndDrop(*data, onItem(3), false));
    shot = viewport()->grab().toImage();
    shot.save(QStringLiteral(TESSARY_BINARY_DIR "/ImageBrowserDropOn.png"));
    const QRect on = itemRect(3);
    bool outline = false;
    for (int dx = 0; dx <= 3; ++dx)
        outline = outline || near(shot.pixel(on.left() + dx, on.center().y()), red);
    EXPECT_TRUE(outline) << "item 3 not highlighted";
    QDragLeaveEvent leave;
    QApplication::sendEvent(viewport(), &leave);
    EXPECT_FALSE(panel->grid().shownDropTarget().has_value());
}

// Paste hands the clipboard to the list (what it makes of images and file URLs is the
// controller's own test): an image lands at the selected photo; nothing usable beeps.
TEST_F(ImageBrowserPanelTest, PasteTakesTheClipboardOrBeeps)
{
    makePanel(3);
    controller->selectIndex(1);
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::yellow);
    auto *image = new QMimeData;
    image->setImageData(picture);
    QGuiApplication::clipboard()->setMimeData(image);
    panel->paste();
    ASSERT_EQ(controller->count(), 4);
    EXPECT_TRUE(controller->images().at(1).startsWith(QFileInfo(imagesFolder()).absoluteFilePath()));
    EXPECT_EQ(controller->selectedItem(), 1);
    expectGridInStep();

    auto *nothing = new QMimeData;
    nothing->setText(QStringLiteral("no picture here"));
    QGuiApplication::clipboard()->setMimeData(nothing);
    const int beeps = alerts.beeps;
    panel->paste();
    EXPECT_EQ(controller->count(), 4);
    EXPECT_EQ(alerts.beeps, beeps + 1);
}

// The selection is one: clicking a photo or typing its number selects it in the controller
// (empty space keeps it), the controller's choice shows in the grid; a second later the
// preview, the label and the pop-up follow.
TEST_F(ImageBrowserPanelTest, SelectionPreviewAndLabel)
{
    makePanel(5);
    QTest::mouseClick(viewport(), Qt::LeftButton, {}, onItem(2));
    EXPECT_EQ(controller->selectedItem(), 2);
    QTest::mouseClick(viewport(), Qt::LeftButton, {}, belowEverything());
    EXPECT_EQ(controller->selectedItem(), 2);
    controller->imageBookmarks().setAligment(ImageBookmarks::ResizeCropEnd, 2);
    QSignalSpy preview(controller.get(), &ImageBrowserController::previewChanged);
    ASSERT_TRUE(QTest::qWaitFor([&] { return preview.count() > 0; }, 3000));
    EXPECT_EQ(panel->imageLabel().text(), QStringLiteral("Image 3"));
    EXPECT_EQ(panel->alignmentPopUp().currentIndex(), int(ImageBookmarks::ResizeCropEnd));
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel->preview().state() == PhotoPreview::State::Shown; }, 5000));
    EXPECT_EQ(panel->preview().image().size(), QSize(40, 30));

    controller->selectIndex(4);
    expectGridInStep();
    // Return in the number field hands the typed number to the controller (which numbers
    // select is the controller's own test); the field takes digits only.
    QLineEdit &field = panel->numberField();
    QTest::keyClicks(&field, QStringLiteral("3"));
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(controller->selectedItem(), 2);
    expectGridInStep();
    field.clear();
    QTest::keyClicks(&field, QStringLiteral("2a"));
    EXPECT_EQ(field.text(), QLatin1String("2"));
    // Emptying the list empties the preview and the label.
    controller->clearImages();
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel->imageLabel().text() == QLatin1String(" "); }, 3000));
    EXPECT_EQ(panel->preview().state(), PhotoPreview::State::Empty);
    EXPECT_FALSE(panel->alignmentPopUp().isEnabled());
    EXPECT_FALSE(panel->fitAllButton().isEnabled());
    EXPECT_FALSE(panel->numberField().isEnabled());
    expectGridInStep();
}

// The alignment pop-up lists the four alignments in value order and sets the selected photo's;
// Center All and Fit All set every photo's; each lays the collage out again.
TEST_F(ImageBrowserPanelTest, AlignmentControls)
{
    makePanel(3);
    controller->selectIndex(1);
    collageReloads = 0;
    QComboBox &popUp = panel->alignmentPopUp();
    ASSERT_EQ(popUp.count(), 5);
    EXPECT_EQ(popUp.itemText(4), QStringLiteral("Fill, Smart"));
    // Choosing an alignment also ends the photo's hand framing (and its mark).
    controller->setFramingAtIndex(1, PhotoFraming(QPointF(0.3, 0.3), 2));
    EXPECT_TRUE(panel->model().index(1).data(ImageBrowserModel::FramedRole).toBool());
    collageReloads = 0;
    popUp.setFocus();
    QTest::keyClick(&popUp, Qt::Key_End);
    EXPECT_EQ(controller->alignmentIndexAtIndex(1), int(ImageBookmarks::ResizeSmart));
    EXPECT_EQ(controller->alignmentIndexAtIndex(0), int(ImageBookmarks::ResizeCrop));
    EXPECT_TRUE(controller->framingAtIndex(1).isNull());
    EXPECT_FALSE(panel->model().index(1).data(ImageBrowserModel::FramedRole).toBool());
    EXPECT_EQ(collageReloads, 1);
    QTest::keyClick(&popUp, Qt::Key_Up);
    EXPECT_EQ(controller->alignmentIndexAtIndex(1), int(ImageBookmarks::ResizeScale));
    EXPECT_EQ(collageReloads, 2);

    QTest::mouseClick(&panel->fitAllButton(), Qt::LeftButton);
    EXPECT_EQ(controller->imageBookmarks().imageAlignments(), (QList<int>{3, 3, 3}));
    EXPECT_EQ(popUp.currentIndex(), 3);
    QTest::mouseClick(&panel->centerAllButton(), Qt::LeftButton);
    EXPECT_EQ(controller->imageBookmarks().imageAlignments(), (QList<int>{0, 0, 0}));
    EXPECT_EQ(popUp.currentIndex(), 0);
    EXPECT_EQ(collageReloads, 4);
    // Stored at once.
    EXPECT_EQ(defaults->arrayForKey(Preferences::Aligments).size(), 3);
}

// The zoom slider starts from "IconSize", sizes the thumbnails and writes the key back.
TEST_F(ImageBrowserPanelTest, ZoomSliderUsesAndWritesIconSize)
{
    defaults->setDouble(0.25, Preferences::IconSize);
    makePanel(3);
    QSlider &slider = panel->zoomSlider();
    EXPECT_EQ(slider.value(), 25);
    const int before = itemRect(0).width();
    slider.setValue(75);
    EXPECT_FLOAT_EQ(Preferences(*defaults).iconSize(), 0.75f);
    ASSERT_TRUE(QTest::qWaitFor([&] { return itemRect(0).width() > before; }, 2000));
    EXPECT_EQ(itemRect(0).width() - before, (ImageBrowserPanel::kLargestIcon - ImageBrowserPanel::kSmallestIcon) / 2);
    QTest::keyClick(&slider, Qt::Key_Home);
    EXPECT_FLOAT_EQ(Preferences(*defaults).iconSize(), 0.0f);
}

// The menu actions: remove the selected photo, insert the blank image there, add photos through
// Qt's own window-modal file dialog, the context menu's items; Clear All Images asks first and
// only "Clear All" clears.
TEST_F(ImageBrowserPanelTest, MenuActions)
{
    makePanel(3);
    controller->selectIndex(1);
    panel->removeSelectedPhoto();
    EXPECT_EQ(names(), QLatin1String("ac"));
    panel->insertBlankImage();
    EXPECT_EQ(controller->images().at(1), controller->blankImage());
    QTest::mouseClick(&panel->insertBlankButton(), Qt::LeftButton);
    EXPECT_EQ(controller->count(), 4);
    expectGridInStep();

    const QString x = makePhoto(QStringLiteral("x.png")), y = makePhoto(QStringLiteral("y.png"));
    panel->addPhotos();
    auto *dialog = panel->findChild<QFileDialog *>(QStringLiteral("addPhotosDialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(dialog->testOption(QFileDialog::DontUseNativeDialog));
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    dialog->setDirectory(photosFolder());
    emit dialog->filesSelected({x, y});
    dialog->close();
    EXPECT_EQ(controller->count(), 6);
    EXPECT_EQ(controller->images().mid(4), (QStringList{x, y}));
    EXPECT_EQ(controller->selectedItem(), 5);
    expectGridInStep();

    // The context menu acts on the photo under the pointer: reveal its folder, open it,
    // duplicate it.
    UrlRecorder recorder({QStringLiteral("file")});
    QContextMenuEvent menuEvent(QContextMenuEvent::Mouse, onItem(3), viewport()->mapToGlobal(onItem(3)));
    QApplication::sendEvent(viewport(), &menuEvent);
    EXPECT_EQ(controller->selectedItem(), 3);
    QMenu &menu = panel->contextMenu();
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu.isVisible(); }, 2000));
    menu.close();
    const QString c = controller->images().at(3);
    menu.findChild<QAction *>(QStringLiteral("contextSelectInFinder"))->trigger();
    menu.findChild<QAction *>(QStringLiteral("contextOpen"))->trigger();
    EXPECT_EQ(recorder.urls, (QList<QUrl>{QUrl::fromLocalFile(photosFolder()), QUrl::fromLocalFile(c)}));
    menu.findChild<QAction *>(QStringLiteral("contextDuplicate"))->trigger();
    ASSERT_EQ(controller->count(), 7);
    EXPECT_EQ(controller->images().at(4), c);
    EXPECT_TRUE(controller->images().at(3).startsWith(QFileInfo(imagesFolder()).absoluteFilePath()));
    expectGridInStep();

    alerts.responses = {AlertPresenter::DefaultButton, AlertPresenter::AlternateButton};
    panel->clearAllImages();
    ASSERT_EQ(alerts.alerts.size(), 1);
    const AlertPresenter::Alert &alert = alerts.alerts.first();
    EXPECT_EQ(alert.messageText, QLatin1String("Clear All Images"));
    EXPECT_EQ(alert.informativeText, QLatin1String("Are you sure you want to clear all the images in the image browser?"));
    EXPECT_EQ(alert.defaultButton, QLatin1String("Cancel"));
    EXPECT_EQ(alert.alternateButton, QLatin1String("Clear All"));
    EXPECT_EQ(controller->count(), 7);
    panel->clearAllImages();
    EXPECT_EQ(controller->count(), 0);
    expectGridInStep();
}

// Thumbnails come from the cache without blocking: loading first, then the picture; a file
// that is no picture is marked as such. Number labels and file-name tool tips per row.
TEST_F(ImageBrowserPanelTest, ThumbnailsNumbersAndToolTips)
{
    makePanel(2);
    const QString broken = QDir(photosFolder()).filePath(QStringLiteral("broken.png"));
    {
        QFile f(broken);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("not a picture");
    }
    controller->addImagesWithPaths({broken});
    const ImageBrowserModel &model = panel->model();
    EXPECT_EQ(model.index(2).data(Qt::DisplayRole).toString(), QLatin1String("3"));
    EXPECT_EQ(model.index(2).data(Qt::ToolTipRole).toString(), QLatin1String("broken.png"));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            return thumbnailState(0) == ImageBrowserModel::ThumbnailReady &&
                   thumbnailState(1) == ImageBrowserModel::ThumbnailReady &&
                   thumbnailState(2) == ImageBrowserModel::ThumbnailFailed;
        },
        5000));
    EXPECT_EQ(model.thumbnail(0).size(), QSize(40, 30));
}

// The browser with the 49 factory photos of a first start, saved as a picture into the build
// folder; the selected photo's card shows the dark red.
TEST_F(ImageBrowserPanelTest, ScreenshotWithTheFactoryPhotos)
{
    makePanel(-1, QSize(460, 900));
    ASSERT_EQ(controller->count(), 49);
    controller->selectIndex(4);
    controller->setFramingAtIndex(2, PhotoFraming(QPointF(0.4, 0.4), 2)); // the framed photo's mark
    const auto ready = [&] {
        for (int row = 0; row < 12; ++row) {
            if (thumbnailState(row) != ImageBrowserModel::ThumbnailReady)
                return false;
        }
        return panel->preview().state() == PhotoPreview::State::Shown;
    };
    panel->grid().viewport()->update();
    ASSERT_TRUE(QTest::qWaitFor([&] { panel->grid().viewport()->update(); return ready(); }, 15000));
    QTest::qWait(50);
    const QImage shot = panel->grab().toImage();
    EXPECT_TRUE(shot.save(QStringLiteral(TESSARY_BINARY_DIR "/ImageBrowserPanel.png")));
    const QRect card = itemRect(4).translated(panel->grid().viewport()->mapTo(panel.get(), QPoint()));
    EXPECT_EQ(shot.pixel(card.left() + 3, card.bottom() - 3), ImageBrowserDelegate::selectionColor().rgb());
    EXPECT_EQ(panel->imageLabel().text(), QLatin1String("Image 5"));
    // Only the photos on screen were decoded for the grid.
    EXPECT_LT(cache->count() + loader->loadingCount(), 40);
}

} // namespace

