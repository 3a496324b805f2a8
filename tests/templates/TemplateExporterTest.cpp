#include "templates/TemplateExporter.h"

#include "foundation/UserDefaults.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateEditor.h"
#include "templates/TemplateTables.h"
#include "TemplateTestData.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QStringDecoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

class TemplateExporterTest : public ::testing::Test
{
protected:
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("defaults.sqlite"))};
    TemplateStore store{defaults};
    RecordingAlertPresenter alerts;
    TemplateExporter exporter{store, alerts};
    TemplateEditor editor{store, defaults, alerts};
};

TEST_F(TemplateExporterTest, ManyFilesSkipTemplatesWithoutThumbnailKeepingNumbers)
{
    store.addTemplatesFromDictionary(file({makeTemplate(1, 1), makeTemplate(2, 2, false), makeTemplate(3, 3)}));
    const QString folder = dir.filePath(QStringLiteral("Spring"));
    QDir().mkpath(folder);
    // The files an export would replace are asked about first: none yet, then exactly the
    // export's own (and nothing else that lies in the folder).
    QFile(QDir(folder).filePath(QStringLiteral("unrelated.png"))).open(QIODevice::WriteOnly);
    EXPECT_TRUE(exporter.existingManyFiles(folder).isEmpty());
    const TemplateExporter::ManyFilesResult r = exporter.saveAllIconsAndTemplates(folder);
    EXPECT_TRUE(r.ok);
    QFile::remove(QDir(folder).filePath(QStringLiteral("unrelated.png")));
    EXPECT_EQ(exporter.existingManyFiles(folder).size(), 5);
    EXPECT_EQ(r.templateFiles, (QStringList{QStringLiteral("Tessary-Template-Spring-1.plist"), QStringLiteral("Tessary-Template-Spring-3.plist")}));
    QStringList onDisk = QDir(folder).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(onDisk, (QStringList{QStringLiteral("Tessary-Icon-Spring-1.png"), QStringLiteral("Tessary-Icon-Spring-3.png"),
                                   QStringLiteral("Tessary-Template-Spring-1.plist"), QStringLiteral("Tessary-Template-Spring-3.plist"),
                                   QStringLiteral("Tessary-Templates-Spring.html")}));

    // Icons are the thumbnail bytes as they are.
    QFile icon(QDir(folder).filePath(QStringLiteral("Tessary-Icon-Spring-3.png")));
    ASSERT_TRUE(icon.open(QIODevice::ReadOnly));
    EXPECT_EQ(icon.readAll(), store.userTemplates()[2]->value(QStringLiteral("thumbnail")).toByteArray());

    // The index is UTF-16 with a byte-order mark and links the two exported templates.
    QFile html(QDir(folder).filePath(QStringLiteral("Tessary-Templates-Spring.html")));
    ASSERT_TRUE(html.open(QIODevice::ReadOnly));
    const QByteArray bytes = html.readAll();
    ASSERT_GE(bytes.size(), 2);
    EXPECT_TRUE(bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF"));
    QStringDecoder decode(QStringConverter::Utf16);
    const QString page = decode(bytes);
    EXPECT_TRUE(page.startsWith(QStringLiteral("<html>\n<head>\n<title>Templates</title>")));
    EXPECT_EQ(page.count(QStringLiteral("<a href=")), 2);
    EXPECT_TRUE(page.contains(QStringLiteral(
        "<a href=\"Tessary-Template-Spring-3.plist\"><img src=\"Tessary-Icon-Spring-3.png\" border=\"0\" /></a>\n&nbsp;\n")));
    EXPECT_TRUE(page.endsWith(QStringLiteral("</body>\n</html>")));

    // Each exported file imports back to its template.
    store.clearUserTemplates();
    EXPECT_TRUE(editor.importTemplateFiles({QDir(folder).filePath(QStringLiteral("Tessary-Template-Spring-3.plist"))}));
    ASSERT_EQ(store.userTemplates().size(), 1);
    EXPECT_EQ(*store.userTemplates()[0], makeTemplate(3, 3));
}

TEST_F(TemplateExporterTest, OneFileExportImportsBackToTheSameTemplates)
{
    store.setBuiltInTemplates({TemplateStore::makeTemplate(makeTemplate(1, 10)), TemplateStore::makeTemplate(makeTemplate(4, 11, false))});
    store.addTemplatesFromDictionary(file({makeTemplate(2, 1)}));

    for (TemplateTable table : {TemplateTable::BuiltIn, TemplateTable::User}) {
        QVariantMap written;
        bool many = false;
        alerts.responses = {AlertPresenter::DefaultButton}; // "Save One"
        exporter.exportTemplates(table, [&](const QVariantMap &f, const QString &name) {
            EXPECT_EQ(name, QStringLiteral("Templates Export"));
            written = f;
        }, [&] { many = true; });
        EXPECT_FALSE(many);
        const QString path = dir.filePath(QStringLiteral("export.plist"));
        ASSERT_TRUE(TemplateExporter::writeTemplatesFile(path, written));

        const TemplateStore::Templates expected = table == TemplateTable::User ? store.userTemplates() : store.builtInTemplates();
        TemplateStore fresh(defaults);
        fresh.clearUserTemplates(); // the store shares the defaults: start from an empty My Templates
        TemplateEditor freshEditor(fresh, defaults, alerts);
        ASSERT_TRUE(freshEditor.importTemplateFiles({path}));
        ASSERT_EQ(fresh.userTemplates().size(), expected.size());
        for (qsizetype i = 0; i < expected.size(); ++i)
            EXPECT_EQ(*fresh.userTemplates()[i], *expected[i]);
    }

    bool many = false;
    alerts.responses = {AlertPresenter::AlternateButton};
    exporter.exportTemplates(TemplateTable::BuiltIn, [](const QVariantMap &, const QString &) { FAIL(); }, [&] { many = true; });
    EXPECT_TRUE(many);
    alerts.responses = {AlertPresenter::OtherButton};
    exporter.exportTemplates(TemplateTable::BuiltIn, [](const QVariantMap &, const QString &) { FAIL(); }, [] { FAIL(); });
}

TEST_F(TemplateExporterTest, ClickedTemplateExportedAloneWithItsIcon)
{
    store.addTemplatesFromDictionary(file({makeTemplate(1, 1), makeTemplate(2, 2), makeTemplate(3, 3, false)}));
    const QDateTime when(QDate(2026, 3, 4), QTime(22, 10, 0));
    const QString folder = dir.filePath(QStringLiteral("out"));
    QDir().mkpath(folder);
    EXPECT_TRUE(exporter.saveIconAndTemplate(TemplateTable::User, 1, folder, when));
    EXPECT_EQ(QDir(folder).entryList(QDir::Files, QDir::Name),
              (QStringList{QStringLiteral("Tessary-Icon-04-03-2026-10-10-00.png"), QStringLiteral("Tessary-Template-04-03-2026-10-10-00.plist")}));
    QImageReader icon(QDir(folder).filePath(QStringLiteral("Tessary-Icon-04-03-2026-10-10-00.png")));
    EXPECT_EQ(icon.format(), QByteArray("png"));
    EXPECT_EQ(icon.size(), QSize(8, 6));

    // No thumbnail, or no clicked row: nothing written.
    EXPECT_FALSE(exporter.saveIconAndTemplate(TemplateTable::User, 2, folder, when));
    EXPECT_FALSE(exporter.saveIconAndTemplate(TemplateTable::User, -1, folder, when));

    const QString single = dir.filePath(QStringLiteral("single.plist"));
    EXPECT_TRUE(exporter.exportTemplate(TemplateTable::User, 2, single));
    store.clearUserTemplates();
    EXPECT_TRUE(editor.importTemplateFiles({single, QDir(folder).filePath(QStringLiteral("Tessary-Template-04-03-2026-10-10-00.plist"))}));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{3, 2}));
}

TEST_F(TemplateExporterTest, SaveIconReportsUndecodableIconsOnlyWhenThereIsOne)
{
    QVariantMap broken = makeTemplate(1, 2);
    broken.insert(QStringLiteral("thumbnail"), QByteArray("not an image"));
    store.addTemplatesFromDictionary(file({makeTemplate(1, 1), broken}));
    QByteArray saved;
    QString proposed;
    EXPECT_TRUE(exporter.saveIconImage(TemplateTable::User, 0, [&](const QByteArray &png, const QString &name) {
        saved = png;
        proposed = name;
    }));
    EXPECT_TRUE(saved.startsWith("\x89PNG"));
    EXPECT_TRUE(proposed.startsWith(QStringLiteral("Tessary-Icon-")));
    EXPECT_FALSE(proposed.endsWith(QStringLiteral(".png")));
    // An undecodable thumbnail is no icon at all: nothing happens, no alert.
    EXPECT_FALSE(exporter.saveIconImage(TemplateTable::User, 1, {}));
    EXPECT_TRUE(alerts.alerts.isEmpty());
    EXPECT_TRUE(TemplateExporter::pngData(QImage()).isEmpty());
}

TEST(TemplateTables, RowHeightsThumbnailsAndPhotoCountMatch)
{
    const auto withThumb = TemplateStore::makeTemplate(makeTemplate(1, 0));
    const auto without = TemplateStore::makeTemplate(makeTemplate(1, 0, false));
    QVariantMap brokenMap = makeTemplate(1, 0);
    brokenMap.insert(QStringLiteral("thumbnail"), QByteArray("xx"));
    const auto broken = TemplateStore::makeTemplate(brokenMap);
    struct Case {
        TemplateStore::Template t;
        double slider;
        TemplateTable table;
        double height;
        QSize decoded; // the thumbnail as the table shows it; empty for none
    };
    for (const Case &c : {Case{withThumb, 100, TemplateTable::User, 6, {8, 6}},
                          Case{withThumb, 250, TemplateTable::BuiltIn, 15, {8, 6}},
                          Case{without, 100, TemplateTable::User, 16, {}}, Case{broken, 100, TemplateTable::User, 16, {}},
                          Case{nullptr, 50, TemplateTable::User, 16, {}}, Case{without, 100, TemplateTable::BuiltIn, 0, {}}}) {
        EXPECT_DOUBLE_EQ(TemplateTables::rowHeight(c.t, c.slider, c.table), c.height);
        const QImage thumbnail = TemplateTables::thumbnailImage(c.t);
        EXPECT_EQ(thumbnail.isNull() ? QSize() : thumbnail.size(), c.decoded);
    }

    TemplateStore::Templates builtIn;
    for (qint64 n : {1, 2, 2, 4, 4})
        builtIn << TemplateStore::makeTemplate(makeTemplate(n, double(builtIn.size())));
    for (const auto &[photos, row] : std::vector<std::pair<qsizetype, qsizetype>>{{1, 0}, {2, 1}, {4, 3}, {3, 5}, {0, 5}, {9, 5}})
        EXPECT_EQ(TemplateTables::findFirstTemplateMatchingPhotoCount(builtIn, photos), row) << photos;
}

} // namespace
