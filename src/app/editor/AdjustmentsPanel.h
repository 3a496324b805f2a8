#pragma once

#include "editor/PhotoAdjustments.h"
#include "foundation/BackgroundJob.h"

#include <QDialog>
#include <QImage>

#include <vector>

class QLabel;
class QProgressBar;
class QPushButton;
class QSlider;

// The image editor's adjustments panel: a tool window with a labelled slider for each
// adjustment in three groups (Light, Colour, Detail), Reset and Apply. Every slider change
// previews the adjustments on a screen-sized copy of the photo, computed on a worker; while one
// preview is being computed, further changes only mark that another is wanted, and when it
// finishes the latest values are computed next, so a fast drag never builds a backlog.
// Double-clicking a slider puts it back to neutral. Closing the panel (Escape, the window's
// close button) drops what was not applied: the sliders go back to neutral and the preview
// shows the photo again. After an Apply, the editor gives the panel the new photo's proxy.
class AdjustmentsPanel : public QDialog
{
    Q_OBJECT
public:
    explicit AdjustmentsPanel(QWidget *parent = nullptr);

    // The picture the live preview is computed on: a screen-sized copy of the edited photo.
    // Setting it resets the sliders.
    void setPreviewSource(const QImage &proxy);
    PhotoAdjustments adjustments() const { return m_adjustments; }
    // Moves the sliders to these values (clamped to their ranges) and previews them.
    void setAdjustments(const PhotoAdjustments &adjustments);
    // Every slider back to neutral; the preview shows the source again.
    void reset();
    // While the editor applies at full size: the controls are disabled and a busy bar shows.
    void setApplying(bool applying);
    // True while a preview is being computed on a worker.
    bool isPreviewing() const { return m_previewJob.isRunning(); }

    void reject() override;

signals:
    // A preview of the source with these adjustments is ready (computed on a worker).
    void previewReady(const QImage &preview, const PhotoAdjustments &adjustments);
    // The user asked to apply the adjustments to the photo itself.
    void applyRequested(const PhotoAdjustments &adjustments);

private:
    void showValues();
    void sliderChanged(int index, int value);
    void requestPreview();
    void startPreview();
    void previewFinished(const QVariant &preview);
    void updateButtons();

    QImage m_source;
    PhotoAdjustments m_adjustments;
    std::vector<QSlider *> m_sliders;
    std::vector<QLabel *> m_values;
    QPushButton *m_reset = nullptr;
    QPushButton *m_apply = nullptr;
    QProgressBar *m_busy = nullptr;
    bool m_applying = false;

    // The worker's preview: the adjustments it computes and the source generation it is for;
    // a result for an older source (or overtaken by a neutral preview) is not shown. One still
    // running when the panel goes finishes on its own copies and is dropped.
    BackgroundJob m_previewJob{nullptr, BackgroundJob::Threads::SharedPool, BackgroundJob::Ending::Drop};
    PhotoAdjustments m_running;
    quint64 m_runningEpoch = 0;
    quint64 m_epoch = 0;
    bool m_pending = false;
};
