#include "app/blend/TileAndBlendActions.h"

#include "app/blend/ProgressSheet.h"
#include "app/blend/TileSheet.h"
#include "foundation/AlertPresenter.h"
#include "foundation/ImagesFolder.h"
#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "blend/BlendFrame.h"
#include "blend/BlendPreferences.h"
#include "blend/BlendRefusal.h"
#include "blend/UniformCropper.h"
#include "foundation/UserDefaults.h"
#include "app/blend/TilingProgressIndicator.h"

#include <QDir>


TileAndBlendActions::TileAndBlendActions(UserDefaults &defaults, ImageBrowserController &browser,
                                         AlertPresenter &alerts, QWidget *window,
                                         TilingProgressIndicator &tilingProgress, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_browser(browser)
    , m_alerts(alerts)
    , m_tilingProgress(tilingProgress)
    , m_progressSheet(new ProgressSheet(window))
    , m_tileSheet(new TileSheet(window))
    // Framing draws the whole picture once more, with the window up (see BackgroundJob).
    , m_frameJob(nullptr, BackgroundJob::Threads::SharedPool)
    // The copies keep their photos' file names: a folder of Tessary's own in the temporary
    // folder, so that a photo kept in the temporary folder itself is never written over.
    , m_temporaryFolder(QDir::temp().filePath(QStringLiteral("Tessary-%1").arg(qEnvironmentVariable("USER", QStringLiteral("user")))))
{
    connect(m_tileSheet, &TileSheet::tilePhotoFiles, this, &TileAndBlendActions::tilePhotoFiles);
    connect(m_tileSheet, &TileSheet::endTilePhotosWindow, this, &TileAndBlendActions::endTilePhotosWindow);
    connect(&m_tiler, &PhotoTiler::tileWritten, this, [this](const QString &path, int done, int total) {
        m_tilingProgress.begin();
        m_tilingProgress.setPercent(double(done) / double(total) * 100.0);
        m_browser.insertImage(path);
    });
    connect(&m_tiler, &PhotoTiler::tilingFinished, &m_tilingProgress, &TilingProgressIndicator::end);

    connect(&m_tilingProgress, &TilingProgressIndicator::cancelRequested, this, &TileAndBlendActions::cancelTiling);

    ProgressSheet *sheet = m_progressSheet;
    connect(&m_blendJob, &BackgroundJob::messageChanged, sheet, &ProgressSheet::updateProgressMessage);
    connect(&m_blendJob, &BackgroundJob::progressChanged, sheet, &ProgressSheet::updateProgressBar);
    connect(&m_blendJob, &BackgroundJob::partialResult, sheet,
            [sheet](const QVariant &preview) { sheet->displayImage(preview.value<QImage>()); });
    connect(&m_blendJob, &BackgroundJob::finished, this, [this](const QVariant &picture, bool canceled) {
        if (!canceled)
            emit blendFinished(picture.value<QImage>());
    });
    connect(&m_frameJob, &BackgroundJob::finished, this, [this](const QVariant &picture, bool canceled) {
        auto done = std::exchange(m_framed, {});
        if (!canceled && done)
            done(picture.value<QImage>());
    });
    connect(sheet, &ProgressSheet::aborted, this, &TileAndBlendActions::abortStitch);
}

TileAndBlendActions::~TileAndBlendActions() = default;

void TileAndBlendActions::showTilePhotosWindow()
{
    if (tilingInProgress()) {
        m_alerts.beep();
        return;
    }
    m_tileSheet->open();
}

void TileAndBlendActions::endTilePhotosWindow()
{
    if (m_tileSheet->isVisible())
        m_tileSheet->reject();
    m_tilingProgress.end();
}

void TileAndBlendActions::tilePhotoFiles()
{
    if (m_tileSheet->isVisible())
        m_tileSheet->accept();
    m_tilingProgress.begin();
    // The selection and its file are read here, on the window's thread; the cut runs on the
    // tiler's.
    const qsizetype selected = m_browser.selection().selectedIndex();
    QString photo;
    if (selected >= 0 && selected < m_browser.count())
        photo = m_browser.imageBookmarks().pathAtIndex(selected);
    qCInfo(lcTessary, "Cutting %s into %d x %d tiles", qUtf8Printable(photo), m_tileSheet->cellRows(),
           m_tileSheet->cellColumns());
    m_tiler.tilePhotoFiles(ImagesFolder::path(), photo, m_tileSheet->cellRows(),
                           m_tileSheet->cellColumns());
}

void TileAndBlendActions::stitchLeftToRight()
{
    stitchIfAllowed(PhotoBlender::Arrangement::LeftToRight);
}

void TileAndBlendActions::stitchBottomToTop()
{
    stitchIfAllowed(PhotoBlender::Arrangement::BottomToTop);
}

void TileAndBlendActions::stitchSquare()
{
    stitchIfAllowed(PhotoBlender::Arrangement::Square);
}

void TileAndBlendActions::stitchIfAllowed(PhotoBlender::Arrangement arrangement)
{
    const BlendRefusal refusal = BlendRefusal::check(arrangement, m_browser.count());
    switch (refusal.kind) {
    case BlendRefusal::Kind::Beep:
        m_alerts.beep();
        return;
    case BlendRefusal::Kind::Alert:
        m_alerts.presentAlert(refusal.alert, {});
        return;
    case BlendRefusal::Kind::None:
        startStitch(arrangement);
        return;
    }
}

bool TileAndBlendActions::stitchNamed(const QString &name)
{
    if (name == QLatin1String("left-to-right"))
        stitchLeftToRight();
    else if (name == QLatin1String("bottom-to-top"))
        stitchBottomToTop();
    else if (name == QLatin1String("square"))
        stitchSquare();
    else
        return false;
    return true;
}

void TileAndBlendActions::startStitch(PhotoBlender::Arrangement arrangement)
{
    const QStringList files = m_browser.images().mid(0, PhotoBlender::photosUsed(arrangement, m_browser.count()));
    m_filesToStitch = files;
    m_frameJob.cancel(); // an earlier blend still being framed is given up
    m_framed = {};
    m_progressSheet->prepareForStitch();
    m_progressSheet->open();

    // Uniform cropping is part of the blend: the photos are brought to one size as they are
    // read, with no copies written.
    const PhotoBlender::Options options = BlendPreferences::options(m_defaults);
    qCInfo(lcTessary, "Blending %lld photos", static_cast<long long>(files.size()));
    m_blendJob.start([files, arrangement, options](BackgroundJob::Control &control) {
        PhotoBlender::Progress progress;
        progress.message = [&control](const QString &m) { control.setMessage(m); };
        progress.fraction = [&control](double f) { control.setProgress(f); };
        progress.image = [&control](const QImage &preview) { control.post(preview); };
        progress.canceled = [&control] { return control.isCanceled(); };
        const PhotoBlender::Outcome outcome = PhotoBlender::blend(files, arrangement, options, progress);
        if (outcome.canceled)
            qCInfo(lcTessary, "The blend was stopped before it was done");
        return QVariant(outcome.picture);
    });
}

void TileAndBlendActions::abortStitch()
{
    m_blendJob.cancel();
    m_frameJob.cancel();
    m_framed = {};
    m_progressSheet->endSheet();
}

void TileAndBlendActions::cancelAllWork()
{
    m_blendJob.cancel();
    m_frameJob.cancel();
    m_framed = {};
    m_tiler.cancel();
}

void TileAndBlendActions::uniformlyCropImages()
{
    const Preferences prefs(m_defaults);
    m_filesToStitch = UniformCropper::uniformlyCropImages(m_filesToStitch, prefs.uniformlyCrop(),
                                                          prefs.uniformlyCropFit(), m_temporaryFolder);
}

QImage TileAndBlendActions::insetForBlender(const QImage &image)
{
    const BlendFrame frame = BlendFrame::fromPreferences(m_defaults, m_backgroundColor);
    m_blendMatchingMargin = frame.matchingMargin;
    m_blendBackgroundColor = frame.background;
    return frame.applied(image);
}

void TileAndBlendActions::frameForBlender(const QImage &image, std::function<void(const QImage &)> done)
{
    const BlendFrame frame = BlendFrame::fromPreferences(m_defaults, m_backgroundColor);
    m_blendMatchingMargin = frame.matchingMargin;
    m_blendBackgroundColor = frame.background;
    if (!frame.framesAnything() || image.isNull()) {
        m_framed = {};
        m_frameJob.cancel();
        done(image);
        return;
    }
    // Drawing a large picture into its frame takes a good part of a second: on the blend's
    // side, never on the window's.
    m_framed = std::move(done);
    m_progressSheet->updateProgressMessage(tr("Framing the picture…"));
    m_frameJob.start([image, frame](BackgroundJob::Control &) { return QVariant(frame.applied(image)); });
}
