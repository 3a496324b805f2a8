#include "widgets/PhotoPreview.h"

#include <QPainter>

namespace {

constexpr int kMargin = 6;

} // namespace

PhotoPreview::PhotoPreview(QWidget *parent)
    : QWidget(parent)
{
    setMinimumSize(120, 90);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void PhotoPreview::setImage(const QImage &image)
{
    m_image = image;
    m_state = image.isNull() ? State::Empty : State::Shown;
    rescale();
    update();
}

void PhotoPreview::setLoading()
{
    m_image = QImage();
    m_scaled = QPixmap();
    m_state = State::Loading;
    update();
}

void PhotoPreview::clear()
{
    setImage(QImage());
}

void PhotoPreview::resizeEvent(QResizeEvent *)
{
    rescale();
}

void PhotoPreview::rescale()
{
    // Scaled once per size, not at every paint: the cache's copy is half a megapixel.
    const QSize room = rect().adjusted(kMargin, kMargin, -kMargin, -kMargin).size();
    if (m_image.isNull() || room.isEmpty()) {
        m_scaled = QPixmap();
        return;
    }
    m_scaled = QPixmap::fromImage(m_image.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void PhotoPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(palette().color(QPalette::Base).darker(104));
    painter.drawRoundedRect(card, 5, 5);
    if (m_state == State::Shown && !m_scaled.isNull()) {
        const QPoint origin((width() - m_scaled.width()) / 2, (height() - m_scaled.height()) / 2);
        painter.drawPixmap(origin, m_scaled);
    } else if (m_state == State::Loading) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(170, 170, 170));
        for (int i = -1; i <= 1; ++i)
            painter.drawEllipse(rect().center() + QPoint(i * 12, 0), 3, 3);
    }
}
