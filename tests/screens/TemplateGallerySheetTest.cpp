#include "MainWindowScreenFixture.h"

#include "app/HalvernDesktopController.h"
#include "app/templates/LoadFileSheet.h"
#include "app/MainWindow.h"
#include "app/templates/TemplateGalleryFactory.h"
#include "app/templates/TemplateGalleryLoader.h"
#include "app/templates/TemplateGalleryWindow.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "support/LoopbackHttpServer.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateGallery.h"
#include "templates/TemplateStore.h"
#include "templates/TemplatesFile.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QWebEngineLoadingInfo>
#include <QWebEnginePage>
#include <QWebEngineView>

#include <functional>
#include <map>

namespace {

QVariant evaluate(QWebEnginePage *page, const QString &script)
{
    QVariant result;
    bool done = false;
    page->runJavaScript(script, [&](const QVariant &v) {
        result = v;
        done = true;
    });
    (void)QTest::qWaitFor([&] { return done; }, 5000);
    return result;
}

// The sheet comes from the gallery plugin; its web view and slider are found by name.
QWebEnginePage *pageOf(TemplateGalleryWindow &gallery)
{
    auto *view = gallery.dialog()->findChild<QWebEngineView *>(QStringLiteral("templateWebview"));
    return view ? view->page() : nullptr;
}

QByteArray bundledSet(const QString &fileName)
{
    QFile f(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("gallery/sets/") + fileName));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The gallery as a person meets it: the sheet on the real main window, under a real X server,
// with the web engine running the page.
class TemplateGallerySheetTest : public MainWindowScreenFixture
{
protected:
    TemplateGallerySheetTest() { windowSize = QSize(1300, 860); }

    // The gallery sheet, opened once so that the plugin is loaded.
    TemplateGalleryWindow &gallery()
    {
        if (!controller->templateWebviewWindow())
            controller->showTemplateWebviewWindow();
        return *controller->templateWebviewWindow();
    }
    QDialog &sheet() { return *gallery().dialog(); }
    QWebEnginePage *page() { return pageOf(gallery()); }
    TemplateStore &store() const { return controller->mainWindow().tessaryView().templateStore(); }

    // Opens the gallery and waits for its page to finish loading.
    bool openGallery()
    {
        controller->showTemplateWebviewWindow();
        QSignalSpy loaded(page(), &QWebEnginePage::loadFinished);
        return loaded.wait(20000) && loaded.first().first().toBool();
    }

    // Three templates of my own, the middle one selected.
    void threeUserTemplates()
    {
        TemplateStore::Templates mine;
        for (int i = 0; i < 3; ++i)
            mine.append(TemplateStore::makeTemplate(store().builtInTemplateAt(i) ? *store().builtInTemplateAt(i) : QVariantMap()));
        ASSERT_TRUE(store().insertTemplates(mine, 0));
        store().setSelectedUserRow(1);
    }
};

TEST_F(TemplateGallerySheetTest, BundledGalleryLoadsZoomsAndAddsASetBeforeTheSelection)
{
    ASSERT_TRUE(openGallery());
    QWebEnginePage *page = this->page();
    EXPECT_EQ(page->url(), TemplateGallery::bundledGalleryUrl(Paths::resourcesFolder()));
    EXPECT_EQ(evaluate(page, QStringLiteral("document.querySelectorAll('a.card').length")).toInt(), 4);
    // The sheet as the screen shows it, every set picture decoded and painted, the page's warm
    // grey ground in the view's top-left corner.
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return evaluate(page, QStringLiteral("Array.from(document.images).every(i => i.complete && i.naturalWidth > 0)")).toBool();
    }, 5000));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet(), 5000));
    QTest::qWait(600);
    const QImage grab = grabFrame(sheet());
    saveScreenshotImage(grab, "template-gallery");
    const QPoint corner = sheet().findChild<QWebEngineView *>(QStringLiteral("templateWebview"))->mapToGlobal(QPoint(6, 6))
                          - sheet().frameGeometry().topLeft();
    const QColor ground = grab.pixelColor(corner);
    EXPECT_LE(std::abs(ground.red() - 0xef) + std::abs(ground.green() - 0xec) + std::abs(ground.blue() - 0xe6), 12)
        << ground.name().toStdString();
    // The zoom of the finished load, then each slider change.
    EXPECT_EQ(evaluate(page, QStringLiteral("document.documentElement.style.zoom")).toString(), QStringLiteral("1"));
    for (const auto &[value, zoom] : {std::pair{150, "1.5"}, {75, "0.75"}, {100, "1"}}) {
        sheet().findChild<QSlider *>(QStringLiteral("templateWebviewSlider"))->setValue(value);
        EXPECT_TRUE(QTest::qWaitFor([&] {
            return evaluate(page, QStringLiteral("document.documentElement.style.zoom")).toString() == QLatin1String(zoom);
        }, 3000)) << zoom;
    }

    // A set on the page is a file link: clicking it adds the set's templates before my selected
    // template, and the page stays where it is.
    threeUserTemplates();
    const TemplateStore::Template selected = store().userTemplateAt(1);
    const QUrl before = page->url();
    const qsizetype setSize =
        TemplatesFile::fromFile(QDir(Paths::resourcesFolder()).filePath(QStringLiteral("gallery/sets/Tessary-Template-Big-Hero.plist")))
            .templates.size();
    ASSERT_EQ(setSize, 4);
    evaluate(page, QStringLiteral("document.querySelector('a[href*=\"Big-Hero\"]').click(); true"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return store().userTemplates().size() == 3 + setSize; }, 10000));
    EXPECT_EQ(store().userTemplateAt(1 + setSize), selected);
    EXPECT_EQ(store().userTemplateAt(1)->value(QStringLiteral("nbrModules")).toLongLong(), 4);
    QTest::qWait(200);
    EXPECT_EQ(page->url(), before);
    EXPECT_TRUE(sheet().isVisible());
}

TEST_F(TemplateGallerySheetTest, OnlineGalleryDownloadsATemplateLinkInPlaceAndReloads)
{
    LoopbackHttpServer server;
    server.route("/gallery.html", "text/html",
                 "<html><body><h1>Online</h1>"
                 "<a id='set' href='/files/Tessary-Template-Set-3.plist'>set 3</a>"
                 "</body></html>");
    server.route("/files/Tessary-Template-Set-3.plist", "application/octet-stream",
                 bundledSet(QStringLiteral("Tessary-Template-Polaroid-Wall.plist")));
    ASSERT_TRUE(defaults->setObject(server.url(QStringLiteral("/gallery.html")).toString(), TemplateGallery::kGalleryUrlKey));

    ASSERT_TRUE(openGallery());
    QWebEnginePage *page = this->page();
    EXPECT_EQ(page->url(), server.url(QStringLiteral("/gallery.html")));
    threeUserTemplates();
    const TemplateStore::Template selected = store().userTemplateAt(1);

    // The marker in the path: downloaded, not shown.
    // The refused navigation ends as stopped, which is no failure: no alert follows.
    QList<QWebEngineLoadingInfo::LoadStatus> statuses;
    QObject::connect(page, &QWebEnginePage::loadingChanged, page,
                     [&](const QWebEngineLoadingInfo &info) { statuses.append(info.status()); });
    QSignalSpy resourceFailures(page, SIGNAL(resourceFailed(QString)));
    evaluate(page, QStringLiteral("document.getElementById('set').click(); true"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return store().userTemplates().size() == 7; }, 10000));
    EXPECT_EQ(store().userTemplateAt(5), selected);
    EXPECT_EQ(page->url(), server.url(QStringLiteral("/gallery.html")));
    EXPECT_EQ(evaluate(page, QStringLiteral("document.querySelector('h1').textContent")).toString(), QStringLiteral("Online"));
    QTest::qWait(200);
    EXPECT_FALSE(statuses.contains(QWebEngineLoadingInfo::LoadFailedStatus));
    EXPECT_TRUE(resourceFailures.isEmpty());
    EXPECT_TRUE(sheet().isVisible());

    // Reloading asks the server again. (That a marker only in the query is followed like any
    // link is the gallery's link rule, tested in the core.)
    QSignalSpy loaded(page, &QWebEnginePage::loadFinished);
    EXPECT_EQ(server.requested.count("/gallery.html"), 1);
    gallery().reloadTemplateWebviewWindow();
    ASSERT_TRUE(loaded.wait(10000));
    EXPECT_EQ(server.requested.count("/gallery.html"), 2);
    EXPECT_EQ(page->url(), server.url(QStringLiteral("/gallery.html")));
}

TEST_F(TemplateGallerySheetTest, FailedLoadsAreLoggedThenAlertedASecondLater)
{
    LoopbackHttpServer server;
    server.route("/broken.html", "text/html",
                 "<html><body><img src='/missing.png'><p>a picture is missing</p></body></html>");
    const struct {
        const char *name;
        QUrl page;
    } cases[] = {
        {"a picture of the page is missing", server.url(QStringLiteral("/broken.html"))},
        {"the page itself cannot be read", QUrl::fromLocalFile(dir.filePath(QStringLiteral("no-such-gallery.html")))},
        {"the server never answers", server.url(QStringLiteral("/silent"))},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        RecordingAlertPresenter alerts;
        TemplateGalleryFactory *factory = TemplateGalleryLoader::factory();
        ASSERT_NE(factory, nullptr);
        const std::unique_ptr<TemplateGalleryWindow> sheet(factory->createTemplateWebviewWindow(
            *defaults, Paths::resourcesFolder(), alerts, [](const QUrl &) {}, &controller->mainWindow()));
        ASSERT_TRUE(defaults->setObject(c.page.toString(), TemplateGallery::kGalleryUrlKey));
        sheet->showTemplateWebviewWindow();
        QDialog &gallery = *sheet->dialog();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&gallery, 5000));
        QWebEnginePage *page = pageOf(*sheet);

        // The failure is seen and logged; the alert waits a second, with the sheet still up.
        bool failed = false;
        bool alertedAtOnce = true;
        // The page's own signal, by name: its class is inside the plugin.
        QSignalSpy resourceFailures(page, SIGNAL(resourceFailed(QString)));
        QObject::connect(page, &QWebEnginePage::loadingChanged, &gallery, [&](const QWebEngineLoadingInfo &info) {
            if (info.status() == QWebEngineLoadingInfo::LoadFailedStatus) {
                failed = true;
                alertedAtOnce = !alerts.alerts.isEmpty();
            }
        });
        // The silent server is given up on after five seconds.
        const bool silent = c.page.path() == QLatin1String("/silent");
        if (silent) {
            QObject::connect(page, &QWebEnginePage::loadingChanged, &gallery, [&](const QWebEngineLoadingInfo &info) {
                if (info.status() == QWebEngineLoadingInfo::LoadStoppedStatus) {
                    failed = true;
                    alertedAtOnce = !alerts.alerts.isEmpty();
                }
            });
        }
        ASSERT_TRUE(QTest::qWaitFor([&] {
            if (!failed && !resourceFailures.isEmpty()) {
                failed = true;
                alertedAtOnce = !alerts.alerts.isEmpty();
            }
            return failed;
        }, 15000));
        EXPECT_FALSE(alertedAtOnce);
        EXPECT_TRUE(gallery.isVisible());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !alerts.alerts.isEmpty(); }, 5000));
        EXPECT_EQ(alerts.alerts.first().messageText, QStringLiteral("Templates Could No Be Loaded"));
        EXPECT_FALSE(alerts.alerts.first().informativeText.isEmpty());
        if (silent) {
            EXPECT_EQ(alerts.alerts.first().informativeText, QStringLiteral("The request timed out."));
        }
        EXPECT_EQ(alerts.alerts.first().style, AlertPresenter::Style::Critical);
        EXPECT_EQ(alerts.beeps, 1);
        EXPECT_FALSE(gallery.isVisible());
    }
}

// The gallery opens from the File menu and from the load-file sheet (which ends first), and
// its Close button ends it.
TEST_F(TemplateGallerySheetTest, ReachedFromTheMenuAndTheLoadFileSheet)
{
    MainWindow &w = controller->mainWindow();
    LoadFileSheet &loadFile = controller->loadFileWindow();
    const struct {
        const char *name;
        std::function<void()> open;
    } ways[] = {
        {"menu", [&] { w.action(QStringLiteral("showTemplateWebviewWindow"))->trigger(); }},
        {"load-file sheet", [&] {
             loadFile.open();
             loadFile.findChild<QPushButton *>(QStringLiteral("showTemplateWebviewWindow"))->click();
         }},
    };
    for (const auto &way : ways) {
        way.open();
        EXPECT_TRUE(QTest::qWaitFor([&] { return sheet().isVisible(); }, 5000)) << way.name;
        EXPECT_FALSE(loadFile.isVisible()) << way.name;
        EXPECT_EQ(sheet().windowModality(), Qt::WindowModal) << way.name;
        sheet().findChild<QPushButton *>(QStringLiteral("endTemplateWebvieWindow"))->click();
        EXPECT_FALSE(sheet().isVisible()) << way.name;
    }
}

} // namespace
