#pragma once

#include "model/CollageDocument.h"
#include "model/CollageDocumentTracker.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class AlertPresenter;
class ImageBrowserController;
class MainWindow;
class QMenu;
class UserDefaults;

// File > Save Collage, Save Collage As…, Open Collage… and Open Recent: keeps the main window's whole collage
// in a ".tessary" document and brings one back as the current collage. The values are read from
// and set through the panels that hold them (the collage view and its control bar, the photo
// list, the template values in the store), so opening a document is the same as making those
// changes by hand. The window title names the current document and marks unsaved changes;
// before the collage with unsaved changes is replaced or the program quits, the person is
// asked whether to save them.
class CollageDocumentActions : public QObject
{
    Q_OBJECT
public:
    // The store key of the recent documents (newest first).
    static inline const QString kRecentKey = QStringLiteral("RecentCollageDocuments");
    static constexpr int kMaxRecent = 10;

    CollageDocumentActions(MainWindow &window, ImageBrowserController &browser, UserDefaults &defaults,
                           AlertPresenter &alerts, QObject *parent = nullptr);

    // The collage on screen as a document.
    CollageDocument currentCollage() const;
    // Writes the collage to path; on failure the user is told why and false is returned.
    bool saveCollage(const QString &path);
    // Reads the document and makes it the current collage. A refused document is reported and
    // leaves the collage as it was; photos that are missing are listed in one message and their
    // modules left empty.
    bool openCollage(const QString &path);

    // The dialogs (Qt's own, window-modal, never waited on).
    void saveCollageAs();
    void chooseCollageToOpen();
    // Saves the open document where it is; Save As when there is none.
    void saveCurrentCollage();
    // Opens the document once the current collage's unsaved changes are dealt with.
    void openCollageAskingFirst(const QString &path);
    // Runs then at once when nothing is unsaved; otherwise asks "Save", "Don't Save" or
    // "Cancel" on the window and runs it after a successful save or on "Don't Save". Cancel,
    // or a save that failed, runs nothing.
    void askToSaveChanges(const std::function<void()> &then);

    QString documentPath() const { return m_tracker.path(); }
    bool isModified() const { return m_tracker.isModified(); }
    QStringList recentDocuments() const;

signals:
    // The current document or its unsaved-changes state changed.
    void documentStateChanged();

private:
    void apply(const CollageDocument &document);
    void becomeCurrent(const QString &path);
    void addRecent(const QString &path);
    void rebuildRecentMenu();
    void collageChanged();
    void updateTitle();

    MainWindow &m_window;
    ImageBrowserController &m_browser;
    UserDefaults &m_defaults;
    AlertPresenter &m_alerts;
    QMenu *m_recentMenu = nullptr;
    CollageDocumentTracker m_tracker;
    bool m_applying = false;
    bool m_asking = false;
};
