#include "app/HalvernDesktopController.h"

#include "app/collage/CollageDocumentActions.h"
#include "app/collage/CollageMaker.h"
#include "app/CompletionSound.h"
#include "app/editor/ImageEditorWindow.h"
#include "app/templates/LoadFileSheet.h"
#include "app/MainWindow.h"
#include "app/collage/PleaseWaitWindow.h"
#include "app/PreferencesWindow.h"
#include "app/templates/TemplateGalleryFactory.h"
#include "app/templates/TemplateGalleryLoader.h"
#include "app/templates/TemplateGalleryWindow.h"
#include "app/blend/ProgressSheet.h"
#include "app/blend/TileAndBlendActions.h"
#include "app/result/PrintOutputs.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultWindow.h"
#include "app/WelcomeSheet.h"
#include "app/TessaryLinks.h"
#include "foundation/Log.h"
#include "foundation/OpenedFiles.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "templates/MainWindowState.h"
#include "templates/TemplateStore.h"
#include "app/collage/CollageControlBar.h"
#include "widgets/DelayedPopupMenuButton.h"
#include "model/LayoutEngine.h"
#include "app/photos/ImageBrowserPanel.h"
#include "templates/TemplateEditor.h"
#include "app/templates/TemplateActions.h"
#include "app/templates/TemplateTabView.h"
#include "app/collage/TessaryView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QScreen>
#include <QTimer>
#include <QUrl>

HalvernDesktopController::HalvernDesktopController(UserDefaults &defaults, const QString &resourcesFolder, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_resourcesFolder(resourcesFolder)
{
    m_imageBrowserController = std::make_unique<ImageBrowserController>(defaults, resourcesFolder, m_alerts);
    m_mainWindow = std::make_unique<MainWindow>(defaults, *m_imageBrowserController, m_alerts, resourcesFolder);
    connect(m_mainWindow.get(), &MainWindow::closing, qApp, &QApplication::quit, Qt::QueuedConnection);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &HalvernDesktopController::applicationWillTerminate);
    connectActions();
    awakeFromNib();
}

HalvernDesktopController::~HalvernDesktopController()
{
    applicationWillTerminate();
}

void HalvernDesktopController::awakeFromNib()
{
    // The sheets and the preferences window are made at start, not when first shown: the
    // load-file sheet writes its first-run keys and folds itself at wake-up.
    MainWindow *window = m_mainWindow.get();
    m_loadFileWindow = new LoadFileSheet(m_defaults, window);
    // The sheet has ended itself when it reports a button.
    TemplateActions &templates = window->templateActions();
    connect(m_loadFileWindow, &LoadFileSheet::chooseTemplateFile, &templates, &TemplateActions::loadUserTemplates);
    connect(m_loadFileWindow, &LoadFileSheet::clearAllTemplates, &templates, &TemplateActions::clearAllUserTemplates);
    connect(m_loadFileWindow, &LoadFileSheet::downloadWebsiteTemplateFile, this, &HalvernDesktopController::goToWebTemplates);
    connect(m_loadFileWindow, &LoadFileSheet::showTemplateGallery, this, &HalvernDesktopController::showTemplateWebviewWindow);
    m_welcomeWindow = new WelcomeSheet(m_defaults, window);
    connect(m_welcomeWindow, &WelcomeSheet::visitWebsiteRequested, this, &HalvernDesktopController::goToWebsite);
    m_preferencesWindow = new PreferencesWindow(m_defaults, m_resourcesFolder, window);
    m_collageDocuments = new CollageDocumentActions(*window, *m_imageBrowserController, m_defaults, m_alerts, this);
    // Closing the window (and so quitting) asks first about a document's unsaved changes.
    window->setCloseGuard([this] {
        if (m_closeAnswered || !m_collageDocuments->isModified())
            return true;
        m_collageDocuments->askToSaveChanges([this] {
            m_closeAnswered = true;
            m_mainWindow->close();
        });
        return false;
    });

    // A template change that could not be stored is said on the window, as the photo list's is.
    connect(&m_mainWindow->tessaryView().templateStore(), &TemplateStore::writeFailed, this,
            [this](const QString &what, const QString &reason) {
                doAlert(what, reason, AlertPresenter::Style::Warning);
            });

    Preferences prefs(m_defaults);
    m_mainWindow->tessaryView().setTessaryBackgroundColor(prefs.tessaryBackgroundColor());
    initEditor();
    m_harpSound = new CompletionSound(QDir(m_resourcesFolder).filePath(QStringLiteral("harp.aif")), this);

    connectTileAndBlend();
    connectResultOutputs();
    // Ctrl+Q quits from every window of the program, not only from the main window: also from
    // the progress sheet of a blend and the please-wait window of a render (quitting cancels
    // their work).
    if (QAction *quit = window->action(QStringLiteral("quit"))) {
        for (QWidget *w : {static_cast<QWidget *>(m_resultWindow), static_cast<QWidget *>(m_editorWindow.get()),
                           static_cast<QWidget *>(m_preferencesWindow),
                           static_cast<QWidget *>(&m_tileAndBlend->progressSheet()),
                           static_cast<QWidget *>(m_pleaseWaitWindow)})
            w->addAction(quit);
    }
}

// The tile sheet, the blend button's commands and the blend background well.
void HalvernDesktopController::connectTileAndBlend()
{
    MainWindow *window = m_mainWindow.get();
    m_tileAndBlend = new TileAndBlendActions(m_defaults, *m_imageBrowserController, m_alerts, window,
                                             window->tilingProgress(), this);
    connect(m_tileAndBlend, &TileAndBlendActions::blendFinished, this, &HalvernDesktopController::displayResultForBlender);
    DelayedPopupMenuButton *blend = window->controlBar().blendButton();
    connect(blend, &DelayedPopupMenuButton::stitchLeftToRight, m_tileAndBlend, &TileAndBlendActions::stitchLeftToRight);
    connect(blend, &DelayedPopupMenuButton::stitchBottomToTop, m_tileAndBlend, &TileAndBlendActions::stitchBottomToTop);
    connect(blend, &DelayedPopupMenuButton::stitchSquare, m_tileAndBlend, &TileAndBlendActions::stitchSquare);
    m_tileAndBlend->setBackgroundColor(window->controlBar().blendBackgroundColor());
    connect(&window->controlBar(), &CollageControlBar::blendBackgroundColorChanged, m_tileAndBlend,
            &TileAndBlendActions::setBackgroundColor);
    if (QAction *tile = window->action(QStringLiteral("tilePhoto")))
        connect(tile, &QAction::triggered, m_tileAndBlend, &TileAndBlendActions::showTilePhotosWindow);
}

// The result window, the please-wait window, the Make Collage button and the five ways out.
void HalvernDesktopController::connectResultOutputs()
{
    MainWindow *window = m_mainWindow.get();
    // The result window and the please-wait window belong to the main window.
    TessaryView &collage = m_mainWindow->tessaryView();
    m_resultWindow = new ResultWindow(m_defaults, window);
    m_pleaseWaitWindow = new PleaseWaitWindow(window);
    m_collageMaker = new CollageMaker(collage, m_defaults, *m_pleaseWaitWindow, this);
    m_resultOutputs = new ResultOutputs(*m_resultWindow, *m_imageBrowserController, m_defaults, m_harpSound,
                                        collage.layoutEngine().defaultImage(), this);
    QAbstractButton *resultButton = window->controlBar().resultButton();
    connect(resultButton, &QAbstractButton::clicked, this, &HalvernDesktopController::imageCollage);
    connect(m_collageMaker, &CollageMaker::started, resultButton, [resultButton] {
        resultButton->setEnabled(false);
        resultButton->setVisible(false);
    });
    connect(m_collageMaker, &CollageMaker::finished, resultButton, [resultButton] {
        resultButton->setEnabled(true);
        resultButton->setVisible(true);
    });
    m_printOutputs = new PrintOutputs(*m_resultWindow, *m_resultOutputs, this);
    connect(m_collageMaker, &CollageMaker::collageReady, this, [this](const QImage &image, double sharpest) {
        m_printOutputs->setCollage(image, m_collageMaker->madeLayout(), m_collageMaker->madeOptions());
        showResult(image, true, sharpest);
    });
    // Told once, over the result window the person now looks at (or the main window when no
    // picture came of it).
    connect(m_collageMaker, &CollageMaker::photosLeftEmpty, this, [this](const QList<UnreadablePhotos::Photo> &photos) {
        QWidget *over = m_resultWindow->isVisible() ? static_cast<QWidget *>(m_resultWindow) : m_mainWindow.get();
        m_alerts.presentAlertOn(over, UnreadablePhotos::leftEmptyAlert(photos), {});
    });
    ResultWindow &result = *m_resultWindow;
    ResultOutputs &outputs = *m_resultOutputs;
    connect(result.action(QStringLiteral("saveResult")), &QAction::triggered, &outputs, &ResultOutputs::save);
    connect(result.action(QStringLiteral("copyResult")), &QAction::triggered, &outputs, &ResultOutputs::putImageOnClipboard);
    connect(result.action(QStringLiteral("openResult")), &QAction::triggered, &outputs, &ResultOutputs::openResultInPreview);
    connect(result.action(QStringLiteral("copyAndOpenResult")), &QAction::triggered, &outputs,
            &ResultOutputs::putImageOnClipboardAndOpenInPreview);
    connect(result.action(QStringLiteral("insertResult")), &QAction::triggered, &outputs, &ResultOutputs::insertResult);
    connect(result.action(QStringLiteral("exportPdf")), &QAction::triggered, m_printOutputs, &PrintOutputs::exportPdf);
    connect(result.action(QStringLiteral("printResult")), &QAction::triggered, m_printOutputs, &PrintOutputs::print);
    connect(result.action(QStringLiteral("printPreview")), &QAction::triggered, m_printOutputs,
            &PrintOutputs::printPreview);
    // A completed save ends the progress sheet, as a shown result does.
    connect(&outputs, &ResultOutputs::saved, this, [this] {
        m_tileAndBlend->progressSheet().endSheet();
        m_stitchInProgress = false;
    });
}

void HalvernDesktopController::launch(const QStringList &imageFiles)
{
    applicationWillFinishLaunching();
    applicationDidFinishLaunching();
    if (!imageFiles.isEmpty())
        openFiles(imageFiles);
}

void HalvernDesktopController::openFiles(const QStringList &files)
{
    const OpenedFiles sorted = OpenedFiles::sort(files);
    if (!sorted.collages.isEmpty())
        m_collageDocuments->openCollageAskingFirst(sorted.collages.first());
    if (!sorted.templateFiles.isEmpty())
        m_mainWindow->templateActions().importTemplateFiles(sorted.templateFiles);
    if (!sorted.photos.isEmpty())
        m_imageBrowserController->addImagesWithPaths(sorted.photos);
    m_mainWindow->show();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
    if (!sorted.missing.isEmpty()) {
        doAlert(sorted.missing.size() == 1 ? QStringLiteral("A file to open was not found.")
                                           : QStringLiteral("%1 files to open were not found.").arg(sorted.missing.size()),
                QStringLiteral("Nothing was added for:\n%1").arg(sorted.missing.join(QLatin1Char('\n'))),
                AlertPresenter::Style::Warning);
    }
}

void HalvernDesktopController::applicationWillFinishLaunching()
{
    Preferences prefs(m_defaults);
    prefs.markPresent(Preferences::FirstRun);
    // Where the window was left, when that is still on a screen; centred at its preferred size
    // (within the screen) otherwise, the first start included.
    QList<QRect> screens;
    if (QScreen *primary = QGuiApplication::primaryScreen())
        screens.append(primary->availableGeometry());
    for (QScreen *screen : QGuiApplication::screens()) {
        if (screen != QGuiApplication::primaryScreen())
            screens.append(screen->availableGeometry());
    }
    const MainWindowState state(m_defaults);
    m_mainWindow->setGeometry(state.windowFrame(screens, MainWindow::kPreferredSize, m_mainWindow->minimumSizeHint()));
    if (state.windowMaximized())
        m_mainWindow->showMaximized();
    else
        m_mainWindow->show();
    m_mainWindow->raise();
    if (m_defaults.isReadOnly()) {
        // Everything can be looked at, nothing is kept: say so once, before any change is lost.
        doAlert(QStringLiteral("Changes cannot be saved."),
                QStringLiteral("Tessary can read its settings and photo list but not write them: %1").arg(m_defaults.readOnlyReason()),
                AlertPresenter::Style::Warning);
    } else if (!prefs.doNotShowWelcomeWindowAgain()) {
        showWelcomeWindow();
    }
}

void HalvernDesktopController::applicationDidFinishLaunching()
{
    qCInfo(lcTessary, "documentsPath = %s", qUtf8Printable(Paths::documentsFolder()));
    m_imageBrowserController->setInitialSelection();
    // The tab left in front: bringing "My Templates" forward applies its saved row.
    TemplateTabView &tabs = m_mainWindow->templateTabView();
    if (MainWindowState(m_defaults).collage(m_mainWindow->tessaryView().templateSelection()).tab == TemplateTable::User)
        tabs.setCurrentTable(TemplateTable::User);
    else
        tabs.setFirstTemplate();
}

void HalvernDesktopController::showPreferences()
{
    m_preferencesWindow->showPreferences();
}

void HalvernDesktopController::showWelcomeWindow()
{
    m_welcomeWindow->open();
}

void HalvernDesktopController::showLoadFileWindow()
{
    if (Preferences(m_defaults).dontShowAgain())
        m_mainWindow->templateActions().loadUserTemplates();
    else
        m_loadFileWindow->open();
}

void HalvernDesktopController::goToWebTemplates()
{
    openLink(TessaryLinks::templatesPage(), QStringLiteral("The templates page"));
}

void HalvernDesktopController::showTemplateWebviewWindow()
{
    if (m_loadFileWindow->isVisible())
        m_loadFileWindow->done(QDialog::Accepted);
    if (!m_templateWebviewWindow) {
        QString error;
        TemplateGalleryFactory *factory = TemplateGalleryLoader::factory(&error);
        if (!factory) {
            doAlert(tr("The template gallery is not installed."), error, AlertPresenter::Style::Warning);
            return;
        }
        m_templateWebviewWindow = factory->createTemplateWebviewWindow(
            m_defaults, m_resourcesFolder, m_alerts, [this](const QUrl &link) { downloadTemplate(link); },
            m_mainWindow.get());
        TemplateGalleryWindow *gallery = m_templateWebviewWindow;
        connect(&m_mainWindow->templateActions(), &TemplateActions::templatesAdded, gallery->dialog(),
                [gallery](qsizetype count) { gallery->showTemplatesAdded(count); });
    }
    m_templateWebviewWindow->showTemplateWebviewWindow();
}

void HalvernDesktopController::reloadTemplateWebviewWindow()
{
    if (m_templateWebviewWindow)
        m_templateWebviewWindow->reloadTemplateWebviewWindow();
}

void HalvernDesktopController::zoomTemplateWebviewWindow()
{
    if (m_templateWebviewWindow)
        m_templateWebviewWindow->zoomTemplateWebviewWindow();
}

void HalvernDesktopController::endTemplateWebvieWindow()
{
    if (m_templateWebviewWindow)
        m_templateWebviewWindow->endTemplateWebvieWindow();
}

void HalvernDesktopController::downloadTemplate(const QUrl &link)
{
    m_mainWindow->templateActions().downloadTemplate(link, -1);
}

void HalvernDesktopController::applicationWillTerminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    // Long work stops first (a blend, a cut, a render, a save or copy): quitting never waits
    // for it, and what is saved below has the machine to itself.
    m_tileAndBlend->cancelAllWork();
    m_collageMaker->cancel();
    m_resultOutputs->cancelAll();
    Preferences prefs(m_defaults);
    prefs.setTessaryBackgroundColor(m_mainWindow->tessaryView().tessaryBackgroundColor());
    MainWindowState(m_defaults).setWindowFrame(m_mainWindow->normalGeometry(), m_mainWindow->isMaximized());
    closeNoSave();
    m_imageBrowserController->appWillTerminate();
    m_mainWindow->tessaryView().saveImageCacheToUserDefaults();
}

void HalvernDesktopController::doAlert(const QString &message, const QString &informative, AlertPresenter::Style style)
{
    m_imageBrowserController->doAlert(message, informative, style);
}

void HalvernDesktopController::displayResult(const QImage &image, bool isButton)
{
    showResult(image, isButton, 0.0);
}

void HalvernDesktopController::showResult(const QImage &image, bool isButton, double sharpest)
{
    if (isButton)
        showResultWindow();
    m_resultWindow->setResult(image, sharpest);
    m_stitchInProgress = false;
    if (!m_pendingOutputPath.isEmpty()) {
        // Written once: whatever comes of it, the path is used up.
        m_resultOutputs->writePendingOutput(image, m_pendingOutputPath);
        m_pendingOutputPath.clear();
    }
    // The nudge relays the main window out; on a later turn of the event loop, so that it and
    // the picture's first paint are not one long pause.
    QTimer::singleShot(0, this, &HalvernDesktopController::resizeFudge);
}

void HalvernDesktopController::imageCollage()
{
    m_collageMaker->imageCollage();
}

void HalvernDesktopController::update()
{
    m_imageBrowserController->reloadData();
    imageCollage();
}

void HalvernDesktopController::flipped()
{
    QTimer::singleShot(200, this, &HalvernDesktopController::update);
}

void HalvernDesktopController::scaleLayout()
{
    QTimer::singleShot(200, this, &HalvernDesktopController::update);
}

void HalvernDesktopController::showResultWindow()
{
    m_resultWindow->showResultWindow();
}

void HalvernDesktopController::resizeFudge()
{
    MainWindow &w = *m_mainWindow;
    if (w.isMaximized() || w.isFullScreen())
        return;
    w.resize(w.width() + 1, w.height());
    w.resize(w.width() - 1, w.height());
}

void HalvernDesktopController::displayResultForBlender(const QImage &image)
{
    // Framed off the window's thread; the sheet ends when the framed picture is there.
    m_tileAndBlend->frameForBlender(image, [this](const QImage &framed) {
        m_tileAndBlend->progressSheet().endSheet();
        if (framed.isNull()) {
            m_alerts.beep(); // no photo could be read
            return;
        }
        displayResult(framed, true);
    });
}

void HalvernDesktopController::initEditor()
{
    m_editorWindow = std::make_unique<ImageEditorWindow>(*m_imageBrowserController, m_defaults, m_resourcesFolder);
}

void HalvernDesktopController::doEdit() { m_editorWindow->doEdit(); }
void HalvernDesktopController::beginEditing() { m_editorWindow->beginEditing(); }
void HalvernDesktopController::switchToolMode(int index) { m_editorWindow->switchToolMode(index); }
void HalvernDesktopController::doZoomEditor(int index) { m_editorWindow->doZoomEditor(index); }
void HalvernDesktopController::openEditPanel() { m_editorWindow->openEditPanel(); }
void HalvernDesktopController::saveEditorImage() { m_editorWindow->saveEditorImage(); }
void HalvernDesktopController::insertEditorImage() { m_editorWindow->insertEditorImage(); }
void HalvernDesktopController::replaceEditorImage() { m_editorWindow->replaceEditorImage(); }
void HalvernDesktopController::closeNoSave() { m_editorWindow->closeNoSave(); }

void HalvernDesktopController::loadFlowerImages()
{
    QStringList paths;
    for (int i = 0; i <= 8; ++i)
        paths.append(QDir(m_resourcesFolder).filePath(QStringLiteral("flower-%1.jpg").arg(i)));
    m_imageBrowserController->addImagesWithPaths(paths);
}

void HalvernDesktopController::goHome()
{
    openLink(QUrl::fromLocalFile(QDir::homePath()), QStringLiteral("Your home folder"));
}

void HalvernDesktopController::goToWebsite()
{
    openLink(TessaryLinks::website(), QStringLiteral("The Tessary website"));
}

void HalvernDesktopController::halvernHelp()
{
    openLink(TessaryLinks::helpPage(m_resourcesFolder), QStringLiteral("Tessary Help"));
}

void HalvernDesktopController::openLink(const QUrl &link, const QString &what)
{
    if (QDesktopServices::openUrl(link))
        return;
    const QString address = link.isLocalFile() ? link.toLocalFile() : link.toDisplayString();
    doAlert(QStringLiteral("%1 could not be opened.").arg(what),
            QStringLiteral("No program is set up to open it (a web browser or file manager). Its address is:\n%1").arg(address),
            AlertPresenter::Style::Warning);
}

void HalvernDesktopController::connectActions()
{
    MainWindow &w = *m_mainWindow;
    const auto on = [&w, this](const char *name, auto slot) {
        if (QAction *a = w.action(QString::fromLatin1(name)))
            connect(a, &QAction::triggered, this, slot);
    };
    // Quitting closes the main window, which asks first about unsaved changes.
    on("quit", [this] { m_mainWindow->close(); });
    on("loadSampleFlowers", [this] { loadFlowerImages(); });
    on("loadFactoryPhotos", [this] { m_imageBrowserController->loadFactoryImages(); });
    ImageBrowserPanel &browser = w.imageBrowserPanel();
    on("addPhotos", [&browser] { browser.addPhotos(); });
    on("importTemplates", [this] { showLoadFileWindow(); });
    on("showTemplateWebviewWindow", [this] { showTemplateWebviewWindow(); });
    on("paste", [&browser] { browser.paste(); });
    on("removePhoto", [&browser] { browser.removeSelectedPhoto(); });
    on("editPhoto", [this] { doEdit(); });
    connect(&browser, &ImageBrowserPanel::editRequested, this, [this] { doEdit(); });
    on("clearAllImages", [&browser] { browser.clearAllImages(); });
    on("insertBlankImage", [&browser] { browser.insertBlankImage(); });
    on("preferences", [this] { showPreferences(); });
    on("welcome", [this] { showWelcomeWindow(); });
    on("showDefaultTemplate", [this] { m_mainWindow->templateTabView().showDefaultTemplate(); });
    on("smartAlignAll", [this] { m_imageBrowserController->imageAligmentSmartAll(); });
    on("help", [this] { halvernHelp(); });
    on("website", [this] { goToWebsite(); });
    on("imageCollage", [this] { imageCollage(); });
}
