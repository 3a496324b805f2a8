#pragma once

#include <QStyledItemDelegate>

// Paints one row of a template table: the thumbnail scaled into the row (its height is the row
// height, so at the slider's scale), centred, on the selection colour when selected. A row whose
// thumbnail is still being decoded shows a soft placeholder card; a template without one shows
// an empty row.
class TemplateThumbnailDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
