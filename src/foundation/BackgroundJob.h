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
// once the old has returned. The destructor cancels and, by default, waits, so quitting never
// leaves work behind (Ending::Wait). A window that may close while work it cannot stop runs (a
// decode) uses Ending::Drop instead: the destructor cancels and returns at once, the work ends on
// its thread and whatever it reports later goes nowhere. Such work runs on the global pool, which
// the application waits for as it ends, since a thread of the job's own would go with the job.
// By default the job's thread is its own, never one of the global pool's: Qt's image
// operations split their work over that pool and wait for it, so the work goes faster. The
// window's own painting waits on that pool too, behind all of those pieces: work that paints or
// scales a large picture while the window is up runs on a thread of the global pool instead
// (SharedPool), where Qt keeps its operations on the one thread, and the window's pieces find
// the rest of the pool free.
class BackgroundJob : public QObject
{
    Q_OBJECT
    struct Link;

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
        Control(std::shared_ptr<Link> link, quint64 generation, std::shared_ptr<std::atomic<bool>> canceled)
            : m_link(std::move(link)), m_generation(generation), m_canceled(std::move(canceled))
        {
        }
        std::shared_ptr<Link> m_link;
        quint64 m_generation;
        std::shared_ptr<std::atomic<bool>> m_canceled;
        double m_lastFraction = -1.0;
    };
    using Work = std::function<QVariant(Control &control)>;

    enum class Threads { Own, SharedPool };
    // What the destructor does with work still running: wait for it, or leave it to end alone.
    enum class Ending { Wait, Drop };

    // With Ending::Drop the work runs on the global pool, whatever `threads` says.
    explicit BackgroundJob(QObject *parent = nullptr, Threads threads = Threads::Own, Ending ending = Ending::Wait);
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
    // Runs `report` on the job's thread, unless the job is gone or newer work has started since.
    static void deliver(const std::shared_ptr<Link> &link, quint64 generation, std::function<void(BackgroundJob &job)> report);

    QThreadPool m_pool;
    Threads m_threads;
    Ending m_ending;
    // What the running work reaches the job through; it outlives the job while work runs.
    std::shared_ptr<Link> m_link;
    // The work started on the global pool, not yet returned.
    std::shared_ptr<std::atomic<int>> m_sharedRunning = std::make_shared<std::atomic<int>>(0);
    quint64 m_generation = 0;
    bool m_running = false;
    std::shared_ptr<std::atomic<bool>> m_canceled;
};
