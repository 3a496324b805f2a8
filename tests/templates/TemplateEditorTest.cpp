#include "templates/TemplateEditor.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "support/LoopbackHttpServer.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateDownloader.h"
#include "TemplateTestData.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

class TemplateEditorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("TESSARY_DOCUMENTS", dir.filePath(QStringLiteral("Documents")).toLocal8Bit());
    }
    void TearDown() override { qunsetenv("TESSARY_DOCUMENTS"); }

    QString writeFile(const QString &name, const QVariant &value)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writePlist(path, value));
        return path;
    }
    void fill(int n)
    {
        if (n == 0)
            return;
        QVariantList list;
        for (int i = 0; i < n; ++i)
            list << makeTemplate(1, double(i));
        ASSERT_TRUE(store.addTemplatesFromDictionary(file(list)));
    }

    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("defaults.sqlite"))};
    TemplateStore store{defaults};
    RecordingAlertPresenter alerts;
    TemplateEditor editor{store, defaults, alerts};
};

TEST_F(TemplateEditorTest, ImportNamesEachSkippedFileAndBeepsOnlyWhenNothingWasAdded)
{
    const QString empty = writeFile(QStringLiteral("empty.plist"), file({}));
    const QString noKey = writeFile(QStringLiteral("nokey.plist"), QVariantMap{{QStringLiteral("x"), 1}});
    const QString good = writeFile(QStringLiteral("good.plist"), file({makeTemplate(2, 7), makeTemplate(1, 8)}));
    const QString missing = dir.filePath(QStringLiteral("missing.plist"));
    const QString noTemplates = QStringLiteral("no template in its");
    struct Case {
        QStringList files;
        bool added;
        int beeps;
        std::vector<double> ids;
        QStringList skipped; // "PATH: why", the why given by its start
    };
    for (const Case &c : {Case{{empty}, false, 1, {}, {empty + QStringLiteral(": ") + noTemplates}},
                          Case{{}, false, 1, {}, {}},
                          Case{{missing, noKey}, false, 1, {},
                               {missing + QStringLiteral(": no such file"), noKey + QStringLiteral(": not a templates file")}},
                          Case{{noKey, good}, true, 0, {7, 8}, {noKey + QStringLiteral(": not a templates file")}},
                          Case{{good, empty, good}, true, 0, {7, 8, 7, 8}, {empty + QStringLiteral(": ") + noTemplates}}}) {
        store.clearUserTemplates();
        alerts.beeps = 0;
        QStringList skipped;
        EXPECT_EQ(editor.importTemplateFiles(c.files, false, &skipped), c.added);
        EXPECT_EQ(alerts.beeps, c.beeps);
        EXPECT_EQ(ids(store.userTemplates()), c.ids);
        ASSERT_EQ(skipped.size(), c.skipped.size()) << skipped.join('\n').toStdString();
        for (qsizetype i = 0; i < skipped.size(); ++i)
            EXPECT_TRUE(skipped[i].startsWith(c.skipped[i])) << skipped[i].toStdString();
    }
}

TEST_F(TemplateEditorTest, ReplaceAnswerStillAppends)
{
    fill(2);
    defaults.setBool(true, Preferences::DontShowAgain);
    alerts.responses = {AlertPresenter::AlternateButton}; // "Replace"
    const QString good = writeFile(QStringLiteral("good.plist"), file({makeTemplate(1, 9)}));
    bool asked = false;
    editor.loadUserTemplates([&](bool replace) {
        asked = true;
        EXPECT_TRUE(replace);
        editor.importTemplateFiles({good}, replace);
    });
    EXPECT_TRUE(asked);
    ASSERT_EQ(alerts.alerts.size(), 1);
    EXPECT_EQ(alerts.alerts[0].messageText, QStringLiteral("Append or Replace"));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{0, 1, 9}));
}

TEST_F(TemplateEditorTest, ClearAsksAndEmptyStoreOnlyBeeps)
{
    editor.clearAllUserTemplates();
    EXPECT_EQ(alerts.beeps, 1);
    EXPECT_TRUE(alerts.alerts.isEmpty());

    fill(2);
    alerts.responses = {AlertPresenter::DefaultButton}; // "Cancel"
    editor.clearAllUserTemplates();
    EXPECT_EQ(store.userTemplates().size(), 2);
    alerts.responses = {AlertPresenter::AlternateButton}; // "Delete All"
    editor.clearAllUserTemplates();
    EXPECT_TRUE(store.userTemplates().isEmpty());
    EXPECT_EQ(alerts.alerts.last().alternateButton, QStringLiteral("Delete All"));
    EXPECT_EQ(defaults.objectForKey(Preferences::UserTemplates), QVariant(QVariantList{}));
}

TEST_F(TemplateEditorTest, DeleteKeepsOrMovesTheSelectionAndAppliesWhatSlidesIn)
{
    // The layout in the defaults before each delete; a template applied replaces its width.
    constexpr double kUntouched = 777;
    struct Case {
        const char *name;
        qsizetype selected, deleted;
        std::optional<qsizetype> followUp;
        qsizetype selectedAfter;
        double appliedId;
    };
    for (const Case &c : {Case{"other row keeps selection", 2, 0, std::nullopt, 1, kUntouched},
                          Case{"selected row: next slides in", 1, 1, 1, 1, 2},
                          Case{"selected first row", 0, 0, 0, 0, 1},
                          Case{"selected last row: none left selected", 3, 3, -1, -1, kUntouched},
                          Case{"nothing selected", -1, 0, -1, -1, kUntouched}}) {
        store.clearUserTemplates();
        fill(4);
        defaults.setInteger(c.selected, Preferences::SelectedUserTemplateTableRow);
        store.setSelectedUserRow(c.selected);
        defaults.setObject(kUntouched, Preferences::ContentSizeWidth);
        EXPECT_EQ(editor.deleteTemplateAtRow(c.deleted), c.followUp) << c.name;
        EXPECT_EQ(store.selectedUserRow(), c.selectedAfter) << c.name;
        EXPECT_EQ(defaults.integerForKey(Preferences::SelectedUserTemplateTableRow), c.selectedAfter) << c.name;
        EXPECT_EQ(Preferences(defaults).contentSizeWidth(), c.appliedId) << c.name;
        EXPECT_EQ(store.userTemplates().size(), 3) << c.name;
    }
}

TEST_F(TemplateEditorTest, DeleteAsksAndUsesTheSendersRow)
{
    struct Case {
        TemplateEditor::DeleteSender sender;
        int response;
        std::vector<double> remaining;
    };
    for (const Case &c : {Case{TemplateEditor::DeleteSender::DeleteButton, AlertPresenter::AlternateButton, {0, 2}},
                          Case{TemplateEditor::DeleteSender::UserTableMenu, AlertPresenter::AlternateButton, {0, 1}},
                          Case{TemplateEditor::DeleteSender::UserTableMenu, AlertPresenter::DefaultButton, {0, 1, 2}},
                          Case{TemplateEditor::DeleteSender::Other, AlertPresenter::AlternateButton, {0, 1, 2}}}) {
        store.clearUserTemplates();
        fill(3);
        store.setSelectedUserRow(1);
        alerts.responses = {c.response};
        editor.deleteTemplate(c.sender, 2);
        EXPECT_EQ(ids(store.userTemplates()), c.remaining);
    }
}

TEST_F(TemplateEditorTest, CopyPasteSharesTheSameObjectAndCutIsInert)
{
    fill(3);
    store.setBuiltInTemplates({TemplateStore::makeTemplate(makeTemplate(5, 50))});
    editor.cutTemplate(TemplateTable::User);
    EXPECT_EQ(store.userTemplates().size(), 3);
    EXPECT_FALSE(editor.copiedTemplateData());

    editor.copyTemplate(TemplateTable::User, 2);
    const TemplateStore::Template held = editor.copiedTemplateData();
    ASSERT_TRUE(editor.pasteTemplate(TemplateTable::User, 1));
    ASSERT_TRUE(editor.pasteTemplate(TemplateTable::User, -1));
    ASSERT_EQ(ids(store.userTemplates()), (std::vector<double>{2, 0, 2, 1, 2}));
    EXPECT_EQ(store.userTemplates()[0], held);
    EXPECT_EQ(store.userTemplates()[2], held);
    EXPECT_EQ(store.userTemplates()[4], held);
    EXPECT_FALSE(editor.pasteTemplate(TemplateTable::BuiltIn, 0));

    editor.copyTemplate(TemplateTable::BuiltIn, 0);
    EXPECT_EQ(editor.copiedTemplateData(), store.builtInTemplates()[0]);
    editor.cutTemplate(TemplateTable::BuiltIn);
    EXPECT_EQ(editor.copiedTemplateData(), store.builtInTemplates()[0]);
    // Copy with no clicked row drops what was held.
    editor.copyTemplate(TemplateTable::User, -1);
    EXPECT_FALSE(editor.copiedTemplateData());
    EXPECT_FALSE(editor.pasteTemplate(TemplateTable::User, 0));
}

TEST_F(TemplateEditorTest, ValidateDrop)
{
    struct Case {
        const char *name;
        TemplateTable target;
        TemplateDrop drop;
        bool allowed;
    };
    auto files = [](QStringList names) {
        TemplateDrop d;
        d.hasFileNames = true;
        d.fileNames = std::move(names);
        return d;
    };
    auto links = [](QList<QUrl> urls) {
        TemplateDrop d;
        d.links = std::move(urls);
        return d;
    };
    TemplateDrop row;
    row.source = TemplateDrop::Source::UserTable;
    for (const Case &c : {Case{"onto built-in", TemplateTable::BuiltIn, files({QStringLiteral("/a.plist")}), false},
                          Case{"plist files", TemplateTable::User, files({QStringLiteral("/a.plist"), QStringLiteral("/b.plist")}), true},
                          Case{"one other file", TemplateTable::User, files({QStringLiteral("/a.plist"), QStringLiteral("/b.png")}), false},
                          Case{"extension is case-sensitive", TemplateTable::User, files({QStringLiteral("/a.PLIST")}), false},
                          Case{"empty file list", TemplateTable::User, files({}), true},
                          Case{"plist links", TemplateTable::User, links({QUrl(QStringLiteral("http://x/t.plist?x=1"))}), true},
                          Case{"other link", TemplateTable::User, links({QUrl(QStringLiteral("http://x/t.plist")), QUrl(QStringLiteral("http://x/page"))}), false},
                          Case{"row drag", TemplateTable::User, row, true}}) {
        EXPECT_EQ(editor.validateDrop(c.target, c.drop), c.allowed) << c.name;
    }
}

TEST_F(TemplateEditorTest, RowDropsMoveSwapAndCopyBuiltIn)
{
    fill(4);
    store.setBuiltInTemplates({TemplateStore::makeTemplate(makeTemplate(5, 50))});
    TemplateDrop drop;
    drop.source = TemplateDrop::Source::UserTable;
    drop.sourceRow = 0;
    // Row 0 dropped above row 3 lands at index 2; dropped on row 3 it swaps with it.
    EXPECT_TRUE(editor.acceptDrop(TemplateTable::User, drop, 3, TemplateDrop::Operation::Above));
    EXPECT_TRUE(editor.acceptDrop(TemplateTable::User, drop, 3, TemplateDrop::Operation::On));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{3, 2, 0, 1}));

    drop.source = TemplateDrop::Source::BuiltInTable;
    EXPECT_TRUE(editor.acceptDrop(TemplateTable::User, drop, 2, TemplateDrop::Operation::On));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{3, 2, 50, 0, 1}));
    EXPECT_EQ(store.builtInTemplates().size(), 1);
    EXPECT_FALSE(editor.acceptDrop(TemplateTable::BuiltIn, drop, 0, TemplateDrop::Operation::On));
}

TEST_F(TemplateEditorTest, DroppedFilesGoInAtTheSameRow)
{
    fill(1);
    TemplateDrop drop;
    drop.hasFileNames = true;
    drop.fileNames = {writeFile(QStringLiteral("a.plist"), file({makeTemplate(1, 10), makeTemplate(1, 11)})),
                      writeFile(QStringLiteral("skip.txt"), file({makeTemplate(1, 99)})),
                      writeFile(QStringLiteral("b.plist"), file({makeTemplate(1, 20)}))};
    EXPECT_TRUE(editor.acceptDrop(TemplateTable::User, drop, 0, TemplateDrop::Operation::Above));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{20, 10, 11, 0}));
    drop.fileNames = {writeFile(QStringLiteral("e.plist"), file({}))};
    EXPECT_FALSE(editor.acceptDrop(TemplateTable::User, drop, 0, TemplateDrop::Operation::Above));
}

TEST_F(TemplateEditorTest, DownloadedLinksAreSavedAndInserted)
{
    LoopbackHttpServer server;
    server.body = PropertyList::toBinary(file({makeTemplate(2, 42)}));
    fill(2);
    store.setSelectedUserRow(1);

    // -1 inserts at the selected row.
    EXPECT_TRUE(editor.downloadAndInsertTemplateURL(server.url(QStringLiteral("/t.plist")), -1));
    EXPECT_EQ(ids(store.userTemplates()), (std::vector<double>{0, 42, 1}));
    const QString saved = dir.filePath(QStringLiteral("Documents/templates.plist"));
    EXPECT_EQ(PropertyList::fromFile(saved).value, QVariant(file({makeTemplate(2, 42)})));

    // Three links, the last not a plist link: the answer is the second one's.
    TemplateDrop drop;
    drop.links = {server.url(QStringLiteral("/1.plist")), server.url(QStringLiteral("/2.plist")), server.url(QStringLiteral("/3.html"))};
    server.requests = 0;
    EXPECT_TRUE(editor.acceptDrop(TemplateTable::User, drop, 0, TemplateDrop::Operation::Above));
    EXPECT_EQ(server.requests, 2);

    // A later failure overrides an earlier success.
    drop.links = {server.url(QStringLiteral("/1.plist")), QUrl(QStringLiteral("ftp://127.0.0.1/2.plist"))};
    EXPECT_FALSE(editor.acceptDrop(TemplateTable::User, drop, 0, TemplateDrop::Operation::Above));

    server.mode = LoopbackHttpServer::Mode::NotFound;
    const qsizetype before = store.userTemplates().size();
    EXPECT_FALSE(editor.downloadAndInsertTemplateURL(server.url(QStringLiteral("/t.plist")), 0));
    server.mode = LoopbackHttpServer::Mode::Serve;
    server.body = "not a plist";
    EXPECT_FALSE(editor.downloadAndInsertTemplateURL(server.url(QStringLiteral("/t.plist")), 0));
    EXPECT_EQ(store.userTemplates().size(), before);

    const QString local = writeFile(QStringLiteral("local.plist"), file({makeTemplate(1, 77)}));
    EXPECT_TRUE(editor.downloadAndInsertTemplateURL(QUrl::fromLocalFile(local), 0));
    ASSERT_FALSE(store.userTemplates().isEmpty());
    EXPECT_EQ(TemplateTestData::idOf(store.userTemplates()[0]), 77);
}

TEST(TemplateDownloader, RefusesOtherSchemesSilenceAndOversizedBodies)
{
    LoopbackHttpServer server;
    QString error;
    for (const char *link : {"ftp://127.0.0.1/t.plist", "data:text/plain,abc", "nonsense", ""})
        EXPECT_FALSE(TemplateDownloader::download(QUrl(QString::fromLatin1(link)), &error)) << link;

    server.body = QByteArray(4096, 'x');
    EXPECT_TRUE(TemplateDownloader::download(server.url(QStringLiteral("/t")), &error, 2000, 4096));
    EXPECT_FALSE(TemplateDownloader::download(server.url(QStringLiteral("/t")), &error, 2000, 4095));
    EXPECT_TRUE(error.contains(QStringLiteral("larger")));

    // A server that never answers: the time-out gives up.
    server.mode = LoopbackHttpServer::Mode::Silent;
    EXPECT_FALSE(TemplateDownloader::download(server.url(QStringLiteral("/t")), &error, 300));
}

TEST(TemplateEditorNames, GeneratedNamesUseTwelveHourClock)
{
    struct Case {
        QString extension;
        QDateTime when;
        QString expected;
    };
    const QDate day(2026, 11, 15);
    for (const Case &c : {Case{QStringLiteral(".plist"), QDateTime(day, QTime(1, 48, 0)), QStringLiteral("Tessary-Template-15-11-2026-01-48-00.plist")},
                          Case{QStringLiteral(".plist"), QDateTime(day, QTime(15, 0, 7)), QStringLiteral("Tessary-Template-15-11-2026-03-00-07.plist")},
                          Case{QStringLiteral(".plist"), QDateTime(day, QTime(3, 0, 7)), QStringLiteral("Tessary-Template-15-11-2026-03-00-07.plist")},
                          Case{QStringLiteral(".png"), QDateTime(day, QTime(0, 30, 0)), QStringLiteral("Tessary-Icon-15-11-2026-12-30-00")},
                          Case{QStringLiteral(".png"), QDateTime(day, QTime(12, 5, 9)), QStringLiteral("Tessary-Icon-15-11-2026-12-05-09")},
                          Case{QStringLiteral(".jpg"), QDateTime(day, QTime(12, 5, 9)), QString()},
                          Case{QStringLiteral("plist"), QDateTime(day, QTime(12, 5, 9)), QString()}}) {
        EXPECT_EQ(TemplateEditor::generateTemplateFileOrIconNameWithExtension(c.extension, c.when), c.expected);
    }
}

TEST_F(TemplateEditorTest, RowDraggedOutAsFileImportsBack)
{
    store.setBuiltInTemplates({TemplateStore::makeTemplate(makeTemplate(5, 50))});
    const QDateTime when(QDate(2026, 1, 2), QTime(13, 4, 5));
    const QString name = editor.writeRowAsFile(TemplateTable::BuiltIn, 0, dir.path(), when);
    EXPECT_EQ(name, QStringLiteral("Tessary-Template-02-01-2026-01-04-05.plist"));
    EXPECT_TRUE(editor.importTemplateFiles({dir.filePath(name)}));
    ASSERT_EQ(store.userTemplates().size(), 1);
    EXPECT_EQ(*store.userTemplates()[0], *store.builtInTemplates()[0]);
    EXPECT_TRUE(editor.writeRowAsFile(TemplateTable::User, 5, dir.path(), when).isNull());
}

} // namespace
