#include "widgets/TessaryView.h"

#include "foundation/AlertPresenter.h"
#include "foundation/UserDefaults.h"
#include "images/ImageBrowserController.h"
#include "images/ImageCache.h"
#include "images/ImageCacheLoader.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"

// Placeholder: the collage view is being built; this keeps the window assembling meanwhile.
struct TessaryView::Private {
    Private(UserDefaults &defaults, ImageBrowserController &delegate, const QString &resourcesFolder)
        : engine(LayoutEngine::defaultImagePathInFolder(resourcesFolder))
        , cache(&delegate)
        , loader(cache)
        , store(defaults)
        , selection(store, defaults)
    {
        store.loadBuiltInTemplates(resourcesFolder);
        store.restoreUserTemplates();
    }
    LayoutEngine engine;
    ImageCache cache;
    ImageCacheLoader loader;
    TemplateStore store;
    TemplateSelection selection;
    CollageLayout layout;
    QColor background;
    std::function<std::pair<TemplateTable, qsizetype>()> rowProvider;
};

TessaryView::TessaryView(UserDefaults &defaults, ImageBrowserController &delegate, AlertPresenter &alerts,
                         const QString &resourcesFolder, QWidget *parent)
    : QScrollArea(parent)
    , d(std::make_unique<Private>(defaults, delegate, resourcesFolder))
{
    Q_UNUSED(alerts);
}

TessaryView::~TessaryView() = default;

LayoutEngine &TessaryView::layoutEngine() const { return d->engine; }
ImageCache &TessaryView::imageCache() const { return d->cache; }
ImageCacheLoader &TessaryView::imageCacheLoader() const { return d->loader; }
TemplateStore &TessaryView::templateStore() const { return d->store; }
TemplateSelection &TessaryView::templateSelection() const { return d->selection; }
void TessaryView::setup() {}
void TessaryView::reloadData() { emit layoutChanged(); }
void TessaryView::doChooseTemplate(TemplateTable, qsizetype) {}
bool TessaryView::saveImageCacheToUserDefaults() { return true; }
const CollageLayout &TessaryView::currentLayout() const { return d->layout; }
void TessaryView::setTemplateRowProvider(std::function<std::pair<TemplateTable, qsizetype>()> provider)
{
    d->rowProvider = std::move(provider);
}
QColor TessaryView::tessaryBackgroundColor() const { return d->background; }
void TessaryView::setTessaryBackgroundColor(const QColor &color) { d->background = color; }
