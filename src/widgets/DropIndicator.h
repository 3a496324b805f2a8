#pragma once

class QColor;
class QRect;
class QWidget;

// Where a drag would land in a list, painted over the list's viewport after the items: an item
// dropped on is framed and tinted; a gap dropped into gets a bar across it, starting with a ring.
class DropIndicator
{
public:
    // The thickness of the bar in a gap.
    static constexpr int kLineWidth = 3;

    // Paints the target on the viewport: the item's rectangle when `on`, else the bar's (as
    // thick as kLineWidth across the gap, horizontal or vertical). An empty rectangle paints nothing.
    static void paint(QWidget *viewport, const QRect &rect, bool on, const QColor &color);
};
