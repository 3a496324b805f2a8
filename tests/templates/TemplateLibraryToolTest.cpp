// The pieces of the template library generator: slot patterns and their scaling to collage
// shapes, the proof that catches templates the layout engine would place differently, the
// catalogue's counts, the thumbnails' proportions and colours, and where the files go.

#include "CollageShape.h"
#include "DesignCatalogue.h"
#include "GridPatterns.h"
#include "LayoutProof.h"
#include "LibraryGenerator.h"
#include "LibraryWriter.h"
#include "SlotPattern.h"
#include "TemplateDesign.h"
#include "TemplateThumbnail.h"
#include "foundation/PlistValue.h"
#include "templates/TemplatesFile.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace {

SlotPattern pattern(int columns, int rows, std::vector<QRect> blocks)
{
    return SlotPattern(QStringLiteral("test"), QStringLiteral("p"), columns, rows, std::move(blocks));
}

// One large tile on the left, two stacked on the right: modules of different sizes, so the
// order in which they are handed to the engine matters.
TemplateDesign largeLeftDesign()
{
    const SlotPattern p = pattern(3, 2, {QRect(0, 0, 2, 2), QRect(2, 0, 1, 1), QRect(2, 1, 1, 1)});
    return TemplateDesign(p, CollageShape::named(QStringLiteral("3:2")), QSize(1, 1));
}

// Two rectangles side by side or one above the other along some length (corners do not count).
bool shareAnEdge(const QRect &a, const QRect &b)
{
    const int ar = a.x() + a.width(), ab = a.y() + a.height(), br = b.x() + b.width(), bb = b.y() + b.height();
    const bool rowsOverlap = a.y() < bb && b.y() < ab, columnsOverlap = a.x() < br && b.x() < ar;
    return (rowsOverlap && (ar == b.x() || br == a.x())) || (columnsOverlap && (ab == b.y() || bb == a.y()));
}

QVariantList modulesOf(const QVariantMap &t)
{
    return t.value(QStringLiteral("savedTessaryDataModules")).toList();
}

} // namespace

TEST(SlotPatternTest, SlotSizeGivesTheShapeOrNothing)
{
    struct Case {
        int columns, rows;
        double ratio;
        std::optional<QSize> slot;
    } cases[] = {
        {4, 3, 16.0 / 9.0, QSize(4, 3)}, // exact: 16 x 9 cells
        {2, 2, 1.5, QSize(3, 2)},         // exact: 6 x 4
        {1, 1, 1.0 / 3.0, QSize(1, 3)},   // a tall strip
        {3, 3, 1.0, QSize(1, 1)},         // the smallest of the equal fits
        {7, 4, 16.0 / 9.0, QSize(1, 1)},  // 1.75 is close enough to 1.78
        {1, 1, 40.0, std::nullopt},       // no slot of at most 12 cells comes near
    };
    for (const Case &c : cases) {
        const SlotPattern p = pattern(c.columns, c.rows, {});
        EXPECT_EQ(p.slotSizeFor(c.ratio), c.slot) << c.columns << "x" << c.rows << " at " << c.ratio;
    }
}

TEST(SlotPatternTest, ExactTilingIsRecognised)
{
    struct Case {
        const char *what;
        std::vector<QRect> blocks;
        bool exact;
    } cases[] = {
        {"two halves", {QRect(0, 0, 1, 2), QRect(1, 0, 1, 2)}, true},
        {"a hole", {QRect(0, 0, 1, 2), QRect(1, 0, 1, 1)}, false},
        {"an overlap", {QRect(0, 0, 2, 1), QRect(1, 0, 1, 2), QRect(0, 1, 1, 1)}, false},
        {"outside the grid", {QRect(0, 0, 1, 2), QRect(1, 0, 2, 2)}, false},
        {"an empty block", {QRect(0, 0, 2, 2), QRect(0, 0, 0, 1)}, false},
    };
    for (const Case &c : cases)
        EXPECT_EQ(pattern(2, 2, c.blocks).tilesExactly(), c.exact) << c.what;
}

TEST(SlotPatternTest, TurningAndMirroringKeepAnExactTiling)
{
    const SlotPattern p = pattern(3, 2, {QRect(0, 0, 2, 2), QRect(2, 0, 1, 1), QRect(2, 1, 1, 1)});
    const SlotPattern turned = p.transposed(QStringLiteral("rows"), QStringLiteral("t"));
    EXPECT_EQ(turned.columns(), 2);
    EXPECT_EQ(turned.rows(), 3);
    EXPECT_TRUE(turned.tilesExactly());
    const SlotPattern mirrored = p.mirrored(QStringLiteral("m"));
    EXPECT_TRUE(mirrored.tilesExactly());
    EXPECT_EQ(mirrored.blocks().front(), QRect(1, 0, 2, 2));
}

TEST(TemplateDesignTest, TilesAreInReadingOrderAndScaledToCellsWithEveryKeyTyped)
{
    // Blocks given bottom-up come out top-down, left to right, in cells.
    const SlotPattern p = pattern(2, 2, {QRect(0, 1, 2, 1), QRect(1, 0, 1, 1), QRect(0, 0, 1, 1)});
    const TemplateDesign d(p, CollageShape::named(QStringLiteral("16:9")), QSize(8, 9));
    EXPECT_EQ(d.columns(), 16);
    EXPECT_EQ(d.rows(), 18);
    const std::vector<QRect> want{QRect(0, 0, 8, 9), QRect(8, 0, 8, 9), QRect(0, 9, 16, 9)};
    EXPECT_EQ(d.tiles(), want);
    const QVariantMap t = d.templateDictionary(QByteArray("png"));
    EXPECT_EQ(PlistValue::integerValue(t.value(QStringLiteral("nbrModules"))), 3);
    EXPECT_EQ(t.value(QStringLiteral("contentSizeWidth")).toDouble(), 16.0 * d.moduleSizeInPoints());
    ASSERT_EQ(modulesOf(t).size(), 3);
    EXPECT_EQ(PlistValue::integerValue(modulesOf(t)[2].toMap().value(QStringLiteral("widthFactor"))), 16);
    // Every key the store and the layout read, with the type it is read as.
    const std::pair<const char *, QMetaType::Type> keys[] = {
        {"nbrModules", QMetaType::LongLong},         {"savedTessaryDataModules", QMetaType::QVariantList},
        {"contentSizeWidth", QMetaType::Double},     {"contentSizeHeight", QMetaType::Double},
        {"moduleSizeInPoints", QMetaType::LongLong}, {"borderWidth", QMetaType::LongLong},
        {"thumbnail", QMetaType::QByteArray}};
    for (const auto &[key, type] : keys)
        EXPECT_EQ(t.value(QLatin1String(key)).typeId(), int(type)) << key;
    for (const QVariant &m : modulesOf(t)) {
        EXPECT_TRUE(m.toMap().value(QStringLiteral("imageFilename")).toString().endsWith(QLatin1String(".png")));
        EXPECT_EQ(m.toMap().value(QStringLiteral("borderColor")).typeId(), int(QMetaType::QByteArray));
    }
    // The same design gives the same file: module names do not change between builds.
    EXPECT_EQ(t, d.templateDictionary(QByteArray("png")));
}

TEST(TemplateDesignTest, ChoicesFromTheNameAreTheSameInEveryRun)
{
    // Styles and thumbnail colours are picked from this hash; a per-process seeded hash would
    // make every build write different files.
    const TemplateDesign d(pattern(1, 1, {QRect(0, 0, 1, 1)}), CollageShape::named(QStringLiteral("square")), QSize(1, 1));
    EXPECT_EQ(d.name(), QStringLiteral("test p square"));
    EXPECT_EQ(d.stableHash(), 0x2ef6a910u);
}

TEST(LayoutProofTest, AcceptsASoundTemplate)
{
    const TemplateDesign d = largeLeftDesign();
    EXPECT_EQ(LayoutProof::check(d, d.templateDictionary({})), QString());
}

TEST(LayoutProofTest, CatchesTemplatesTheEngineWouldPlaceOtherwise)
{
    struct Case {
        const char *what;
        std::function<void(QVariantMap &)> spoil;
        const char *message;
    } cases[] = {
        {"small tile first",
         [](QVariantMap &t) {
             QVariantList m = modulesOf(t);
             m.swapItemsAt(0, 1);
             t.insert(QStringLiteral("savedTessaryDataModules"), m);
         },
         "module 0 is framed"},
        {"a module missing",
         [](QVariantMap &t) {
             QVariantList m = modulesOf(t);
             m.removeLast();
             t.insert(QStringLiteral("savedTessaryDataModules"), m);
         },
         "places 2 of 3"},
        {"a module too wide",
         [](QVariantMap &t) {
             QVariantList m = modulesOf(t);
             QVariantMap last = m.last().toMap();
             last.insert(QStringLiteral("widthFactor"), qint64(5));
             m.last() = last;
             t.insert(QStringLiteral("savedTessaryDataModules"), m);
         },
         "fits nowhere"},
        {"a wrong module size",
         [](QVariantMap &t) { t.insert(QStringLiteral("moduleSizeInPoints"), qint64(7)); },
         "grid"},
    };
    const TemplateDesign d = largeLeftDesign();
    for (const Case &c : cases) {
        QVariantMap t = d.templateDictionary({});
        c.spoil(t);
        const QString problem = LayoutProof::check(d, t);
        EXPECT_TRUE(problem.contains(QLatin1String(c.message))) << c.what << ": " << problem.toStdString();
    }
}

TEST(LayoutProofTest, CatchesADesignWithAHole)
{
    // A 2 x 2 grid with three single tiles: the engine would place them all, leaving a hole.
    const TemplateDesign d(pattern(2, 2, {QRect(0, 0, 1, 1), QRect(1, 0, 1, 1), QRect(0, 1, 1, 1)}),
                           CollageShape::named(QStringLiteral("square")), QSize(1, 1));
    EXPECT_TRUE(LayoutProof::checkDesign(d).contains(QLatin1String("not covered")));
}

TEST(DesignCatalogueTest, EveryCountIsOfferedAndThoseBelowTheFirstStartTemplateFillExactlyItsRow)
{
    int below = 0, total = 0;
    for (const auto &[n, count] : DesignCatalogue::quotas()) {
        EXPECT_GT(count, 0);
        total += count;
        if (n < DesignCatalogue::kFirstStartModules)
            below += count;
    }
    EXPECT_EQ(below, DesignCatalogue::kFirstStartRow);
    EXPECT_GE(total, 320);
    // Every count up to the factory photos, and a real choice among those people use most.
    for (int n = 1; n <= DesignCatalogue::kFirstStartModules; ++n) {
        const auto quota = DesignCatalogue::quotas().find(n);
        EXPECT_GE(quota == DesignCatalogue::quotas().end() ? 0 : quota->second, n >= 2 && n <= 12 ? 8 : 1) << n << " modules";
    }
}

TEST(DesignCatalogueTest, BuildsTheQuotasInCountOrderWithTheFirstStartDesignFirst)
{
    QString error;
    const std::vector<TemplateDesign> designs = DesignCatalogue::build(&error);
    ASSERT_FALSE(designs.empty()) << error.toStdString();
    std::map<int, int> perCount;
    int previous = 0;
    for (const TemplateDesign &d : designs) {
        EXPECT_GE(d.moduleCount(), previous);
        previous = d.moduleCount();
        perCount[d.moduleCount()]++;
    }
    for (const auto &[n, count] : DesignCatalogue::quotas())
        EXPECT_EQ(perCount[n], count) << n << " modules";
    const auto first = std::find_if(designs.begin(), designs.end(),
                                    [](const TemplateDesign &d) { return d.moduleCount() == 49; });
    ASSERT_NE(first, designs.end());
    EXPECT_EQ(first->name(), DesignCatalogue::firstStartDesign().name());
    EXPECT_EQ(LibraryWriter::destinationFor(*first), QStringLiteral("templates.plist"));
}

TEST(TemplateThumbnailTest, SizeFollowsTheCollage)
{
    struct Case {
        double w, h;
        QSize size;
    } cases[] = {
        {700, 700, QSize(160, 160)}, {1600, 900, QSize(160, 90)}, {300, 900, QSize(53, 160)},
        {960, 240, QSize(160, 40)},  {0, 100, QSize(160, 160)},
    };
    for (const Case &c : cases)
        EXPECT_EQ(TemplateThumbnail::sizeFor(c.w, c.h), c.size) << c.w << " x " << c.h;
}

TEST(TemplateThumbnailTest, TilesSharingAnEdgeNeverShareAColour)
{
    // Every design of a few counts, including dense mosaics and frames.
    for (int n : {3, 7, 13, 29, 49}) {
        for (const TemplateDesign &d : DesignCatalogue::candidates(n)) {
            const std::vector<int> colours = TemplateThumbnail::colourIndices(d.tiles(), d.colourSeed());
            const auto &t = d.tiles();
            for (size_t i = 0; i < t.size(); ++i) {
                for (size_t j = i + 1; j < t.size(); ++j) {
                    if (shareAnEdge(t[i], t[j])) {
                        ASSERT_NE(colours[i], colours[j]) << d.name().toStdString() << " tiles " << i << ", " << j;
                    }
                }
            }
        }
    }
}

TEST(LibraryWriterTest, WritesThreePlacesAndDropsStaleFolderFiles)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QDir(dir.path()).mkpath(QStringLiteral("Templates"));
    QFile stale(dir.filePath(QStringLiteral("Templates/Old.plist")));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();

    std::vector<LibraryWriter::Entry> entries;
    for (int n : {4, 13, 20}) {
        for (const TemplateDesign &d : DesignCatalogue::candidates(n))
            entries.push_back({d, QByteArray("png"), d.templateDictionary(QByteArray("png"))});
    }
    QString error;
    ASSERT_TRUE(LibraryWriter::write(dir.path(), entries, &error)) << error.toStdString();
    const QStringList files = LibraryWriter::destinations(entries);
    ASSERT_GE(files.size(), 3);
    EXPECT_EQ(files[0], QStringLiteral("templates.plist"));
    EXPECT_EQ(files[1], QStringLiteral("templates_additional.plist"));
    int written = 0;
    for (const QString &f : files) {
        const auto read = TemplatesFile::fromFile(dir.filePath(f));
        EXPECT_TRUE(read.ok()) << f.toStdString();
        written += int(read.templates.size());
    }
    EXPECT_EQ(written, int(entries.size()));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("Templates/Old.plist"))));
}

TEST(LibraryGeneratorTest, BuiltInRowsFollowTheLoadOrderWithinEachCount)
{
    // Larger counts first in the list handed over, to see the sort at work.
    std::vector<LibraryWriter::Entry> entries;
    for (int n : {5, 4}) {
        for (const TemplateDesign &d : DesignCatalogue::candidates(n))
            entries.push_back({d, {}, {}});
    }
    const QStringList files = LibraryWriter::destinations(entries);
    const std::vector<const LibraryWriter::Entry *> rows = LibraryGenerator::builtInRows(entries);
    ASSERT_EQ(rows.size(), entries.size());
    for (size_t i = 1; i < rows.size(); ++i) {
        const int a = rows[i - 1]->design.moduleCount(), b = rows[i]->design.moduleCount();
        ASSERT_LE(a, b) << "row " << i;
        if (a == b) {
            EXPECT_LE(files.indexOf(LibraryWriter::destinationFor(rows[i - 1]->design)),
                      files.indexOf(LibraryWriter::destinationFor(rows[i]->design)))
                << "row " << i;
        }
    }
}
