#pragma once

#include <QLayout>
#include <QList>

// Lays its items out left to right and wraps onto a new line when the width runs out, so a
// bar of controls stays whole in a narrow window instead of overlapping or being cut off.
// Every item keeps its size hint; a line's items are centred vertically. The layout's height
// follows its width (height for width); its minimum width is the narrowest at which the items
// fit on the most lines allowed, so a window's minimum height stays small too.
class FlowLayout : public QLayout
{
public:
    explicit FlowLayout(QWidget *parent = nullptr, int horizontalSpacing = 6, int verticalSpacing = 4, int maximumLines = 4);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    int count() const override;
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;
    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect &rect) override;

private:
    // The visible items, line by line, for a width to fill.
    QList<QList<QLayoutItem *>> lines(int width) const;
    // Places the items in rect (only measures when apply is false); returns the height used.
    int arrange(const QRect &rect, bool apply) const;

    QList<QLayoutItem *> m_items;
    int m_horizontalSpacing;
    int m_verticalSpacing;
    int m_maximumLines;
};
