#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "images/CompressedTiff.h"
#include "photos/ImageCache.h"
#include "photos/TessaryViewDelegate.h"
#include "support/LogCapture.h"
#include "support/TestImages.h"

#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <functional>

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
    ASSERT_TRUE(testimages::writeFile(broken, "\xff\xd8 not really a jpeg"));
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

// The record keeps the design's form for every reader (a dictionary under "image cache" of
// entries with TIFF bytes any TIFF reader decodes and a date), whether this version wrote it
// (one row per photo) or an earlier one did (the whole dictionary in one value, uncompressed):
// both come back without decoding a photo again, and the next save leaves compressed rows.
TEST_F(ImageCacheTest, StoredRecordComesBackAndKeepsItsFormForReaders)
{
    const QString a = makeImage(QStringLiteral("a.jpg"), {1600, 1200}, "JPEG");
    const QString b = makeImage(QStringLiteral("b.png"), {64, 48}, "PNG", Qt::red);
    delegate.photos = {a, b};
    ImageCache cache(&delegate);
    cache.fillCache(delegate.photos);
    ASSERT_EQ(cache.count(), 2);
    const auto entry = [&](const QString &path, const QByteArray &tiff) {
        return QVariantMap{{QStringLiteral("image"), tiff}, {QStringLiteral("date"), cache.cacheDateForPath(path)},
                           {QStringLiteral("upright"), true}};
    };
    const auto uncompressed = [&](const QString &path) { return entry(path, cache.imageCacheDictionary().value(path).image.TIFFRepresentation()); };
    // Entries that cannot come back: bytes that are no image, an entry without a date, and a
    // copy saved before photos were turned upright (it may lie on its side).
    QVariantMap earlier{{a, uncompressed(a)}, {b, uncompressed(b)}};
    earlier.insert(QStringLiteral("/nowhere/junk.png"), entry(a, "junk"));
    earlier.insert(QStringLiteral("/nowhere/undated.png"), QVariantMap{{QStringLiteral("image"), uncompressed(b).value("image")}});
    QVariantMap sideways = uncompressed(b);
    sideways.remove(QStringLiteral("upright"));
    earlier.insert(QStringLiteral("/nowhere/sideways.png"), sideways);
    const struct {
        const char *writer;
        std::function<void()> write;
    } stores[] = {
        {"this version", [&] { ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults)); }},
        {"an earlier version", [&] { ASSERT_TRUE(defaults->setObject(earlier, Preferences::ImageCache)); }},
    };
    // The files no longer decode, under their old dates: only the stored copies can show them.
    for (const QString &path : {a, b}) {
        ASSERT_TRUE(testimages::writeFile(path, "spoiled"));
        setModified(path, cache.cacheDateForPath(path));
    }
    for (const auto &store : stores) {
        SCOPED_TRACE(store.writer);
        ASSERT_TRUE(defaults->removeObject(Preferences::ImageCache));
        store.write();
        ImageCache restored(&delegate);
        LogCapture log;
        restored.restoreImageCacheFromUserDefaults(*defaults);
        for (const QString &path : {a, b}) {
            EXPECT_EQ(restored.getImageForPath(path).pixelSize(), cache.getImageForPath(path).pixelSize());
            EXPECT_EQ(restored.cacheDateForPath(path), cache.cacheDateForPath(path));
            // The Smart alignment's subject is found once, when the entry is made, and kept.
            ASSERT_TRUE(cache.subjectForPath(path).has_value());
            EXPECT_EQ(restored.subjectForPath(path), cache.subjectForPath(path));
        }
        const QColor red = restored.getImageForPath(b).bestRepresentation().pixelColor(60, 40);
        EXPECT_LE(qAbs(red.red() - 255) + red.green() + red.blue(), 6) << "red, within what JPEG keeps";
        EXPECT_TRUE(log.lines().filter(QStringLiteral("Updated path")).isEmpty());
        ASSERT_TRUE(restored.saveImageCacheToUserDefaults(*defaults));

        EXPECT_EQ(defaults->entrySizesForKey(Preferences::ImageCache).size(), 2) << "one row per photo, the rest dropped";
        EXPECT_TRUE(defaults->allKeys().contains(Preferences::ImageCache));
        const QVariantMap record = defaults->dictionaryForKey(Preferences::ImageCache);
        ASSERT_EQ(record.keys(), (QList<QString>{a, b}));
        for (const QString &path : {a, b}) {
            const QVariantMap saved = record.value(path).toMap();
            EXPECT_EQ(saved.value(QStringLiteral("date")).toDateTime(), cache.cacheDateForPath(path));
            const QByteArray tiff = saved.value(QStringLiteral("image")).toByteArray();
            EXPECT_TRUE(tiff.startsWith("II*") || tiff.startsWith("MM")) << "TIFF bytes";
            EXPECT_TRUE(CompressedTiff::isCompressed(tiff));
            QBuffer buffer;
            buffer.setData(tiff);
            QImageReader reader(&buffer, "tiff");
            EXPECT_EQ(reader.read().size(), cache.getImageForPath(path).pixelSize()) << reader.errorString().toStdString();
        }
        // A photo of 1600 x 1200 at half a megapixel: a small fraction of its 2 MB of pixels.
        EXPECT_LT(record.value(a).toMap().value(QStringLiteral("image")).toByteArray().size(), 150 * 1024);
    }
}

// Decoded copies beyond the budget are let go, least recently used first, and decoded again
// from their bytes (not the file) when needed; the photos the collage shows never are.
TEST_F(ImageCacheTest, LettingCopiesGoNeverTouchesTheShownPhotos)
{
    for (int i = 0; i < 6; ++i)
        delegate.photos.append(makeImage(QStringLiteral("p%1.png").arg(i), {300, 200}));
    const QStringList shown = delegate.photos.mid(0, 2);
    ImageCache cache(&delegate);
    cache.setShownPaths(shown);
    cache.setDecodedBudgetBytes(1); // nothing beyond what is shown and what was just made
    cache.fillCache(shown);
    for (const QString &path : delegate.photos) {
        EXPECT_TRUE(cache.getImageForPath(path).isValid());
        for (const QString &kept : shown)
            EXPECT_TRUE(cache.cachedImageForPath(kept).has_value()) << "after " << path.toStdString();
    }
    EXPECT_FALSE(cache.isDecoded(delegate.photos.at(2)));
    EXPECT_TRUE(cache.contains(delegate.photos.at(2)));
    LogCapture log;
    EXPECT_EQ(cache.getImageForPath(delegate.photos.at(2)).pixelSize(), QSize(300, 200));
    EXPECT_TRUE(log.lines().filter(QStringLiteral("Added path")).isEmpty()) << "decoded from the kept bytes";
    EXPECT_LE(cache.decodedBytes(), 3 * 300 * 200 * 4);
}

// Saving writes only the entries whose picture should come back, within a budget, keeping the
// photos of the current list first.
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
    const qint64 one = cache.imageCacheDictionary().value(a).tiff.size() + a.size() + 64;
    cache.setStoreBudgetBytes(2 * one + 10);
    ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults));
    const QVariantMap stored = defaults->dictionaryForKey(Preferences::ImageCache);
    EXPECT_EQ(QStringList(stored.keys()), (QStringList{b, c}));

    cache.setStoreBudgetBytes(0);
    ASSERT_TRUE(cache.saveImageCacheToUserDefaults(*defaults));
    EXPECT_TRUE(defaults->dictionaryForKey(Preferences::ImageCache).isEmpty());
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
