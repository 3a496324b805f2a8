#include "app/result/ResultImageView.h"

#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace {

// Pictures above this many pixels get a reduced copy to draw from.
constexpr qint64 kPreviewAbovePixels = 4'000'000;
// The reduced copy's longer side: sharp on a large screen, quick to draw.
constexpr int kPreviewSide = 2560;

} // namespace

ResultImageView::ResultImageView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setObjectName(QStringLiteral("resultView"));
    setFrameShape(QFrame::NoFrame);
    setMinimumSize(200, 150);
    viewport()->setAutoFillBackground(false);
    connect(&m_previewJob, &BackgroundJob::finished, this, [this](const QVariant &preview, bool canceled) {
        if (canceled)
            return;
        m_preview = preview.value<QImage>();
        viewport()->update();
        emit previewUpdated();
    });
}

void ResultImageView::setImage(const QImage &image)
{
    m_image = image;
    m_preview = QImage();
    if (needsPreview()) {
        m_previewJob.start([image](BackgroundJob::Control &) {
            return QVariant(image.scaled(QSize(kPreviewSide, kPreviewSide), Qt::KeepAspectRatio, Qt::SmoothTransformation));
        });
    } else {
        m_previewJob.cancel();
        emit previewUpdated();
    }
    updateScrollBars();
    viewport()->update();
}

bool ResultImageView::needsPreview() const
{
    return !m_image.isNull() && qint64(m_image.width()) * m_image.height() > kPreviewAbovePixels;
}

void ResultImageView::setImageScaling(Scaling scaling)
{
    m_scaling = scaling;
    updateScrollBars();
    viewport()->update();
}

QRectF ResultImageView::pictureRect() const
{
    if (m_image.isNull())
        return QRectF();
    const QSizeF area = viewport()->size();
    QSizeF size = m_image.size();
    if (m_scaling == Scaling::ProportionallyDown && (size.width() > area.width() || size.height() > area.height()))
        size.scale(area, Qt::KeepAspectRatio);
    // Centred where it fits, scrolled where it does not.
    const double x = size.width() <= area.width() ? (area.width() - size.width()) / 2 : -horizontalScrollBar()->value();
    const double y = size.height() <= area.height() ? (area.height() - size.height()) / 2 : -verticalScrollBar()->value();
    return QRectF(QPointF(x, y), size);
}

void ResultImageView::updateScrollBars()
{
    const QSize area = viewport()->size();
    const bool scroll = m_scaling == Scaling::None && !m_image.isNull();
    const int overX = scroll ? std::max(0, m_image.width() - area.width()) : 0;
    const int overY = scroll ? std::max(0, m_image.height() - area.height()) : 0;
    horizontalScrollBar()->setRange(0, overX);
    horizontalScrollBar()->setPageStep(area.width());
    verticalScrollBar()->setRange(0, overY);
    verticalScrollBar()->setPageStep(area.height());
}

void ResultImageView::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), QColor(58, 60, 64));
    if (m_image.isNull()) {
        painter.setPen(QColor(190, 192, 196));
        painter.drawText(viewport()->rect(), Qt::AlignCenter, tr("No collage yet"));
        return;
    }
    const QRectF target = pictureRect();
    // A light chequerboard shows through a transparent collage.
    if (m_image.hasAlphaChannel()) {
        QPixmap checks(12, 12);
        checks.fill(QColor(248, 248, 248));
        QPainter c(&checks);
        c.fillRect(0, 0, 6, 6, QColor(230, 230, 230));
        c.fillRect(6, 6, 6, 6, QColor(230, 230, 230));
        c.end();
        painter.fillRect(target, QBrush(checks));
    }
    const bool reduced = target.width() < m_image.width() - 0.5;
    if (reduced && !m_preview.isNull() && target.width() <= m_preview.width() + 0.5) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(target, m_preview);
    } else {
        // At its own size, or reduced before the copy is ready: drawing costs the view's pixels.
        painter.setRenderHint(QPainter::SmoothPixmapTransform, reduced && m_preview.isNull() && !needsPreview());
        painter.drawImage(target, m_image);
    }
}

void ResultImageView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void ResultImageView::scrollContentsBy(int, int)
{
    viewport()->update();
}
