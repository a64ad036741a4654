#include <QVKit/Platform/QVDispatch.h>
#include <QVKit/Platform/QVOnce.h>
#include <QVKit/Platform/QVTimestamp.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

#include "support/QVTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

TEST(QVDispatchTest, RunsInlineOnTheMainThread)
{
    ASSERT_TRUE(qv_is_main_thread());
    bool ran = false;
    // Inline means no event loop is needed: a queued call would deadlock here.
    qv_dispatch_sync_safely_on_main_queue([&] { ran = QThread::currentThread() == qApp->thread(); });
    EXPECT_TRUE(ran);
    qv_dispatch_sync_safely_on_main_queue({}); // an empty block is ignored
}

TEST(QVDispatchTest, WorkerBlocksUntilTheMainThreadRanTheBlock)
{
    std::atomic<bool> workerSawResult{false};
    std::atomic<bool> workerWasMain{true};
    std::atomic<bool> finished{false};
    QThread *ranOn = nullptr;
    int value = 0;

    QThread *worker = QThread::create([&] {
        workerWasMain = qv_is_main_thread();
        qv_dispatch_sync_safely_on_main_queue([&] {
            ranOn = QThread::currentThread();
            value = 42;
        });
        // Synchronous: the block's effect is visible as soon as the call returns.
        workerSawResult = value == 42;
        finished = true;
    });
    worker->start();
    ASSERT_TRUE(QVTest::waitUntil([&] { return finished.load(); }));
    worker->wait();
    delete worker;

    EXPECT_FALSE(workerWasMain);
    EXPECT_EQ(ranOn, qApp->thread());
    EXPECT_TRUE(workerSawResult);
}

TEST(QVDispatchTest, OnceGuardRunsItsBodyOnceAcrossThreads)
{
    QVOnce once;
    std::atomic<int> runs{0};
    EXPECT_FALSE(once.hasRun());
    std::vector<QThread *> threads;
    for (int i = 0; i < 8; ++i)
        threads.push_back(QThread::create([&] { once.run([&] { ++runs; }); }));
    for (QThread *thread : threads)
        thread->start();
    for (QThread *thread : threads) {
        thread->wait();
        delete thread;
    }
    once.run([&] { ++runs; });
    EXPECT_EQ(runs.load(), 1);
    EXPECT_TRUE(once.hasRun());
}

TEST(QVDispatchTest, TimestampsAreMonotonicSeconds)
{
    const double first = QVTimestamp();
    const double firstContinuous = QVTimestampContinuous();
    EXPECT_GT(first, 0.0);
    // The boot-time clock counts suspended time too, so it never runs behind.
    EXPECT_GE(firstContinuous + 1e-3, first);
    double previous = first;
    for (int i = 0; i < 1000; ++i) {
        const double now = QVTimestamp();
        ASSERT_GE(now, previous);
        previous = now;
    }
    EXPECT_GE(QVTimestampContinuous(), firstContinuous);
}
