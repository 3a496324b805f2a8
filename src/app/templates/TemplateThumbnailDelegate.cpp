#include "app/templates/TemplateThumbnailDelegate.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStyle>

void TemplateThumbnailDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    // The row background and selection as the style draws them, without text or icon.
    opt.text.clear();
    opt.icon = QIcon();
    opt.features &= ~QStyleOptionViewItem::HasDecoration;
    const QWidget *widget = option.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &opt, painter, widget);

    const QRectF area = QRectF(option.rect).adjusted(4, 2, -4, -2);
    if (area.width() < 2 || area.height() < 2)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const QVariant decoration = index.data(Qt::DecorationRole);
    if (!decoration.isValid()) {
        // Still decoding: a quiet card of the row's size.
        const double side = std::min(area.width(), area.height() * 1.5);
        QRectF card(0, 0, side, area.height());
        card.moveCenter(area.center());
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(0, 0, 0, 18));
        painter->drawRoundedRect(card, 4, 4);
    } else {
        const QImage image = decoration.value<QImage>();
        if (!image.isNull()) {
            QSizeF size = QSizeF(image.size()).scaled(area.size(), Qt::KeepAspectRatio);
            QRectF target(QPointF(), size);
            target.moveCenter(area.center());
            painter->drawImage(target, image);
        }
    }
    painter->restore();
}

QSize TemplateThumbnailDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QVariant hint = index.data(Qt::SizeHintRole);
    if (hint.isValid())
        return hint.toSize();
    return QStyledItemDelegate::sizeHint(option, index);
}
