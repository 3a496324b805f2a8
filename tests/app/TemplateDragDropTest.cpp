#include "foundation/PropertyList.h"
#include "support/LoopbackHttpServer.h"
#include "support/RecordingAlertPresenter.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "templates/TemplateTestData.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateTabView.h"
#include "app/templates/TemplateTablePane.h"
#include "app/templates/TemplateTableView.h"
#include "AppFixture.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QTabBar>
#include <QTest>
#include <QVBoxLayout>

using namespace TemplateTestData;

namespace {

// A template whose thumbnail is large enough to aim at its top, middle and bottom.
QVariantMap tallTemplate(qint64 modules, double id)
{
    QVariantMap t = makeTemplate(modules, id);
    t.insert(QStringLiteral("thumbnail"), pngThumbnail(90, 60));
    return t;
}

enum class Where { Top, Middle, Bottom, BelowAll };

struct DragOutcome {
    bool enterAccepted = false;
    bool moveAccepted = false;
    std::optional<TemplateTableView::DropTarget> shown;
    bool dropAccepted = false;
    Qt::DropAction action = Qt::IgnoreAction;
};

class TemplateDragDropTest : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        store = std::make_unique<TemplateStore>(*defaults);
        store->setBuiltInTemplates({TemplateStore::makeTemplate(tallTemplate(2, 50)), TemplateStore::makeTemplate(tallTemplate(3, 51)),
                                    TemplateStore::makeTemplate(tallTemplate(4, 52))});
        store->addTemplatesFromDictionary(file({tallTemplate(1, 0), tallTemplate(1, 1), tallTemplate(1, 2), tallTemplate(1, 3)}));
        selection = std::make_unique<TemplateSelection>(*store, *defaults);
        window = std::make_unique<QWidget>();
        tabs = new TemplateTabView(*store, *selection, *defaults);
        auto *layout = new QVBoxLayout(window.get());
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(tabs);
        actions = new TemplateActions(*store, *defaults, alerts, window.get());
        tabs->setTemplateActions(*actions);
        window->resize(240, 560);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    void TearDown() override
    {
        window.reset();
        selection.reset();
        store.reset();
        AppFixture::TearDown();
    }

    TemplateTableView &view(TemplateTable table) const { return *tabs->pane(table)->templateTableView(); }
    QPoint pointAt(TemplateTable table, int row, Where where) const
    {
        const TemplateTableView &v = view(table);
        const int last = v.model()->rowCount() - 1;
        const QRect r = v.visualRect(v.model()->index(where == Where::BelowAll ? last : row, 0));
        switch (where) {
        case Where::Top:
            return {r.center().x(), r.top() + 3};
        case Where::Middle:
            return r.center();
        case Where::Bottom:
            return {r.center().x(), r.bottom() - 3};
        case Where::BelowAll:
            return {r.center().x(), r.bottom() + 40};
        }
        return {};
    }
    // A person dragging the data over the table to the point and letting go there (or not).
    DragOutcome drag(TemplateTable table, QMimeData *data, const QPoint &at, bool release = true)
    {
        tabs->setCurrentTable(table);
        QWidget *target = view(table).viewport();
        const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
        DragOutcome outcome;
        QDragEnterEvent enter(at, offered, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        outcome.enterAccepted = enter.isAccepted();
        QDragMoveEvent move(at, offered, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &move);
        outcome.moveAccepted = move.isAccepted();
        outcome.shown = view(table).shownDropTarget();
        if (release) {
            QDropEvent drop(at, offered, data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(target, &drop);
            outcome.dropAccepted = drop.isAccepted();
            outcome.action = drop.dropAction();
            EXPECT_FALSE(view(table).shownDropTarget()) << "the indicator stays after the drop";
        }
        return outcome;
    }
    QMimeData *rowData(TemplateTable table, int row) { return view(table).dragData(row); }
    static QMimeData *urlData(const QList<QUrl> &urls)
    {
        auto *data = new QMimeData;
        data->setUrls(urls);
        return data;
    }
    static QMimeData *textData(const QString &text)
    {
        auto *data = new QMimeData;
        data->setText(text);
        return data;
    }
    QString templatesFile(const QString &name, const QVariantList &templates)
    {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writePlist(path, file(templates)));
        return path;
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<TemplateStore> store;
    std::unique_ptr<TemplateSelection> selection;
    std::unique_ptr<QWidget> window;
    TemplateTabView *tabs = nullptr;
    TemplateActions *actions = nullptr;
};

using Target = TemplateTableView::DropTarget;
constexpr auto Above = TemplateDrop::Operation::Above;
constexpr auto On = TemplateDrop::Operation::On;

// Drops as a person makes them: what is dragged, where it is let go, whether the table takes it
// (and shows where), and "My Templates" afterwards (user ids 0-3, built-in ids 50-52). Which
// drops the store takes and what they do is the template editor's test; here each kind of drag
// data and each place on a row. Refused drags are ignored from the first event on, which is
// what shows the forbidden pointer.
TEST_F(TemplateDragDropTest, DropRules)
{
    LoopbackHttpServer server;
    server.body = PropertyList::toBinary(file({tallTemplate(2, 42)}));
    const QString a = templatesFile(QStringLiteral("a.plist"), {tallTemplate(1, 10), tallTemplate(1, 11)});
    const QString b = templatesFile(QStringLiteral("b.plist"), {tallTemplate(1, 20)});
    const QString link = server.url(QStringLiteral("/gallery/Tessary-Template-x.plist")).toString();

    struct Case {
        const char *name;
        std::function<QMimeData *()> data;
        TemplateTable table;
        int row;
        Where where;
        bool taken;
        std::optional<Target> shown;
        std::vector<double> after; // empty: unchanged
        bool download = false;
    };
    const std::vector<double> unchanged{0, 1, 2, 3};
    const TemplateTable user = TemplateTable::User;
    const TemplateTable builtIn = TemplateTable::BuiltIn;
    const std::vector<Case> cases{
        {"user row between rows moves it", [&] { return rowData(user, 0); }, user, 3, Where::Top, true, Target{3, Above}, {1, 2, 0, 3}},
        {"user row on a row swaps them", [&] { return rowData(user, 0); }, user, 3, Where::Middle, true, Target{3, On}, {3, 1, 2, 0}},
        {"user row under a row goes after it", [&] { return rowData(user, 3); }, user, 0, Where::Bottom, true, Target{1, Above}, {0, 3, 1, 2}},
        {"user row below every row goes last", [&] { return rowData(user, 1); }, user, 3, Where::BelowAll, true, Target{4, Above}, {0, 2, 3, 1}},
        {"built-in row is copied in before the row", [&] { return rowData(builtIn, 1); }, user, 2, Where::Top, true, Target{2, Above}, {0, 1, 51, 2, 3}},
        {"template files go in at the row, the later first", [&] { return urlData({QUrl::fromLocalFile(a), QUrl::fromLocalFile(b)}); },
         user, 0, Where::Top, true, Target{0, Above}, {20, 10, 11, 0, 1, 2, 3}},
        {"another program's row is its file", [&] {
             QMimeData *data = urlData({QUrl::fromLocalFile(b)});
             data->setData(TemplateTableView::kRowMimeType, "1 user 0");
             return data;
         }, user, 1, Where::Top, true, Target{1, Above}, {0, 20, 1, 2, 3}},
        {"template link as a link list", [&] { return urlData({QUrl(link)}); }, user, 2, Where::Top, true, Target{2, Above}, {0, 1, 42, 2, 3}, true},
        {"template link as plain text", [&] { return textData(QStringLiteral("  %1\n").arg(link)); }, user, 4, Where::BelowAll, true, Target{4, Above}, {0, 1, 2, 3, 42}, true},
        {"text that is not a link is refused", [&] { return textData(QStringLiteral("my favourite.plist")); }, user, 0, Where::Top, false, std::nullopt, unchanged},
        {"other data is refused", [&] { auto *d = new QMimeData; d->setImageData(QImage(4, 4, QImage::Format_RGB32)); return d; },
         user, 0, Where::Top, false, std::nullopt, unchanged},
        {"built-in table refuses a user row", [&] { return rowData(user, 0); }, builtIn, 1, Where::Top, false, std::nullopt, unchanged},
    };
    const TemplateStore::Templates original = store->userTemplates();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        store->clearUserTemplates();
        store->insertTemplates(original, 0);
        const TemplateStore::Templates builtInBefore = store->builtInTemplates();
        tabs->setCurrentTable(c.table);
        std::unique_ptr<QMimeData> data(c.data());
        const DragOutcome outcome = drag(c.table, data.get(), pointAt(c.table, c.row, c.where));
        EXPECT_EQ(outcome.enterAccepted, c.taken);
        EXPECT_EQ(outcome.moveAccepted, c.taken);
        EXPECT_EQ(outcome.shown, c.shown);
        if (c.download) {
            EXPECT_TRUE(outcome.dropAccepted);
            EXPECT_TRUE(QTest::qWaitFor([&] { return store->userTemplates().size() == qsizetype(c.after.size()); }, 5000));
            EXPECT_TRUE(QTest::qWaitFor([] { return !qApp->activeModalWidget(); }, 5000)) << "the progress sheet stays";
        } else if (c.taken && c.after != unchanged) {
            EXPECT_TRUE(outcome.dropAccepted);
        } else if (!c.taken) {
            EXPECT_FALSE(outcome.dropAccepted);
        }
        EXPECT_EQ(ids(store->userTemplates()), c.after);
        EXPECT_EQ(store->builtInTemplates(), builtInBefore);
        // A row moves within "My Templates"; everything else is copied in.
        const bool rowWithin = c.table == user && std::string_view(c.name).starts_with("user row");
        if (outcome.dropAccepted) {
            EXPECT_EQ(outcome.action, rowWithin ? Qt::MoveAction : Qt::CopyAction);
        }
    }
}

// A built-in row held over the "My Templates" tab title brings that tab up to be dropped on.
TEST_F(TemplateDragDropTest, HoldingARowOverTheOtherTabShowsIt)
{
    tabs->setCurrentTable(TemplateTable::BuiltIn);
    std::unique_ptr<QMimeData> data(rowData(TemplateTable::BuiltIn, 0));
    QTabBar *bar = tabs->tabWidget()->tabBar();
    const QPoint over = bar->tabRect(1).center();
    QDragEnterEvent enter(over, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(bar, &enter);
    QDragMoveEvent move(over, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(bar, &move);
    EXPECT_TRUE(QTest::qWaitFor([&] { return tabs->currentTable() == TemplateTable::User; }, 3000));
}

// Pressing on a row and moving the mouse starts a drag of that row, which writes its file (named
// and written by the template editor) into a folder of its own for a file manager; the folders
// go when the window goes.
TEST_F(TemplateDragDropTest, MouseDragStartsAtTheRowWithAFileThatGoesWithTheWindow)
{
    const QString dragFolder = view(TemplateTable::User).dragFolder();
    EXPECT_FALSE(dragFolder.startsWith(dir.path())) << "written among the user's files";
    for (const TemplateTable table : {TemplateTable::User, TemplateTable::BuiltIn}) {
        tabs->setCurrentTable(table);
        TemplateTableView &v = view(table);
        const QDir folder(v.dragFolder());
        ASSERT_TRUE(folder.exists());
        const QStringList before = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        const QPoint from = pointAt(table, 1, Where::Middle);
        const QPoint to = from + QPoint(0, QApplication::startDragDistance() + 2); // still on the row
        QTest::mousePress(v.viewport(), Qt::LeftButton, {}, from);
        QTest::mouseMove(v.viewport(), from + QPoint(0, 2));
        QTest::mouseMove(v.viewport(), to);
        QTest::mouseRelease(v.viewport(), Qt::LeftButton, {}, to);
        QStringList drags = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString &earlier : before)
            drags.removeOne(earlier);
        ASSERT_EQ(drags.size(), 1) << (table == TemplateTable::User ? "user" : "built-in");
        const QDir drag(folder.filePath(drags.first()));
        const QStringList files = drag.entryList(QDir::Files);
        ASSERT_EQ(files.size(), 1);
        const TemplateStore::Template t = table == TemplateTable::User ? store->userTemplateAt(1) : store->builtInTemplateAt(1);
        EXPECT_EQ(PropertyList::fromFile(drag.filePath(files.first())).value, QVariant(file({*t})));
        EXPECT_EQ(tabs->selectedRow(table), 1);
    }
    window.reset();
    EXPECT_FALSE(QFileInfo::exists(dragFolder));
}

} // namespace
