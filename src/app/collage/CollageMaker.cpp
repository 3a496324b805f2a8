#include "app/collage/CollageMaker.h"

#include "app/collage/PleaseWaitWindow.h"
#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "model/PhotoSharpness.h"
#include "model/RenderScale.h"
#include "app/collage/TessaryView.h"

#include <QCoreApplication>
#include <QTimer>

CollageMaker::CollageMaker(TessaryView &view, UserDefaults &defaults, PleaseWaitWindow &pleaseWait, QObject *parent)
    : QObject(parent)
    , m_view(view)
    , m_defaults(defaults)
    , m_pleaseWait(pleaseWait)
    , m_renderer([](const CollageLayout &layout, qint64 scale, const CollageRenderer::Options &options) {
        return CollageRenderer::renderScaled(layout, scale, options);
    })
{
    // Quitting gives a render up at once, rather than when the maker goes.
    if (QCoreApplication *app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, [canceled = m_canceled] { canceled->store(true); });
    // The tiles drawn so far, out of how many.
    connect(&m_job, &BackgroundJob::partialResult, this, [this](const QVariant &tiles) {
        const QVariantList doneOfTotal = tiles.toList();
        m_pleaseWait.setProgress(doneOfTotal.value(0).toInt(), doneOfTotal.value(1).toInt());
    });
    connect(&m_job, &BackgroundJob::finished, this, [this](const QVariant &result) {
        const Rendered rendered = result.value<Rendered>();
        m_pleaseWait.hidePleaseWaitWindow();
        m_busy = false;
        emit finished();
        if (!rendered.image.isNull()) {
            m_madeLayout = m_rendering;
            m_madeOptions = m_renderingOptions;
            emit collageReady(rendered.image, rendered.sharpest);
        }
        if (!rendered.unreadable.isEmpty())
            emit photosLeftEmpty(rendered.unreadable);
    });
}

CollageMaker::~CollageMaker()
{
    // The job waits for the render as it goes, which skips its remaining tiles.
    m_canceled->store(true);
}

void CollageMaker::imageCollage()
{
    if (m_busy)
        return;
    m_busy = true;
    m_pleaseWait.showPleaseWaitWindow();
    emit started();
    // One full second, so that the please-wait window and its spinner are on screen first.
    QTimer::singleShot(m_delayMs, this, &CollageMaker::render);
}

void CollageMaker::render()
{
    // Everything the worker needs, copied now: it never reads a widget.
    const CollageLayout layout = m_view.currentLayout();
    CollageRenderer::Options options;
    options.background = m_view.tessaryBackgroundColor();
    options.renderEmptyTiles = Preferences(m_defaults).renderEmptyTiles();
    const Renderer renderer = m_renderer;
    const auto canceled = m_canceled;
    options.cancelled = [canceled] { return canceled->load(); };
    m_rendering = layout;
    m_renderingOptions = options;
    qCInfo(lcTessary, "Rendering the collage: %d tiles", int(layout.tiles.size()));

    m_job.start([layout, options, renderer, canceled](BackgroundJob::Control &control) mutable {
        const qint64 scale = RenderScale::scaleFactor(RenderScale::freeMemoryMB(), layout.contentSize,
                                                      RenderScale::largestScaleFactor(layout));
        options.progress = [&control](int done, int total) { control.post(QVariantList{done, total}); };
        const CollageRenderer::Result result = renderer(layout, scale, options);
        if (canceled->load()) {
            // The program is quitting: the picture is not whole, and nobody waits for it.
            qCInfo(lcTessary, "The render was stopped before it was done");
            return QVariant::fromValue(Rendered());
        }
        for (const QString &warning : result.warnings)
            qCInfo(lcTessary, "%s", qUtf8Printable(warning));
        if (!result.ok() && !result.error.isEmpty())
            qCInfo(lcTessary, "%s", qUtf8Printable(result.error));
        Rendered rendered;
        rendered.image = result.image;
        rendered.unreadable = result.unreadable;
        if (!rendered.image.isNull())
            rendered.sharpest = PhotoSharpness::sharpest(layout, scale);
        return QVariant::fromValue(rendered);
    });
}
