#include "app/StallMeter.h"

StallMeter::StallMeter(int intervalMs, QObject *parent)
    : QObject(parent)
{
    m_timer.setInterval(intervalMs);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &StallMeter::tick);
}

void StallMeter::start()
{
    m_longest = 0;
    m_ticks = 0;
    m_clock.start();
    m_last = 0;
    m_timer.start();
}

void StallMeter::tick()
{
    const qint64 now = m_clock.elapsed();
    m_longest = std::max(m_longest, now - m_last);
    m_last = now;
    ++m_ticks;
}
