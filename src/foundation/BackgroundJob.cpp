#include "BackgroundJob.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

#include <cmath>

void BackgroundJob::Control::setProgress(double fraction)
{
    if (std::abs(fraction - m_lastFraction) < 0.001 && fraction < 1.0)
        return;
    m_lastFraction = fraction;
    m_job->deliver(m_generation, [job = m_job, fraction] { emit job->progressChanged(fraction); });
}

void BackgroundJob::Control::setMessage(const QString &message)
{
    m_job->deliver(m_generation, [job = m_job, message] { emit job->messageChanged(message); });
}

void BackgroundJob::Control::post(const QVariant &partial)
{
    m_job->deliver(m_generation, [job = m_job, partial] { emit job->partialResult(partial); });
}

BackgroundJob::BackgroundJob(QObject *parent, Threads threads)
    : QObject(parent)
    , m_threads(threads)
{
    m_pool.setMaxThreadCount(1);
}

BackgroundJob::~BackgroundJob()
{
    cancel();
    waitForDone();
}

bool BackgroundJob::waitForDone(int msecs)
{
    if (m_threads == Threads::Own)
        return m_pool.waitForDone(msecs);
    // Not the global pool's waitForDone: that waits for everyone's work.
    QDeadlineTimer deadline(msecs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(msecs));
    while (m_sharedRunning->load() > 0) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(1);
    }
    return true;
}

void BackgroundJob::start(Work work)
{
    cancel();
    const quint64 generation = ++m_generation;
    auto canceled = std::make_shared<std::atomic<bool>>(false);
    m_canceled = canceled;
    m_running = true;
    // The future is not kept: the reports and the result come back by queued calls.
    auto run = [this, generation, canceled, work = std::move(work)] {
        Control control(this, generation, canceled);
        const QVariant result = work(control);
        deliver(generation, [this, result, canceled] {
            m_running = false;
            emit finished(result, canceled->load());
        });
    };
    if (m_threads == Threads::Own) {
        (void)QtConcurrent::run(&m_pool, std::move(run));
        return;
    }
    ++*m_sharedRunning;
    (void)QtConcurrent::run(QThreadPool::globalInstance(), [running = m_sharedRunning, run = std::move(run)] {
        run();
        --*running;
    });
}

void BackgroundJob::cancel()
{
    if (m_canceled)
        m_canceled->store(true);
}

void BackgroundJob::deliver(quint64 generation, std::function<void()> report)
{
    // Queued to the owner's thread; dropped there when newer work has started. Calls still
    // queued when the job is destroyed are discarded with it.
    QMetaObject::invokeMethod(this, [this, generation, report = std::move(report)] {
        if (generation == m_generation)
            report();
    }, Qt::QueuedConnection);
}
