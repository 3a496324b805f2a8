#include "templates/TemplateLinkInsertion.h"

#include "foundation/UserDefaults.h"
#include "support/LoopbackHttpServer.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateEditor.h"
#include "TemplateTestData.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace TemplateTestData;

namespace {

// One "My Templates" with its own store: two templates, the second selected.
struct World {
    explicit World(const QString &folder)
        : defaults(folder + QStringLiteral("/defaults.sqlite"))
    {
        store.addTemplatesFromDictionary(file({makeTemplate(1, 0), makeTemplate(1, 1)}));
        store.setSelectedUserRow(1);
        editor.setDownloadTimeoutMs(300);
    }
    UserDefaults defaults;
    TemplateStore store{defaults};
    RecordingAlertPresenter alerts;
    TemplateEditor editor{store, defaults, alerts};
};

class TemplateLinkInsertionTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("TESSARY_DOCUMENTS", dir.filePath(QStringLiteral("Documents")).toLocal8Bit()); }
    void TearDown() override { qunsetenv("TESSARY_DOCUMENTS"); }

    // Runs the download without waiting and returns its outcome (nothing when it never ended).
    static std::optional<bool> insert(TemplateEditor &editor, const QList<QUrl> &links, qsizetype row)
    {
        TemplateLinkInsertion insertion(editor, links, row);
        QSignalSpy finished(&insertion, &TemplateLinkInsertion::finished);
        insertion.start();
        EXPECT_EQ(finished.count(), 0) << "reported from inside start()";
        if (!QTest::qWaitFor([&] { return finished.count() > 0; }, 5000))
            return std::nullopt;
        EXPECT_EQ(finished.count(), 1);
        return finished.first().first().toBool();
    }
    QByteArray savedDownload() const
    {
        QFile saved(dir.filePath(QStringLiteral("Documents/templates.plist")));
        return saved.open(QIODevice::ReadOnly) ? saved.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    LoopbackHttpServer server;
};

// The download without waiting gives what the waiting one gives, case by case: the outcome,
// "My Templates" afterwards (inserted before the selected row), and the saved file. (Which
// downloaded files hold templates is the editor's own test: both read them alike.)
TEST_F(TemplateLinkInsertionTest, GivesWhatTheWaitingDownloadGives)
{
    const QString local = dir.filePath(QStringLiteral("local.plist"));
    ASSERT_TRUE(writePlist(local, file({makeTemplate(3, 77)})));
    struct Case {
        const char *name;
        LoopbackHttpServer::Mode mode;
        QByteArray body;
        QUrl link; // empty: the server's
        bool inserted;
    };
    const QByteArray two = PropertyList::toBinary(file({makeTemplate(2, 42), makeTemplate(2, 43)}));
    for (const Case &c : {
             Case{"binary templates file", LoopbackHttpServer::Mode::Serve, two, {}, true},
             Case{"not a property list", LoopbackHttpServer::Mode::Serve, "<html>nothing here</html>", {}, false},
             Case{"not found", LoopbackHttpServer::Mode::NotFound, two, {}, false},
             Case{"no answer", LoopbackHttpServer::Mode::Silent, two, {}, false},
             Case{"other scheme", LoopbackHttpServer::Mode::Serve, two, QUrl(QStringLiteral("ftp://127.0.0.1/t.plist")), false},
             Case{"file link", LoopbackHttpServer::Mode::Serve, two, QUrl::fromLocalFile(local), true},
         }) {
        SCOPED_TRACE(c.name);
        server.mode = c.mode;
        server.body = c.body;
        const QUrl link = c.link.isEmpty() ? server.url(QStringLiteral("/t.plist")) : c.link;
        QFile::remove(dir.filePath(QStringLiteral("Documents/templates.plist")));

        QTemporaryDir waitingDir;
        World waiting(waitingDir.path());
        const bool waited = waiting.editor.downloadAndInsertTemplateURL(link, -1);
        const QByteArray waitedFile = savedDownload();
        QFile::remove(dir.filePath(QStringLiteral("Documents/templates.plist")));

        QTemporaryDir unblockedDir;
        World unblocked(unblockedDir.path());
        EXPECT_EQ(insert(unblocked.editor, {link}, -1), std::optional<bool>(waited));
        EXPECT_EQ(waited, c.inserted);
        EXPECT_EQ(ids(unblocked.store.userTemplates()), ids(waiting.store.userTemplates()));
        EXPECT_EQ(savedDownload(), waitedFile);
        EXPECT_EQ(unblocked.store.userTemplates().size() > 2, c.inserted);
    }
}

// Several links: each goes in at the row, the answer is the last one's.
TEST_F(TemplateLinkInsertionTest, SeveralLinksAnswerWithTheLast)
{
    World world(dir.path());
    server.body = PropertyList::toBinary(file({makeTemplate(2, 42)}));
    const QUrl good = server.url(QStringLiteral("/t.plist"));
    const QUrl bad = QUrl(QStringLiteral("ftp://127.0.0.1/t.plist"));

    EXPECT_EQ(insert(world.editor, {good, bad}, 0), std::optional<bool>(false));
    EXPECT_EQ(insert(world.editor, {bad, good}, 0), std::optional<bool>(true));
    EXPECT_EQ(ids(world.store.userTemplates()), (std::vector<double>{42, 42, 0, 1}));
    EXPECT_EQ(insert(world.editor, {}, 0), std::optional<bool>(false));
}

} // namespace
