#pragma once

#include "app/MessageBoxAlertPresenter.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <memory>

class CollageDocumentActions;
class CompletionSound;
class ImageEditorWindow;
class CollageMaker;
class PleaseWaitWindow;
class PrintOutputs;
class ResultOutputs;
class ResultWindow;
class LoadFileSheet;
class PreferencesWindow;
class TemplateGalleryWindow;
class TileAndBlendActions;
class WelcomeSheet;
class ImageBrowserController;
class MainWindow;
class UserDefaults;

// The application's controller: it makes the main window and its panels over the store, runs
// the start-up order (wake-up, will-finish-launching, did-finish-launching), answers the menu
// items that are not any one panel's, and saves the background colour and the image cache when
// the application quits, however it quits.
class HalvernDesktopController : public QObject
{
    Q_OBJECT
public:
    HalvernDesktopController(UserDefaults &defaults, const QString &resourcesFolder, QObject *parent = nullptr);
    ~HalvernDesktopController() override;

    // Shows the main window and runs the launch steps, then opens the files given (openFiles).
    void launch(const QStringList &imageFiles = {});
    // Files opened with Tessary (at start or handed over by a later start): photos are added to
    // the photo list, templates files imported into "My Templates", the first collage document
    // opened; the window comes forward. Files that are not there are named in one alert.
    void openFiles(const QStringList &files);
    // Save Collage As…, Open Collage… and Open Recent.
    CollageDocumentActions &collageDocuments() const { return *m_collageDocuments; }
    // Saves what must survive the run. Safe to call more than once; the first call does it.
    void applicationWillTerminate();

    MainWindow &mainWindow() const { return *m_mainWindow; }
    ImageBrowserController &imageBrowserController() const { return *m_imageBrowserController; }
    MessageBoxAlertPresenter &alerts() { return m_alerts; }
    // The sound played when long work is done; silent where there is no audio.
    CompletionSound &harpSound() const { return *m_harpSound; }

    PreferencesWindow &preferencesWindow() const { return *m_preferencesWindow; }
    WelcomeSheet &welcomeWindow() const { return *m_welcomeWindow; }
    LoadFileSheet &loadFileWindow() const { return *m_loadFileWindow; }
    // The gallery sheet, from the gallery plugin; null until the gallery is first opened.
    TemplateGalleryWindow *templateWebviewWindow() const { return m_templateWebviewWindow; }

    void showPreferences();
    void showWelcomeWindow();
    // The load-file sheet, unless "DontShowAgain" is set: then the import starts at once.
    void showLoadFileWindow();
    // The public page of shared templates, in the default browser.
    void goToWebTemplates();
    // The template gallery sheet (the load-file sheet ends first), its page, zoom and end. The
    // first opening loads the gallery plugin; when it is missing, an alert says so.
    void showTemplateWebviewWindow();
    void reloadTemplateWebviewWindow();
    void zoomTemplateWebviewWindow();
    void endTemplateWebvieWindow();
    // A gallery link's templates, inserted before the selected row of "My Templates".
    void downloadTemplate(const QUrl &link);

    // Beeps, then shows an alert with the message, "OK" and the informative text on the main
    // window.
    void doAlert(const QString &message, const QString &informative, AlertPresenter::Style style);

    // Puts a rendered or blended picture into the result window, bringing the window forward
    // first when isButton is set.
    void displayResult(const QImage &image, bool isButton);
    // A blend's picture: framed by the matching margin (drawn off the window's thread), the
    // progress sheet ended, then shown.
    void displayResultForBlender(const QImage &image);
    // Tiling and the blend commands, with their sheets.
    TileAndBlendActions &tileAndBlendActions() const { return *m_tileAndBlend; }

    // The image editor (its work is the editor window's; these forward to it).
    ImageEditorWindow &editorWindow() const { return *m_editorWindow; }
    void initEditor();
    void doEdit();
    void beginEditing();
    void switchToolMode(int index);
    void doZoomEditor(int index);
    void openEditPanel();
    void saveEditorImage();
    void insertEditorImage();
    void replaceEditorImage();
    void closeNoSave();

    // The result window, its outputs and the collage maker.
    ResultWindow &resultWindow() const { return *m_resultWindow; }
    ResultOutputs &resultOutputs() const { return *m_resultOutputs; }
    PrintOutputs &printOutputs() const { return *m_printOutputs; }
    CollageMaker &collageMaker() const { return *m_collageMaker; }
    PleaseWaitWindow &pleaseWaitWindow() const { return *m_pleaseWaitWindow; }
    // Renders the collage and shows it in the result window.
    void imageCollage();
    // Reloads the photo list and the collage, then makes the collage.
    void update();
    // A flip or a scale change of the layout: update once the view has settled (0.2 s).
    void flipped();
    void scaleLayout();
    void showResultWindow();
    // The next result displayed is also written to this path as an LZW TIFF.
    void setPendingOutputPath(const QString &path) { m_pendingOutputPath = path; }
    QString pendingOutputPath() const { return m_pendingOutputPath; }
    // Widens the main window by one pixel and back, so it lays itself out again.
    void resizeFudge();

    void loadFlowerImages();
    void goHome();
    void goToWebsite();
    void halvernHelp();
    // Opens the link in the program the desktop has for it; where there is none, says that
    // `what` ("Tessary Help") could not be opened, with the address to open by hand.
    void openLink(const QUrl &link, const QString &what);

private:
    void awakeFromNib();
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    void connectActions();
    void connectTileAndBlend();
    void connectResultOutputs();
    // displayResult, knowing how sharp the picture's sharpest photo is (0: unknown).
    void showResult(const QImage &image, bool isButton, double sharpest);

    UserDefaults &m_defaults;
    QString m_resourcesFolder;
    MessageBoxAlertPresenter m_alerts;
    std::unique_ptr<ImageBrowserController> m_imageBrowserController;
    std::unique_ptr<MainWindow> m_mainWindow;
    CompletionSound *m_harpSound = nullptr;
    PreferencesWindow *m_preferencesWindow = nullptr;
    WelcomeSheet *m_welcomeWindow = nullptr;
    LoadFileSheet *m_loadFileWindow = nullptr;
    TemplateGalleryWindow *m_templateWebviewWindow = nullptr;
    CollageDocumentActions *m_collageDocuments = nullptr;
    TileAndBlendActions *m_tileAndBlend = nullptr;
    // A window of its own (no parent), so sheets on the main window do not block it; it goes
    // first, before the photo list it edits.
    std::unique_ptr<ImageEditorWindow> m_editorWindow;
    bool m_terminated = false;
    // The unsaved-changes question was answered: the window may close.
    bool m_closeAnswered = false;
    // Cleared when a result is shown and when a save completes.
    bool m_stitchInProgress = false;
    ResultWindow *m_resultWindow = nullptr;
    PleaseWaitWindow *m_pleaseWaitWindow = nullptr;
    CollageMaker *m_collageMaker = nullptr;
    ResultOutputs *m_resultOutputs = nullptr;
    PrintOutputs *m_printOutputs = nullptr;
    QString m_pendingOutputPath;
};
