#pragma once

#include "AppFixture.h"
#include "support/RecordingAlertPresenter.h"

#include "foundation/Paths.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "model/TessaryData.h"
#include "templates/TemplateSelection.h"
#include "app/collage/CollageControlBar.h"
#include "app/collage/DragDropImageView.h"
#include "app/collage/TessaryDataView.h"
#include "app/collage/TessaryView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

// The collage view as the main window assembles it: a photo list over the test's own store
// (the factory photos on this first run), the view at a fixed size with its control bar, the
// built-in 7 x 7 template chosen, and an alert presenter that records.
class CollageFixture : public AppFixture
{
protected:
    void SetUp() override
    {
        AppFixture::SetUp();
        browser = std::make_unique<ImageBrowserController>(*defaults, Paths::resourcesFolder(), alerts);
        window = std::make_unique<QWidget>();
        view = new TessaryView(*defaults, *browser, alerts, Paths::resourcesFolder());
        bar = new CollageControlBar(*view, *defaults);
        auto *column = new QVBoxLayout(window.get());
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        column->addWidget(view);
        column->addWidget(bar);
        view->setFixedSize(700, 500);
        browser->setCollageReloader([this] { view->reloadData(); });
        view->setTemplateRowProvider([] { return std::make_pair(TemplateTable::BuiltIn, TemplateSelection::kDefaultBuiltInRow); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        browser->setInitialSelection();
        view->doChooseTemplate(TemplateTable::BuiltIn, TemplateSelection::kDefaultBuiltInRow);
    }
    void TearDown() override
    {
        window.reset();
        browser.reset();
        AppFixture::TearDown();
    }

    bool waitFilled(int ms = 30000) { return QTest::qWaitFor([this] { return view->allTilesFilled(); }, ms); }

    // A drag of `data` entering `target` and dropped there, as the window system delivers it.
    // Returns whether the target accepted the drag on entry.
    static bool dragAndDrop(QWidget *target, QMimeData *data)
    {
        const QPoint at = target->rect().center();
        QDragEnterEvent enter(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        const bool accepted = enter.isAccepted();
        QDropEvent drop(QPointF(at), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
        return accepted;
    }

    RecordingAlertPresenter alerts;
    std::unique_ptr<ImageBrowserController> browser;
    std::unique_ptr<QWidget> window;
    TessaryView *view = nullptr;
    CollageControlBar *bar = nullptr;
};
