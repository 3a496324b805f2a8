#pragma once

#include "foundation/BackgroundJob.h"
#include "blend/PhotoBlender.h"
#include "blend/PhotoTiler.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QStringList>

#include <functional>

class AlertPresenter;
class ImageBrowserController;
class ProgressSheet;
class TileSheet;
class TilingProgressIndicator;
class UserDefaults;
class QWidget;

// The photo operations that are not layout: cutting the selected photo into tiles (the tile
// sheet, the tiling bar) and the three blend commands (their checks, the progress sheet, the
// blend as a background job, which the sheet's Abort cancels). The cut and the blend are the
// core's (PhotoTiler, PhotoBlender, UniformCropper); this class wires them to the windows.
class TileAndBlendActions : public QObject
{
    Q_OBJECT
public:
    TileAndBlendActions(UserDefaults &defaults, ImageBrowserController &browser, AlertPresenter &alerts,
                        QWidget *window, TilingProgressIndicator &tilingProgress, QObject *parent = nullptr);
    ~TileAndBlendActions() override;

    ProgressSheet &progressSheet() const { return *m_progressSheet; }
    TileSheet &tilePhotosWindow() const { return *m_tileSheet; }
    PhotoTiler &tiler() { return m_tiler; }
    BackgroundJob &blendJob() { return m_blendJob; }
    bool tilingInProgress() const { return m_tiler.tilingInProgress(); }
    // The photos of the last blend command, as the command took them from the list.
    QStringList filesToStitch() const { return m_filesToStitch; }
    // Where uniformly cropped copies go: a folder of Tessary's own in the temporary folder,
    // unless a test says otherwise.
    void setTemporaryFolder(const QString &folder) { m_temporaryFolder = folder; }

    // --- Tiling
    // Opens the tile sheet, unless a cut is running (then beeps).
    void showTilePhotosWindow();
    void endTilePhotosWindow();
    // Cuts the selected photo into the sheet's rows and columns in the background; the tiles
    // join the photo list as they are written.
    void tilePhotoFiles();

    // --- Blending
    void stitchLeftToRight();
    void stitchBottomToTop();
    void stitchSquare();
    // The command named left-to-right, bottom-to-top or square; false for another name.
    bool stitchNamed(const QString &name);
    // The sheet's Abort: the blend stops, the sheet ends, no picture comes.
    void abortStitch();
    // Stops the cut after its current tile; the tiles made stay in the list.
    void cancelTiling() { m_tiler.cancel(); }
    // Quitting: the blend, its framing and the cut stop as soon as they can; nothing more
    // comes of them.
    void cancelAllWork();
    // filesToStitch := its uniformly cropped copies ("UniformlyCrop", "UniformlyCropFit").
    void uniformlyCropImages();

    // The picture of a blend as the result window gets it, framed as BlendFrame says for the
    // preferences and the blend background colour; the margin and the colour are remembered.
    QImage insetForBlender(const QImage &image);
    // The same framing without holding up the window: the margin and the colour are taken and
    // remembered now, the picture is drawn on the blend's own thread (the progress sheet stays
    // up meanwhile) and handed to `done` on this thread; at once when there is no frame. An
    // Abort (or a new blend) drops it: `done` is then never called.
    void frameForBlender(const QImage &image, std::function<void(const QImage &framed)> done);
    int blendMatchingMargin() const { return m_blendMatchingMargin; }
    QColor blendBackgroundColor() const { return m_blendBackgroundColor; }
    // The colour of the blend background well.
    void setBackgroundColor(const QColor &color) { m_backgroundColor = color; }

signals:
    // A blend ended with this picture (null when no photo could be read).
    void blendFinished(const QImage &picture);

private:
    // Beeps or alerts when the blend cannot be made of the listed photos, else starts it.
    void stitchIfAllowed(PhotoBlender::Arrangement arrangement);
    void startStitch(PhotoBlender::Arrangement arrangement);

    UserDefaults &m_defaults;
    ImageBrowserController &m_browser;
    AlertPresenter &m_alerts;
    TilingProgressIndicator &m_tilingProgress;
    ProgressSheet *m_progressSheet;
    TileSheet *m_tileSheet;
    PhotoTiler m_tiler;
    BackgroundJob m_blendJob;
    // Framing a finished blend (frameForBlender), and who gets the framed picture.
    BackgroundJob m_frameJob;
    std::function<void(const QImage &)> m_framed;
    QStringList m_filesToStitch;
    QString m_temporaryFolder;
    QColor m_backgroundColor = Qt::white;
    QColor m_blendBackgroundColor = Qt::white;
    int m_blendMatchingMargin = 0;
};
