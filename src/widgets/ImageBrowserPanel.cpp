#include "widgets/ImageBrowserPanel.h"

// Placeholder while the browser is being built.
struct ImageBrowserPanel::Private {
};

ImageBrowserPanel::ImageBrowserPanel(ImageBrowserController &, ImageCacheLoader &, UserDefaults &, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
}

ImageBrowserPanel::~ImageBrowserPanel() = default;
