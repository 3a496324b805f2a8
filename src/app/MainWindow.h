#pragma once

#include <QMainWindow>

#include <functional>

class CollageControlBar;
class ImageBrowserController;
class ImageBrowserPanel;
class MessageBoxAlertPresenter;
class QAction;
class TemplateActions;
class TemplateTabView;
class TessaryView;
class TilingProgressIndicator;
class UserDefaults;

// The main window: the image browser, the collage view with its control bar, and the template
// tabs, side by side, under the menus. It only assembles the panels and wires them to each
// other; every action is forwarded to the panel or controller that owns the work.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow(UserDefaults &defaults, ImageBrowserController &browser, MessageBoxAlertPresenter &alerts,
               const QString &resourcesFolder, QWidget *parent = nullptr);
    ~MainWindow() override;

    TessaryView &tessaryView() const { return *m_tessaryView; }
    ImageBrowserPanel &imageBrowserPanel() const { return *m_browserPanel; }
    TemplateTabView &templateTabView() const { return *m_templateTabs; }
    CollageControlBar &controlBar() const { return *m_controlBar; }
    // Importing, clearing and the template tables' contextual menus.
    TemplateActions &templateActions() const { return *m_templateActions; }
    // The tiling bar and spinner, in the status bar while a photo is cut into tiles.
    TilingProgressIndicator &tilingProgress() const { return *m_tilingProgress; }

    // The menu actions by their object name ("addPhotos", "quit", ...), for the controller
    // and for tests.
    QAction *action(const QString &name) const;

    // The size the window opens at when nothing fits better (a large screen's first start).
    static constexpr QSize kPreferredSize{1280, 800};

    // Asked before the window closes: true lets it close now; false keeps it open (the guard
    // asks the person and closes the window again once answered).
    void setCloseGuard(std::function<bool()> guard) { m_closeGuard = std::move(guard); }

signals:
    // The window is closing: the application saves and quits.
    void closing();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildMenus();
    // The transform, spacing type, frame style and template tab as last left, and each kept as
    // it changes.
    void restoreCollageControls();

    UserDefaults &m_defaults;
    ImageBrowserController &m_browser;
    TessaryView *m_tessaryView;
    ImageBrowserPanel *m_browserPanel;
    TemplateTabView *m_templateTabs;
    CollageControlBar *m_controlBar;
    TemplateActions *m_templateActions;
    TilingProgressIndicator *m_tilingProgress;
    std::function<bool()> m_closeGuard;
};
