#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageCache.h"
#include "photos/TessaryViewDelegate.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

namespace {

class ListDelegate : public TessaryViewDelegate
{
public:
    QStringList pickedPhotos() const override { return photos; }
    int alignmentIndexAtIndex(qsizetype) const override { return 0; }
    qsizetype selectedItem() const override { return -1; }
    void selectIndex(qsizetype) override {}
    void exchangeItem(qsizetype, qsizetype) override {}
    QStringList photos;
};

class ImageCacheTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        defaults = std::make_unique<UserDefaults>(dir.filePath(QStringLiteral("defaults.sqlite")));
    }
    // A picture with some structure, so a wrong crop or scale would show.
    QString makeImage(const QString &name, QSize size, const char *format = "PNG", QColor color = Qt::darkCyan)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        QPainter painter(&image);
        painter.fillRect(QRect(0, 0, size.width() / 3, size.height() / 2), Qt::yellow);
        painter.end();
        const QString path = dir.filePath(name);
        EXPECT_TRUE(image.save(path, format));
        return path;
    }
    static void setModified(const QString &path, const QDateTime &when)
    {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        ASSERT_TRUE(f.setFileTime(when, QFileDevice::FileModificationTime));
    }
    // What a full decode brought under the ceiling gives.
    static QSize expectedSize(const QString &path)
    {
        return UIImage::initWithContentsOfFile(path).scaleToUnderMegaPixels(ImageCache::kMegaPixels).pixelSize();
    }

    QTemporaryDir dir;
    std::unique_ptr<UserDefaults> defaults;
    ListDelegate delegate;
};

TEST_F(ImageCacheTest, EntriesStayUnderHalfAMegapixel)
{
    const struct { const char *name; QSize size; const char *format; bool scaled; } cases[] = {
        {"exact.png", {1000, 500}, "PNG", false},   // exactly 500,000 pixels: kept as it is
        {"over.png", {1001, 500}, "PNG", true},
        {"small.png", {40, 30}, "PNG", false},
        {"tall.png", {300, 2400}, "PNG", true},
        {"big.jpg", {3000, 2000}, "JPEG", true},     // decoded at a reduced scale
        {"odd.jpg", {2999, 1777}, "JPEG", true},
    };
    ImageCache cache(&delegate);
    for (const auto &c : cases) {
        const QString path = makeImage(QLatin1String(c.name), c.size, c.format);
        delegate.photos.append(path);
        const UIImage image = cache.getImageForPath(path);
        ASSERT_TRUE(image.isValid()) << c.name;
        EXPECT_EQ(image.pixelSize(), expectedSize(path)) << c.name;
        EXPECT_LE(qint64(image.pixelsWide()) * image.pixelsHigh(), 500000) << c.name;
        EXPECT_EQ(image.pixelSize() == c.size, !c.scaled) << c.name;
        EXPECT_TRUE(cache.contains(path));
        EXPECT_EQ(cache.cacheDateForPath(path), ImageCache::modificationDateForPath(path));
        // Scaling what was handed out (which sets its point size) leaves the cached copy alone.
        const QSizeF pointSize = image.size();
        image.scaleImageToSize(QSizeF(7, 7));
        EXPECT_EQ(cache.getImageForPath(path).size(), pointSize) << c.name;
    }
}

TEST_F(ImageCacheTest, ColdFillInParallelGivesTheSameImages)
{
    for (int i = 0; i < 10; ++i)
        delegate.photos.append(makeImage(QStringLiteral("p%1.jpg").arg(i), QSize(1200 + 97 * i, 900 - 31 * i), "JPEG"));
    delegate.photos.append(delegate.photos.first()); // listed twice: one entry
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    ImageCache cache(&delegate, &pool);
    ASSERT_EQ(cache.readAheadCount(), 4);
    LogCapture log;
    // A layout showing two photos decodes a few ahead, not all of them, however fast the
    // decoding is: let each lookup's read-ahead finish before the next lookup.
    EXPECT_TRUE(cache.getImageForPath(delegate.photos.at(0)).isValid());
    pool.waitForDone();
    EXPECT_TRUE(cache.getImageForPath(delegate.photos.at(1)).isValid());
    pool.waitForDone();
    cache.updateCache();
    EXPECT_EQ(cache.pendingCount(), 0);
    EXPECT_EQ(cache.count(), 2 + cache.readAheadCount());
    for (const QString &path : delegate.photos)
        EXPECT_EQ(cache.getImageForPath(path).pixelSize(), expectedSize(path));
    cache.fillCache(delegate.photos); // let the read-ahead settle
    EXPECT_EQ(cache.count(), 10);
    for (const QString &path : delegate.photos)
        EXPECT_EQ(cache.imageCacheDictionary().value(path).image.pixelSize(), ImageCache::compressedImageForPath(path).pixelSize());
    // Each photo decoded once.
    EXPECT_EQ(log.lines().filter(QStringLiteral("Added path to cache: ")).size(), 10);
}

TEST_F(ImageCacheTest, TouchedFileIsRebuiltAtTheNextLookup)
{
    const QString a = makeImage(QStringLiteral("a.png"), {200, 100});
    const QString b = makeImage(QStringLiteral("b.png"), {50, 50});
    delegate.photos = {a, b};
    ImageCache cache(&delegate);
    EXPECT_EQ(cache.getImageForPath(a).pixelSize(), QSize(200, 100));
    const QDateTime first = cache.cacheDateForPath(a);

    // New content under the same name, dated later.
    makeImage(QStringLiteral("a.png"), {120, 90});
    setModified(a, first.addSecs(5));
    LogCapture log;
    cache.getImageForPath(b); // any lookup brings the cache up to date
    EXPECT_EQ(log.count(QStringLiteral("Updated path for cache: a.png")), 1);
    EXPECT_TRUE(log.lines().contains(QStringLiteral("Full path: ") + a));
    EXPECT_EQ(cache.imageCacheDictionary().value(a).image.pixelSize(), QSize(120, 90));
    EXPECT_EQ(cache.cacheDateForPath(a), first.addSecs(5));

    // An older date (a file restored from a backup) is not newer: the entry stays.
    setModified(a, first.addSecs(-60));
    cache.getImageForPath(b);
    EXPECT_EQ(log.count(QStringLiteral("Updated path for cache: a.png")), 1);
}

TEST_F(ImageCacheTest, UnlistedPhotosAreDroppedAtTheNextLookup)
{
    const QString a = makeImage(QStringLiteral("a.png"), {20, 10});
    const QString b = makeImage(QStringLiteral("b.png"), {20, 10});
    delegate.photos = {a, b};
    ImageCache cache(&delegate);
    cache.fillCache(delegate.photos);
    ASSERT_EQ(cache.count(), 2);
    delegate.photos = {b};
    LogCapture log;
    cache.getImageForPath(b);
    EXPECT_FALSE(cache.contains(a));
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("Removed path from cache: a.png"), QStringLiteral("Full path: ") + a}));
    // Without a delegate nothing is trimmed.
    cache.setDelegate(nullptr);
    cache.getImageForPath(a);
    EXPECT_TRUE(cache.contains(b));
}

TEST_F(ImageCacheTest, FilesThatCannotBeReducedAreLoadedEachTime)
{
    const QString broken = dir.filePath(QStringLiteral("broken.jpg"));
    {
        QFile f(broken);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("\xff\xd8 not really a jpeg");
    }
    const QString missing = dir.filePath(QStringLiteral("missing.png"));
    delegate.photos = {broken, missing};
    ImageCache cache(&delegate);
    EXPECT_FALSE(cache.getImageForPath(broken).isValid());
    EXPECT_FALSE(cache.getImageForPath(missing).isValid());
    EXPECT_FALSE(ImageCache::modificationDateForPath(missing).isValid());
    EXPECT_EQ(cache.count(), 0);
    // Once the file is fixed it is cached.
    makeImage(QStringLiteral("broken.jpg"), {30, 20}, "JPEG");
    setModified(broken, QDateTime::currentDateTimeUtc().addSecs(10));
    EXPECT_EQ(cache.getImageForPath(broken).pixelSize(), QSize(30, 20));
    EXPECT_TRUE(cache.contains(broken));
}

TEST_F(ImageCacheTest, StoredCacheRoundTrips)
{
    const QString a = makeImage(QStringLiteral("a.jpg"), {1600, 1200}, "JPEG");
    const QString b = makeImage(QStringLiteral("b.png"), {64, 48}, "PNG", Qt::red);
    delegate.photos = {a, b};
    ImageCache cache(&delegate);
    cache.fillCache(delegate.photos);
    ASSERT_EQ(cache.count(), 2);
    ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults));
    // The cache in memory is still usable after saving.
    EXPECT_TRUE(cache.getImageForPath(b).isValid());

    // Entries that cannot come back: bytes that are no image, an entry without a date, and a
    // copy saved before photos were turned upright (it may lie on its side).
    QVariantMap stored = defaults->dictionaryForKey(Preferences::ImageCache);
    ASSERT_EQ(stored.size(), 2);
    EXPECT_EQ(stored.value(a).toMap().value(QStringLiteral("image")).typeId(), QMetaType::QByteArray);
    stored.insert(QStringLiteral("/nowhere/junk.png"),
                  QVariantMap{{QStringLiteral("image"), QByteArray("junk")}, {QStringLiteral("date"), QDateTime::currentDateTimeUtc()}});
    stored.insert(QStringLiteral("/nowhere/undated.png"),
                  QVariantMap{{QStringLiteral("image"), stored.value(b).toMap().value(QStringLiteral("image"))}});
    QVariantMap sideways = stored.value(b).toMap();
    sideways.remove(QStringLiteral("upright"));
    stored.insert(QStringLiteral("/nowhere/sideways.png"), sideways);
    defaults->setObject(stored, Preferences::ImageCache);

    ImageCache restored(&delegate);
    LogCapture log;
    restored.restoreImageCacheFromUserDefaults(*defaults);
    EXPECT_EQ(restored.count(), 2);
    for (const QString &path : {a, b}) {
        const ImageCache::Entry got = restored.imageCacheDictionary().value(path);
        const ImageCache::Entry was = cache.imageCacheDictionary().value(path);
        EXPECT_EQ(got.image.pixelSize(), was.image.pixelSize());
        EXPECT_EQ(got.date, was.date);
        // The Smart alignment's subject was found once, when the entry was made, and kept.
        ASSERT_TRUE(was.subject.has_value());
        EXPECT_EQ(got.subject, was.subject);
    }
    EXPECT_EQ(restored.imageCacheDictionary().value(b).image.bestRepresentation().pixelColor(60, 40), QColor(Qt::red));
    // Unchanged files are not rebuilt after a restart.
    restored.getImageForPath(a);
    EXPECT_TRUE(log.lines().filter(QStringLiteral("Updated path")).isEmpty());
    EXPECT_TRUE(log.lines().filter(QStringLiteral("Removed path")).isEmpty());
}

// The store reads one value up to a fixed size: a record beyond it would never come back, so
// saving stops short of it, keeping the photos of the current list first.
TEST_F(ImageCacheTest, StoredRecordStaysWithinItsBudget)
{
    const QString a = makeImage(QStringLiteral("a.png"), {100, 100});
    const QString b = makeImage(QStringLiteral("b.png"), {100, 100});
    const QString c = makeImage(QStringLiteral("c.png"), {100, 100});
    delegate.photos = {c, a, b};
    ImageCache cache(&delegate);
    cache.fillCache(delegate.photos);
    ASSERT_EQ(cache.count(), 3);
    delegate.photos = {b, c}; // a is still cached but no longer listed
    const qint64 one = cache.imageCacheDictionary().value(a).image.TIFFRepresentation().size();
    cache.setStoreBudgetBytes(2 * one + 1000);
    ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults));
    const QVariantMap stored = defaults->dictionaryForKey(Preferences::ImageCache);
    EXPECT_EQ(QStringList(stored.keys()), (QStringList{b, c}));

    cache.setStoreBudgetBytes(0);
    ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults));
    EXPECT_TRUE(defaults->dictionaryForKey(Preferences::ImageCache).isEmpty());
    EXPECT_TRUE(defaults->hasObject(Preferences::ImageCache));
}

TEST_F(ImageCacheTest, RestoringNothingOrNotADictionaryAddsNothing)
{
    ImageCache cache(&delegate);
    cache.restoreImageCacheFromUserDefaults(*defaults);
    EXPECT_EQ(cache.count(), 0);
    defaults->setObject(QStringLiteral("not a dictionary"), Preferences::ImageCache);
    cache.restoreImageCacheFromUserDefaults(*defaults);
    EXPECT_EQ(cache.count(), 0);
}

} // namespace
