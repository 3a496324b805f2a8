#include "model/CollageDocument.h"

#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

void touch(const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("x");
}

QVariantMap sampleTemplate()
{
    const QVariantMap module{{QStringLiteral("width"), qint64(2)}, {QStringLiteral("height"), qint64(1)}};
    return {{QStringLiteral("nbrModules"), qint64(2)},
            {QStringLiteral("savedTessaryDataModules"), QVariantList{module, module}},
            {QStringLiteral("contentSizeWidth"), 640.0},
            {QStringLiteral("contentSizeHeight"), 480.0},
            {QStringLiteral("moduleSizeInPoints"), qint64(80)},
            {QStringLiteral("borderWidth"), qint64(4)},
            {QStringLiteral("backgroundColor"), QByteArray("archived colour")}};
}

// Every field set away from its default, so a field lost on the way shows.
CollageDocument fullDocument(const QString &folder)
{
    CollageDocument doc;
    doc.templateData = sampleTemplate();
    doc.setPhotos({folder + QStringLiteral("/photos/a.jpg"), folder + QStringLiteral("/photos/b b.png"),
                   folder + QStringLiteral("/c.jpg")},
                  {1, 4, 2}, {PhotoFraming(), PhotoFraming(QPointF(0.25, 0.6), 2.5), PhotoFraming()});
    doc.coordinateTransform = 3;
    doc.spacingType = 1;
    doc.widthIncrement = 12;
    doc.heightIncrement = 7.5;
    doc.imageFrameStyle = 2;
    doc.backgroundColor = QColor(10, 20, 30, 128);
    doc.jumbled = true;
    doc.jumbledFrames = {QRectF(1.5, 2, 30, 40), QRectF(-4, 8.25, 50, 60)};
    doc.otherKeys = {{QStringLiteral("AddedByALaterVersion"), QVariantMap{{QStringLiteral("x"), qint64(1)}}}};
    return doc;
}

TEST(CollageDocument, EveryFieldSurvivesWritingAndReading)
{
    QTemporaryDir dir;
    for (const char *p : {"/photos/a.jpg", "/photos/b b.png", "/c.jpg"})
        touch(dir.path() + QLatin1String(p));
    const CollageDocument doc = fullDocument(dir.path());
    const QString file = dir.filePath(QStringLiteral("my collage.tessary"));
    QString error;
    ASSERT_TRUE(doc.write(file, &error)) << error.toStdString();

    const CollageDocument::ReadResult read = CollageDocument::read(file);
    ASSERT_TRUE(read.ok()) << read.error.toStdString();
    const CollageDocument &back = *read.document;
    EXPECT_EQ(back.templateData, doc.templateData);
    EXPECT_EQ(back.photos, doc.photos);
    EXPECT_EQ(back.coordinateTransform, 3);
    EXPECT_EQ(back.spacingType, 1);
    EXPECT_EQ(back.imageFrameStyle, 2);
    EXPECT_EQ(back.widthIncrement, 12);
    EXPECT_EQ(back.heightIncrement, 7.5);
    EXPECT_EQ(back.backgroundColor, doc.backgroundColor);
    EXPECT_TRUE(back.jumbled);
    EXPECT_EQ(back.jumbledFrames, doc.jumbledFrames);
    // Replayed at a collage size, for the same number of tiles only.
    EXPECT_EQ(back.jumbledFramesAt(QSizeF(2, 10), 2), (QList<QRectF>{QRectF(3, 20, 60, 400), QRectF(-8, 82.5, 100, 600)}));
    EXPECT_TRUE(back.jumbledFramesAt(QSizeF(2, 10), 3).isEmpty());
    EXPECT_EQ(back.otherKeys, doc.otherKeys);
    EXPECT_TRUE(read.missingPhotos.isEmpty());

    // An alignment this version does not know reads as 0.
    QVariantMap later = doc.toPropertyList(dir.path());
    QVariantList photos = later.value(QStringLiteral("photos")).toList();
    QVariantMap first = photos[0].toMap();
    first[QStringLiteral("alignment")] = qint64(7);
    photos[0] = first;
    later[QStringLiteral("photos")] = photos;
    const CollageDocument::ReadResult lenient = CollageDocument::fromPropertyList(later, dir.path());
    ASSERT_TRUE(lenient.ok()) << lenient.error.toStdString();
    EXPECT_EQ(lenient.document->photos[0].alignment, 0);
}

TEST(CollageDocument, PhotosAreWrittenByAbsoluteAndRelativePath)
{
    QTemporaryDir dir;
    const CollageDocument doc = fullDocument(dir.path() + QStringLiteral("/work"));
    const QVariantList photos = doc.toPropertyList(dir.path() + QStringLiteral("/work/docs")).value(QStringLiteral("photos")).toList();
    ASSERT_EQ(photos.size(), 3);
    EXPECT_EQ(photos[0].toMap().value(QStringLiteral("path")).toString(), dir.path() + QStringLiteral("/work/photos/a.jpg"));
    EXPECT_EQ(photos[0].toMap().value(QStringLiteral("relativePath")).toString(), QStringLiteral("../photos/a.jpg"));
    EXPECT_EQ(photos[2].toMap().value(QStringLiteral("relativePath")).toString(), QStringLiteral("../c.jpg"));
    EXPECT_EQ(photos[1].toMap().value(QStringLiteral("alignment")).toLongLong(), 4);
}

// Where each photo is looked for after the folder was moved, copied or partly emptied.
struct MoveCase {
    const char *name;
    bool keepOriginal;    // the photos are still at their absolute paths
    bool movedHasPhotos;  // the moved folder holds the photos
    int expectedMissing;
    bool foundInMovedFolder;
};

class CollageDocumentMove : public ::testing::TestWithParam<MoveCase> {};

TEST_P(CollageDocumentMove, FindsPhotosByAbsoluteThenRelativePath)
{
    const MoveCase &c = GetParam();
    QTemporaryDir dir;
    const QString original = dir.path() + QStringLiteral("/original");
    const QString moved = dir.path() + QStringLiteral("/elsewhere/moved");
    for (const char *p : {"/photos/a.jpg", "/photos/b b.png", "/c.jpg"}) {
        if (c.keepOriginal)
            touch(original + QLatin1String(p));
        if (c.movedHasPhotos)
            touch(moved + QLatin1String(p));
    }
    QDir().mkpath(original);
    QString error;
    ASSERT_TRUE(fullDocument(original).write(original + QStringLiteral("/doc.tessary"), &error)) << error.toStdString();
    QDir().mkpath(moved);
    ASSERT_TRUE(QFile::copy(original + QStringLiteral("/doc.tessary"), moved + QStringLiteral("/doc.tessary")));
    if (!c.keepOriginal)
        QDir(original + QStringLiteral("/photos")).removeRecursively();

    const CollageDocument::ReadResult read = CollageDocument::read(moved + QStringLiteral("/doc.tessary"));
    ASSERT_TRUE(read.ok()) << read.error.toStdString();
    EXPECT_EQ(read.missingPhotos.size(), c.expectedMissing) << read.missingPhotos.join(QLatin1Char(',')).toStdString();
    const QString first = read.document->photos[0].path;
    if (c.expectedMissing == 0 || c.foundInMovedFolder)
        EXPECT_EQ(first, (c.foundInMovedFolder ? moved : original) + QStringLiteral("/photos/a.jpg"));
    else
        EXPECT_TRUE(first.isEmpty());
    // A missing photo keeps its place: the list never shrinks.
    EXPECT_EQ(read.document->photos.size(), 3);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CollageDocumentMove,
    ::testing::Values(MoveCase{"OriginalStillThere", true, true, 0, false},
                      MoveCase{"MovedWithThePhotos", false, true, 0, true},
                      MoveCase{"PhotosGone", false, false, 3, false}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CollageDocument, MissingPhotosAreReportedOnceInListOrder)
{
    QTemporaryDir dir;
    CollageDocument doc;
    doc.templateData = sampleTemplate();
    const QString gone = dir.path() + QStringLiteral("/gone.jpg");
    const QString alsoGone = dir.path() + QStringLiteral("/also gone.jpg");
    touch(dir.path() + QStringLiteral("/here.jpg"));
    doc.setPhotos({gone, dir.path() + QStringLiteral("/here.jpg"), alsoGone, gone}, {});
    ASSERT_TRUE(doc.write(dir.filePath(QStringLiteral("d.tessary"))));
    const CollageDocument::ReadResult read = CollageDocument::read(dir.filePath(QStringLiteral("d.tessary")));
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(read.missingPhotos, QStringList({gone, alsoGone}));
    EXPECT_EQ(read.document->photoPaths(), QStringList({QString(), dir.path() + QStringLiteral("/here.jpg"), QString(), QString()}));
    // Written again, a missing photo keeps the path it was stored under.
    EXPECT_EQ(read.document->toPropertyList(dir.path()).value(QStringLiteral("photos")).toList()[0].toMap().value(QStringLiteral("path")).toString(), gone);
}

// Documents that must be refused, each with a message naming what is wrong.
struct MalformedCase {
    const char *name;
    std::function<void(QVariantMap &)> spoil;
    const char *messagePart;
};

class CollageDocumentMalformed : public ::testing::TestWithParam<MalformedCase> {};

TEST_P(CollageDocumentMalformed, IsRefusedWithAMessage)
{
    QTemporaryDir dir;
    QVariantMap root = fullDocument(dir.path()).toPropertyList(dir.path());
    GetParam().spoil(root);
    const CollageDocument::ReadResult read = CollageDocument::fromPropertyList(root, dir.path());
    EXPECT_FALSE(read.ok());
    EXPECT_TRUE(read.error.contains(QLatin1String(GetParam().messagePart))) << read.error.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CollageDocumentMalformed,
    ::testing::Values(
        MalformedCase{"NoVersion", [](QVariantMap &m) { m.remove(QStringLiteral("TessaryDocumentVersion")); }, "TessaryDocumentVersion"},
        MalformedCase{"VersionIsText", [](QVariantMap &m) { m[QStringLiteral("TessaryDocumentVersion")] = QStringLiteral("1"); }, "TessaryDocumentVersion"},
        MalformedCase{"NoTemplate", [](QVariantMap &m) { m.remove(QStringLiteral("template")); }, "template"},
        MalformedCase{"TemplateWithoutModules", [](QVariantMap &m) { m[QStringLiteral("template")] = QVariantMap(); }, "savedTessaryDataModules"},
        MalformedCase{"TransformOutOfRange", [](QVariantMap &m) { m[QStringLiteral("coordinateTransform")] = qint64(5); }, "coordinateTransform"},
        MalformedCase{"SpacingIsReal", [](QVariantMap &m) { m[QStringLiteral("spacingType")] = 0.5; }, "spacingType"},
        MalformedCase{"NegativeIncrement", [](QVariantMap &m) { m[QStringLiteral("widthIncrement")] = -1.0; }, "widthIncrement"},
        MalformedCase{"BadColour", [](QVariantMap &m) { m[QStringLiteral("backgroundColor")] = QStringLiteral("#zz"); }, "backgroundColor"},
        MalformedCase{"PhotosNotArray", [](QVariantMap &m) { m[QStringLiteral("photos")] = QStringLiteral("a.jpg"); }, "photos"},
        MalformedCase{"PhotoNotDictionary", [](QVariantMap &m) { m[QStringLiteral("photos")] = QVariantList{QStringLiteral("a.jpg")}; }, "photo 1"},
        MalformedCase{"PhotoPathIsNumber", [](QVariantMap &m) { m[QStringLiteral("photos")] = QVariantList{QVariantMap{{QStringLiteral("path"), qint64(3)}}}; }, "photo 1"},
        MalformedCase{"AlignmentIsText", [](QVariantMap &m) { m[QStringLiteral("photos")] = QVariantList{QVariantMap{{QStringLiteral("path"), QStringLiteral("/a")}, {QStringLiteral("alignment"), QStringLiteral("smart")}}}; }, "alignment"},
        MalformedCase{"JumbledFrameShort", [](QVariantMap &m) { m[QStringLiteral("jumbledFrames")] = QVariantList{QVariantList{1.0, 2.0}}; }, "jumbledFrames"}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CollageDocument, FilesThatAreNotDocumentsAreRefused)
{
    QTemporaryDir dir;
    const QString array = dir.filePath(QStringLiteral("array.tessary"));
    ASSERT_TRUE(PropertyList::writeFile(array, QVariantList{qint64(1)}, PropertyList::Format::Xml));
    const QString garbage = dir.filePath(QStringLiteral("garbage.tessary"));
    QFile f(garbage);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("<?xml version=\"1.0\"?><plist><dict><key>a</key>");
    f.close();
    for (const QString &path : {array, garbage, dir.filePath(QStringLiteral("absent.tessary"))}) {
        const CollageDocument::ReadResult read = CollageDocument::read(path);
        EXPECT_FALSE(read.ok()) << path.toStdString();
        EXPECT_TRUE(read.error.contains(path)) << read.error.toStdString();
    }
}

TEST(CollageDocument, AFailedWriteLeavesTheEarlierFile)
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("d.tessary"));
    CollageDocument doc = fullDocument(dir.path());
    ASSERT_TRUE(doc.write(file));
    const QByteArray before = [&] { QFile f(file); f.open(QIODevice::ReadOnly); return f.readAll(); }();
    // A value a property list cannot hold makes the write fail before anything is written.
    doc.otherKeys.insert(QStringLiteral("bad"), QVariant());
    QString error;
    EXPECT_FALSE(doc.write(file, &error));
    EXPECT_FALSE(error.isEmpty());
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), before);
}

// A document keeps of the store the template's layout values that are there (and how many
// modules it has) and the tile spacing; nothing else the store holds.
TEST(CollageDocument, TakesTheTemplateAndSpacingFromTheStore)
{
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults")));
    defaults.setObject(QVariantList{QVariantMap(), QVariantMap(), QVariantMap()}, Preferences::SavedTessaryDataModules);
    defaults.setDouble(600.0, Preferences::ContentSizeWidth);
    defaults.setInteger(4, Preferences::BorderWidth);
    defaults.setDouble(7.0, Preferences::CollageWidthIncrement);
    defaults.setDouble(2.0, Preferences::CollageHeightIncrement);
    defaults.setBool(false, Preferences::MegapixelLimit);
    CollageDocument doc;
    doc.templateData.insert(QStringLiteral("stale"), 1);
    doc.setTemplateFromDefaults(defaults);
    EXPECT_EQ(doc.templateData.keys(),
              (QStringList{Preferences::BorderWidth, Preferences::ContentSizeWidth, QStringLiteral("nbrModules"),
                           Preferences::SavedTessaryDataModules}));
    EXPECT_EQ(doc.templateData.value(QStringLiteral("nbrModules")), QVariant(qint64(3)));
    EXPECT_EQ(doc.widthIncrement, 7.0);
    EXPECT_EQ(doc.heightIncrement, 2.0);
}

} // namespace
