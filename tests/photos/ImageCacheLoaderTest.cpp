#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "support/TestImages.h"
#include "support/FakePhotoList.h"

#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class ImageCacheLoaderTest : public ::testing::Test
{
protected:
    QString makePhoto(const QString &name, QSize size)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        const QString path = dir.filePath(name);
        image.save(path, "PNG");
        return path;
    }
    QTemporaryDir dir;
};

// A lookup never waits: an uncached photo answers nothing at once and arrives by signal; a
// cached one answers at once.
TEST_F(ImageCacheLoaderTest, AnswersAtOnceAndDeliversBySignal)
{
    const QString good = makePhoto(QStringLiteral("good.png"), {40, 30});
    FakePhotoList photos({good});
    ImageCache cache(&photos);
    ImageCacheLoader loader(cache);
    QSignalSpy ready(&loader, &ImageCacheLoader::imageReady);

    EXPECT_FALSE(loader.imageForPath(good).has_value());
    EXPECT_TRUE(loader.isLoading(good));
    ASSERT_TRUE(ready.wait(5000));
    EXPECT_EQ(ready.at(0).at(0).toString(), good);

    const std::optional<UIImage> cached = loader.imageForPath(good);
    ASSERT_TRUE(cached.has_value());
    EXPECT_EQ(cached->pixelSize(), QSize(40, 30));
    EXPECT_EQ(loader.loadingCount(), 0);
}

// Why a photo cannot be read comes from the decoder, in words, with the file's name and not its
// folder: cut short, not a picture, over the size limit, gone. A photo that is gone after it
// was cached is not shown from the old copy; one that failed is not tried again unchanged.
TEST_F(ImageCacheLoaderTest, TellsWhyAPhotoCannotBeRead)
{
    const QString gone = makePhoto(QStringLiteral("gone.png"), {40, 30});
    QFile whole(gone);
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray png = whole.readAll();
    const struct {
        const char *name;
        QByteArray bytes; // empty: the cached photo, deleted
        const char *words;
    } cases[] = {
        {"cut.png", png.left(png.size() / 2), "is a truncated PNG"},
        {"notes.jpg", "a shopping list, not a photo", "is not a picture"},
        {"huge.jpg", testimages::jpegClaiming(20000, 10000), "more than the 100-megapixel limit"},
        {"gone.png", {}, "no such file"},
    };
    QStringList paths;
    for (const auto &c : cases) {
        paths << dir.filePath(QLatin1String(c.name));
        if (!c.bytes.isEmpty()) {
            ASSERT_TRUE(testimages::writeFile(paths.last(), c.bytes));
        }
    }
    FakePhotoList photos(paths);
    ImageCache cache(&photos);
    ImageCacheLoader loader(cache);
    loader.request({gone});
    loader.waitForAll();
    ASSERT_TRUE(cache.contains(gone));
    ASSERT_TRUE(QFile::remove(gone));

    QSignalSpy failed(&loader, &ImageCacheLoader::imageFailed);
    for (const QString &path : paths)
        EXPECT_FALSE(loader.imageForPath(path).has_value()) << path.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return failed.count() == 4; }, 5000));
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString reason = cache.failureReason(paths[i]);
        EXPECT_TRUE(reason.contains(QStringLiteral("\u201c%1\u201d").arg(QLatin1String(cases[i].name)))) << reason.toStdString();
        EXPECT_TRUE(reason.contains(QLatin1String(cases[i].words))) << reason.toStdString();
        EXPECT_FALSE(reason.contains(dir.path())) << reason.toStdString();
        EXPECT_FALSE(loader.imageForPath(paths[i]).has_value());
        EXPECT_FALSE(loader.isLoading(paths[i])) << "a file that failed is not decoded again until it changes";
    }
}

TEST_F(ImageCacheLoaderTest, WaitForAllTakesEveryDecodingIn)
{
    QStringList paths;
    for (int i = 0; i < 6; ++i)
        paths << makePhoto(QStringLiteral("p%1.png").arg(i), {64, 48});
    FakePhotoList photos(paths);
    ImageCache cache(&photos);
    ImageCacheLoader loader(cache);
    loader.request(paths + paths); // asking twice starts each photo once
    EXPECT_EQ(loader.loadingCount(), 6);
    loader.waitForAll();
    EXPECT_EQ(loader.loadingCount(), 0);
    EXPECT_EQ(cache.count(), 6);
}

// The saved cache comes back without waiting: restoring reads no copy, a lookup then reads and
// decodes its stored copy off the calling thread instead of the photo file, and a stored copy
// that is no picture any more is made again from its file.
TEST_F(ImageCacheLoaderTest, RestoresTheSavedCacheWithoutWaiting)
{
    const QString kept = makePhoto(QStringLiteral("kept.png"), {40, 30});
    const QString spoiled = makePhoto(QStringLiteral("spoiled.png"), {20, 10});
    FakePhotoList photos({kept, spoiled});
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    {
        ImageCache cache(&photos);
        cache.fillCache(photos.pickedPhotos());
        ASSERT_TRUE(cache.saveImageCacheToUserDefaults(defaults));
    }
    QVariantMap entry = defaults.entriesForKey(Preferences::ImageCache, {spoiled}).value(spoiled).toMap();
    entry.insert(QStringLiteral("image"), QByteArray("no picture"));
    ASSERT_TRUE(defaults.setEntriesForKey(Preferences::ImageCache, {{spoiled, entry}}, {}));

    ImageCache cache(&photos);
    ImageCacheLoader loader(cache);
    QSignalSpy ready(&loader, &ImageCacheLoader::imageReady);
    loader.restoreFromUserDefaults(defaults);
    EXPECT_EQ(cache.count(), 2);
    EXPECT_EQ(loader.loadingCount(), 0) << "nothing read before it is asked for";
    EXPECT_FALSE(loader.imageForPath(kept).has_value());
    loader.request({spoiled});
    EXPECT_EQ(loader.loadingCount(), 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return ready.count() == 2; }, 5000));
    EXPECT_EQ(cache.imageCacheDictionary().value(kept).image.pixelSize(), QSize(40, 30));
    EXPECT_FALSE(cache.imageCacheDictionary().value(kept).fresh) << "from the stored copy";
    EXPECT_EQ(cache.imageCacheDictionary().value(spoiled).image.pixelSize(), QSize(20, 10));
    EXPECT_TRUE(cache.imageCacheDictionary().value(spoiled).fresh) << "made again from the file";
}

} // namespace
