#include "support/PhotoListFixture.h"

#include "foundation/ImagesFolder.h"
#include "foundation/Preferences.h"
#include "photos/FileWatcher.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"

#include <QBuffer>
#include <QFileInfo>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

#include <functional>
#include <optional>

#include <string_view>

#include <sys/stat.h>

namespace {

class ImageBrowserControllerTest : public PhotoListFixture
{
protected:
    // A controller over files "a.jpg" .. with n entries, after the first run.
    std::unique_ptr<ImageBrowserController> makeController(int n)
    {
        skipFirstRun();
        auto c = std::make_unique<ImageBrowserController>(*defaults, resources(), alerts);
        c->setCollageReloader([this] { ++collageReloads; });
        QStringList paths;
        for (int i = 0; i < n; ++i)
            paths.append(makeFile(QStringLiteral("%1.jpg").arg(QChar('a' + i))));
        c->addImagesWithPaths(paths);
        return c;
    }
    static QString names(const ImageBrowserController &c)
    {
        QString s;
        for (const QString &path : c.images())
            s += QFileInfo(path).completeBaseName();
        return s;
    }
    // A file of Tessary's own: a UUID name, in the images folder.
    QString makeOwnedFile()
    {
        QDir().mkpath(imagesFolder());
        const QString path = QDir(imagesFolder()).filePath(QUuid::createUuid().toString(QUuid::WithoutBraces) + QStringLiteral(".png"));
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("png");
        return path;
    }
    static QMimeData *filesMime(const QStringList &paths)
    {
        auto *mime = new QMimeData;
        QList<QUrl> urls;
        for (const QString &p : paths)
            urls.append(QUrl::fromLocalFile(p));
        mime->setUrls(urls);
        return mime;
    }

    int collageReloads = 0;
};

TEST_F(ImageBrowserControllerTest, RemovalGoesHighestFirstAndSelectsTheLowest)
{
    struct Case {
        QList<qsizetype> remove;
        const char *left;
        qsizetype selected;
    };
    const Case cases[] = {
        {{1, 3}, "ace", 1},
        {{3, 1}, "ace", 1},
        {{4}, "abcd", 3},
        {{0}, "bcde", 0},
        {{0, 1, 2, 3, 4}, "", -1},
        {{2, 2, 9, -1}, "abde", 2}, // repeats and strangers are ignored
    };
    for (const Case &k : cases) {
        auto c = makeController(5);
        c->removeItemsAtIndexes(k.remove);
        EXPECT_EQ(names(*c), QLatin1String(k.left));
        EXPECT_EQ(c->selectedItem(), k.selected) << k.left;
        const QString label = k.selected < 0 ? QStringLiteral(" ") : QStringLiteral("Image %1").arg(k.selected + 1);
        EXPECT_EQ(c->imageLabelText(), label);
        c.reset();
        defaults->removeObject(Preferences::Bookmarks);
    }
}

// Removing or replacing an entry (by a call or by files dropped on it) deletes its file only
// when Tessary made it (which names are Tessary's is the images folder's own rule). A person's
// own files are never touched.
TEST_F(ImageBrowserControllerTest, OnlyFilesTessaryMadeAreDeleted)
{
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const struct {
        const char *what;
        QString relative; // under the Documents folder
        bool deleted;
        bool link = false; // a link there to a file of the person's own
    } cases[] = {
        {"made by Tessary", QStringLiteral("Images/%1.png").arg(uuid), true},
        {"the person's own picture", QStringLiteral("Images/holiday.jpg"), false},
        {"a link with a UUID name", QStringLiteral("Images/%1.png").arg(uuid), false, true},
    };
    for (const auto &k : cases) {
        for (const std::string_view how : {"removed", "replaced", "dropped on"}) {
            SCOPED_TRACE(testing::Message() << k.what << ", " << how);
            auto c = makeController(1);
            const QString path = documents() + QLatin1Char('/') + k.relative;
            QDir().mkpath(imagesFolder() + QStringLiteral("/sub"));
            QDir().mkpath(QFileInfo(path).absolutePath());
            const QString own = makeFile(QStringLiteral("own.jpg"));
            if (k.link)
                ASSERT_TRUE(QFile::link(own, path));
            else
                ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
            c->addImagesWithPaths({path});
            ASSERT_EQ(c->count(), 2);
            if (how == "replaced") {
                c->replaceImage(makeFile(QStringLiteral("r.jpg")), 1);
            } else if (how == "dropped on") {
                std::unique_ptr<QMimeData> mime(filesMime({makeFile(QStringLiteral("r.jpg"))}));
                ASSERT_TRUE(c->performDragOperation(*mime, 1, ImageBrowserController::DropOn));
                ASSERT_TRUE(QTest::qWaitFor([&] { return names(*c) == QLatin1String("ar"); }, 2000));
            } else {
                c->removeItemsAtIndexes({1});
            }
            EXPECT_EQ(QFileInfo::exists(path) || QFileInfo(path).isSymLink(), !k.deleted);
            EXPECT_TRUE(QFile::exists(own));
            QFile::remove(path);
            c.reset();
            defaults->removeObject(Preferences::Bookmarks);
        }
    }
}

TEST_F(ImageBrowserControllerTest, AFileOfTessarysStaysWhileAnotherEntryShowsIt)
{
    auto c = makeController(1);
    const QString owned = makeOwnedFile();
    c->addImagesWithPaths({owned, owned});
    c->removeItemsAtIndexes({1});
    EXPECT_TRUE(QFile::exists(owned));
    c->replaceImage(makeFile(QStringLiteral("r.jpg")), 1);
    EXPECT_FALSE(QFile::exists(owned));
    EXPECT_EQ(names(*c), QStringLiteral("ar"));
}

TEST_F(ImageBrowserControllerTest, MissingFilesAreRefusedWithAnAlert)
{
    auto c = makeController(2);
    const QString missing = dir.filePath(QStringLiteral("photos/none.jpg"));
    const QString pipe = dir.filePath(QStringLiteral("photos/pipe.jpg"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    struct Case { std::function<void()> act; const char *message; const char *informative; };
    const Case cases[] = {
        {[&] { c->insertImage(missing, 1); }, "Image can not be inserted.", "The image does not exist."},
        {[&] { c->insertImage(dir.filePath(QStringLiteral("photos"))); }, "Image can not be inserted.", "The image does not exist."},
        {[&] { c->insertImage(pipe, 0); }, "Image can not be inserted.", "The image does not exist."}, // never blocks
        {[&] { c->replaceImage(missing, 0); }, "Image can not be replaced.", "The replacement image does not exist."},
    };
    for (const Case &k : cases) {
        alerts.alerts.clear();
        const int beeps = alerts.beeps;
        k.act();
        ASSERT_EQ(alerts.alerts.size(), 1);
        EXPECT_EQ(alerts.alerts.at(0).messageText, QLatin1String(k.message));
        EXPECT_EQ(alerts.alerts.at(0).informativeText, QLatin1String(k.informative));
        EXPECT_EQ(alerts.alerts.at(0).style, AlertPresenter::Style::Critical);
        EXPECT_EQ(alerts.beeps, beeps + 1);
        EXPECT_EQ(names(*c), QStringLiteral("ab"));
    }
}

TEST_F(ImageBrowserControllerTest, AddingSkipsFoldersHiddenAndMissingFiles)
{
    auto c = makeController(0);
    const int reloadsBefore = collageReloads;
    c->addImagesWithPaths({makeFile(QStringLiteral(".hidden.jpg")), dir.filePath(QStringLiteral("photos")),
                           dir.filePath(QStringLiteral("nothing.jpg"))});
    EXPECT_EQ(c->count(), 0);
    EXPECT_EQ(collageReloads, reloadsBefore); // nothing to show: no reload
    QSignalSpy writes(&c->imageBookmarks(), &ImageBookmarks::changed);
    c->addImagesWithPaths({makeFile(QStringLiteral("a.jpg")), makeFile(QStringLiteral("b.jpg"))});
    EXPECT_EQ(names(*c), QStringLiteral("ab"));
    EXPECT_EQ(writes.size(), 1); // stored once
    EXPECT_EQ(defaults->arrayForKey(Preferences::Bookmarks).size(), 2);
    EXPECT_EQ(c->selectedItem(), 1);
    EXPECT_EQ(collageReloads, reloadsBefore + 1); // one layout per edit, selection included
    c->selection().select(0); // a click in the browser
    EXPECT_EQ(collageReloads, reloadsBefore + 2);
}

TEST_F(ImageBrowserControllerTest, DroppedFilesBeforeAndOnAnItem)
{
    struct Case {
        ImageBrowserController::DropOperation operation;
        qsizetype index;
        const char *expected;
        qsizetype selected;
    };
    const Case cases[] = {
        {ImageBrowserController::DropBefore, 2, "abzyxcde", 2}, // dragged x y z: reversed
        {ImageBrowserController::DropOn, 1, "azcde", 1},       // replaced one after another
        {ImageBrowserController::DropBefore, 5, "abcdezyx", 5},
        {ImageBrowserController::DropOn, 5, "abcdezyx", 5},    // on the empty space after the end
        {ImageBrowserController::DropBefore, -1, "abcdezyx", 5},
    };
    for (const Case &k : cases) {
        auto c = makeController(5);
        std::unique_ptr<QMimeData> mime(filesMime({makeFile(QStringLiteral("x.jpg")), makeFile(QStringLiteral("y.jpg")),
                                                   dir.filePath(QStringLiteral("photos")), makeFile(QStringLiteral("z.jpg"))}));
        ASSERT_TRUE(c->performDragOperation(*mime, k.index, k.operation));
        ASSERT_TRUE(QTest::qWaitFor([&] { return c->count() != 5 || names(*c) != QStringLiteral("abcde"); }, 2000));
        EXPECT_EQ(names(*c), QLatin1String(k.expected)) << k.index;
        EXPECT_EQ(c->selectedItem(), k.selected) << k.index;
        c.reset();
        defaults->removeObject(Preferences::Bookmarks);
    }
}

TEST_F(ImageBrowserControllerTest, DroppedImageDataIsKeptInTheImagesFolder)
{
    auto c = makeController(2);
    QImage image(8, 6, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray jpeg;
    {
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        ASSERT_TRUE(image.save(&buffer, "JPEG"));
    }
    struct Case { const char *format; QByteArray bytes; bool image; bool accepted; const char *suffix; };
    const Case cases[] = {
        {"image/jpeg", jpeg, false, true, "jpg"},
        {"image/png", QByteArray("not a picture"), true, true, "png"}, // broken bytes, usable image
        {"image/png", QByteArray("not a picture"), false, false, ""},
        {"text/plain", QByteArray("hello"), false, false, ""},
    };
    for (const Case &k : cases) {
        QMimeData mime;
        mime.setData(QLatin1String(k.format), k.bytes);
        if (k.image)
            mime.setImageData(image);
        const qsizetype before = c->count();
        EXPECT_EQ(c->performDragOperation(mime, 1, ImageBrowserController::DropBefore), k.accepted) << k.format;
        if (!k.accepted)
            continue;
        ASSERT_TRUE(QTest::qWaitFor([&] { return c->count() == before + 1; }, 2000));
        const QFileInfo added(c->images().at(1));
        EXPECT_TRUE(ImagesFolder::isOwned(added.filePath()));
        EXPECT_EQ(added.suffix(), QLatin1String(k.suffix));
        EXPECT_EQ(QImage(added.filePath()).size(), image.size());
    }
}

TEST_F(ImageBrowserControllerTest, PasteImageOrFile)
{
    auto c = makeController(3);
    c->selectIndex(1);
    {
        QMimeData mime;
        QImage image(5, 4, QImage::Format_ARGB32);
        image.fill(Qt::blue);
        mime.setImageData(image);
        ASSERT_TRUE(c->paste(mime));
        const QString path = c->images().at(1);
        EXPECT_TRUE(ImagesFolder::isOwned(path));
        EXPECT_TRUE(path.endsWith(QStringLiteral(".png")));
        EXPECT_EQ(QImage(path).size(), QSize(5, 4));
        EXPECT_EQ(c->selectedItem(), 1);
    }
    {
        std::unique_ptr<QMimeData> mime(filesMime({makeFile(QStringLiteral("p.jpg")), makeFile(QStringLiteral("q.jpg"))}));
        ASSERT_TRUE(c->paste(*mime));
        EXPECT_EQ(QFileInfo(c->images().at(1)).fileName(), QStringLiteral("p.jpg"));
    }
    QMimeData empty;
    EXPECT_FALSE(c->paste(empty));
    EXPECT_EQ(c->count(), 5);
}

TEST_F(ImageBrowserControllerTest, ReorderingDragsMoveOrSwap)
{
    // The dragged photo stays selected where it landed; indexes outside the list change nothing.
    struct Case { qsizetype from; qsizetype to; ImageBrowserController::DropOperation op; bool done; const char *expected; qsizetype selected; };
    const Case cases[] = {
        {0, 3, ImageBrowserController::DropBefore, true, "bcade", 2},
        {0, 5, ImageBrowserController::DropBefore, true, "bcdea", 4},
        {0, 3, ImageBrowserController::DropOn, true, "dbcae", 3},
        {4, 0, ImageBrowserController::DropBefore, true, "eabcd", 0},
        {1, 5, ImageBrowserController::DropOn, false, "abcde", 4},
        {5, 0, ImageBrowserController::DropBefore, false, "abcde", 4},
        {0, 6, ImageBrowserController::DropBefore, false, "abcde", 4},
    };
    for (const Case &k : cases) {
        auto c = makeController(5);
        EXPECT_EQ(c->moveItemsAtIndexes({k.from, 1}, k.to, k.op), k.done) << k.expected;
        EXPECT_EQ(names(*c), QLatin1String(k.expected));
        EXPECT_EQ(c->selectedItem(), k.selected) << k.expected;
        c.reset();
        defaults->removeObject(Preferences::Bookmarks);
    }
}

// A view that follows the list's changes row by row (as the browser's grid does) shows the list
// after every kind of edit: the same photo twice, a move onto its own place, a swap, a new
// alignment or framing, a vanished file, a failed write.
TEST_F(ImageBrowserControllerTest, RowsFollowingTheToldChangesShowTheList)
{
    auto c = makeController(5);
    ImageBookmarks &list = c->imageBookmarks();
    const auto row = [&](qsizetype i) {
        return QStringLiteral("%1:%2:%3").arg(QFileInfo(list.pathAtIndex(i)).completeBaseName())
            .arg(list.alignmentIndexAtIndex(i)).arg(list.framingAtIndex(i).isNull() ? 0 : 1);
    };
    const auto shown = [&] {
        QStringList rows;
        for (qsizetype i = 0; i < list.count(); ++i)
            rows.append(row(i));
        return rows;
    };
    QStringList rows = shown();
    QList<PhotoListChange> told;
    QObject::connect(&list, &ImageBookmarks::listChanged, c.get(), [&](const PhotoListChange &change) {
        told.append(change);
        switch (change.kind) {
        case PhotoListChange::Insert:
            for (qsizetype i = change.first; i <= change.last; ++i)
                rows.insert(i, row(i));
            break;
        case PhotoListChange::Remove:
            rows.remove(change.first, change.last - change.first + 1);
            break;
        case PhotoListChange::Move:
            rows.move(change.first, change.last > change.first ? change.last - 1 : change.last);
            break;
        case PhotoListChange::Update:
            for (qsizetype i = change.first; i <= change.last; ++i)
                rows[i] = row(i);
            break;
        case PhotoListChange::Reset:
            rows = shown();
            break;
        }
    });
    const QString a = c->images().at(0);
    const QString gone = c->images().at(3);
    const struct {
        const char *what;
        std::function<void()> edit;
        std::optional<PhotoListChange::Kind> kind; // of the first change told; none: nothing changed
    } steps[] = {
        {"insert", [&] { c->insertImage(makeFile(QStringLiteral("x.jpg")), 2); }, PhotoListChange::Insert},
        {"the same file again", [&] { c->insertImage(a, 0); }, PhotoListChange::Insert},
        {"drag forward", [&] { c->moveItemsAtIndexes({1}, 4, ImageBrowserController::DropBefore); }, PhotoListChange::Move},
        {"drag back", [&] { c->moveItemsAtIndexes({5}, 0, ImageBrowserController::DropBefore); }, PhotoListChange::Move},
        {"drag onto its own place", [&] { c->moveItemsAtIndexes({2}, 3, ImageBrowserController::DropBefore); }, std::nullopt},
        {"drag on an item", [&] { c->moveItemsAtIndexes({0}, 6, ImageBrowserController::DropOn); }, PhotoListChange::Update},
        {"replace", [&] { c->replaceImage(makeFile(QStringLiteral("y.jpg")), 1); }, PhotoListChange::Update},
        {"alignment", [&] { c->selectIndex(4); c->imageAligmentDidChange(ImageBookmarks::ResizeScale); }, PhotoListChange::Update},
        {"framing", [&] { c->setFramingAtIndex(2, PhotoFraming(QPointF(0.3, 0.3), 1.5)); }, PhotoListChange::Update},
        {"fit all", [&] { c->imageAligmentFitAll(); }, PhotoListChange::Update},
        {"remove several", [&] { c->removeItemsAtIndexes({0, 2, 3}); }, PhotoListChange::Remove},
        {"a vanished file", [&] { list.removeBookmarksWithPath(gone); }, PhotoListChange::Remove},
        {"another program's change meanwhile", [&] {
             // The first photo is gone from the store; the next write keeps that.
             for (const QString &key : {Preferences::Bookmarks, Preferences::Aligments}) {
                 QVariantList stored = defaults->objectForKey(key).toList();
                 stored.removeFirst();
                 defaults->setObject(stored, key);
             }
             c->insertImage(a, 1);
         }, PhotoListChange::Insert},
        {"clear", [&] { c->clearImages(); }, PhotoListChange::Remove},
    };
    for (const auto &step : steps) {
        told.clear();
        step.edit();
        EXPECT_EQ(rows, shown()) << step.what;
        EXPECT_EQ(told.isEmpty() ? std::nullopt : std::optional(told.first().kind), step.kind) << step.what;
    }
}

// A duplicate is the photo's bytes in the images folder under a ".png" name, inserted at the
// selected item; nothing to copy changes nothing.
TEST_F(ImageBrowserControllerTest, DuplicateCopiesIntoTheImagesFolder)
{
    auto c = makeController(3);
    c->selectIndex(1);
    const QString copy = c->duplicateImage(2);
    ASSERT_FALSE(copy.isEmpty());
    EXPECT_TRUE(copy.startsWith(imagesFolder() + QLatin1Char('/')));
    EXPECT_TRUE(copy.endsWith(QLatin1String(".png")));
    QFile f(copy);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("jpeg"));
    EXPECT_EQ(c->count(), 4);
    EXPECT_EQ(c->images().at(1), copy);
    EXPECT_EQ(c->selectedItem(), 1);
    EXPECT_TRUE(c->duplicateImage(9).isEmpty());
    EXPECT_EQ(c->count(), 4);
}

TEST_F(ImageBrowserControllerTest, ExchangeAndSelectionByNumber)
{
    auto c = makeController(5);
    c->exchangeItem(0, 4);
    EXPECT_EQ(names(*c), QStringLiteral("ebcda"));
    EXPECT_EQ(alerts.beeps, 0);
    c->exchangeItem(0, 5);
    c->exchangeItem(-1, 2);
    EXPECT_EQ(alerts.beeps, 2);
    EXPECT_EQ(names(*c), QStringLiteral("ebcda"));

    c->selectIndex(2);
    const struct { const char *typed; bool ok; qsizetype selected; } cases[] = {
        {"0", false, 2}, {"6", false, 2}, {"-1", false, 2}, {"two", false, 2}, {"", false, 2},
        {"5", true, 4}, {" 1 ", true, 0},
    };
    for (const auto &k : cases) {
        EXPECT_EQ(c->selectItemNumber(QLatin1String(k.typed)), k.ok) << k.typed;
        EXPECT_EQ(c->selectedItem(), k.selected) << k.typed;
    }
    c->selectIndex(7);
    EXPECT_EQ(c->selectedItem(), 0);
}

TEST_F(ImageBrowserControllerTest, AlignmentChangesNeedASelection)
{
    auto c = makeController(3);
    c->selection().clear();
    c->imageAligmentFitAll();
    c->imageAligmentDidChange(2);
    EXPECT_EQ(c->imageBookmarks().imageAlignments(), (QList<int>{0, 0, 0}));

    QSignalSpy popup(c.get(), &ImageBrowserController::selectedAlignmentChanged);
    c->selectIndex(1);
    c->imageAligmentDidChange(2);
    EXPECT_EQ(c->imageBookmarks().imageAlignments(), (QList<int>{0, 2, 0}));
    c->imageAligmentFitAll();
    EXPECT_EQ(c->imageBookmarks().imageAlignments(), (QList<int>{3, 3, 3}));
    c->imageAligmentCenterAll();
    EXPECT_EQ(c->imageBookmarks().imageAlignments(), (QList<int>{0, 0, 0}));
    ASSERT_EQ(popup.size(), 2);
    EXPECT_EQ(popup.at(0).at(0).toInt(), 3);
    EXPECT_EQ(popup.at(1).at(0).toInt(), 0);
}

// The selection is of a photo: every list change that puts another photo at the selected place
// is announced, so that the preview and its "Image N" label follow whichever edit it was; a
// change that leaves the selected photo where it was is not.
TEST_F(ImageBrowserControllerTest, EveryChangeOfTheSelectedPhotoIsAnnounced)
{
    QFile(QDir(resources()).filePath(QStringLiteral("blank.png"))).open(QIODevice::WriteOnly);
    const QString extra = makeFile(QStringLiteral("x.jpg"));
    const struct {
        const char *what;
        std::function<void(ImageBrowserController &)> change;
        const char *selected; // the photo selected afterwards
        bool announced;
    } cases[] = {
        {"remove it", [](ImageBrowserController &c) { c.removeItemsAtIndexes({1}); }, "c", true},
        {"insert a blank image", [](ImageBrowserController &c) { c.insertBlankImage(); }, "blank", true},
        {"paste a file",
         [&](ImageBrowserController &c) {
             QMimeData mime;
             mime.setUrls({QUrl::fromLocalFile(extra)});
             c.paste(mime);
         },
         "x", true},
        {"replace it", [&](ImageBrowserController &c) { c.replaceImage(extra, 1); }, "x", true},
        {"swap two others", [](ImageBrowserController &c) { c.exchangeItem(0, 2); }, "b", false},
    };
    for (const auto &k : cases) {
        auto c = makeController(3);
        c->selectIndex(1);
        QSignalSpy announced(&c->selection(), &ImageBrowserSelection::selectionChanged);
        k.change(*c);
        EXPECT_EQ(QFileInfo(c->selection().selectedPath()).completeBaseName(), QLatin1String(k.selected)) << k.what;
        EXPECT_EQ(c->selection().selectedPath(), c->images().value(c->selectedItem())) << k.what;
        EXPECT_EQ(announced.size(), k.announced ? 1 : 0) << k.what;
        if (k.announced && std::string(k.what) == "remove it") {
            QSignalSpy preview(c.get(), &ImageBrowserController::previewChanged);
            ASSERT_TRUE(preview.wait(3000));
            EXPECT_EQ(preview.last().at(0).toString(), c->images().at(1));
        }
        c.reset();
        defaults->removeObject(Preferences::Bookmarks);
    }
}

TEST_F(ImageBrowserControllerTest, SelectionIsStoredAndRestored)
{
    {
        auto c = makeController(4);
        c->selectIndex(2);
        c->appWillTerminate();
        EXPECT_EQ(defaults->integerForKey(Preferences::ImageBrowserSeletion), 2);
        EXPECT_TRUE(c->imageBookmarks().fileWatcher().watchedPaths().isEmpty());
    }
    auto c = std::make_unique<ImageBrowserController>(*defaults, resources(), alerts);
    c->setInitialSelection();
    EXPECT_EQ(c->selectedItem(), 2);
    defaults->setInteger(9, Preferences::ImageBrowserSeletion); // beyond the list: the first item
    c->selection().clear();
    c->setInitialSelection();
    EXPECT_EQ(c->selectedItem(), 0);
}

TEST_F(ImageBrowserControllerTest, ClearEmptiesListAndPreview)
{
    auto c = makeController(3);
    QSignalSpy preview(c.get(), &ImageBrowserController::previewChanged);
    QSignalSpy writes(&c->imageBookmarks(), &ImageBookmarks::changed);
    c->clearImages();
    EXPECT_EQ(writes.size(), 1); // the list is stored once, not once per entry
    EXPECT_TRUE(defaults->arrayForKey(Preferences::Bookmarks).isEmpty());
    EXPECT_EQ(c->count(), 0);
    EXPECT_EQ(c->selectedItem(), -1);
    ASSERT_TRUE(preview.wait(3000));
    EXPECT_TRUE(preview.last().at(0).toString().isEmpty());
}

// A listed file deleted by another program leaves through the controller: list, selection and
// store agree afterwards.
TEST_F(ImageBrowserControllerTest, WatchedFileRemovalKeepsTheSelectionValid)
{
    auto c = makeController(3);
    c->selectIndex(2);
    QFile::remove(c->images().at(2));
    ASSERT_TRUE(QTest::qWaitFor([&] { return c->count() == 2; }, 4000));
    EXPECT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(c->selectedItem(), 1);
    EXPECT_EQ(defaults->arrayForKey(Preferences::Bookmarks).size(), 2);

    // A file of Tessary's own that another program modified leaves the list, but the other
    // program's work stays on disk.
    const QString owned = makeOwnedFile();
    c->addImagesWithPaths({owned});
    ASSERT_EQ(c->count(), 3);
    {
        QFile f(owned);
        ASSERT_TRUE(f.open(QIODevice::Append));
        f.write("edited elsewhere");
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return c->count() == 2; }, 4000));
    EXPECT_TRUE(alerts.alerts.last().messageText.contains(QStringLiteral("has been modified")));
    EXPECT_TRUE(QFile::exists(owned));
}

} // namespace

namespace {

TEST_F(ImageBrowserControllerTest, BlankAndFactoryPhotosComeFromTheResources)
{
    makeFactoryImages({0, 3});
    QFile(QDir(resources()).filePath(QStringLiteral("blank.png"))).open(QIODevice::WriteOnly);
    auto c = makeController(2);
    c->selectIndex(1);
    c->insertBlankImage();
    EXPECT_EQ(names(*c), QStringLiteral("ablankb"));
    EXPECT_EQ(c->selectedItem(), 1);
    c->loadFactoryImages();
    EXPECT_EQ(names(*c), QStringLiteral("ablankbimages-0images-3"));
    EXPECT_EQ(c->selectedItem(), 4);
    // Their titles tell them apart where their file names would not.
    QStringList titles;
    for (const QString &path : c->images())
        titles << c->imageBookmarks().titleForPath(path);
    EXPECT_EQ(titles, (QStringList{"a.jpg", "Blank", "b.jpg", "Sample 1", "Sample 4"}));
    // Removing them never deletes a resource.
    c->clearImages();
    EXPECT_TRUE(QFile::exists(c->blankImage()));
    EXPECT_TRUE(QFile::exists(QDir(resources()).filePath(QStringLiteral("images-3.jpg"))));
}

} // namespace
