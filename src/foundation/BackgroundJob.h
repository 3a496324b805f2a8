#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QVariant>

#include <atomic>
#include <functional>
#include <memory>

// One piece of long work (a blend, a tiling) run on a thread of the job's own, reporting to the
// thread that owns the job by signal: its progress, a message line, partial results and, at the
// end, its result. The work is a function of a Control, through which it reports and learns that
// it was cancelled; it copies what it needs and never reads a widget.
//
// cancel() asks the running work to stop; the work sees it at its next check and returns, and
// finished() still comes, with `canceled` set. A new start() while work runs cancels that work
// and drops its later reports, so a window never hears from work it gave up; the new work begins
// once the old has returned. The destructor cancels and waits, so quitting never leaves work
// behind. By default the job's thread is its own, never one of the global pool's: Qt's image
// operations split their work over that pool and wait for it, so the work goes faster. The
// window's own painting waits on that pool too, behind all of those pieces: work that paints or
// scales a large picture while the window is up runs on a thread of the global pool instead
// (SharedPool), where Qt keeps its operations on the one thread, and the window's pieces find
// the rest of the pool free.
class BackgroundJob : public QObject
{
    Q_OBJECT
public:
    class Control
    {
    public:
        bool isCanceled() const { return m_canceled->load(); }
        // The flag itself, for code that polls an atomic (a loop over tiles).
        const std::atomic<bool> *canceledFlag() const { return m_canceled.get(); }
        // 0 .. 1; reported only when it moved by a thousandth or more.
        void setProgress(double fraction);
        void setMessage(const QString &message);
        void post(const QVariant &partial);

    private:
        friend class BackgroundJob;
        Control(BackgroundJob *job, quint64 generation, std::shared_ptr<std::atomic<bool>> canceled)
            : m_job(job), m_generation(generation), m_canceled(std::move(canceled))
        {
        }
        BackgroundJob *m_job;
        quint64 m_generation;
        std::shared_ptr<std::atomic<bool>> m_canceled;
        double m_lastFraction = -1.0;
    };
    using Work = std::function<QVariant(Control &control)>;

    enum class Threads { Own, SharedPool };

    explicit BackgroundJob(QObject *parent = nullptr, Threads threads = Threads::Own);
    ~BackgroundJob() override;

    void start(Work work);
    void cancel();
    // From start() until finished() of the latest work has been delivered.
    bool isRunning() const { return m_running; }
    // Waits until no work is left on the job's thread (tests, quitting); false on a timeout.
    bool waitForDone(int msecs = -1);

signals:
    void progressChanged(double fraction);
    void messageChanged(const QString &message);
    void partialResult(const QVariant &partial);
    void finished(const QVariant &result, bool canceled);

private:
    // Runs `report` on the owner's thread, unless newer work has started since.
    void deliver(quint64 generation, std::function<void()> report);

    QThreadPool m_pool;
    Threads m_threads;
    // The work started on the global pool, not yet returned.
    std::shared_ptr<std::atomic<int>> m_sharedRunning = std::make_shared<std::atomic<int>>(0);
    quint64 m_generation = 0;
    bool m_running = false;
    std::shared_ptr<std::atomic<bool>> m_canceled;
};
