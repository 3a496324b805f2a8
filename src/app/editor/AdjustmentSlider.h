#pragma once

#include <QColor>
#include <QList>
#include <QSlider>

// A horizontal slider for one photo adjustment. The groove is filled from the neutral value
// (0, in the middle for two-sided ranges) to the handle, so it reads as "how far from
// untouched"; a colour adjustment can show its colours along the groove instead (cool to warm,
// green to magenta). Double-clicking puts the slider back to neutral.
class AdjustmentSlider : public QSlider
{
    Q_OBJECT
public:
    explicit AdjustmentSlider(QWidget *parent = nullptr);

    // Colours spread evenly along the groove, from minimum to maximum; empty for the plain
    // groove with the fill from neutral.
    void setGrooveColours(const QList<QColor> &colours);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    QList<QColor> m_grooveColours;
};
