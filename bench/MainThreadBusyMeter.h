#pragma once

#include <QObject>
#include <QTimer>

#include <algorithm>
#include <ctime>

// Alongside the stall meter: the most CPU time the main thread itself spent between two of its
// ticks. A long stall with little CPU of its own means the thread was waiting for a core (the
// machine busy with other work), not busy with the window's work.
class MainThreadBusyMeter : public QObject
{
public:
    MainThreadBusyMeter()
    {
        m_timer.setInterval(2);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
            const double now = cpuMs();
            m_longest = std::max(m_longest, now - m_last);
            m_last = now;
        });
    }
    void start()
    {
        m_longest = 0;
        m_last = cpuMs();
        m_timer.start();
    }
    void stop() { m_timer.stop(); }
    double longestMs() const { return m_longest; }

private:
    static double cpuMs()
    {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
    }
    QTimer m_timer;
    double m_last = 0;
    double m_longest = 0;
};
