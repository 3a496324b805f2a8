#include "widgets/ProgressSpinner.h"

#include <QPainter>

#include <algorithm>

namespace {
constexpr int kSpokes = 12;
}

ProgressSpinner::ProgressSpinner(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_timer.setInterval(80);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % kSpokes;
        update();
    });
}

void ProgressSpinner::startAnimation()
{
    m_timer.start();
    update();
}

void ProgressSpinner::stopAnimation()
{
    m_timer.stop();
    update();
}

void ProgressSpinner::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const double side = std::min(width(), height());
    p.translate(width() / 2.0, height() / 2.0);
    const QColor ink = palette().color(QPalette::WindowText);
    QPen pen(ink, std::max(2.0, side / 12.0), Qt::SolidLine, Qt::RoundCap);
    for (int i = 0; i < kSpokes; ++i) {
        // The newest spoke is darkest; the trail fades behind it. Stopped, all are faint.
        const int age = (m_step - i + kSpokes) % kSpokes;
        QColor c = ink;
        c.setAlphaF(isAnimating() ? std::max(0.15, 1.0 - age / double(kSpokes)) : 0.2);
        pen.setColor(c);
        p.setPen(pen);
        p.save();
        p.rotate(i * 360.0 / kSpokes);
        p.drawLine(QPointF(0, -side * 0.22), QPointF(0, -side * 0.44));
        p.restore();
    }
}
