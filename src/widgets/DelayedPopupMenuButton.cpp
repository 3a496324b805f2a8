#include "widgets/DelayedPopupMenuButton.h"

#include <QDateTime>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>

DelayedPopupMenuButton::DelayedPopupMenuButton(const QString &text, QWidget *parent)
    : QPushButton(text, parent)
{
    setAutoDefault(false);
}

void DelayedPopupMenuButton::setMouseDownTime()
{
    m_mouseDownTime = QDateTime::currentMSecsSinceEpoch() / 1000.0;
}

void DelayedPopupMenuButton::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    setMouseDownTime();
    // A new timer for every press; an earlier one still fires.
    auto *timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &DelayedPopupMenuButton::handleTimer);
    connect(timer, &QTimer::timeout, timer, &QObject::deleteLater);
    timer->start(HoldMilliseconds);
    m_timer = timer;
    setDown(true);
}

void DelayedPopupMenuButton::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
}

void DelayedPopupMenuButton::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
}

void DelayedPopupMenuButton::handleTimer()
{
    if (m_menu)
        m_menu->deleteLater();
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("blendMenu"));
    menu->setToolTipsVisible(true);
    QAction *leftToRight = new QAction(tr("Blend Left to Right"), menu);
    connect(leftToRight, &QAction::triggered, this, &DelayedPopupMenuButton::blendLeftToRight);
    menu->addAction(leftToRight);
    QAction *bottomToTop = new QAction(tr("Blend Bottom to Top"), menu);
    connect(bottomToTop, &QAction::triggered, this, &DelayedPopupMenuButton::blendBottomToTop);
    menu->insertAction(leftToRight, bottomToTop);
    QAction *square = menu->addAction(tr("Blend Square"), this, &DelayedPopupMenuButton::blendSquare);
    square->setToolTip(tr("There must be enough images to make a perfect square: 4, 9 or 16"));
    m_menu = menu;
    // Above the button's top edge by 60 points, at its left edge.
    menu->popup(mapToGlobal(QPoint(0, -60)));
    setDown(false);
}
