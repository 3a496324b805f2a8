// Checks the built-in template library as the build ships it in the resources folder: loaded
// the way the application loads it, it must offer every module count, greet the factory photos
// with its first-start row, and every template must be complete and lay out cleanly.

#include "foundation/Paths.h"
#include "foundation/PlistValue.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "templates/TemplatesFile.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QImage>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

constexpr int kFirstStartRow = 297;

// The built-in list as the application's store loads it.
QVariantList loadLibrary()
{
    QVariantList all;
    for (const TemplateStore::Template &t : TemplateStore::readBuiltInTemplates(Paths::resourcesFolder()))
        all.append(*t);
    return all;
}

// The same list with the "Templates" folder listed in another order, as another file system
// might list it.
QVariantList loadLibraryWithReversedFolder()
{
    const QDir resources(Paths::resourcesFolder());
    QStringList files{resources.filePath(QStringLiteral("templates.plist")),
                      resources.filePath(QStringLiteral("templates_additional.plist"))};
    const QDir folder(resources.filePath(QStringLiteral("Templates")));
    QStringList names = folder.entryList(QDir::Files, QDir::Name);
    std::reverse(names.begin(), names.end());
    for (const QString &name : names)
        files << folder.filePath(name);
    QVariantList all;
    for (const QString &file : files)
        all += TemplatesFile::fromFile(file).templates;
    std::stable_sort(all.begin(), all.end(), [](const QVariant &a, const QVariant &b) {
        return PlistValue::integerValue(a.toMap().value(QStringLiteral("nbrModules")))
            < PlistValue::integerValue(b.toMap().value(QStringLiteral("nbrModules")));
    });
    return all;
}

qint64 integer(const QVariantMap &t, const char *key)
{
    return PlistValue::integerValue(t.value(QLatin1String(key)));
}

class BuiltInLibrary : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { s_library = new QVariantList(loadLibrary()); }
    static void TearDownTestSuite()
    {
        delete s_library;
        s_library = nullptr;
    }
    static const QVariantList &library() { return *s_library; }

private:
    static QVariantList *s_library;
};

QVariantList *BuiltInLibrary::s_library = nullptr;

} // namespace

TEST_F(BuiltInLibrary, AllThreeResourcePlacesContributeTemplates)
{
    const QDir resources(Paths::resourcesFolder());
    for (const QString &file : {QStringLiteral("templates.plist"), QStringLiteral("templates_additional.plist")}) {
        const auto read = TemplatesFile::fromFile(resources.filePath(file));
        EXPECT_TRUE(read.ok()) << read.error.toStdString();
        EXPECT_FALSE(read.templates.isEmpty()) << file.toStdString();
    }
    const QDir folder(resources.filePath(QStringLiteral("Templates")));
    const QStringList names = folder.entryList(QDir::Files);
    EXPECT_GE(names.size(), 2);
    for (const QString &name : names) {
        const auto read = TemplatesFile::fromFile(folder.filePath(name));
        EXPECT_TRUE(read.ok() && !read.templates.isEmpty()) << name.toStdString();
    }
}

TEST_F(BuiltInLibrary, OffersEveryModuleCountUpToTheFactoryPhotos)
{
    ASSERT_GE(library().size(), 320);
    std::map<qint64, int> perCount;
    for (const QVariant &t : library())
        perCount[integer(t.toMap(), "nbrModules")]++;
    for (qint64 n = 1; n <= 49; ++n)
        EXPECT_GE(perCount[n], 1) << "no template with " << n << " modules";
    // The counts people use most get a real choice.
    for (qint64 n = 2; n <= 12; ++n)
        EXPECT_GE(perCount[n], 8) << n << " modules";
}

TEST_F(BuiltInLibrary, FirstStartRowIsASquareSevenBySevenGrid)
{
    ASSERT_GT(library().size(), kFirstStartRow);
    const QVariantMap t = library()[kFirstStartRow].toMap();
    ASSERT_EQ(integer(t, "nbrModules"), 49);
    const qint64 unit = integer(t, "moduleSizeInPoints");
    ASSERT_GT(unit, 0);
    EXPECT_EQ(PlistValue::doubleValue(t.value(QStringLiteral("contentSizeWidth"))), 7.0 * double(unit));
    EXPECT_EQ(PlistValue::doubleValue(t.value(QStringLiteral("contentSizeHeight"))), 7.0 * double(unit));
    const QVariantList modules = t.value(QStringLiteral("savedTessaryDataModules")).toList();
    ASSERT_EQ(modules.size(), 49);
    for (const QVariant &m : modules) {
        EXPECT_EQ(integer(m.toMap(), "widthFactor"), 1);
        EXPECT_EQ(integer(m.toMap(), "heightFactor"), 1);
    }
    // With the 49 factory photos, the first template matching the photo count is this row: no
    // 49-module template slips in front of it.
    EXPECT_EQ(TemplateTables::findFirstTemplateMatchingPhotoCount(
                  TemplateStore::readBuiltInTemplates(Paths::resourcesFolder()), 49),
              kFirstStartRow);
}

TEST_F(BuiltInLibrary, FirstStartRowDoesNotDependOnTheFolderListingOrder)
{
    const QVariantList reversed = loadLibraryWithReversedFolder();
    ASSERT_EQ(reversed.size(), library().size());
    EXPECT_EQ(reversed[kFirstStartRow].toMap(), library()[kFirstStartRow].toMap());
}

TEST_F(BuiltInLibrary, EveryTemplateCarriesItsKeysWithTheirTypes)
{
    struct Key {
        const char *name;
        QMetaType::Type type;
    };
    const Key keys[] = {
        {"nbrModules", QMetaType::LongLong},          {"savedTessaryDataModules", QMetaType::QVariantList},
        {"contentSizeWidth", QMetaType::Double},      {"contentSizeHeight", QMetaType::Double},
        {"moduleSizeInPoints", QMetaType::LongLong},  {"borderWidth", QMetaType::LongLong},
        {"thumbnail", QMetaType::QByteArray},
    };
    for (int row = 0; row < library().size(); ++row) {
        const QVariantMap t = library()[row].toMap();
        for (const Key &k : keys)
            EXPECT_EQ(t.value(QLatin1String(k.name)).typeId(), int(k.type)) << "row " << row << " key " << k.name;
        EXPECT_EQ(t.value(QStringLiteral("savedTessaryDataModules")).toList().size(), integer(t, "nbrModules"))
            << "row " << row;
        for (const QVariant &m : t.value(QStringLiteral("savedTessaryDataModules")).toList()) {
            const QVariantMap module = m.toMap();
            EXPECT_TRUE(module.value(QStringLiteral("imageFilename")).toString().endsWith(QLatin1String(".png")));
            EXPECT_EQ(module.value(QStringLiteral("borderColor")).typeId(), int(QMetaType::QByteArray));
        }
    }
}

TEST_F(BuiltInLibrary, EveryThumbnailDecodesWithTheCollagesProportions)
{
    for (int row = 0; row < library().size(); ++row) {
        const QVariantMap t = library()[row].toMap();
        QImage thumbnail;
        ASSERT_TRUE(thumbnail.loadFromData(t.value(QStringLiteral("thumbnail")).toByteArray())) << "row " << row;
        EXPECT_EQ(std::max(thumbnail.width(), thumbnail.height()), 160) << "row " << row;
        const double w = PlistValue::doubleValue(t.value(QStringLiteral("contentSizeWidth")));
        const double h = PlistValue::doubleValue(t.value(QStringLiteral("contentSizeHeight")));
        // Rounded to whole pixels on the short side.
        EXPECT_NEAR(double(thumbnail.width()) / thumbnail.height(), w / h, 0.04 * w / h) << "row " << row;
    }
}

TEST_F(BuiltInLibrary, EveryTemplateLaysOutWithoutSkipsHolesOrOverlap)
{
    LayoutEngine engine;
    for (int row = 0; row < library().size(); ++row) {
        const QVariantMap t = library()[row].toMap();
        const QSizeF own(PlistValue::doubleValue(t.value(QStringLiteral("contentSizeWidth"))),
                         PlistValue::doubleValue(t.value(QStringLiteral("contentSizeHeight"))));
        const CollageLayout layout = engine.layoutTemplate(t, own);
        EXPECT_TRUE(layout.skippedModules.empty()) << "row " << row;
        ASSERT_EQ(qint64(layout.tiles.size()), integer(t, "nbrModules")) << "row " << row;
        double area = 0;
        for (const TileLayout &tile : layout.tiles)
            area += tile.cellFrame.width() * tile.cellFrame.height();
        // All tiles inside the collage, and their areas add up to it: no hole, no overlap.
        EXPECT_EQ(layout.extent, own) << "row " << row;
        EXPECT_DOUBLE_EQ(area, own.width() * own.height()) << "row " << row;
    }
}

TEST_F(BuiltInLibrary, NoLayoutIsOfferedTwice)
{
    QSet<QString> seen;
    for (int row = 0; row < library().size(); ++row) {
        const QVariantMap t = library()[row].toMap();
        // The grid and the module sizes in order decide the whole layout.
        const qint64 unit = std::max<qint64>(1, integer(t, "moduleSizeInPoints"));
        QStringList key{QStringLiteral("%1x%2").arg(integer(t, "contentSizeWidth") / unit).arg(integer(t, "contentSizeHeight") / unit)};
        for (const QVariant &m : t.value(QStringLiteral("savedTessaryDataModules")).toList())
            key << QStringLiteral("%1x%2").arg(integer(m.toMap(), "widthFactor")).arg(integer(m.toMap(), "heightFactor"));
        EXPECT_FALSE(seen.contains(key.join(QLatin1Char(' ')))) << "row " << row << " repeats an earlier template";
        seen.insert(key.join(QLatin1Char(' ')));
    }
}
