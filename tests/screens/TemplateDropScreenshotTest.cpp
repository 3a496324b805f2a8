#include "MainWindowScreenFixture.h"

#include "app/HalvernDesktopController.h"
#include "app/MainWindow.h"
#include "app/WelcomeSheet.h"
#include "foundation/Paths.h"
#include "support/LoopbackHttpServer.h"
#include "templates/TemplateStore.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateDownloadDialog.h"
#include "app/templates/TemplateListModel.h"
#include "app/templates/TemplateTabView.h"
#include "app/templates/TemplateTablePane.h"
#include "app/templates/TemplateTableView.h"
#include "app/collage/TessaryView.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

// "My Templates" in the real main window while a template is dragged over it, and the link
// download's progress sheet on the window: grabbed from the screen as a person sees them.
class TemplateDropScreenshotTest : public MainWindowScreenFixture
{
protected:
    void SetUp() override
    {
        MainWindowScreenFixture::SetUp();
        // Five built-in templates copied into "My Templates", shown in their tab.
        TemplateStore &store = view().templateStore();
        store.insertTemplates(store.builtInTemplates().mid(40, 5), 0);
        tabs().setCurrentTable(TemplateTable::User);
        ASSERT_TRUE(QTest::qWaitFor([&] { return tabs().model(TemplateTable::User)->pendingThumbnails() == 0; }, 10000));
    }

    TessaryView &view() const { return controller->mainWindow().tessaryView(); }
    TemplateTabView &tabs() const { return controller->mainWindow().templateTabView(); }
    TemplateTableView &table(TemplateTable t) const { return *tabs().pane(t)->templateTableView(); }
    QPoint inGrab(QWidget *widget, const QPoint &point) const
    {
        return widget->mapToGlobal(point) - controller->mainWindow().frameGeometry().topLeft();
    }
    // Holds a drag over the user table at the point, without letting go.
    void hover(QMimeData *data, const QPoint &at)
    {
        QWidget *viewport = table(TemplateTable::User).viewport();
        QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &enter);
        QDragMoveEvent move(at, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
        ASSERT_TRUE(move.isAccepted());
    }
    void leave()
    {
        QDragLeaveEvent leaving;
        QApplication::sendEvent(table(TemplateTable::User).viewport(), &leaving);
    }

};

// A built-in template held between rows 2 and 3 shows a line in the gap; a row of "My
// Templates" held on the middle of another shows that row framed.
TEST_F(TemplateDropScreenshotTest, DropIndicators)
{
    TemplateTableView &user = table(TemplateTable::User);
    const QColor highlight = user.palette().color(QPalette::Highlight);
    const QRect row2 = user.visualRect(user.model()->index(2, 0));

    std::unique_ptr<QMimeData> builtInRow(table(TemplateTable::BuiltIn).dragData(40));
    hover(builtInRow.get(), row2.topLeft() + QPoint(row2.width() / 2, 4));
    ASSERT_EQ(user.shownDropTarget(), (TemplateTableView::DropTarget{2, TemplateDrop::Operation::Above}));
    QImage grab = grabMainWindow();
    save(grab, "my-templates-drop-between-rows");
    // The line runs through the gap above row 2, right of its ring.
    const QPoint onLine = inGrab(user.viewport(), QPoint(user.viewport()->width() / 2, row2.top() - 1));
    EXPECT_EQ(grab.pixelColor(onLine).rgb(), highlight.rgb());
    leave();

    std::unique_ptr<QMimeData> userRow(user.dragData(0));
    hover(userRow.get(), row2.center());
    ASSERT_EQ(user.shownDropTarget(), (TemplateTableView::DropTarget{2, TemplateDrop::Operation::On}));
    grab = grabMainWindow();
    save(grab, "my-templates-drop-on-row");
    // The frame runs along the row's left edge, in the middle of its height.
    const QPoint onFrame = inGrab(user.viewport(), QPoint(row2.left() + 2, row2.center().y()));
    EXPECT_EQ(grab.pixelColor(onFrame).rgb(), highlight.rgb());
    leave();
}

// The progress sheet of a link download on the window, cancelled: nothing is added.
TEST_F(TemplateDropScreenshotTest, DownloadProgressSheet)
{
    LoopbackHttpServer server;
    server.mode = LoopbackHttpServer::Mode::Silent;
    TemplateActions &actions = controller->mainWindow().templateActions();
    const qsizetype before = view().templateStore().userTemplates().size();
    QSignalSpy finished(&actions, &TemplateActions::templateDownloadFinished);
    actions.downloadTemplate(server.url(QStringLiteral("/gallery/Tessary-Template-Autumn.plist")));
    auto *sheet = controller->mainWindow().findChild<TemplateDownloadDialog *>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(sheet, 5000));
    save(grabMainWindow(), "template-download-progress");
    sheet->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return finished.count() == 1; }, 5000));
    EXPECT_FALSE(finished.first().first().toBool());
    EXPECT_EQ(view().templateStore().userTemplates().size(), before);
}

} // namespace
