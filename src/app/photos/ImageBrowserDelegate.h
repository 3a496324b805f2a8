#pragma once

#include <QColor>
#include <QStyledItemDelegate>

// Paints one photo of the browser's grid: the thumbnail fitted into its square with a thin
// outline, the photo's 1-based number in a small label at the square's top left corner, and
// the file name below. The selected photo sits on a dark red card with its name in bold white.
// A photo whose thumbnail is on its way shows a neutral "loading" card, one that cannot be
// read a crossed card.
class ImageBrowserDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    // The selection colour of the browser: a dark red.
    static QColor selectionColor() { return QColor::fromRgbF(0.5f, 0.0f, 0.0f, 1.0f); }
    static constexpr int kPadding = 6;
    static constexpr int kTitleHeight = 18;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The thumbnail's square inside a cell.
    static QRect thumbnailSquare(const QRect &cell);
};
