#include "app/MainWindow.h"

#include "app/MessageBoxAlertPresenter.h"
#include "photos/ImageBrowserController.h"
#include "templates/MainWindowState.h"
#include "app/collage/CollageControlBar.h"
#include "app/photos/ImageBrowserPanel.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateTabView.h"
#include "app/collage/TessaryView.h"
#include "app/blend/TilingProgressIndicator.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QTabBar>
#include <QTabWidget>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

MainWindow::MainWindow(UserDefaults &defaults, ImageBrowserController &browser, MessageBoxAlertPresenter &alerts,
                       const QString &resourcesFolder, QWidget *parent)
    : QMainWindow(parent)
    , m_defaults(defaults)
    , m_browser(browser)
{
    setWindowTitle(QStringLiteral("Tessary"));
    alerts.setParentWindow(this);

    m_tessaryView = new TessaryView(defaults, browser, alerts, resourcesFolder);
    m_browserPanel = new ImageBrowserPanel(browser, m_tessaryView->imageCacheLoader(), defaults);
    m_templateTabs = new TemplateTabView(m_tessaryView->templateStore(), m_tessaryView->templateSelection(), defaults);
    // Both tab titles whole, however narrow the panel is dragged.
    m_templateTabs->setMinimumWidth(
        std::max(m_templateTabs->minimumWidth(), m_templateTabs->tabWidget()->tabBar()->sizeHint().width() + 8));
    m_controlBar = new CollageControlBar(*m_tessaryView, defaults);
    m_templateActions = new TemplateActions(m_tessaryView->templateStore(), defaults, alerts, this);
    m_templateTabs->setTemplateActions(*m_templateActions);

    auto *collage = new QWidget;
    auto *collageLayout = new QVBoxLayout(collage);
    collageLayout->setContentsMargins(0, 0, 0, 0);
    collageLayout->addWidget(m_tessaryView, 1);
    collageLayout->addWidget(m_controlBar);

    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(m_browserPanel);
    splitter->addWidget(collage);
    splitter->addWidget(m_templateTabs);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 0);
    splitter->setChildrenCollapsible(false);
    // The collage takes what the side panels leave; at the smallest width (half of a 1920
    // screen) each panel is at its own minimum.
    splitter->setSizes({330, 700, 250});
    setCentralWidget(splitter);

    browser.setCollageReloader([this] { m_tessaryView->reloadData(); });
    connect(m_templateTabs, &TemplateTabView::templateChosen, m_tessaryView, &TessaryView::doChooseTemplate);
    m_tessaryView->setTemplateRowProvider([this] {
        const TemplateTable table = m_templateTabs->currentTable();
        return std::make_pair(table, m_templateTabs->selectedRow(table));
    });

    m_tilingProgress = new TilingProgressIndicator;
    statusBar()->addPermanentWidget(m_tilingProgress);
    statusBar()->hide();
    connect(m_tilingProgress, &TilingProgressIndicator::activeChanged, statusBar(), &QWidget::setVisible);

    buildMenus();
    // The collage's jumble actions, enabled as its buttons are: Undo Jumble and Unjumble only
    // while jumbled.
    connect(action(QStringLiteral("jumble")), &QAction::triggered, m_tessaryView, &TessaryView::jumble);
    connect(action(QStringLiteral("undoJumble")), &QAction::triggered, m_tessaryView, &TessaryView::undojumble);
    connect(action(QStringLiteral("unjumble")), &QAction::triggered, m_tessaryView, &TessaryView::unjumble);
    const auto jumbledActions = [this](bool jumbled) {
        action(QStringLiteral("undoJumble"))->setEnabled(jumbled);
        action(QStringLiteral("unjumble"))->setEnabled(jumbled);
    };
    jumbledActions(m_tessaryView->isJumbled());
    connect(m_tessaryView, &TessaryView::jumbledChanged, this, jumbledActions);
    restoreCollageControls();
    resize(kPreferredSize);
}

void MainWindow::restoreCollageControls()
{
    const MainWindowState saved(m_defaults);
    const MainWindowState::Collage collage = saved.collage(m_tessaryView->templateSelection());
    {
        const QSignalBlocker spacing(m_controlBar->spacingTypePopUp());
        const QSignalBlocker frameStyle(m_controlBar->imageFrameStylePopUp());
        m_controlBar->spacingTypePopUp()->setCurrentIndex(collage.spacingType);
        m_controlBar->imageFrameStylePopUp()->setCurrentIndex(collage.imageFrameStyle);
    }
    m_tessaryView->restoreControls(collage.coordinateTransform, collage.spacingType, collage.imageFrameStyle);
    // The tab is brought back at launch, where its row is applied.

    UserDefaults &defaults = m_defaults;
    connect(m_controlBar->spacingTypePopUp(), &QComboBox::currentIndexChanged, this,
            [&defaults](int type) { MainWindowState(defaults).setSpacingType(type); });
    connect(m_controlBar->imageFrameStylePopUp(), &QComboBox::currentIndexChanged, this,
            [&defaults](int style) { MainWindowState(defaults).setImageFrameStyle(style); });
    connect(m_tessaryView, &TessaryView::coordinateTransformChanged, this,
            [&defaults](int transform) { MainWindowState(defaults).setCoordinateTransform(transform); });
    connect(m_templateTabs->tabWidget(), &QTabWidget::currentChanged, this,
            [this] { MainWindowState(m_defaults).setTemplateTab(m_templateTabs->currentTable()); });
}

MainWindow::~MainWindow() = default;

QAction *MainWindow::action(const QString &name) const
{
    return findChild<QAction *>(name);
}

void MainWindow::buildMenus()
{
    // Every action is made here, named, with the keys a Linux desktop user expects (the same on
    // every desktop, as the README lists them); the controller connects what each one does.
    const auto add = [this](QMenu *menu, const char *name, const QString &text, const QKeySequence &keys = {}) {
        QAction *a = menu->addAction(text);
        a->setObjectName(QString::fromLatin1(name));
        a->setShortcut(keys);
        return a;
    };
    QMenu *file = menuBar()->addMenu(tr("&File"));
    add(file, "addPhotos", tr("Add Photos…"), QKeySequence(Qt::CTRL | Qt::Key_O));
    add(file, "importTemplates", tr("Import Templates…"), QKeySequence(Qt::CTRL | Qt::Key_I));
    add(file, "showTemplateWebviewWindow", tr("Template Gallery…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I));
    add(file, "loadSampleFlowers", tr("Load Sample Flowers"));
    add(file, "loadFactoryPhotos", tr("Load Factory Photos"));
    file->addSeparator();
    add(file, "openCollage", tr("Open Collage…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    file->addMenu(tr("Open Recent"))->setObjectName(QStringLiteral("openRecentMenu"));
    add(file, "saveCollage", tr("Save Collage"), QKeySequence::Save);
    add(file, "saveCollageAs", tr("Save Collage As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    file->addSeparator();
    add(file, "quit", tr("Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q))->setMenuRole(QAction::QuitRole);

    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    add(edit, "paste", tr("Paste"), QKeySequence(Qt::CTRL | Qt::Key_V));
    add(edit, "insertBlankImage", tr("Insert Blank Image"));
    add(edit, "removePhoto", tr("Remove Photo"), QKeySequence(Qt::Key_Delete));
    add(edit, "tilePhoto", tr("Cut Photo into Tiles…"), QKeySequence(Qt::CTRL | Qt::Key_T));
    add(edit, "editPhoto", tr("Edit Photo…"), QKeySequence(Qt::CTRL | Qt::Key_E));
    edit->addSeparator();
    add(edit, "clearAllImages", tr("Clear All Images…"));

    QMenu *collage = menuBar()->addMenu(tr("&Collage"));
    add(collage, "jumble", tr("Jumble"), QKeySequence(Qt::CTRL | Qt::Key_J));
    add(collage, "undoJumble", tr("Undo Jumble"), QKeySequence(Qt::CTRL | Qt::Key_Z));
    add(collage, "unjumble", tr("Unjumble"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_J));
    collage->addSeparator();
    add(collage, "showDefaultTemplate", tr("Show Default Template"));
    add(collage, "smartAlignAll", tr("Smart-Align All"));
    collage->addSeparator();
    add(collage, "imageCollage", tr("Make Collage"), QKeySequence(Qt::CTRL | Qt::Key_R));

    QMenu *settings = menuBar()->addMenu(tr("&Settings"));
    add(settings, "preferences", tr("Preferences…"), QKeySequence(Qt::CTRL | Qt::Key_Comma));

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    add(help, "help", tr("Tessary Help"), QKeySequence(Qt::Key_F1));
    add(help, "website", tr("Tessary Website"));
    add(help, "welcome", tr("Welcome…"));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_closeGuard && !m_closeGuard()) {
        event->ignore();
        return;
    }
    emit closing();
    event->accept();
}
