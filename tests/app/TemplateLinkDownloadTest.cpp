#include "app/StallMeter.h"
#include "foundation/PropertyList.h"
#include "support/LoopbackHttpServer.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateLinkInsertion.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTestData.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateDownloadDialog.h"
#include "app/templates/TemplateTabView.h"
#include "app/templates/TemplateTablePane.h"
#include "AppFixture.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <cstdio>

using namespace TemplateTestData;

namespace {

class TemplateLinkDownloadTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        store = std::make_unique<TemplateStore>(*defaults);
        store->addTemplatesFromDictionary(file({makeTemplate(1, 0), makeTemplate(1, 1), makeTemplate(1, 2)}));
        selection = std::make_unique<TemplateSelection>(*store, *defaults);
        window = std::make_unique<QWidget>();
        tabs = new TemplateTabView(*store, *selection, *defaults);
        auto *layout = new QVBoxLayout(window.get());
        layout->addWidget(tabs);
        actions = new TemplateActions(*store, *defaults, alerts, window.get());
        tabs->setTemplateActions(*actions);
        // A short limit keeps the test quick; the program's is five seconds.
        actions->editor().setDownloadTimeoutMs(300);
        window->resize(240, 480);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        tabs->setCurrentTable(TemplateTable::User);
        tabs->pane(TemplateTable::User)->selectRow(1);
    }
    void TearDown() override
    {
        window.reset();
        selection.reset();
        store.reset();
        AppFixture::TearDown();
    }
    TemplateDownloadDialog *openDialog() const { return window->findChild<TemplateDownloadDialog *>(); }

    RecordingAlertPresenter alerts;
    std::unique_ptr<TemplateStore> store;
    std::unique_ptr<TemplateSelection> selection;
    std::unique_ptr<QWidget> window;
    TemplateTabView *tabs = nullptr;
    TemplateActions *actions = nullptr;
    LoopbackHttpServer server;
};

// The download runs behind its progress sheet while the window goes on: the call returns at
// once, the sheet is window-modal, and the outcome arrives later. The longest stall of the
// main thread during each download is measured and reported (not asserted).
TEST_F(TemplateLinkDownloadTest, DownloadsWithoutFreezingTheWindow)
{
    enum class Cancel { No, Button, Escape };
    struct Case {
        const char *name;
        LoopbackHttpServer::Mode mode;
        int pauseMs;
        Cancel cancel;
        bool inserted;
        std::vector<double> after;
    };
    const std::vector<double> unchanged{0, 1, 2};
    server.body = PropertyList::toBinary(file({makeTemplate(2, 42), makeTemplate(2, 43)}));
    // The cancelled downloads would be answered a moment later.
    for (const Case &c : {Case{"success inserts before the selected row", LoopbackHttpServer::Mode::Serve, 150, Cancel::No, true, {0, 42, 43, 1, 2}},
                          Case{"not found", LoopbackHttpServer::Mode::NotFound, 50, Cancel::No, false, unchanged},
                          Case{"no answer ends at the time limit", LoopbackHttpServer::Mode::Silent, 0, Cancel::No, false, unchanged},
                          Case{"cancel button", LoopbackHttpServer::Mode::Serve, 300, Cancel::Button, false, unchanged},
                          Case{"escape cancels", LoopbackHttpServer::Mode::Serve, 300, Cancel::Escape, false, unchanged}}) {
        SCOPED_TRACE(c.name);
        store->clearUserTemplates();
        store->addTemplatesFromDictionary(file({makeTemplate(1, 0), makeTemplate(1, 1), makeTemplate(1, 2)}));
        tabs->pane(TemplateTable::User)->selectRow(1);
        server.mode = c.mode;
        server.pauseMs = c.pauseMs;
        const int requestsBefore = server.requests;
        // Cancelling is tried while nothing else would end the download.
        actions->editor().setDownloadTimeoutMs(c.cancel == Cancel::No ? 300 : 10000);

        QSignalSpy finished(actions, &TemplateActions::templateDownloadFinished);
        StallMeter meter(5);
        meter.start();
        actions->downloadTemplate(server.url(QStringLiteral("/Tessary-Template-set.plist")));
        EXPECT_EQ(finished.count(), 0) << "the caller waited for the download";
        QPointer<TemplateDownloadDialog> dialog = openDialog();
        ASSERT_TRUE(dialog);
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
        EXPECT_EQ(dialog->window()->parentWidget(), window.get());
        // The longest stall while bytes were still coming, apart from the insertion at the end
        // (a store transaction like every other edit of "My Templates").
        qint64 transferStall = -1;
        QObject::connect(&dialog->insertion(), &TemplateLinkInsertion::progress, dialog,
                         [&] { transferStall = meter.longestGapMs(); });

        if (c.cancel != Cancel::No) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return server.requests > requestsBefore; }, 5000));
            if (c.cancel == Cancel::Button)
                dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
            else
                QTest::keyClick(dialog, Qt::Key_Escape);
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return finished.count() > 0; }, 5000));
        meter.stop();
        EXPECT_EQ(finished.count(), 1);
        EXPECT_EQ(finished.first().first().toBool(), c.inserted);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog; }, 2000)) << "the sheet stays";
        EXPECT_EQ(ids(store->userTemplates()), c.after);
        EXPECT_GT(meter.ticks(), 0) << "the event loop never ran during the download";
        std::printf("[ figure   ] link download, %s: longest main-thread stall %lld ms over %lld ticks"
                    " (until the last bytes: %lld ms)\n",
                    c.name, static_cast<long long>(meter.longestGapMs()), static_cast<long long>(meter.ticks()),
                    static_cast<long long>(transferStall));
        RecordProperty(std::string("longestStallMs: ") + c.name, int(meter.longestGapMs()));
    }
    // The answer to the cancelled download comes and goes: nothing is inserted.
    QTest::qWait(400);
    EXPECT_EQ(ids(store->userTemplates()), unchanged);
    EXPECT_FALSE(openDialog());
}

// With a sheet already open on the window (the gallery), the progress sheet goes on top of it,
// so that sheet is held still too.
TEST_F(TemplateLinkDownloadTest, ProgressGoesOnTopOfAnOpenSheet)
{
    auto *sheet = new QDialog(window.get());
    sheet->setWindowModality(Qt::WindowModal);
    sheet->open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::activeModalWidget() == sheet; }, 2000));
    server.body = PropertyList::toBinary(file({makeTemplate(2, 42)}));
    QSignalSpy finished(actions, &TemplateActions::templateDownloadFinished);
    actions->downloadTemplate(server.url(QStringLiteral("/t.plist")), 0);
    TemplateDownloadDialog *dialog = openDialog();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->parentWidget(), sheet);
    ASSERT_TRUE(QTest::qWaitFor([&] { return finished.count() > 0; }, 5000));
    EXPECT_TRUE(finished.first().first().toBool());
    EXPECT_EQ(ids(store->userTemplates()), (std::vector<double>{42, 0, 1, 2}));
    delete sheet;
}

} // namespace
