#pragma once

#include <QWidget>

#include <memory>

class ImageBrowserController;
class ImageCacheLoader;
class UserDefaults;

// The photo list side of the main window: the thumbnail grid in list order, the preview of the
// selected photo with its label and alignment controls, the number field and the zoom slider.
// It shows what the controller holds and forwards every edit to it.
class ImageBrowserPanel : public QWidget
{
    Q_OBJECT
public:
    ImageBrowserPanel(ImageBrowserController &controller, ImageCacheLoader &loader, UserDefaults &defaults,
                      QWidget *parent = nullptr);
    ~ImageBrowserPanel() override;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
