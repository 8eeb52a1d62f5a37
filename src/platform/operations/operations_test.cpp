// Operations and their queues: states, waiting, cancelling, the main queue.
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

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
