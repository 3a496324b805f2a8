#include "widgets/FlowLayout.h"

#include <QWidget>

#include <algorithm>

FlowLayout::FlowLayout(QWidget *parent, int horizontalSpacing, int verticalSpacing, int maximumLines)
    : QLayout(parent)
    , m_horizontalSpacing(horizontalSpacing)
    , m_verticalSpacing(verticalSpacing)
    , m_maximumLines(std::max(1, maximumLines))
{
}

FlowLayout::~FlowLayout()
{
    while (QLayoutItem *item = takeAt(0))
        delete item;
}

void FlowLayout::addItem(QLayoutItem *item) { m_items.append(item); }
int FlowLayout::count() const { return int(m_items.size()); }
QLayoutItem *FlowLayout::itemAt(int index) const { return m_items.value(index); }

QLayoutItem *FlowLayout::takeAt(int index)
{
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

Qt::Orientations FlowLayout::expandingDirections() const { return {}; }
bool FlowLayout::hasHeightForWidth() const { return true; }

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

QSize FlowLayout::minimumSize() const
{
    // No narrower than the widest item, nor than the items need to fit on the lines allowed
    // (found by halving: fewer lines never need less width).
    int low = 0;
    int height = 0;
    for (const QLayoutItem *item : m_items) {
        if (!item->isEmpty()) {
            low = std::max(low, item->sizeHint().width());
            height = std::max(height, item->sizeHint().height());
        }
    }
    int high = std::max(low, sizeHint().width());
    while (low < high) {
        const int mid = (low + high) / 2;
        if (lines(mid).size() <= m_maximumLines)
            high = mid;
        else
            low = mid + 1;
    }
    const QMargins m = contentsMargins();
    return QSize(low + m.left() + m.right(), height + m.top() + m.bottom());
}

QSize FlowLayout::sizeHint() const
{
    // Everything on one line.
    int width = 0;
    int height = 0;
    for (const QLayoutItem *item : m_items) {
        if (item->isEmpty())
            continue;
        width += item->sizeHint().width() + (width > 0 ? m_horizontalSpacing : 0);
        height = std::max(height, item->sizeHint().height());
    }
    const QMargins m = contentsMargins();
    return QSize(width + m.left() + m.right(), height + m.top() + m.bottom());
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

QList<QList<QLayoutItem *>> FlowLayout::lines(int width) const
{
    QList<QList<QLayoutItem *>> result(1);
    int x = 0;
    for (QLayoutItem *item : m_items) {
        if (item->isEmpty())
            continue;
        const int w = item->sizeHint().width();
        if (!result.last().isEmpty() && x + m_horizontalSpacing + w > width) {
            result.append(QList<QLayoutItem *>());
            x = 0;
        }
        x += (result.last().isEmpty() ? 0 : m_horizontalSpacing) + w;
        result.last().append(item);
    }
    return result;
}

int FlowLayout::arrange(const QRect &rect, bool apply) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    // Split into lines first, so each line's items can be centred on its height.
    const QList<QList<QLayoutItem *>> rows = lines(area.width());
    int y = area.top();
    for (const QList<QLayoutItem *> &line : rows) {
        int lineHeight = 0;
        for (const QLayoutItem *item : line)
            lineHeight = std::max(lineHeight, item->sizeHint().height());
        int left = area.left();
        for (QLayoutItem *item : line) {
            const QSize hint = item->sizeHint();
            if (apply)
                item->setGeometry(QRect(QPoint(left, y + (lineHeight - hint.height()) / 2),
                                        QSize(std::min(hint.width(), area.width()), hint.height())));
            left += hint.width() + m_horizontalSpacing;
        }
        y += lineHeight + m_verticalSpacing;
    }
    const QMargins m = contentsMargins();
    return y - area.top() - m_verticalSpacing + m.top() + m.bottom();
}
