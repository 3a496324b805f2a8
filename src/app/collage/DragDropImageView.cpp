#include "app/collage/DragDropImageView.h"

#include "foundation/KeyedArchiveNumber.h"
#include "foundation/Log.h"
#include "photos/ImageBrowserController.h"
#include "images/UnreadablePhotos.h"
#include "app/collage/TessaryDataView.h"
#include "app/collage/TessaryView.h"
#include "app/photos/UnreadablePhotoMark.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <qdrawutil.h>

#include <cmath>

namespace {

// The rounded outline of the tile, in this view's coordinates (the view may be inset).
QPainterPath tileOutline(const TessaryDataView *tile, const QPoint &offset)
{
    QPainterPath path;
    if (!tile || tile->computeCornerRadius() <= 0)
        return path;
    const double r = tile->computeCornerRadius();
    path.addRoundedRect(QRectF(QPointF(-offset), QSizeF(tile->size())), r, r);
    return path;
}

// The image drawn to cover `target`, cropped centred (a stand-in until the fitted one comes).
void drawCovering(QPainter &p, const QRectF &target, const QImage &image)
{
    const QSizeF source = image.size();
    if (source.isEmpty() || target.isEmpty())
        return;
    const QSizeF scaled = source.scaled(target.size(), Qt::KeepAspectRatioByExpanding);
    const QRectF sourceRect((scaled.width() - target.width()) * 0.5 * source.width() / scaled.width(),
                            (scaled.height() - target.height()) * 0.5 * source.height() / scaled.height(),
                            target.width() * source.width() / scaled.width(),
                            target.height() * source.height() / scaled.height());
    p.drawImage(target, image, sourceRect);
}

} // namespace

DragDropImageView::DragDropImageView(TessaryDataView *dataView)
    : QWidget(dataView)
    , m_dataView(dataView)
{
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

QString DragDropImageView::privateType()
{
    QString id = QGuiApplication::desktopFileName();
    if (id.isEmpty())
        id = QStringLiteral("org.tessary.Tessary");
    return QStringLiteral("application/x-") + id;
}

QMimeData *DragDropImageView::mimeDataForTag(qint64 tag)
{
    auto *data = new QMimeData;
    data->setData(privateType(), KeyedArchiveNumber::encode(tag));
    return data;
}

void DragDropImageView::setImage(const QImage &image)
{
    if (!m_unreadable.isEmpty())
        setUnreadable(QString());
    m_image = image;
    m_interim = QImage();
    m_loading = false;
    update();
}

void DragDropImageView::setInterimImage(const QImage &image)
{
    m_interim = image;
    update();
}

void DragDropImageView::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    update();
}

void DragDropImageView::setUnreadable(const QString &reason)
{
    m_unreadable = reason;
    if (!reason.isEmpty()) {
        m_image = QImage();
        m_interim = QImage();
        m_loading = false;
    }
    setToolTip(reason);
    update();
}

void DragDropImageView::setImageFrameStyle(int style)
{
    m_frameStyle = style;
    update();
}

bool DragDropImageView::canBeSourceOrDestination() const
{
    if (!m_dataView)
        return false;
    TessaryView *view = m_dataView->tessaryView();
    if (!view || m_dataView->isPlaceholder())
        return false;
    const qint64 tag = m_dataView->tag();
    const qsizetype count = view->tessaryViewDelegate().count();
    return count > 0 && tag >= 0 && tag < count;
}

bool DragDropImageView::performDragOperation(const QMimeData *data)
{
    if (!data || !data->hasFormat(privateType()) || !m_dataView)
        return true;
    const std::optional<qint64> source = KeyedArchiveNumber::decode(data->data(privateType()));
    TessaryView *view = m_dataView->tessaryView();
    if (!source || !view)
        return true;
    const qint64 s = *source;
    const qint64 t = m_dataView->tag();
    // The exchange relays the collage out: this tile is replaced (and deleted later), so
    // everything needed afterwards is held in locals.
    if (s != t) {
        view->swapDataViewTagged(t, s);
        qCInfo(lcTessary, "Item 1 = %ld", long(t + 1));
        qCInfo(lcTessary, "Item 2 = %ld", long(s + 1));
    }
    view->tessaryViewDelegate().selectIndex(s);
    return true;
}

void DragDropImageView::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    const QPoint offset = pos();
    // Square tiles need no clipping path (the common case, and the cheap one).
    const QPainterPath outline = tileOutline(m_dataView, offset);
    if (!outline.isEmpty())
        p.setRenderHint(QPainter::Antialiasing);
    // The fitted picture is drawn unscaled; the stand-in shows for a moment only, so it is
    // scaled the fast way.
    const QRectF bounds = rect();

    p.save();
    if (!outline.isEmpty())
        p.setClipPath(outline);
    if (!m_previewSource.isNull()) {
        // A framing being changed: the reduced photo's part, scaled into the picture's place.
        const QRectF target(QPointF((bounds.width() - m_previewSize.width()) * 0.5,
                                    (bounds.height() - m_previewSize.height()) * 0.5), m_previewSize);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(target, m_previewSource, m_previewCrop);
    } else if (!m_image.isNull()) {
        // Already fitted: centred, not scaled.
        p.drawImage(QPointF((bounds.width() - m_image.width()) * 0.5, (bounds.height() - m_image.height()) * 0.5), m_image);
    } else if (!m_interim.isNull()) {
        drawCovering(p, bounds, m_interim);
    } else if (!m_unreadable.isEmpty()) {
        UnreadablePhotoMark::paintField(p, bounds);
        UnreadablePhotoMark::paint(p, bounds, UnreadablePhotos::label());
    } else if (m_loading) {
        // Neutral loading look: a quiet grey field with three dots in the middle.
        p.fillRect(bounds, QColor(218, 218, 218));
        const double dot = std::clamp(std::min(bounds.width(), bounds.height()) * 0.05, 2.0, 6.0);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(168, 168, 168));
        const QPointF c = bounds.center();
        for (int i = -1; i <= 1; ++i)
            p.drawEllipse(QPointF(c.x() + i * dot * 3, c.y()), dot, dot);
    }
    p.restore();

    paintFrameStyle(p);

    // The tile's border lies over the photo, following the rounded corners.
    if (m_dataView && m_dataView->computeBorderWidth() > 0) {
        const double b = m_dataView->computeBorderWidth();
        const QRectF tileRect(-QPointF(offset), QSizeF(m_dataView->size()));
        QPainterPath outer = outline;
        if (outer.isEmpty())
            outer.addRect(tileRect);
        const double r = std::max(0.0, m_dataView->computeCornerRadius() - b);
        QPainterPath inner;
        inner.addRoundedRect(tileRect.adjusted(b, b, -b, -b), r, r);
        p.setRenderHint(QPainter::Antialiasing);
        p.fillPath(outer.subtracted(inner), m_dataView->tile().borderColor);
    }

    if (m_highlight) {
        p.setRenderHint(QPainter::Antialiasing, false);
        p.setPen(QPen(Qt::gray, 5));
        p.setBrush(Qt::NoBrush);
        p.drawRect(bounds);
    }
}

void DragDropImageView::paintFrameStyle(QPainter &p)
{
    const QRect r = rect();
    if (r.width() < 8 || r.height() < 8)
        return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, false);
    QPalette pal = palette();
    pal.setColor(QPalette::Light, QColor(250, 250, 250));
    pal.setColor(QPalette::Midlight, QColor(220, 220, 220));
    pal.setColor(QPalette::Mid, QColor(160, 160, 160));
    pal.setColor(QPalette::Dark, QColor(110, 110, 110));
    pal.setColor(QPalette::Shadow, QColor(40, 40, 40));
    switch (m_frameStyle) {
    case FramePhoto: {
        // A photo print: a thin dark edge with a soft shadow along the right and bottom.
        p.fillRect(QRect(r.left() + 3, r.bottom() - 2, r.width() - 3, 3), QColor(0, 0, 0, 90));
        p.fillRect(QRect(r.right() - 2, r.top() + 3, 3, r.height() - 3), QColor(0, 0, 0, 90));
        p.setPen(QPen(QColor(40, 40, 40), 1));
        p.setBrush(Qt::NoBrush);
        p.drawRect(r.adjusted(0, 0, -3, -3));
        break;
    }
    case FrameGrayBezel: {
        // A grey bezel sunk into the page.
        QPainterPath ring;
        ring.addRect(r);
        QPainterPath inner;
        inner.addRect(r.adjusted(4, 4, -4, -4));
        p.fillPath(ring.subtracted(inner), QColor(190, 190, 190));
        qDrawShadePanel(&p, r, pal, true, 1);
        qDrawShadePanel(&p, r.adjusted(3, 3, -3, -3), pal, true, 1);
        break;
    }
    case FrameGroove:
        // An etched line just inside the edge.
        qDrawShadeRect(&p, r.adjusted(1, 1, -1, -1), pal, true, 1, 0);
        break;
    case FrameButton:
        // A raised button bevel.
        qDrawShadePanel(&p, r, pal, false, 3);
        break;
    default:
        break;
    }
    p.restore();
}

void DragDropImageView::setFramingPreview(const QImage &source, const QRectF &crop, const QSizeF &fitSize)
{
    if (source.isNull() && !m_previewSource.isNull()) {
        // What the preview shows stays as the picture until the framed fit replaces it.
        QImage shown(m_previewSize.toSize(), QImage::Format_ARGB32_Premultiplied);
        if (!shown.isNull()) {
            shown.fill(Qt::transparent);
            QPainter p(&shown);
            p.setRenderHint(QPainter::SmoothPixmapTransform);
            p.drawImage(QRectF(QPointF(0, 0), m_previewSize), m_previewSource, m_previewCrop);
            p.end();
            m_image = shown;
        }
    }
    m_previewSource = source;
    m_previewCrop = crop;
    m_previewSize = fitSize;
    update();
}

QPointF DragDropImageView::pointInPicture(const QPointF &position, const QSizeF &fitSize) const
{
    return position - QPointF((width() - fitSize.width()) * 0.5, (height() - fitSize.height()) * 0.5);
}

void DragDropImageView::mousePressEvent(QMouseEvent *event)
{
    TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr;
    if (event->button() == Qt::LeftButton && (event->modifiers() & Qt::AltModifier) && view && m_dataView->isSelected()
        && canBeSourceOrDestination()) {
        // Alt+drag in the selected tile pans its photo instead of dragging the tile.
        m_panning = view->beginFraming(m_dataView);
        m_pressPosition = event->position().toPoint();
        m_pressed = false;
        event->accept();
        return;
    }
    m_pressed = event->button() == Qt::LeftButton && canBeSourceOrDestination();
    m_pressPosition = event->position().toPoint();
    QWidget::mousePressEvent(event);
}

void DragDropImageView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_panning && event->button() == Qt::LeftButton) {
        m_panning = false;
        if (TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr)
            view->endFraming();
        event->accept();
        return;
    }
    QWidget::mouseReleaseEvent(event);
}

void DragDropImageView::mouseDoubleClickEvent(QMouseEvent *event)
{
    TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr;
    if (event->button() == Qt::LeftButton && (event->modifiers() & Qt::AltModifier) && view && canBeSourceOrDestination()) {
        m_panning = false;
        view->resetFraming(m_dataView);
        event->accept();
        return;
    }
    QWidget::mouseDoubleClickEvent(event);
}

void DragDropImageView::wheelEvent(QWheelEvent *event)
{
    TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr;
    if (!(event->modifiers() & Qt::ControlModifier) || !view || !canBeSourceOrDestination()) {
        event->ignore(); // the collage scrolls
        return;
    }
    // One notch (120) zooms by a fifth; smooth wheels and touchpads by as much as they turned.
    const double factor = std::pow(1.2, event->angleDelta().y() / 120.0);
    view->zoomFraming(m_dataView, event->position(), factor);
    event->accept();
}

bool DragDropImageView::event(QEvent *event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto *gesture = static_cast<QNativeGestureEvent *>(event);
        TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr;
        if (gesture->gestureType() == Qt::ZoomNativeGesture && view && canBeSourceOrDestination()) {
            view->zoomFraming(m_dataView, gesture->position(), 1.0 + gesture->value());
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void DragDropImageView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_panning) {
        if (TessaryView *view = m_dataView ? m_dataView->tessaryView() : nullptr)
            view->panFraming(QPointF(event->position().toPoint() - m_pressPosition));
        event->accept();
        return;
    }
    if (!m_pressed || !(event->buttons() & Qt::LeftButton)
        || (event->position().toPoint() - m_pressPosition).manhattanLength() < QApplication::startDragDistance()) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    m_pressed = false;
    if (!m_dataView || !canBeSourceOrDestination())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(mimeDataForTag(m_dataView->tag()));
    const QImage picture = m_image.isNull() ? m_interim : m_image;
    if (!picture.isNull()) {
        const QPixmap pixmap = QPixmap::fromImage(picture.scaled(size().boundedTo(QSize(160, 160)), Qt::KeepAspectRatio,
                                                                 Qt::SmoothTransformation));
        drag->setPixmap(pixmap);
        drag->setHotSpot(QPoint(pixmap.width() / 2, pixmap.height() / 2));
    }
    drag->exec(Qt::CopyAction);
}

void DragDropImageView::dragEnterEvent(QDragEnterEvent *event)
{
    if (canBeSourceOrDestination() && event->mimeData()->hasFormat(privateType())
        && (event->possibleActions() & Qt::CopyAction)) {
        setHighlight(true);
        event->setDropAction(Qt::CopyAction);
        event->accept();
        return;
    }
    event->ignore();
}

void DragDropImageView::dragMoveEvent(QDragMoveEvent *event)
{
    if (m_highlight) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void DragDropImageView::dragLeaveEvent(QDragLeaveEvent *)
{
    setHighlight(false);
}

void DragDropImageView::dropEvent(QDropEvent *event)
{
    setHighlight(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // Placeholder tiles never accept; a drop sent anyway does nothing.
    if (!canBeSourceOrDestination())
        return;
    performDragOperation(event->mimeData());
}

void DragDropImageView::setHighlight(bool on)
{
    if (m_highlight == on)
        return;
    m_highlight = on;
    update();
}
