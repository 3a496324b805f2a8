#pragma once

#include "foundation/AlertPresenter.h"
#include "photos/TessaryViewDelegate.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class ImageBookmarks;
class ImageBrowserSelection;
class QImage;
class QMimeData;
class UserDefaults;

// The editor of the photo list. Every change of the list (insert, replace, remove, move, swap,
// paste, drop, realign) goes through here, then the browser and the collage view are reloaded,
// so that module i of the collage always shows photo i. It is the collage view's delegate.
//
// Widget-free: the window's grid binds to selection() and the signals; the collage view is
// reached through the reload callback. The command line and the tests drive it the same way.
class ImageBrowserController : public QObject, public TessaryViewDelegate
{
    Q_OBJECT
public:
    // Tells the preview which photo is selected now (previewChanged), at once: for a preview
    // that comes up after the selection was restored.
    void announcePreview();

    // Where a drop lands relative to the item at the drop index.
    enum DropOperation { DropOn = 0, DropBefore = 1 };

    // Loads the photo list (and the factory photos on the very first run).
    ImageBrowserController(UserDefaults &defaults, const QString &resourcesFolder, AlertPresenter &alerts,
                           QObject *parent = nullptr);
    ~ImageBrowserController() override;

    ImageBookmarks &imageBookmarks() const { return *m_imageBookmarks; }
    ImageBrowserSelection &selection() const { return *m_selection; }
    // Where the list's alerts and beeps go; the window asks its questions there too.
    AlertPresenter &alerts() const { return m_alerts; }
    // Called whenever the collage must be laid out again (the collage view's reloadData).
    void setCollageReloader(std::function<void()> reload) { m_reloadCollage = std::move(reload); }

    // --- The collage view's questions
    QStringList pickedPhotos() const override { return images(); }
    int alignmentIndexAtIndex(qsizetype index) const override;
    PhotoFraming framingAtIndex(qsizetype index) const override;
    qsizetype selectedItem() const override;
    void selectIndex(qsizetype index) override;
    void exchangeItem(qsizetype index, qsizetype withIndex) override;

    // --- Reading
    QStringList images() const;
    qsizetype count() const;
    bool hasImages() const { return count() > 0; }
    QString blankImage() const { return m_blankImage; }
    // The text beside the preview: "Image N" or one blank.
    QString imageLabelText() const;

    // --- Start and end
    // Selects item 0, then the stored selection when there is one, and stores it.
    void setInitialSelection();
    // Ends the file watches and stores the selection.
    void appWillTerminate();
    void saveSelection();

    // --- Editing
    void insertImage(const QString &path, qsizetype index);
    // At the selected item, or at 0 when nothing is selected.
    void insertImage(const QString &path);
    void replaceImage(const QString &path, qsizetype index);
    void insertBlankImage();
    void addImagesWithPaths(const QStringList &paths);
    void loadFactoryImages();
    void clearImages();
    // Removes the entries, highest index first, and selects the lowest index removed. Files in
    // the images folder go with their entries unless keepFiles is set.
    void removeItemsAtIndexes(const QList<qsizetype> &indexes, bool keepFiles = false);
    // A reordering drag inside the browser: the first index is moved before the destination,
    // or swapped with the item under it; the dragged photo stays selected at its new place.
    // False (and no change) for indexes outside the list.
    bool moveItemsAtIndexes(const QList<qsizetype> &indexes, qsizetype destination, DropOperation operation);
    // The alignment pop-up: sets the selected photo's alignment.
    void imageAligmentDidChange(int alignment);
    void imageAligmentCenterAll();
    void imageAligmentFitAll();
    // Every photo Smart-aligned (the menu's "Smart-Align All").
    void imageAligmentSmartAll();
    // A photo framed by hand in its tile (a null framing ends it); the collage is laid out again.
    void setFramingAtIndex(qsizetype index, const PhotoFraming &framing);
    // The number typed into the selection field (1-based); false when it was not a number in range.
    bool selectItemNumber(const QString &text);
    // Copies the photo's file into the images folder under a fresh "<UUID>.png" name (the bytes
    // as they are, whatever their format) and inserts the copy at the selected item. The copy's
    // path, or empty when there was nothing to copy or the copy failed (silently).
    QString duplicateImage(qsizetype index);

    // --- Clipboard and drops
    // An image on the clipboard is saved into the images folder and inserted; otherwise the
    // first local file is inserted. Returns false when there was nothing usable.
    bool paste(const QMimeData &clipboard);
    // A drop from another program: local files, or image data (written into the images folder).
    // The files are placed a moment later, so the drag source can finish first; returns false
    // when the drop carries nothing usable.
    bool performDragOperation(const QMimeData &data, qsizetype dropIndex, DropOperation operation);
    // Places files at the drop index: before it (each at the same index, so several files end
    // up in reverse order) or on it (each replacing the entry in turn).
    void processDroppedFiles(const QStringList &paths);

    // --- Helpers
    // Beeps, then shows an alert with the message, "OK" and the informative text.
    void doAlert(const QString &message, const QString &informative, AlertPresenter::Style style);

    // Reloads the browser and the collage, then applies the pending selection.
    void reloadData();

signals:
    // The list changed: the grid reloads its items.
    void browserReloaded();
    // A second after the selection settled: the preview shows the file (empty: nothing) and
    // the alignment pop-up shows its alignment.
    void previewChanged(const QString &path, int alignment);
    // The selected photo's alignment was changed by "centre all" or "fit all".
    void selectedAlignmentChanged(int alignment);
    // The file of a listed photo was changed, replaced or deleted by another program: its
    // thumbnail and its tiles are to be made again (they may find it unreadable now).
    void photoChanged(const QString &path);

private:
    void selectionDidChange();
    void photoFileChanged(const QString &path);
    void refreshPreview();
    void deleteIfOwned(const QString &oldPath);
    void setPendingSelection(qsizetype index) { m_pendingSelection = index; }
    void reloadCollage();
    QStringList filesFromMimeData(const QMimeData &data) const;
    void doConcludeDragOperation();

    UserDefaults &m_defaults;
    AlertPresenter &m_alerts;
    ImageBookmarks *m_imageBookmarks;
    ImageBrowserSelection *m_selection;
    std::function<void()> m_reloadCollage;
    QString m_blankImage;
    qsizetype m_pendingSelection = -1;
    bool m_reloading = false;
    QTimer m_previewTimer;

    DropOperation m_dropOperation = DropBefore;
    qsizetype m_dropIndex = 0;
    QStringList m_droppedFiles;
};
