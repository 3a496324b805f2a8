#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

// Proves that the main thread never freezes: a timer ticks every few milliseconds on the event
// loop and records the longest gap between two ticks. A gap much longer than the interval means
// the thread was busy with something else for that long.
class StallMeter : public QObject
{
    Q_OBJECT
public:
    explicit StallMeter(int intervalMs = 5, QObject *parent = nullptr);

    void start();
    void stop() { m_timer.stop(); }
    // The longest gap between two ticks since start, in milliseconds.
    qint64 longestGapMs() const { return m_longest; }
    qint64 ticks() const { return m_ticks; }

private:
    void tick();

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
    qint64 m_ticks = 0;
};
