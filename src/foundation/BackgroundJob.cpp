#include "BackgroundJob.h"

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

BackgroundJob::BackgroundJob(QObject *parent)
    : QObject(parent)
{
    m_pool.setMaxThreadCount(1);
}

BackgroundJob::~BackgroundJob()
{
    cancel();
    m_pool.waitForDone();
}

void BackgroundJob::start(Work work)
{
    cancel();
    const quint64 generation = ++m_generation;
    auto canceled = std::make_shared<std::atomic<bool>>(false);
    m_canceled = canceled;
    m_running = true;
    // The future is not kept: the reports and the result come back by queued calls.
    (void)QtConcurrent::run(&m_pool, [this, generation, canceled, work = std::move(work)] {
        Control control(this, generation, canceled);
        const QVariant result = work(control);
        deliver(generation, [this, result, canceled] {
            m_running = false;
            emit finished(result, canceled->load());
        });
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
