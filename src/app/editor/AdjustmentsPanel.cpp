#include "app/editor/AdjustmentsPanel.h"

#include "app/editor/AdjustmentSlider.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

// One slider: the field it sets, its group, and its range in slider steps; a step is
// 1/`stepsPerUnit` of the field's unit.
struct Control {
    const char *key;
    const char *group;
    const char *label;
    const char *toolTip;
    double PhotoAdjustments::*field;
    int minimum;
    int maximum;
    int stepsPerUnit;
};

// Exposure moves in hundredths of a stop (shown as EV); the others in hundredths of their
// range, shown as -100..100 (sharpness 0..100).
const Control kControls[] = {
    {"exposure", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Light"), QT_TRANSLATE_NOOP("AdjustmentsPanel", "Exposure"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Brighten or darken the whole photo, in stops, as a longer or shorter exposure would"),
     &PhotoAdjustments::exposure, -400, 400, 100},
    {"brightness", "Light", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Brightness"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Lift or lower the midtones; black and white stay as they are"),
     &PhotoAdjustments::brightness, -100, 100, 100},
    {"contrast", "Light", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Contrast"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Spread the tones apart or draw them towards grey"),
     &PhotoAdjustments::contrast, -100, 100, 100},
    {"highlights", "Light", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Highlights"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Darken (to recover detail) or brighten the bright tones only"),
     &PhotoAdjustments::highlights, -100, 100, 100},
    {"shadows", "Light", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Shadows"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Open up or deepen the dark tones only"),
     &PhotoAdjustments::shadows, -100, 100, 100},
    {"saturation", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Colour"), QT_TRANSLATE_NOOP("AdjustmentsPanel", "Saturation"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Make colours stronger, or weaker down to black and white"),
     &PhotoAdjustments::saturation, -100, 100, 100},
    {"temperature", "Colour", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Temperature"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Warmer (towards yellow) or cooler (towards blue) light"),
     &PhotoAdjustments::temperature, -100, 100, 100},
    {"tint", "Colour", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Tint"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Correct a green or magenta cast"),
     &PhotoAdjustments::tint, -100, 100, 100},
    {"sharpness", QT_TRANSLATE_NOOP("AdjustmentsPanel", "Detail"), QT_TRANSLATE_NOOP("AdjustmentsPanel", "Sharpness"),
     QT_TRANSLATE_NOOP("AdjustmentsPanel", "Crisp up edges and fine detail"),
     &PhotoAdjustments::sharpness, 0, 100, 100},
};

QString valueText(const Control &control, int steps)
{
    if (control.field == &PhotoAdjustments::exposure) {
        const double stops = double(steps) / control.stepsPerUnit;
        return (steps > 0 ? QStringLiteral("+") : QString()) + QString::number(stops, 'f', 2) + QStringLiteral(" EV");
    }
    return (steps > 0 && control.minimum < 0 ? QStringLiteral("+") : QString()) + QString::number(steps);
}

} // namespace

AdjustmentsPanel::AdjustmentsPanel(QWidget *parent)
    : QDialog(parent, Qt::Tool)
{
    setObjectName(QStringLiteral("adjustmentsPanel"));
    setWindowTitle(tr("Adjust"));
    setModal(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(10);

    QGridLayout *grid = nullptr;
    const char *currentGroup = nullptr;
    int row = 0;
    QFontMetrics metrics(font());
    const int valueWidth = metrics.horizontalAdvance(QStringLiteral("+0.00 EV")) + 4;
    for (int i = 0; i < int(std::size(kControls)); ++i) {
        const Control &control = kControls[i];
        if (!currentGroup || qstrcmp(currentGroup, control.group) != 0) {
            currentGroup = control.group;
            auto *box = new QGroupBox(tr(control.group));
            grid = new QGridLayout(box);
            grid->setContentsMargins(12, 10, 12, 10);
            grid->setHorizontalSpacing(12);
            grid->setVerticalSpacing(6);
            grid->setColumnMinimumWidth(0, metrics.horizontalAdvance(tr("Temperature")) + 8);
            grid->setColumnStretch(1, 1);
            layout->addWidget(box);
            row = 0;
        }
        auto *slider = new AdjustmentSlider;
        slider->setObjectName(QLatin1String(control.key));
        slider->setRange(control.minimum, control.maximum);
        slider->setSingleStep(control.field == &PhotoAdjustments::exposure ? 5 : 1);
        slider->setPageStep(control.field == &PhotoAdjustments::exposure ? 50 : 10);
        slider->setToolTip(tr(control.toolTip) + tr(" (double-click to reset)"));
        if (control.field == &PhotoAdjustments::temperature)
            slider->setGrooveColours({QColor(0x3f7fd6), QColor(0xd8d8d8), QColor(0xe8a22c)});
        else if (control.field == &PhotoAdjustments::tint)
            slider->setGrooveColours({QColor(0x3fae4f), QColor(0xd8d8d8), QColor(0xc24fc2)});
        auto *label = new QLabel(tr(control.label));
        label->setBuddy(slider);
        auto *value = new QLabel(valueText(control, 0));
        value->setObjectName(QLatin1String(control.key) + QStringLiteral("Value"));
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setMinimumWidth(valueWidth);
        grid->addWidget(label, row, 0);
        grid->addWidget(slider, row, 1);
        grid->addWidget(value, row, 2);
        ++row;
        m_sliders.push_back(slider);
        m_values.push_back(value);
        connect(slider, &QSlider::valueChanged, this, [this, i](int v) { sliderChanged(i, v); });
    }

    m_busy = new QProgressBar;
    m_busy->setObjectName(QStringLiteral("applyingProgress"));
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    m_busy->setMaximumHeight(8);
    m_busy->setToolTip(tr("Applying the adjustments to the whole photo"));
    m_busy->hide();
    layout->addWidget(m_busy);

    auto *buttons = new QDialogButtonBox;
    m_reset = buttons->addButton(tr("Reset"), QDialogButtonBox::ResetRole);
    m_reset->setObjectName(QStringLiteral("resetAdjustments"));
    m_reset->setToolTip(tr("Put every slider back to neutral"));
    m_apply = buttons->addButton(tr("Apply"), QDialogButtonBox::ApplyRole);
    m_apply->setObjectName(QStringLiteral("applyAdjustments"));
    m_apply->setToolTip(tr("Apply the adjustments to the photo (can be undone)"));
    m_apply->setDefault(true);
    connect(m_reset, &QPushButton::clicked, this, &AdjustmentsPanel::reset);
    connect(m_apply, &QPushButton::clicked, this, [this] { emit applyRequested(m_adjustments); });
    layout->addStretch(1);
    layout->addSpacing(4);
    layout->addWidget(buttons);

    connect(&m_previewJob, &BackgroundJob::finished, this, &AdjustmentsPanel::previewFinished);
    updateButtons();
}

void AdjustmentsPanel::setPreviewSource(const QImage &proxy)
{
    m_source = proxy;
    ++m_epoch;
    reset();
}

void AdjustmentsPanel::setAdjustments(const PhotoAdjustments &adjustments)
{
    for (size_t i = 0; i < m_sliders.size(); ++i) {
        const Control &control = kControls[i];
        const double v = adjustments.*control.field;
        const int steps = std::isfinite(v) ? int(std::lround(std::clamp(v * control.stepsPerUnit, double(control.minimum), double(control.maximum)))) : 0;
        m_adjustments.*control.field = double(steps) / control.stepsPerUnit;
        const QSignalBlocker blocker(m_sliders[i]);
        m_sliders[i]->setValue(steps);
    }
    showValues();
    updateButtons();
    requestPreview();
}

void AdjustmentsPanel::reset()
{
    setAdjustments(PhotoAdjustments{});
}

void AdjustmentsPanel::reject()
{
    reset();
    QDialog::reject();
}

void AdjustmentsPanel::setApplying(bool applying)
{
    m_applying = applying;
    m_busy->setVisible(applying);
    for (QSlider *slider : m_sliders)
        slider->setEnabled(!applying);
    updateButtons();
}

void AdjustmentsPanel::showValues()
{
    for (size_t i = 0; i < m_sliders.size(); ++i)
        m_values[i]->setText(valueText(kControls[i], m_sliders[i]->value()));
}

void AdjustmentsPanel::sliderChanged(int index, int value)
{
    const Control &control = kControls[index];
    m_adjustments.*control.field = double(value) / control.stepsPerUnit;
    m_values[size_t(index)]->setText(valueText(control, value));
    updateButtons();
    requestPreview();
}

void AdjustmentsPanel::updateButtons()
{
    const bool neutral = m_adjustments.isNeutral();
    m_reset->setEnabled(!m_applying && !neutral);
    m_apply->setEnabled(!m_applying && !neutral && !m_source.isNull());
}

void AdjustmentsPanel::requestPreview()
{
    if (m_adjustments.isNeutral()) {
        // The source itself: shown at once, and any preview still running is out of date.
        ++m_epoch;
        m_pending = false;
        emit previewReady(m_source, m_adjustments);
        return;
    }
    if (m_source.isNull())
        return;
    if (m_previewJob.isRunning()) {
        m_pending = true;
        return;
    }
    startPreview();
}

void AdjustmentsPanel::startPreview()
{
    m_pending = false;
    m_running = m_adjustments;
    m_runningEpoch = m_epoch;
    const QImage source = m_source;
    const PhotoAdjustments adjustments = m_adjustments;
    m_previewJob.start([source, adjustments](BackgroundJob::Control &) { return QVariant(adjustments.applyTo(source)); });
}

void AdjustmentsPanel::previewFinished(const QVariant &preview)
{
    if (m_runningEpoch == m_epoch) {
        const QImage image = preview.value<QImage>();
        if (!image.isNull()) // null only when memory ran out: the last preview stays
            emit previewReady(image, m_running);
    }
    if (m_pending && m_running != m_adjustments && !m_adjustments.isNeutral())
        startPreview();
    m_pending = false;
}
