#include "app/collage/TessaryDocumentView.h"

#include <QPaintEvent>
#include <QPainter>

TessaryDocumentView::TessaryDocumentView(QWidget *parent)
    : QWidget(parent)
{
}

void TessaryDocumentView::setBackgroundColor(const QColor &color)
{
    m_background = color;
    update();
}

void TessaryDocumentView::paintEvent(QPaintEvent *event)
{
    if (m_background.alpha() == 0)
        return;
    QPainter p(this);
    p.fillRect(event->rect(), m_background);
}
