#include "foundation/BackgroundJob.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

// Work that reports, then runs until it is cancelled (or `rounds` run out).
BackgroundJob::Work countingWork(const QString &name, int rounds, std::atomic<bool> *sawCancel = nullptr)
{
    return [=](BackgroundJob::Control &control) {
        control.setMessage(name);
        control.post(name + QStringLiteral(" partial"));
        for (int i = 0; i < rounds; ++i) {
            if (control.isCanceled()) {
                if (sawCancel)
                    *sawCancel = true;
                return QVariant(name + QStringLiteral(" stopped"));
            }
            control.setProgress(double(i + 1) / rounds);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return QVariant(name);
    };
}

// Reports arrive on the owner's thread in order and end with the result; a cancel reaches the
// work, which still reports its end; new work replaces old work, whose later reports are
// dropped; destroying the job stops and waits for its work. The same on a thread of the job's
// own and on one of the global pool's.
TEST(BackgroundJob, ReportsCancelsAndReplacesWork)
{
    using Threads = BackgroundJob::Threads;
    for (const Threads threads : {Threads::Own, Threads::SharedPool}) {
        SCOPED_TRACE(threads == Threads::Own ? "own thread" : "global pool");
        BackgroundJob job(nullptr, threads);
        QSignalSpy messages(&job, &BackgroundJob::messageChanged);
        QSignalSpy partials(&job, &BackgroundJob::partialResult);
        QSignalSpy progress(&job, &BackgroundJob::progressChanged);
        QSignalSpy finished(&job, &BackgroundJob::finished);

        job.start(countingWork(QStringLiteral("whole"), 50));
        EXPECT_TRUE(job.isRunning());
        ASSERT_TRUE(finished.wait(5000));
        EXPECT_FALSE(job.isRunning());
        EXPECT_EQ(messages.first().first().toString(), QStringLiteral("whole"));
        EXPECT_EQ(partials.first().first().toString(), QStringLiteral("whole partial"));
        EXPECT_EQ(progress.last().first().toDouble(), 1.0);
        EXPECT_EQ(finished.first(), (QVariantList{QStringLiteral("whole"), false}));

        bool onGlobalPool = false;
        finished.clear();
        job.start([&onGlobalPool](BackgroundJob::Control &) {
            onGlobalPool = QThreadPool::globalInstance()->contains(QThread::currentThread());
            return QVariant();
        });
        ASSERT_TRUE(finished.wait(5000));
        EXPECT_EQ(onGlobalPool, threads == Threads::SharedPool);

        std::atomic<bool> sawCancel{false};
        finished.clear();
        job.start(countingWork(QStringLiteral("long"), 1'000'000, &sawCancel));
        ASSERT_TRUE(QTest::qWaitFor([&] { return !progress.isEmpty() && messages.size() == 2; }, 5000));
        job.cancel();
        ASSERT_TRUE(finished.wait(5000));
        EXPECT_TRUE(sawCancel);
        EXPECT_EQ(finished.first(), (QVariantList{QStringLiteral("long stopped"), true}));

        // The first work is given up for the second: only the second is heard from.
        finished.clear();
        messages.clear();
        job.start(countingWork(QStringLiteral("first"), 1'000'000));
        job.start(countingWork(QStringLiteral("second"), 10));
        ASSERT_TRUE(finished.wait(5000));
        QTest::qWait(50);
        ASSERT_EQ(finished.size(), 1);
        EXPECT_EQ(finished.first(), (QVariantList{QStringLiteral("second"), false}));
        for (const QVariantList &m : messages)
            EXPECT_EQ(m.first().toString(), QStringLiteral("second"));

        sawCancel = false;
        {
            BackgroundJob leaving(nullptr, threads);
            leaving.start(countingWork(QStringLiteral("left"), 1'000'000, &sawCancel));
            QTest::qWait(20);
        }
        EXPECT_TRUE(sawCancel);
    }
}

// A job that drops its work returns from its destructor while the work still runs: the work sees
// the cancel, goes on reporting, and none of its reports reaches the job that is gone.
TEST(BackgroundJob, DropLeavesWorkToEndAlone)
{
    std::atomic<bool> started{false}, sawCancel{false}, released{false}, returned{false};
    bool returnedBeforeJobWent = true;
    {
        BackgroundJob dropping(nullptr, BackgroundJob::Threads::Own, BackgroundJob::Ending::Drop);
        dropping.start([&](BackgroundJob::Control &control) {
            started = true;
            for (int i = 0; i < 5000 && !released; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            sawCancel = control.isCanceled();
            control.setMessage(QStringLiteral("late"));
            control.setProgress(1.0);
            returned = true;
            return QVariant(QStringLiteral("late"));
        });
        ASSERT_TRUE(QTest::qWaitFor([&] { return started.load(); }, 5000));
        QObject::connect(&dropping, &QObject::destroyed, [&] { returnedBeforeJobWent = returned; });
    }
    EXPECT_FALSE(returnedBeforeJobWent);
    released = true;
    ASSERT_TRUE(QTest::qWaitFor([&] { return returned.load(); }, 5000));
    QTest::qWait(20); // anything it queued would be delivered now
    EXPECT_TRUE(sawCancel);
}

} // namespace
