#include "app/editor/AdjustmentSlider.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionSlider>

namespace {

constexpr int kGrooveHeight = 4;

} // namespace

AdjustmentSlider::AdjustmentSlider(QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

void AdjustmentSlider::setGrooveColours(const QList<QColor> &colours)
{
    m_grooveColours = colours;
    update();
}

QSize AdjustmentSlider::sizeHint() const
{
    return QSlider::sizeHint().expandedTo(QSize(220, 0)) + QSize(0, 4);
}

QSize AdjustmentSlider::minimumSizeHint() const
{
    return QSlider::minimumSizeHint() + QSize(0, 4);
}

void AdjustmentSlider::paintEvent(QPaintEvent *)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    // The groove runs between the handle's centres at minimum and maximum.
    const int span = width() - handle.width();
    const int left = handle.width() / 2;
    const auto xFor = [&](int value) {
        return left + QStyle::sliderPositionFromValue(minimum(), maximum(), value, span, option.upsideDown);
    };
    const QRectF groove(left, height() / 2.0 - kGrooveHeight / 2.0, span, kGrooveHeight);

    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette &pal = palette();
    const bool enabled = isEnabled();
    p.setPen(QPen(pal.color(QPalette::Mid), 1));
    if (!m_grooveColours.isEmpty()) {
        QLinearGradient gradient(groove.topLeft(), groove.topRight());
        for (qsizetype i = 0; i < m_grooveColours.size(); ++i) {
            QColor c = m_grooveColours[i];
            if (!enabled)
                c.setAlphaF(0.35f);
            gradient.setColorAt(m_grooveColours.size() == 1 ? 0.0 : double(i) / (m_grooveColours.size() - 1), c);
        }
        p.setBrush(gradient);
        p.drawRoundedRect(groove, 2, 2);
    } else {
        p.setBrush(pal.color(QPalette::Button).darker(108));
        p.drawRoundedRect(groove, 2, 2);
        const int zero = xFor(qBound(minimum(), 0, maximum()));
        const int at = xFor(value());
        if (at != zero) {
            QColor fill = pal.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::Highlight);
            p.setPen(Qt::NoPen);
            p.setBrush(fill);
            p.drawRoundedRect(QRectF(std::min(zero, at), groove.top(), std::abs(at - zero), groove.height()), 2, 2);
        }
    }
    // A mark under the neutral point of a two-sided range.
    if (minimum() < 0 && maximum() > 0) {
        const int zero = xFor(0);
        p.setPen(QPen(pal.color(QPalette::Mid), 1));
        p.drawLine(QPointF(zero + 0.5, groove.bottom() + 3), QPointF(zero + 0.5, groove.bottom() + 6));
    }
    p.end();

    // The style's own handle over it, with its focus and hover looks.
    QPainter handlePainter(this);
    option.subControls = QStyle::SC_SliderHandle;
    style()->drawComplexControl(QStyle::CC_Slider, &option, &handlePainter, this);
}

void AdjustmentSlider::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        setValue(qBound(minimum(), 0, maximum()));
        event->accept();
        return;
    }
    QSlider::mouseDoubleClickEvent(event);
}
