#pragma once

#include "images/PhotoAdjustments.h"

#include <QDialog>
#include <QImage>

// The image editor's adjustments panel: a slider for each adjustment, a live preview computed
// off the main thread on a screen-sized copy of the photo, Reset and Apply.
class AdjustmentsPanel : public QDialog
{
    Q_OBJECT
public:
    explicit AdjustmentsPanel(QWidget *parent = nullptr);

    // The picture the live preview is computed on: a screen-sized copy of the edited photo.
    // Setting it resets the sliders.
    void setPreviewSource(const QImage &proxy);
    PhotoAdjustments adjustments() const { return m_adjustments; }
    // Every slider back to neutral; the preview shows the source again.
    void reset();

signals:
    // A preview of the source with these adjustments is ready (computed on a worker).
    void previewReady(const QImage &preview, const PhotoAdjustments &adjustments);
    // The user asked to apply the adjustments to the photo itself.
    void applyRequested(const PhotoAdjustments &adjustments);

private:
    QImage m_source;
    PhotoAdjustments m_adjustments;
};
