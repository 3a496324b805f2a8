#include "app/blend/TilingProgressIndicator.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

TilingProgressIndicator::TilingProgressIndicator(QWidget *parent)
    : QWidget(parent)
    , m_label(new QLabel(tr("Cutting into tiles…")))
    , m_bar(new QProgressBar)
    , m_spinner(new QProgressBar)
    , m_cancel(new QPushButton(tr("Cancel")))
{
    setObjectName(QStringLiteral("tilingProgress"));
    m_bar->setObjectName(QStringLiteral("tilingProgressIndicator"));
    m_bar->setRange(0, 100);
    m_bar->setFixedWidth(200);
    m_spinner->setObjectName(QStringLiteral("tilingProgressIndicator2"));
    m_spinner->setTextVisible(false);
    m_spinner->setFixedWidth(40);
    m_spinner->setRange(0, 1);
    m_cancel->setObjectName(QStringLiteral("tilingCancelButton"));
    m_cancel->setToolTip(tr("Stop after the tile being cut; the tiles made stay in the list"));
    connect(m_cancel, &QPushButton::clicked, this, &TilingProgressIndicator::cancelRequested);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 0);
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    layout->addWidget(m_spinner);
    layout->addWidget(m_cancel);
    hide();
}

void TilingProgressIndicator::begin()
{
    setPercent(0);
    m_spinner->setRange(0, 0);
    show();
    if (!m_active) {
        m_active = true;
        emit activeChanged(true);
    }
}

void TilingProgressIndicator::setPercent(double percent)
{
    m_percent = percent;
    m_bar->setValue(int(qBound(0.0, percent, 100.0)));
}

void TilingProgressIndicator::end()
{
    setPercent(0);
    m_spinner->setRange(0, 1);
    hide();
    if (m_active) {
        m_active = false;
        emit activeChanged(false);
    }
}
