#include "app/photos/PhotoPreview.h"

#include "images/UnreadablePhotos.h"
#include "app/photos/UnreadablePhotoMark.h"

#include <QPainter>

#include <algorithm>

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
    m_reason.clear();
    m_image = image;
    m_state = image.isNull() ? State::Empty : State::Shown;
    rescale();
    update();
}

void PhotoPreview::setLoading()
{
    m_reason.clear();
    m_image = QImage();
    m_scaled = QPixmap();
    m_state = State::Loading;
    update();
}

void PhotoPreview::setUnreadable(const QString &reason)
{
    m_image = QImage();
    m_scaled = QPixmap();
    m_reason = reason;
    m_state = State::Unreadable;
    setToolTip(reason);
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
    } else if (m_state == State::Unreadable) {
        // The mark in the upper part, the reason in words below it.
        const QRect inner = rect().adjusted(kMargin * 2, kMargin, -kMargin * 2, -kMargin);
        QFont font = painter.font();
        font.setPixelSize(12);
        painter.setFont(font);
        const QFontMetrics metrics(font);
        const QRect textBox = metrics.boundingRect(QRect(inner.left(), 0, inner.width(), inner.height()),
                                                   Qt::AlignHCenter | Qt::TextWordWrap, m_reason);
        const int textHeight = std::min(textBox.height(), inner.height() / 2);
        const QRect markArea(inner.left(), inner.top(), inner.width(), inner.height() - textHeight - kMargin);
        UnreadablePhotoMark::paint(painter, markArea, UnreadablePhotos::label());
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(QRect(inner.left(), inner.bottom() - textHeight, inner.width(), textHeight),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_reason);
    } else if (m_state == State::Loading) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(170, 170, 170));
        for (int i = -1; i <= 1; ++i)
            painter.drawEllipse(rect().center() + QPoint(i * 12, 0), 3, 3);
    }
}
