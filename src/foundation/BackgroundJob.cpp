#include "BackgroundJob.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QThread>
#include <QtConcurrent/QtConcurrentRun>

#include <cmath>

// The job as the work sees it: a pointer cleared (under the lock) when the job goes, so that the
// work never posts to a job that is gone. A call posted before that is discarded with the job.
struct BackgroundJob::Link {
    QMutex mutex;
    BackgroundJob *job = nullptr;
};

void BackgroundJob::Control::setProgress(double fraction)
{
    if (std::abs(fraction - m_lastFraction) < 0.001 && fraction < 1.0)
        return;
    m_lastFraction = fraction;
    deliver(m_link, m_generation, [fraction](BackgroundJob &job) { emit job.progressChanged(fraction); });
}

void BackgroundJob::Control::setMessage(const QString &message)
{
    deliver(m_link, m_generation, [message](BackgroundJob &job) { emit job.messageChanged(message); });
}

void BackgroundJob::Control::post(const QVariant &partial)
{
    deliver(m_link, m_generation, [partial](BackgroundJob &job) { emit job.partialResult(partial); });
}

BackgroundJob::BackgroundJob(QObject *parent, Threads threads, Ending ending)
    : QObject(parent)
    , m_threads(ending == Ending::Drop ? Threads::SharedPool : threads)
    , m_ending(ending)
    , m_link(std::make_shared<Link>())
{
    m_link->job = this;
    m_pool.setMaxThreadCount(1);
}

BackgroundJob::~BackgroundJob()
{
    cancel();
    if (m_ending == Ending::Wait)
        waitForDone();
    const QMutexLocker lock(&m_link->mutex);
    m_link->job = nullptr;
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
    auto run = [link = m_link, generation, canceled, work = std::move(work)] {
        Control control(link, generation, canceled);
        const QVariant result = work(control);
        deliver(link, generation, [result, canceled](BackgroundJob &job) {
            job.m_running = false;
            emit job.finished(result, canceled->load());
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

void BackgroundJob::deliver(const std::shared_ptr<Link> &link, quint64 generation,
                            std::function<void(BackgroundJob &job)> report)
{
    // Queued to the job's thread and dropped there when newer work has started. Calls still
    // queued when the job is destroyed are discarded with it; none is queued after.
    const QMutexLocker lock(&link->mutex);
    BackgroundJob *job = link->job;
    if (!job)
        return;
    QMetaObject::invokeMethod(job, [job, generation, report = std::move(report)] {
        if (generation == job->m_generation)
            report(*job);
    }, Qt::QueuedConnection);
}
