// Operations and their queues: states, waiting, cancelling, the main queue.
#include <atomic>
#include <chrono>
#include <ctime>
#include <fstream>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/operations/OperationQueue.h"

namespace platform {
namespace {

TEST(Operation, RunsItsBlockOnceAndIsFinished) {
    int runs = 0;
    BlockOperation operation([&] { ++runs; });
    EXPECT_FALSE(operation.isFinished());
    operation.start();
    operation.start();
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(operation.isFinished());
    EXPECT_FALSE(operation.isExecuting());
    operation.waitUntilFinished();
}

TEST(Operation, CancelledBeforeItsStartFinishesWithoutRunning) {
    bool ran = false;
    BlockOperation operation([&] { ran = true; });
    operation.cancel();
    operation.start();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(operation.isFinished());
    EXPECT_TRUE(operation.isCancelled());
}

TEST(Operation, AnnouncesExecutingAndFinished) {
    std::vector<std::pair<bool, bool>> states;
    BlockOperation operation([] {});
    operation.setChangeCallback(
        [&](Operation& changed) { states.emplace_back(changed.isExecuting(), changed.isFinished()); });
    operation.start();
    const std::vector<std::pair<bool, bool>> expected = {{true, false}, {false, true}, {false, true}};
    EXPECT_EQ(states, expected);
}

// Of the calling thread.
std::chrono::nanoseconds processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

TEST(Operation, IsWaitedForAsleepWhenItTakesLong) {
    BlockOperation operation([] { std::this_thread::sleep_for(std::chrono::milliseconds(200)); });
    std::thread worker([&] { operation.start(); });
    const auto before = processorTime();
    operation.waitUntilFinished();
    EXPECT_LT(processorTime() - before, std::chrono::milliseconds(50));
    EXPECT_TRUE(operation.isFinished());
    worker.join();
}

TEST(OperationQueue, RunsInOrderOnOneOtherThread) {
    OperationQueue queue;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 100; ++i)
        queue.addOperationWithBlock([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    queue.waitUntilAllOperationsAreFinished();
    ASSERT_EQ(order.size(), 100U);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    for (const auto& thread : threads) EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(OperationQueue, WaitsForTheOperationsThatItWasGiven) {
    OperationQueue queue;
    std::atomic<int> done = 0;
    const std::vector<std::shared_ptr<Operation>> operations = {std::make_shared<BlockOperation>([&] { ++done; }),
                                                                std::make_shared<BlockOperation>([&] { ++done; })};
    queue.addOperations(operations, true);
    EXPECT_EQ(done, 2);
}

TEST(OperationQueue, RunsWhatItHoldsWhenItIsDestroyedFirst) {
    std::atomic<int> done = 0;
    const auto last = std::make_shared<BlockOperation>([&] { ++done; });
    {
        OperationQueue queue;
        for (int i = 0; i < 10; ++i) queue.addOperationWithBlock([&] { ++done; });
        queue.addOperation(last);
    }
    last->waitUntilFinished();
    EXPECT_EQ(done, 11);
}

TEST(OperationQueue, CancelsWhatIsWaiting) {
    OperationQueue queue;
    std::atomic<bool> release = false;
    bool ran = false;
    queue.addOperationWithBlock([&] {
        while (!release) std::this_thread::yield();
    });
    queue.addOperationWithBlock([&] { ran = true; });
    queue.cancelAllOperations();
    release = true;
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(ran);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Leaves this process no room for the stack of another thread, while it lives.
class NoRoomForThreads {
  public:
    NoRoomForThreads() {
        ::getrlimit(RLIMIT_AS, &before_);
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        constexpr rlim_t kRoom = rlim_t{1} << 20;
        const rlimit tight{pages * static_cast<rlim_t>(::getpagesize()) + kRoom, before_.rlim_max};
        ::setrlimit(RLIMIT_AS, &tight);
    }
    ~NoRoomForThreads() { ::setrlimit(RLIMIT_AS, &before_); }
    NoRoomForThreads(const NoRoomForThreads&) = delete;
    NoRoomForThreads& operator=(const NoRoomForThreads&) = delete;

  private:
    rlimit before_{};
};

TEST(OperationQueue, IsAsItWasWhenThereIsNoThreadForIt) {
    // Stacks of threads that have ended are kept for the next ones: other threads take them meanwhile.
    std::atomic<bool> end = false;
    std::vector<std::jthread> others;
    for (int index = 0; index < 8; ++index) others.emplace_back([&] { end.wait(false); });
    OperationQueue queue;
    std::atomic<int> ran = 0;
    {
        const NoRoomForThreads tight;
        EXPECT_THROW(queue.addOperationWithBlock([&] { ran += 10; }), std::system_error);
    }
    queue.addOperationWithBlock([&] { ++ran; });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 1);
    end = true;
    end.notify_all();
}
#endif

TEST(MainQueue, RunsOnTheMainThreadWhileAnotherThreadWaits) {
    ASSERT_TRUE(isMainThread());
    std::atomic<bool> ended = false;
    bool onMain = false;
    bool workerIsMain = true;
    OperationQueue queue;
    queue.addOperationWithBlock([&] {
        workerIsMain = isMainThread();
        const std::vector<std::shared_ptr<Operation>> one = {
            std::make_shared<BlockOperation>([&] { onMain = isMainThread(); })};
        OperationQueue::mainQueue().addOperations(one, true);
        ended = true;
        wakeMainQueue();
    });
    runMainQueueUntil([&] { return ended.load(); });
    EXPECT_TRUE(onMain);
    EXPECT_FALSE(workerIsMain);
}

// Before the thread sleeps, and long after.
TEST(MainQueue, MissesNoWorkHoweverLongItTakesToCome) {
    std::atomic<bool> ended = false;
    int runs = 0;
    std::thread worker([&] {
        for (const int microseconds : {0, 1, 100, 500, 2000, 20000, 0, 0}) {
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
            OperationQueue::mainQueue().addOperationWithBlock([&] { ++runs; });
        }
        OperationQueue::mainQueue().waitUntilAllOperationsAreFinished();
        ended = true;
        wakeMainQueue();
    });
    runMainQueueUntil([&] { return ended.load(); });
    worker.join();
    EXPECT_EQ(runs, 8);
}

TEST(MainQueue, SleepsWhenNothingComesForLong) {
    std::atomic<bool> ended = false;
    std::thread worker([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        ended = true;
        wakeMainQueue();
    });
    const auto before = processorTime();
    runMainQueueUntil([&] { return ended.load(); });
    EXPECT_LT(processorTime() - before, std::chrono::milliseconds(50));
    worker.join();
}

TEST(MainQueue, TellsAForeignLoopThatThereIsWork) {
    int woken = 0;
    bool ran = false;
    setMainQueueWakeUp([&] { ++woken; });
    OperationQueue::mainQueue().addOperationWithBlock([&] { ran = true; });
    setMainQueueWakeUp({});
    EXPECT_EQ(woken, 1);
    EXPECT_FALSE(ran);
    drainMainQueue();
    EXPECT_TRUE(ran);
}

} // namespace
} // namespace platform
