#pragma once

#include <QPointer>
#include <QPushButton>

#include <QMenu>
#include <QTimer>

// The blend button: a press, however short, opens the menu of the three blend commands 0.6
// seconds later ("Blend Bottom to Top", "Blend Left to Right", "Blend Square"). The hold timer
// is never cancelled and the button never sends an action of its own: releasing does nothing.
class DelayedPopupMenuButton : public QPushButton
{
    Q_OBJECT
public:
    static constexpr int HoldMilliseconds = 600;

    explicit DelayedPopupMenuButton(const QString &text, QWidget *parent = nullptr);

    // Time of the last press, in seconds since the epoch.
    double mouseDownTime() const { return m_mouseDownTime; }
    void setMouseDownTime();
    // The menu of the last hold (null before the first).
    QMenu *menu() const { return m_menu; }

    // The menu's commands.
    void blendLeftToRight() { emit stitchLeftToRight(); }
    void blendBottomToTop() { emit stitchBottomToTop(); }
    void blendSquare() { emit stitchSquare(); }

signals:
    void stitchLeftToRight();
    void stitchBottomToTop();
    void stitchSquare();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    void handleTimer();

    QPointer<QTimer> m_timer;
    QPointer<QMenu> m_menu;
    double m_mouseDownTime = 0;
};
