#include "support/PhotoListFixture.h"

#include "foundation/Preferences.h"
#include "photos/FileWatcher.h"
#include "photos/ImageBookmarks.h"

#include <QFileInfo>
#include <QTest>

namespace {

class ImageBookmarksTest : public PhotoListFixture
{
protected:
    std::unique_ptr<ImageBookmarks> makeList()
    {
        return std::make_unique<ImageBookmarks>(*defaults, resources(), alerts);
    }
    // A list of files "a.jpg", "b.jpg", ... with alignments 0, 1, 2, 3, 0, ...
    std::unique_ptr<ImageBookmarks> makeListOf(int n)
    {
        skipFirstRun();
        auto list = makeList();
        for (int i = 0; i < n; ++i)
            list->addBookmarkForPath(makeFile(QStringLiteral("%1.jpg").arg(QChar('a' + i))), i % 4);
        return list;
    }
    static QString names(const ImageBookmarks &list)
    {
        QString s;
        for (const QString &path : list.images())
            s += QFileInfo(path).completeBaseName();
        return s;
    }
    // Every entry's datum, URL, path and alignment must describe the same file.
    static void expectInStep(const ImageBookmarks &list)
    {
        ASSERT_EQ(list.datums().size(), list.count());
        ASSERT_EQ(list.imageAlignments().size(), list.count());
        for (qsizetype i = 0; i < list.count(); ++i) {
            const QString path = list.pathAtIndex(i);
            ASSERT_TRUE(list.urlAtIndex(i));
            EXPECT_EQ(list.urlAtIndex(i)->toLocalFile(), path) << i;
            const QVariant datum = list.datums().at(i);
            if (datum.typeId() == QMetaType::QByteArray) {
                EXPECT_EQ(QFile::decodeName(datum.toByteArray()), path) << i;
            } else {
                EXPECT_TRUE(path.endsWith(datum.toString() + QStringLiteral(".jpg"))) << i;
            }
            // The fixture's alignments follow the letter of the file.
            const int letter = QFileInfo(path).completeBaseName().at(0).unicode() - 'a';
            if (datum.typeId() == QMetaType::QByteArray) {
                EXPECT_EQ(list.alignmentIndexAtIndex(i), letter % 4) << i;
            }
        }
    }
};

TEST_F(ImageBookmarksTest, MoveTakesTheTargetIndexBeforeRemoval)
{
    struct Case { int from; int to; const char *expected; };
    const Case cases[] = {
        {0, 3, "bcade"}, // lands at index 2
        {3, 0, "dabce"},
        {1, 5, "acdeb"}, // past the end: the last place
        {4, 1, "aebcd"},
        {2, 2, "abcde"},
        {2, 3, "abcde"}, // just after itself: stays
    };
    for (const Case &c : cases) {
        auto list = makeListOf(5);
        list->moveBookmarkAtIndex(c.from, c.to);
        EXPECT_EQ(names(*list), QLatin1String(c.expected)) << c.from << "->" << c.to;
        expectInStep(*list);
        // and the stored form follows
        auto reloaded = makeList();
        EXPECT_EQ(names(*reloaded), QLatin1String(c.expected));
        expectInStep(*reloaded);
        list.reset();
        reloaded.reset();
        defaults->removeObject(Preferences::Bookmarks);
        defaults->removeObject(Preferences::Aligments);
    }
}

TEST_F(ImageBookmarksTest, EditsKeepTheArraysInStep)
{
    auto list = makeListOf(4);
    list->insertBookmarkForPath(makeFile(QStringLiteral("e.jpg")), 0, 1);
    expectInStep(*list);
    list->replaceBookmarkForPath(makeFile(QStringLiteral("f.jpg")), 1, 0);
    expectInStep(*list);
    list->exchangeBookmarkAtIndex(0, 4);
    expectInStep(*list);
    list->removeBookmarkAtIndex(2);
    expectInStep(*list);
    list->removeBookmarksWithPath(list->pathAtIndex(0));
    expectInStep(*list);
    EXPECT_EQ(names(*list), QStringLiteral("ecf"));

    // Bad indexes from a caller are ignored rather than corrupting the list.
    list->moveBookmarkAtIndex(7, 0);
    list->exchangeBookmarkAtIndex(-1, 1);
    list->removeBookmarkAtIndex(9);
    list->replaceBookmarkForPath(makeFile(QStringLiteral("g.jpg")), 0, 3);
    list->insertBookmarkForPath(makeFile(QStringLiteral("h.jpg")), 0, 4);
    list->setAligment(3, 3);
    list->setAligment(9, 0);
    EXPECT_EQ(names(*list), QStringLiteral("ecf"));
    expectInStep(*list);
    EXPECT_EQ(list->alignmentIndexAtIndex(5), 0);
    EXPECT_TRUE(list->pathAtIndex(-1).isEmpty());
    EXPECT_FALSE(list->urlAtIndex(3));
}

TEST_F(ImageBookmarksTest, MissingFilesAreNotAdded)
{
    auto list = makeListOf(1);
    list->addBookmarkForPath(dir.filePath(QStringLiteral("photos/none.jpg")), 0);
    list->insertBookmarkForPath(QString(), 0, 0);
    list->replaceBookmarkForPath(dir.filePath(QStringLiteral("photos/none.jpg")), 0, 0);
    EXPECT_EQ(names(*list), QStringLiteral("a"));
}

TEST_F(ImageBookmarksTest, StoredListRoundTripsAndDropsWhatIsGone)
{
    makeFactoryImages({0, 1});
    skipFirstRun();
    const PhotoFraming framed(QPointF(0.2, 0.3), 2);
    {
        auto list = makeList();
        list->addBookmarkForPath(makeFile(QStringLiteral("a.jpg")), 2);
        list->setFraming(framed, 0);
        list->loadFactoryImage(QStringLiteral("images-1"));
        list->setAligment(ImageBookmarks::ResizeScale, 1);
        list->addBookmarkForPath(makeFile(QStringLiteral("gone.jpg")), 1);
        list->addBookmarkForPath(makeFile(QStringLiteral("c.jpg")), 3);
    }
    const QVariantList stored = defaults->arrayForKey(Preferences::Bookmarks);
    ASSERT_EQ(stored.size(), 4);
    EXPECT_EQ(stored.at(0).typeId(), QMetaType::QByteArray); // user file: path as data
    EXPECT_EQ(stored.at(1), QVariant(QStringLiteral("images-1"))); // factory photo: its name
    QFile::remove(dir.filePath(QStringLiteral("photos/gone.jpg")));

    auto list = makeList();
    EXPECT_EQ(names(*list), QStringLiteral("aimages-1c"));
    // The factory photo comes back centred; the user files keep theirs.
    EXPECT_EQ(list->imageAlignments(), (QList<int>{2, 0, 3}));
    // The vanished file is gone from the store too.
    EXPECT_EQ(defaults->arrayForKey(Preferences::Bookmarks).size(), 3);

    // A framing is kept with its photo, beside the alignments, and travels with it; choosing an
    // alignment ends it, and a list without framings stores none.
    EXPECT_EQ(list->framings(), (QList<PhotoFraming>{framed, {}, {}}));
    list->exchangeBookmarkAtIndex(0, 2);
    EXPECT_EQ(makeList()->framingAtIndex(2), framed);
    list->setAligment(ImageBookmarks::ResizeSmart, 2);
    EXPECT_TRUE(list->framingAtIndex(2).isNull());
    EXPECT_EQ(list->alignmentIndexAtIndex(2), ImageBookmarks::ResizeSmart);
    EXPECT_FALSE(defaults->hasObject(Preferences::Framings));
}

TEST_F(ImageBookmarksTest, StoredAlignmentsAreReadLeniently)
{
    skipFirstRun();
    const QString a = makeFile(QStringLiteral("a.jpg"));
    const QString b = makeFile(QStringLiteral("b.jpg"));
    const QString c = makeFile(QStringLiteral("c.jpg"));
    struct Case { QVariant alignments; QList<int> expected; };
    const Case cases[] = {
        {QVariantList{qint64(1)}, {1, 0, 0}},                           // shorter array
        {QVariant(), {0, 0, 0}},                                        // absent
        {QVariantList{qint64(9), qint64(-2), QStringLiteral("2")}, {0, 0, 2}}, // out of range, text
        {QVariantList{2.9, true, qint64(3)}, {2, 1, 3}},
        {QVariantList{qint64(4), qint64(5), qint64(3)}, {4, 0, 3}},    // Smart; one not known yet

    };
    for (const Case &k : cases) {
        defaults->setObject(QVariantList{QFile::encodeName(a), QFile::encodeName(b), QFile::encodeName(c), qint64(5)},
                            Preferences::Bookmarks);
        defaults->setObject(k.alignments, Preferences::Aligments);
        auto list = makeList();
        EXPECT_EQ(list->count(), 3); // the number is neither data nor a name: skipped
        EXPECT_EQ(list->imageAlignments(), k.expected);
    }
}

TEST_F(ImageBookmarksTest, FirstRunLoadsTheFactoryPhotosOnce)
{
    makeFactoryImages({0, 2, 48});
    {
        auto list = makeList();
        EXPECT_EQ(names(*list), QStringLiteral("images-0images-2images-48"));
        EXPECT_EQ(list->builtInImages().size(), 3);
        EXPECT_TRUE(defaults->hasObject(Preferences::FirstRunLoadFactoryImages));
        EXPECT_FALSE(defaults->boolForKey(Preferences::FirstRunLoadFactoryImages));
        while (list->count())
            list->removeBookmarkAtIndex(0);
    }
    // A user who emptied the list gets an empty list at the next start.
    auto list = makeList();
    EXPECT_EQ(list->count(), 0);
}

TEST_F(ImageBookmarksTest, SetAllOnAnEmptyListDoesNotWrite)
{
    skipFirstRun();
    auto list = makeList();
    defaults->removeObject(Preferences::Aligments);
    list->setAligmentFitAll();
    list->setAligmentCenterAll();
    EXPECT_FALSE(defaults->hasObject(Preferences::Aligments));

    list->addBookmarkForPath(makeFile(QStringLiteral("a.jpg")), 1);
    list->addBookmarkForPath(makeFile(QStringLiteral("b.jpg")), 2);
    list->setAligmentFitAll();
    EXPECT_EQ(defaults->arrayForKey(Preferences::Aligments), (QVariantList{qint64(3), qint64(3)}));
    list->setAligmentCenterAll();
    EXPECT_EQ(list->imageAlignments(), (QList<int>{0, 0}));
}

TEST_F(ImageBookmarksTest, UrlLookupIsByIdentity)
{
    auto list = makeListOf(0);
    const QString a = makeFile(QStringLiteral("a.jpg"));
    list->addBookmarkForPath(a, 0);
    list->addBookmarkForPath(a, 0);
    const auto second = list->urlAtIndex(1);
    ASSERT_TRUE(second);
    EXPECT_EQ(list->indexOfURL(second), 1);
    EXPECT_EQ(list->indexOfURL(std::make_shared<const QUrl>(*second)), -1);
    EXPECT_EQ(list->bookmarksWithPath(a), (QList<qsizetype>{0, 1}));
    // Two entries, one watch.
    EXPECT_EQ(list->fileWatcher().watchedPaths(), QStringList{a});
}

TEST_F(ImageBookmarksTest, RenameWithUuidKeepsFolderAndExtension)
{
    const QString plain = makeFile(QStringLiteral("noextension"));
    EXPECT_TRUE(ImageBookmarks::renameURLWithUUID(QUrl::fromLocalFile(plain)).isEmpty());
    EXPECT_TRUE(QFile::exists(plain));
    EXPECT_TRUE(ImageBookmarks::renameURLWithUUID(QUrl::fromLocalFile(dir.filePath(QStringLiteral("x.png")))).isEmpty());

    const QString photo = makeFile(QStringLiteral("dropped.jpeg"));
    const QUrl renamed = ImageBookmarks::renameURLWithUUID(QUrl::fromLocalFile(photo));
    ASSERT_FALSE(renamed.isEmpty());
    const QFileInfo info(renamed.toLocalFile());
    EXPECT_FALSE(QFile::exists(photo));
    EXPECT_TRUE(info.isFile());
    EXPECT_EQ(info.absolutePath(), QFileInfo(photo).absolutePath());
    EXPECT_EQ(info.suffix(), QStringLiteral("jpeg"));
    EXPECT_EQ(info.completeBaseName().size(), 36);
}

// A real file changed on disk (which change gives which word is the watcher's to tell): one
// alert, then, a second after it is dismissed, every entry of that path is gone and the watch
// with it.
TEST_F(ImageBookmarksTest, ChangedFileIsAnnouncedAndRemoved)
{
    auto list = makeListOf(2);
    alerts.autoAnswer = false;
    const QString path = list->pathAtIndex(1);
    list->addBookmarkForPath(path, 0); // the same file twice
    ASSERT_EQ(list->count(), 3);
    QFile::rename(path, path + QStringLiteral(".old"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !alerts.alerts.isEmpty(); }, 3000));
    const AlertPresenter::Alert &alert = alerts.alerts.first();
    EXPECT_EQ(alert.messageText, QStringLiteral("The image file \"b.jpg\" has been renamed by another app, due to a change "
                                                "to it externally. It will be removed."));
    EXPECT_EQ(alert.informativeText, QStringLiteral("You may reload another image to replace it."));
    EXPECT_EQ(alert.defaultButton, QStringLiteral("OK"));
    EXPECT_FALSE(list->isWatching(path));
    // Nothing is removed while the alert is up.
    QTest::qWait(50);
    EXPECT_EQ(list->count(), 3);
    ASSERT_EQ(alerts.pending.size(), 1);
    alerts.pending.takeFirst()(AlertPresenter::DefaultButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return list->count() == 1; }, 3000));
    EXPECT_EQ(names(*list), QStringLiteral("a"));
    EXPECT_EQ(alerts.alerts.size(), 1);
    expectInStep(*list);
}

TEST_F(ImageBookmarksTest, RemovalGoesThroughTheHandler)
{
    auto list = makeListOf(3);
    QList<qsizetype> handed;
    list->setRemovalHandler([&](const QList<qsizetype> &indexes) { handed = indexes; });
    QFile::remove(list->pathAtIndex(2));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !handed.isEmpty(); }, 3000));
    EXPECT_EQ(handed, QList<qsizetype>{2});
    EXPECT_EQ(list->count(), 3); // the handler decides
}

} // namespace
