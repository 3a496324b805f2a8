#pragma once

#include <QWidget>

#include <memory>

class ImageBrowserController;
class ImageBrowserListView;
class ImageBrowserModel;
class ImageCacheLoader;
class PhotoPreview;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QSlider;
class UserDefaults;

// The photo list side of the main window: the thumbnail grid in list order, the preview of the
// selected photo with its label and alignment controls, the number field and the zoom slider.
// It shows what the controller holds and forwards every edit to it.
class ImageBrowserPanel : public QWidget
{
    Q_OBJECT
public:
    // The zoom slider runs over 0 .. kZoomSteps for "IconSize" 0.0 .. 1.0, which spans
    // thumbnails from kSmallestIcon to kLargestIcon pixels.
    static constexpr int kZoomSteps = 100;
    static constexpr int kSmallestIcon = 64;
    static constexpr int kLargestIcon = 256;
    // The alignment pop-up's titles, in value order (the item's index is the alignment).
    static QStringList alignmentTitles();

    ImageBrowserPanel(ImageBrowserController &controller, ImageCacheLoader &loader, UserDefaults &defaults,
                      QWidget *parent = nullptr);
    ~ImageBrowserPanel() override;

    // The parts, for the main window and for tests.
    ImageBrowserListView &grid() const;
    ImageBrowserModel &model() const;
    PhotoPreview &preview() const;
    QLabel &imageLabel() const;
    QComboBox &alignmentPopUp() const;
    QPushButton &centerAllButton() const;
    QPushButton &fitAllButton() const;
    QLineEdit &numberField() const;
    QSlider &zoomSlider() const;
    QPushButton &insertBlankButton() const;
    QMenu &contextMenu() const;

    // Room for four columns of the smallest thumbnails beside the collage.
    QSize sizeHint() const override { return QSize(380, 760); }

public slots:
    // The menu actions of the main window.
    // Qt's own file dialog, window-modal, for several image files; they are added at the end.
    void addPhotos();
    // An image or file URLs from the clipboard, inserted at the selected photo; a beep when
    // the clipboard holds nothing usable.
    void paste();
    void removeSelectedPhoto();
    // Asks first ("Clear All Images"); only "Clear All" clears.
    void clearAllImages();
    void insertBlankImage();
    // The context menu's actions on the selected photo: reveal its folder in the file manager,
    // open it with its default application, duplicate it into the images folder.
    void selectInFinder();
    void doOpen();
    void doDuplicate();

signals:
    // A photo was double-clicked: it is to be opened in the image editor.
    void editRequested(qsizetype index);

private:
    void browserReloaded();
    void showSelection(qsizetype index, bool scroll);
    // The controls that act on the selected photo work only while there is one.
    void enableSelectionControls();
    void viewSelectionChanged();
    void previewChanged(const QString &path, int alignment);
    void imageReady(const QString &path);
    void zoomChanged(int value);
    void showContextMenu(const QPoint &position);
    QString selectedPath() const;

    struct Private;
    std::unique_ptr<Private> d;
};
