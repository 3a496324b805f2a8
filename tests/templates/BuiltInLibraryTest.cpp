// Checks the built-in template library as the build ships it in the resources folder: loaded
// the way the application loads it, it must greet the factory photos with its first-start row
// and offer no layout twice. (The generator refuses a template the layout engine would place
// otherwise; its own tests hold the counts, the keys and the thumbnails.)

#include "foundation/Paths.h"
#include "foundation/PlistValue.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTables.h"
#include "templates/TemplatesFile.h"

#include <QDir>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>

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
