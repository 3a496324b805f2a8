#include "app/photos/ImageBrowserDelegate.h"

#include "images/UnreadablePhotos.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/photos/UnreadablePhotoMark.h"

#include <QPainter>
#include <QPainterPath>

namespace {

const QColor kOutline(0, 0, 0, 60);
const QColor kLoadingFill(226, 226, 226);
const QColor kLoadingMark(170, 170, 170);

// The placeholder card of a photo without thumbnail: 4:3 inside the square.
QRect cardRect(const QRect &square)
{
    const int h = square.width() * 3 / 4;
    return QRect(square.left(), square.top() + (square.height() - h) / 2, square.width(), h);
}

void paintLoading(QPainter *painter, const QRect &square, bool failed)
{
    // A photo that cannot be read gets the whole square, for the mark and its label.
    const QRect card = failed ? square : cardRect(square);
    painter->setPen(Qt::NoPen);
    painter->setBrush(kLoadingFill);
    painter->drawRoundedRect(card, 4, 4);
    if (failed) {
        UnreadablePhotoMark::paint(*painter, card, UnreadablePhotos::label());
        return;
    }
    // Three quiet dots.
    painter->setBrush(kLoadingMark);
    const int r = std::max(2, card.width() / 40);
    for (int i = -1; i <= 1; ++i)
        painter->drawEllipse(card.center() + QPoint(i * 4 * r, 0), r, r);
}

} // namespace

QRect ImageBrowserDelegate::thumbnailSquare(const QRect &cell)
{
    const int side = std::max(1, std::min(cell.width() - 2 * kPadding, cell.height() - 2 * kPadding - kTitleHeight));
    return QRect(cell.left() + (cell.width() - side) / 2, cell.top() + kPadding, side, side);
}

QSize ImageBrowserDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    const int side = std::max(option.decorationSize.width(), 16);
    return QSize(side + 2 * kPadding, side + 2 * kPadding + kTitleHeight);
}

void ImageBrowserDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect cell = option.rect.adjusted(1, 1, -1, -1);
    const bool selected = option.state & QStyle::State_Selected;
    if (selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(selectionColor());
        painter->drawRoundedRect(cell, 6, 6);
    }

    const QRect square = thumbnailSquare(option.rect);
    const auto *model = qobject_cast<const ImageBrowserModel *>(index.model());
    const QPixmap pixmap = model ? model->thumbnail(index.row()) : QPixmap();
    QRect picture = cardRect(square);
    if (!pixmap.isNull()) {
        QSize size = pixmap.size();
        size.scale(square.size(), Qt::KeepAspectRatio);
        picture = QRect(square.left() + (square.width() - size.width()) / 2,
                        square.top() + (square.height() - size.height()) / 2, size.width(), size.height());
        painter->drawPixmap(picture, pixmap);
        painter->setPen(QPen(selected ? QColor(255, 255, 255, 90) : kOutline, 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(QRectF(picture).adjusted(0.5, 0.5, -0.5, -0.5));
    } else {
        const bool failed = index.data(ImageBrowserModel::ThumbnailStateRole).toInt() == ImageBrowserModel::ThumbnailFailed;
        paintLoading(painter, square, failed);
        if (failed)
            picture = square;
    }

    // The number, in a small label at the picture's top left corner.
    QFont numberFont = option.font;
    numberFont.setPixelSize(11);
    painter->setFont(numberFont);
    const QString number = index.data(Qt::DisplayRole).toString();
    const QFontMetrics numberMetrics(numberFont);
    const QRect label(picture.left() + 2, picture.top() + 2, numberMetrics.horizontalAdvance(number) + 8,
                      numberMetrics.height() + 1);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(255, 255, 255, 215));
    painter->drawRoundedRect(label, 3, 3);
    painter->setPen(Qt::black);
    painter->drawText(label, Qt::AlignCenter, number);

    // A photo framed by hand: a small crop mark on a light plate at the top right corner.
    if (index.data(ImageBrowserModel::FramedRole).toBool()) {
        const int side = label.height();
        const QRectF plate(picture.right() - 1 - side, picture.top() + 2, side, side);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(255, 255, 255, 215));
        painter->drawRoundedRect(plate, 3, 3);
        const QRectF inner = plate.adjusted(side * 0.25, side * 0.25, -side * 0.25, -side * 0.25);
        const double arm = inner.width() * 0.35;
        painter->setPen(QPen(Qt::black, 1.5, Qt::SolidLine, Qt::FlatCap));
        painter->drawPolyline(QPolygonF({inner.topLeft() + QPointF(0, arm), inner.topLeft(), inner.topLeft() + QPointF(arm, 0)}));
        painter->drawPolyline(QPolygonF({inner.bottomRight() - QPointF(0, arm), inner.bottomRight(),
                                         inner.bottomRight() - QPointF(arm, 0)}));
        painter->drawPoint(inner.center());
    }

    // The file name below, 12 pixels, cut at the end when too long.
    QFont titleFont = option.font;
    titleFont.setPixelSize(12);
    titleFont.setBold(selected);
    painter->setFont(titleFont);
    painter->setPen(selected ? Qt::white : Qt::black);
    const QRect title(cell.left() + 4, square.bottom() + 2, cell.width() - 8, kTitleHeight);
    // Cut in the middle: names that share a beginning (a camera's "IMG_2041.jpg") stay apart.
    const QString name = index.data(ImageBrowserModel::TitleRole).toString();
    painter->drawText(title, Qt::AlignCenter, QFontMetrics(titleFont).elidedText(name, Qt::ElideMiddle, title.width()));
    painter->restore();
}
