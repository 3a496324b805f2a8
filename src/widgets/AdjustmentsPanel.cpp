#include "widgets/AdjustmentsPanel.h"

AdjustmentsPanel::AdjustmentsPanel(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Adjust"));
}

void AdjustmentsPanel::setPreviewSource(const QImage &proxy)
{
    m_source = proxy;
    reset();
}

void AdjustmentsPanel::reset()
{
    // Not built yet: no sliders; the preview is the source.
    m_adjustments = {};
    emit previewReady(m_source, m_adjustments);
}
