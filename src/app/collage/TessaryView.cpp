#include "app/collage/TessaryView.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Log.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"
#include "model/CoordinateTransform.h"
#include "model/LayoutEngine.h"
#include "model/TileImageFitter.h"
#include "model/TileJumble.h"
#include "templates/TemplateSelection.h"
#include "templates/TemplateStore.h"
#include "app/collage/DragDropImageView.h"
#include "app/collage/TessaryDataView.h"
#include "app/collage/TessaryDocumentView.h"

#include <QFileInfo>
#include <QFuture>
#include <QHash>
#include <QLabel>
#include <QPointer>
#include <QResizeEvent>
#include <QSet>
#include <QThreadPool>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <optional>

// One picture to fit to its tile off the main thread. The placeholder picture is read on a
// worker too, once, and shared by its tiles.
struct TessaryView::FitJob {
    qsizetype index = 0;
    QString key;
    UIImage image;
    QFuture<UIImage> placeholder;
    TileLayout tile;
    PhotoFraming framing;

    QImage fitted() const
    {
        const UIImage source = image.isValid() ? image : placeholder.result();
        // In the screen's own format, so painting never converts it again.
        const QImage picture = TileImageFitter::fit(source, tile, framing).bestRepresentation();
        return picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    }
};

struct TessaryView::Private {
    Private(UserDefaults &defaults, ImageBrowserController &delegate, AlertPresenter &alerts, const QString &resourcesFolder)
        : defaults(defaults)
        , delegate(delegate)
        , alerts(alerts)
        , engine(LayoutEngine::defaultImagePathInFolder(resourcesFolder))
        , cache(&delegate, &photoWork)
        , loader(cache)
        , store(defaults)
        , selection(store, defaults)
    {
        loader.restoreFromUserDefaults(defaults);
        store.loadBuiltInTemplates(resourcesFolder);
        store.restoreUserTemplates();
        placeholder = QtConcurrent::run(&photoWork, &UIImage::initWithContentsOfFile, engine.defaultImage());
    }

    UserDefaults &defaults;
    ImageBrowserController &delegate;
    AlertPresenter &alerts;
    // Decodes and fits run on a pool of the view's own, not Qt's global one: Qt's own image
    // scaling and painting on the window's thread split their work over the global pool and
    // wait for it, so filling that pool with photo work would stall the window.
    QThreadPool photoWork;
    LayoutEngine engine;
    ImageCache cache;
    ImageCacheLoader loader;
    TemplateStore store;
    TemplateSelection selection;
    TileJumble jumble;
    QFuture<UIImage> placeholder;

    TessaryDocumentView *document = nullptr;
    CollageLayout layout;
    QList<TessaryDataView *> tiles;
    QStringList toolTips;
    // Tiles (by index) not yet showing their photo, and the uncached photos they wait for.
    QSet<qsizetype> unfilled;
    QHash<QString, QList<qsizetype>> waiting;
    // The fitted pictures of the current layout by fitKey: a relayout that leaves a tile's size
    // alone (a new selection, a swap, a photo added at the end) shows them again at once.
    QHash<QString, QImage> fitted;
    quint64 generation = 0;
    // Set when the fits asked for the current layout are no longer wanted (a new layout).
    std::shared_ptr<std::atomic_bool> fitsDropped = std::make_shared<std::atomic_bool>(false);

    int coordinateTransform = 0;
    int spacingType = 0;
    int imageFrameStyle = 0;
    std::function<std::pair<TemplateTable, qsizetype>()> rowProvider;

    // A framing being changed by hand: the tile, its reduced photo, the size the photo is fitted
    // to, and the framing as it was when the gesture began and as it is now.
    struct Framing {
        QPointer<TessaryDataView> tile;
        qint64 tag = -1;
        QImage source;
        QSizeF fitSize;
        PhotoFraming start;
        PhotoFraming current;
        // Whether the gesture moved the photo at all (an Alt+click alone frames nothing).
        bool changed = false;
    };
    std::optional<Framing> framing;
    // A zoom is stored once the wheel rests this long, so a turn of the wheel is one change.
    QTimer framingRest;
};

TessaryView::TessaryView(UserDefaults &defaults, ImageBrowserController &delegate, AlertPresenter &alerts,
                         const QString &resourcesFolder, QWidget *parent)
    : QScrollArea(parent)
    , d(std::make_unique<Private>(defaults, delegate, alerts, resourcesFolder))
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(false);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setMinimumSize(120, 120);
    d->document = new TessaryDocumentView;
    d->document->resize(0, 0);
    setWidget(d->document);

    connect(&d->loader, &ImageCacheLoader::imageReady, this, &TessaryView::photoReady);
    connect(&d->loader, &ImageCacheLoader::imageFailed, this, &TessaryView::photoFailed);
    connect(&delegate, &ImageBrowserController::photoChanged, this, &TessaryView::photoChanged);
    d->framingRest.setSingleShot(true);
    d->framingRest.setInterval(400);
    connect(&d->framingRest, &QTimer::timeout, this, &TessaryView::endFraming);
}

TessaryView::~TessaryView()
{
    *d->fitsDropped = true;
    d->photoWork.waitForDone();
    d->placeholder.waitForFinished();
}

LayoutEngine &TessaryView::layoutEngine() const { return d->engine; }
ImageCache &TessaryView::imageCache() const { return d->cache; }
ImageCacheLoader &TessaryView::imageCacheLoader() const { return d->loader; }
TemplateStore &TessaryView::templateStore() const { return d->store; }
TemplateSelection &TessaryView::templateSelection() const { return d->selection; }
ImageBrowserController &TessaryView::tessaryViewDelegate() const { return d->delegate; }
const TileJumble &TessaryView::tileJumble() const { return d->jumble; }
const CollageLayout &TessaryView::currentLayout() const { return d->layout; }
QWidget *TessaryView::documentView() const { return d->document; }
QList<TessaryDataView *> TessaryView::tiles() const { return d->tiles; }
QStringList TessaryView::toolTipStrings() const { return d->toolTips; }
bool TessaryView::allTilesFilled() const { return d->unfilled.isEmpty(); }
quint64 TessaryView::layoutGeneration() const { return d->generation; }
int TessaryView::coordinateTransform() const { return d->coordinateTransform; }
int TessaryView::spacingType() const { return d->spacingType; }
int TessaryView::imageFrameStyle() const { return d->imageFrameStyle; }
bool TessaryView::isJumbled() const { return d->jumble.isJumbled(); }

TessaryDataView *TessaryView::tileWithTag(qint64 tag) const
{
    for (TessaryDataView *tile : d->tiles)
        if (tile->tag() == tag)
            return tile;
    return nullptr;
}

QSizeF TessaryView::availableSize() const
{
    return QSizeF(contentsRect().size());
}

void TessaryView::setTemplateRowProvider(std::function<std::pair<TemplateTable, qsizetype>()> provider)
{
    d->rowProvider = std::move(provider);
}

QColor TessaryView::tessaryBackgroundColor() const { return d->document->backgroundColor(); }

void TessaryView::setTessaryBackgroundColor(const QColor &color)
{
    d->document->setBackgroundColor(color);
    emit tessaryBackgroundColorChanged(color);
}

bool TessaryView::saveImageCacheToUserDefaults()
{
    // Quitting waits for no decoding: what is in the cache now is what is saved.
    d->loader.cancelAll();
    return d->cache.saveImageCacheToUserDefaults(d->defaults);
}

// ---------------------------------------------------------------- layout

void TessaryView::setup()
{
    d->engine.setup(d->defaults, availableSize());
    d->document->resize(d->engine.contentSize().toSize());
}

void TessaryView::reloadData()
{
    if (!d->jumble.shouldRelayout(d->alerts))
        return;
    CollageLayout layout = d->engine.reloadData(d->defaults, &d->delegate);
    CoordinateTransform::applyCoordinateTransform(layout);
    applyLayout(std::move(layout));
}

void TessaryView::doChooseTemplate(TemplateTable table, qsizetype row)
{
    std::optional<CollageLayout> layout = d->selection.doChooseTemplate(table, row, d->engine, availableSize(), &d->delegate);
    // While jumbled the template is recorded but not shown (the user is told once).
    if (!layout || !d->jumble.shouldRelayout(d->alerts))
        return;
    CoordinateTransform::applyCoordinateTransform(*layout);
    applyLayout(std::move(*layout));
}

void TessaryView::applyLayout(CollageLayout layout)
{
    ++d->generation;
    // A framing gesture belongs to a tile of the layout going away.
    d->framingRest.stop();
    d->framing.reset();
    *d->fitsDropped = true;
    d->fitsDropped = std::make_shared<std::atomic_bool>(false);
    d->cache.removeUnlistedEntries();

    // The pictures on screen stand in for the same photos until their new fits arrive.
    const QHash<QString, QImage> previousFits = std::exchange(d->fitted, {});
    QHash<QString, QImage> interim;
    for (TessaryDataView *tile : std::as_const(d->tiles)) {
        // A stand-in is handed on too, so a fast series of relayouts (a live resize) never
        // blanks a tile whose new fit has not arrived yet.
        const QImage shown = tile->imageView()->shownImage();
        if (!shown.isNull())
            interim.insert(tile->imagePath(), shown);
        // A drop handler of this very tile may still be running: delete it later.
        tile->hide();
        tile->deleteLater();
    }
    d->tiles.clear();
    d->unfilled.clear();
    d->waiting.clear();

    d->layout = std::move(layout);
    // The photos the tiles show keep their decoded copies in the cache, so a relayout never
    // waits for them.
    QStringList shown;
    for (const TileLayout &tileLayout : d->layout.tiles) {
        if (!tileLayout.placeholder)
            shown.append(tileLayout.imagePath);
    }
    d->cache.setShownPaths(shown);
    d->document->setUpdatesEnabled(false);
    d->document->resize(d->layout.contentSize.toSize());

    QList<FitJob> jobs;
    jobs.reserve(qsizetype(d->layout.tiles.size()));
    for (const TileLayout &tileLayout : d->layout.tiles) {
        auto *tile = new TessaryDataView(tileLayout, this, double(d->layout.borderWidth), d->document);
        const qsizetype index = d->tiles.size();
        d->tiles.append(tile);
        d->unfilled.insert(index);
        FitJob job{index, QString(), UIImage(), d->placeholder, tileLayout, PhotoFraming()};
        if (!tileLayout.placeholder) {
            const std::optional<UIImage> cached = d->loader.imageForPath(tileLayout.imagePath);
            if (!cached && !d->loader.isLoading(tileLayout.imagePath)) {
                // Known not to load (and unchanged since): the tile says so, it is not loading.
                tile->imageView()->setUnreadable(d->cache.failureReason(tileLayout.imagePath));
                d->unfilled.remove(index);
                tile->show();
                continue;
            }
            if (!cached) {
                d->waiting[tileLayout.imagePath].append(index);
                tile->imageView()->setLoading(true);
                const QImage stand = interim.value(tileLayout.imagePath);
                if (!stand.isNull())
                    tile->imageView()->setInterimImage(stand);
                tile->show();
                continue;
            }
            job.image = *cached;
            job.framing = TileImageFitter::framingFor(tileLayout, d->cache);
        }
        job.key = TileImageFitter::fitKey(tileLayout, job.image, job.framing);
        const auto fitted = previousFits.constFind(job.key);
        if (fitted != previousFits.constEnd()) {
            tile->imageView()->setImage(*fitted);
            d->fitted.insert(job.key, *fitted);
            d->unfilled.remove(index);
            tile->show();
            continue;
        }
        tile->imageView()->setInterimImage(interim.value(tileLayout.imagePath));
        tile->show();
        jobs.append(std::move(job));
    }
    updateToolTips();
    d->document->setUpdatesEnabled(true);

    for (const FitJob &job : std::as_const(jobs))
        startFit(job);
    emit layoutChanged();
    if (d->unfilled.isEmpty())
        emit tilesFilled();
}

void TessaryView::photoReady(const QString &path)
{
    const QList<qsizetype> indexes = d->waiting.take(path);
    if (indexes.isEmpty())
        return;
    const std::optional<UIImage> image = d->cache.cachedImageForPath(path);
    if (!image) {
        // Changed again since: ask anew.
        d->waiting.insert(path, indexes);
        d->loader.imageForPath(path);
        return;
    }
    for (const qsizetype index : indexes) {
        const TileLayout &tile = d->layout.tiles.at(size_t(index));
        const PhotoFraming framing = TileImageFitter::framingFor(tile, d->cache);
        startFit({index, TileImageFitter::fitKey(tile, *image, framing), *image, d->placeholder, tile, framing});
    }
}

void TessaryView::startFit(const FitJob &job)
{
    // On the view's pool; the picture comes back on this thread, for the layout it was asked
    // for only, and not at all once the view is gone.
    const quint64 generation = d->generation;
    QtConcurrent::run(&d->photoWork, [job, dropped = d->fitsDropped] { return *dropped ? QImage() : job.fitted(); })
        .then(this, [this, job, generation](const QImage &image) {
            if (generation == d->generation)
                showFitted(job.index, job.key, image);
        });
}

void TessaryView::photoChanged(const QString &path)
{
    QList<qsizetype> indexes;
    for (qsizetype i = 0; i < d->tiles.size(); ++i) {
        const TileLayout &tile = d->layout.tiles.at(size_t(i));
        if (!tile.placeholder && tile.imagePath == path)
            indexes.append(i);
    }
    // A copy still in the cache is the file as it is (a change that left its date alone).
    if (indexes.isEmpty() || d->loader.imageForPath(path))
        return;
    if (!d->loader.isLoading(path)) {
        for (const qsizetype index : std::as_const(indexes))
            d->tiles.at(index)->imageView()->setUnreadable(d->cache.failureReason(path));
        return;
    }
    // The tiles keep their picture until the new one (or the failure) arrives.
    QList<qsizetype> &waiting = d->waiting[path];
    for (const qsizetype index : std::as_const(indexes)) {
        if (!waiting.contains(index))
            waiting.append(index);
        d->unfilled.insert(index);
    }
}

void TessaryView::showFitted(qsizetype index, const QString &key, const QImage &image)
{
    d->fitted.insert(key, image);
    d->tiles.at(index)->imageView()->setImage(image);
    tileFilled(index);
}

void TessaryView::photoFailed(const QString &path)
{
    // A photo that cannot be read shows the mark in its tile; it no longer counts as loading.
    const QString reason = d->cache.failureReason(path);
    for (const qsizetype index : d->waiting.take(path)) {
        d->tiles.at(index)->imageView()->setUnreadable(reason);
        tileFilled(index);
    }
}

void TessaryView::tileFilled(qsizetype index)
{
    if (d->unfilled.remove(index) && d->unfilled.isEmpty())
        emit tilesFilled();
}

void TessaryView::updateToolTips()
{
    d->toolTips.clear();
    const QStringList photos = d->delegate.pickedPhotos();
    for (TessaryDataView *tile : std::as_const(d->tiles)) {
        const qint64 n = tile->tag() + 1;
        const QString path = tile->tag() < photos.size() ? photos.at(tile->tag()) : d->engine.defaultImage();
        const QString tip = path.isEmpty() ? QString::number(n) : QFileInfo(path).fileName();
        d->toolTips.append(tip);
        tile->setToolTip(tip);

        // Black on a small light plate, so the number reads on dark photos too.
        auto *label = new QLabel(QString::number(n), tile);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        label->setStyleSheet(QStringLiteral("QLabel { color: black; background: rgba(255, 255, 255, 215);"
                                            " border-radius: 3px; padding: 0px 3px; }"));
        label->adjustSize();
        tile->setIndexLabel(label);
        label->show();
    }
}

// ---------------------------------------------------------------- framing by hand

bool TessaryView::beginFraming(TessaryDataView *tile)
{
    if (d->framing && d->framing->tile == tile)
        return true;
    endFraming();
    const qsizetype index = d->tiles.indexOf(tile);
    if (index < 0 || d->jumble.isJumbled())
        return false;
    const TileLayout &layout = d->layout.tiles.at(size_t(index));
    if (layout.placeholder)
        return false;
    const std::optional<UIImage> cached = d->cache.cachedImageForPath(layout.imagePath);
    if (!cached || !cached->isValid())
        return false;
    Private::Framing framing;
    framing.tile = tile;
    framing.tag = layout.tag;
    framing.source = cached->bestRepresentation();
    framing.fitSize = layout.imageSize;
    const QSizeF photo(framing.source.size());
    framing.start = framing.current = TileImageFitter::gestureStart(photo, layout, TileImageFitter::framingFor(layout, d->cache));
    d->framing = framing;
    tile->imageView()->setFramingPreview(framing.source, framing.current.cropRect(photo, framing.fitSize), framing.fitSize);
    return true;
}

void TessaryView::panFraming(const QPointF &delta)
{
    if (!d->framing || !d->framing->tile)
        return;
    Private::Framing &f = *d->framing;
    const QSizeF photo(f.source.size());
    const PhotoFraming next = f.start.panned(photo, f.fitSize, delta);
    f.changed = f.changed || !(next == f.current);
    f.current = next;
    f.tile->imageView()->setFramingPreview(f.source, f.current.cropRect(photo, f.fitSize), f.fitSize);
}

void TessaryView::zoomFraming(TessaryDataView *tile, const QPointF &position, double factor)
{
    if (!beginFraming(tile))
        return;
    Private::Framing &f = *d->framing;
    const QSizeF photo(f.source.size());
    const QPointF at = tile->imageView()->pointInPicture(position, f.fitSize);
    const PhotoFraming next = f.current.zoomedAbout(photo, f.fitSize, at, factor);
    f.changed = f.changed || !(next == f.current);
    f.current = f.start = next;
    tile->imageView()->setFramingPreview(f.source, f.current.cropRect(photo, f.fitSize), f.fitSize);
    d->framingRest.start();
}

void TessaryView::endFraming()
{
    d->framingRest.stop();
    if (!d->framing)
        return;
    const Private::Framing f = *std::exchange(d->framing, std::nullopt);
    if (f.tile)
        f.tile->imageView()->setFramingPreview(QImage(), QRectF(), QSizeF());
    // Stored with the photo; the photo list then has the collage laid out again.
    if (f.changed)
        d->delegate.setFramingAtIndex(f.tag, f.current);
}

void TessaryView::resetFraming(TessaryDataView *tile)
{
    d->framingRest.stop();
    if (d->framing && d->framing->tile == tile) {
        if (tile)
            tile->imageView()->setFramingPreview(QImage(), QRectF(), QSizeF());
        d->framing.reset();
    }
    if (tile && !tile->isPlaceholder())
        d->delegate.setFramingAtIndex(tile->tag(), PhotoFraming());
}

PhotoFraming TessaryView::framingInProgress() const
{
    return d->framing ? d->framing->current : PhotoFraming();
}

// ---------------------------------------------------------------- controls

void TessaryView::setCoordinateTransform(int transform)
{
    d->coordinateTransform = transform;
    d->engine.setCoordinateTransform(transform);
    if (CoordinateTransform::isValid(transform))
        emit coordinateTransformChanged(transform, CoordinateTransform::name(transform));
    reloadData();
}

void TessaryView::setSpacingType(int index)
{
    d->spacingType = index;
    d->engine.setSpacingType(index);
    reloadData();
}

void TessaryView::setImageFrameStyle(int index)
{
    d->imageFrameStyle = index;
    d->engine.setImageFrameStyle(index);
    reloadData();
}

void TessaryView::restoreControls(int transform, int spacingType, int imageFrameStyle)
{
    d->coordinateTransform = transform;
    d->engine.setCoordinateTransform(transform);
    d->spacingType = spacingType;
    d->engine.setSpacingType(spacingType);
    d->imageFrameStyle = imageFrameStyle;
    d->engine.setImageFrameStyle(imageFrameStyle);
    if (CoordinateTransform::isValid(transform))
        emit coordinateTransformChanged(transform, CoordinateTransform::name(transform));
}

void TessaryView::swapDataViewTagged(qint64 a, qint64 b)
{
    d->delegate.exchangeItem(a, b);
}

std::vector<QRectF> TessaryView::tileFrames() const
{
    std::vector<QRectF> frames;
    frames.reserve(d->layout.tiles.size());
    for (const TileLayout &tile : d->layout.tiles)
        frames.push_back(tile.frame);
    return frames;
}

void TessaryView::moveTiles(const std::vector<QRectF> &frames)
{
    for (size_t k = 0; k < frames.size() && k < size_t(d->tiles.size()); ++k) {
        d->layout.tiles[k].frame = frames[k];
        d->tiles.at(qsizetype(k))->setGeometry(frames[k].toRect());
    }
}

void TessaryView::jumble()
{
    std::vector<QRectF> frames = tileFrames();
    d->jumble.jumble(frames, QSizeF(d->document->size()));
    moveTiles(frames);
    emit jumbledChanged(true);
}

void TessaryView::jumbleTo(const QList<QRectF> &frames)
{
    std::vector<QRectF> current = tileFrames();
    d->jumble.jumble(current, QSizeF(d->document->size()));
    moveTiles(std::vector<QRectF>(frames.begin(), frames.end()));
    emit jumbledChanged(true);
}

void TessaryView::undojumble()
{
    if (!d->jumble.isJumbled())
        return;
    std::vector<QRectF> frames = tileFrames();
    d->jumble.undojumble(frames);
    moveTiles(frames);
}

void TessaryView::unjumble()
{
    const auto [table, row] = d->rowProvider ? d->rowProvider() : std::make_pair(TemplateTable::BuiltIn, qsizetype(-1));
    const bool chooseAgain = d->jumble.unjumble(d->defaults, row);
    emit jumbledChanged(false);
    if (chooseAgain)
        doChooseTemplate(table, row);
}

// ---------------------------------------------------------------- size

void TessaryView::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    frameDidChangeNotification();
}

void TessaryView::frameDidChangeNotification()
{
    qCInfo(lcTessary, "frameDidChangeNotification");
    if (!d->engine.frameSizeChanged(availableSize()))
        return;
    setup();
    reloadData();
    qCInfo(lcTessary, "HANDLED frameDidChangeNotification");
}
