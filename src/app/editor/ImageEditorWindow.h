#pragma once

#include "app/MessageBoxAlertPresenter.h"
#include "editor/EditOperation.h"
#include "editor/EditedImageReader.h"
#include "editor/ImageEditorSession.h"

#include <QByteArray>
#include <QImage>
#include <QMainWindow>
#include <QPointer>
#include <QSize>

#include <functional>

class AdjustmentsPanel;
class BackgroundJob;
class EditDocument;
class EditorToolBar;
class ImageBrowserController;
class ImageEditorView;
class EditorSavePanel;
class QLabel;
class QProgressBar;
class QPushButton;
class QUndoStack;
class UserDefaults;

// The image editor: one photo of the list in its own window, with the tools (move, select,
// crop, rotate, annotate), the zoom steps, the adjustments panel and undo; the edited picture
// can be saved to a file, added to the list as a new photo or put in place of the photo it
// came from. Every edit is an operation on an undo stack; decoding, edits of big photos and
// encoding run off the main thread.
class ImageEditorWindow : public QMainWindow
{
    Q_OBJECT
public:
    // What the edited file is, for saving: its format and, for a JPEG, the quality it was
    // written with.
    using ImageProperties = EditedImageReader::Properties;

    ImageEditorWindow(ImageBrowserController &browser, UserDefaults &defaults, const QString &resourcesFolder,
                      QWidget *parent = nullptr);
    ~ImageEditorWindow() override;

    // Sets up the view: the move tool, zoom to fit.
    void initEditor();
    // Opens the browser's first selected photo (asking first when another one is open).
    void doEdit();
    // Loads editingURL into the view.
    void beginEditing();
    // From the tool table (0 move .. 4 annotate); other indexes are ignored.
    void switchToolMode(int index);
    // From the zoom table (0 out, 1 in, 2 actual size, 3 fit); other indexes are ignored.
    void doZoomEditor(int index);
    void openEditPanel();
    // Asks where to save (Qt's file dialog, on this window) and saves there.
    void saveEditorImage();
    // The save dialog's answer: writes the picture in the format and quality.
    void savePanelDidEnd(const QString &path, const QByteArray &format, int quality);
    void insertEditorImage();
    void replaceEditorImage();
    // Hides the window without asking; the edit stays.
    void closeNoSave();
    void windowDidResize();

    // --- For the controller and tests
    ImageEditorSession &session() { return m_session; }
    ImageEditorView &editorImageView() const { return *m_view; }
    EditDocument &document() const { return *m_document; }
    QUndoStack &undoStack() const { return *m_undoStack; }
    QLabel &cantEditImageTextField() const { return *m_cantEdit; }
    AdjustmentsPanel *editPanel() const { return m_editPanel; }
    EditorToolBar &toolBar() const { return *m_toolBar; }
    QPushButton &saveButton() const { return *m_saveButton; }
    QPushButton &insertButton() const { return *m_insertButton; }
    QPushButton &replaceButton() const { return *m_replaceButton; }
    const ImageProperties &editorImageProperties() const { return m_properties; }
    QByteArray editorImageUTType() const { return m_properties.format; }
    // The open save dialog, while it is open.
    EditorSavePanel *savePanel() const { return m_savePanel; }
    bool isLoading() const { return m_loading; }
    bool isWriting() const { return m_writing > 0; }
    // Whether the picture differs from the last one saved, inserted or loaded.
    bool hasUnsavedEdits() const;
    // Pushes an edit on the undo stack (what the tools and the panel do).
    void pushOperation(const EditOperation &operation);

signals:
    // beginEditing ended: the photo is on show, or the failure picture.
    void loaded(bool ok);
    // A save, insert or replace ended.
    void saved(const QString &path, bool ok);
    void inserted(const QString &path);
    void replaced(bool ok);

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *buildBottomBar();
    void buildActions();
    void showDocumentImage();
    void updateStatus();
    void updateTitle();
    void showCannotEdit(const QString &path);
    // Applies the current tool's pending edit, then runs `then` once the picture is worked out.
    void whenEditsDone(std::function<void()> then);
    // Writes the picture as a new PNG in the images folder, off the main thread.
    void writeEditedImage(std::function<void(const QString &path)> then);
    void previewAdjustments(const QImage &preview, const PhotoAdjustments &adjustments);
    void refreshPanelSource();
    void setEditingEnabled(bool enabled);
    void escapeCancels();
    void setWriting(bool writing);

    UserDefaults &m_defaults;
    QString m_resourcesFolder;
    MessageBoxAlertPresenter m_alerts;
    ImageEditorSession m_session;
    EditDocument *m_document;
    QUndoStack *m_undoStack;
    ImageEditorView *m_view;
    AdjustmentsPanel *m_editPanel = nullptr;
    // The screen-sized copy of the picture being made for the panel.
    QPointer<BackgroundJob> m_proxyJob;
    EditorSavePanel *m_savePanel = nullptr;
    ImageProperties m_properties;
    bool m_canEdit = false;
    bool m_loading = false;
    int m_writing = 0;
    quint64 m_loadGeneration = 0;

    EditorToolBar *m_toolBar = nullptr;
    QLabel *m_cantEdit = nullptr;
    QLabel *m_sizeLabel = nullptr;
    QLabel *m_zoomLabel = nullptr;
    QProgressBar *m_progress = nullptr;
    QPushButton *m_saveButton = nullptr;
    QPushButton *m_insertButton = nullptr;
    QPushButton *m_replaceButton = nullptr;
    QList<QWidget *> m_outputButtons;
};
