#pragma once

#include "foundation/BackgroundJob.h"
#include "model/CollageLayout.h"
#include "images/UnreadablePhotos.h"
#include "model/CollageRenderer.h"

#include <QImage>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

class PleaseWaitWindow;
class TessaryView;
class UserDefaults;

// Makes the collage picture for the result window: shows the please-wait window, waits one
// second so it and its spinner are drawn, then renders the current layout at the scale chosen
// from the photos and the free memory on a worker thread, the bar following the tiles drawn.
// The windows stay live throughout. A render that gives nothing only hides the please-wait
// window. Quitting (and destroying the maker) cancels a running render.
class CollageMaker : public QObject
{
    Q_OBJECT
public:
    struct Rendered {
        QImage image;
        // Photo pixels on one pixel of the picture, for its sharpest photo (0: unknown).
        double sharpest = 0.0;
        // The photos that could not be read: their tiles were left empty.
        QList<UnreadablePhotos::Photo> unreadable;
    };
    // Renders `layout` enlarged `scale` times; runs on a worker thread.
    using Renderer = std::function<CollageRenderer::Result(const CollageLayout &layout, qint64 scale,
                                                           const CollageRenderer::Options &options)>;

    CollageMaker(TessaryView &view, UserDefaults &defaults, PleaseWaitWindow &pleaseWait, QObject *parent = nullptr);
    ~CollageMaker() override;

    // For tests: another renderer, and another pause before the render (1000 ms).
    void setRenderer(Renderer renderer) { m_renderer = std::move(renderer); }
    void setDelay(int milliseconds) { m_delayMs = milliseconds; }

    bool isBusy() const { return m_busy; }
    // Quitting: a running render skips the tiles left, and no render starts from now on.
    void cancel() { m_canceled->store(true); }
    // The layout and options of the last picture made (for rendering it again for a page).
    const CollageLayout &madeLayout() const { return m_madeLayout; }
    const CollageRenderer::Options &madeOptions() const { return m_madeOptions; }

public slots:
    // Starts making the collage; ignored while one is being made.
    void imageCollage();

signals:
    // The render is starting (the result button hides) and has ended (whatever came of it).
    void started();
    void finished();
    // The picture, when the render gave one.
    void collageReady(const QImage &image, double sharpest);
    // After collageReady (or instead of it): photos that could not be read were left empty.
    // Sent once per collage, with all of them.
    void photosLeftEmpty(const QList<UnreadablePhotos::Photo> &photos);

private:
    void render();

    TessaryView &m_view;
    UserDefaults &m_defaults;
    PleaseWaitWindow &m_pleaseWait;
    Renderer m_renderer;
    int m_delayMs = 1000;
    bool m_busy = false;
    // The render runs on the job's own thread, never one of the global pool's: Qt's image scaling
    // and conversion split their work over the global pool and wait for it, so a render holding a
    // global thread while another job holds the other could wait for ever on a small machine.
    BackgroundJob m_job;
    CollageLayout m_rendering, m_madeLayout;
    CollageRenderer::Options m_renderingOptions, m_madeOptions;
    // Set when the maker goes (the program quits): a running render skips its remaining tiles.
    std::shared_ptr<std::atomic<bool>> m_canceled = std::make_shared<std::atomic<bool>>(false);
};
