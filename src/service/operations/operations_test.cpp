// Asynchronous operations, waiting additions and the import log's lines.
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"
#include "service/operations/OperationQueueWaits.h"
#include "service/operations/OutputStream.h"
#include "service/operations/QLTAsynchronousOperation.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::OperationQueue;

// Starts a thread and returns from start at once.
class Later : public QLTAsynchronousOperation {
  public:
    ~Later() override { thread_.join(); }
    void start() override {
        setOperationExecuting(true);
        thread_ = std::thread([this] {
            ended = true;
            setOperationFinished(true);
        });
    }
    std::atomic<bool> ended = false;
    std::atomic<bool> actedAtItsEnd = false;

  protected:
    void changeOperationFinished(bool finished) override {
        QLTAsynchronousOperation::changeOperationFinished(finished);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        actedAtItsEnd = true;
    }

  private:
    std::thread thread_;
};

TEST(QLTAsynchronousOperation, IsAlwaysAsynchronous) {
    EXPECT_TRUE(QLTAsynchronousOperation().isAsynchronous());
}

TEST(QLTAsynchronousOperation, AnswersItsQueriesFromTheTwoProperties) {
    const struct {
        bool executing, finished, isExecuting, isFinished;
    } rows[] = {
        {false, false, false, false},
        {true, false, true, false},
        {false, true, false, true},
        {true, true, false, true}, // never cleared, yet over
    };
    for (const auto& row : rows) {
        QLTAsynchronousOperation operation;
        operation.setOperationExecuting(row.executing);
        operation.setOperationFinished(row.finished);
        EXPECT_EQ(operation.isExecuting(), row.isExecuting);
        EXPECT_EQ(operation.isFinished(), row.isFinished);
    }
}

TEST(QLTAsynchronousOperation, DeclaresWhatItsStatesDependOn) {
    const auto executing = QLTAsynchronousOperation::keyPathsForValuesAffectingExecuting();
    const auto finished = QLTAsynchronousOperation::keyPathsForValuesAffectingFinished();
    EXPECT_EQ(std::vector<std::string>(executing.begin(), executing.end()),
              (std::vector<std::string>{"operationExecuting", "operationFinished"}));
    EXPECT_EQ(std::vector<std::string>(finished.begin(), finished.end()),
              (std::vector<std::string>{"operationFinished"}));
}

TEST(QLTAsynchronousOperation, AnnouncesEachPropertyOnce) {
    int changes = 0;
    QLTAsynchronousOperation operation;
    operation.setChangeCallback([&](platform::Operation&) { ++changes; });
    operation.setOperationExecuting(true);
    EXPECT_EQ(changes, 1);
    operation.setOperationFinished(true);
    EXPECT_EQ(changes, 2);
}

TEST(OperationQueueWaits, WaitsUntilAnAsynchronousOperationHasDoneAllOfItsEnd) {
    OperationQueue queue;
    const auto operation = std::make_shared<Later>();
    addOperationAndWaitUntilFinished(queue, operation);
    EXPECT_TRUE(operation->ended);
    EXPECT_TRUE(operation->actedAtItsEnd);
    queue.waitUntilAllOperationsAreFinished();
}

// Ends on a thread of its own, which it must not be destroyed by.
class JoiningOperation : public QLTAsynchronousOperation {
  public:
    ~JoiningOperation() override {
        EXPECT_NE(thread_.get_id(), std::this_thread::get_id());
        thread_.get_id() == std::this_thread::get_id() ? thread_.detach() : thread_.join();
    }
    void start() override {
        thread_ = std::thread([this] { setOperationFinished(true); });
    }

  private:
    std::thread thread_;
};

TEST(OperationQueueWaits, LetGoOfAnOperationWhileTheThreadThatEndsItGoesOn) {
    OperationQueue queue;
    for (int times = 0; times < 2'000; ++times) queue.addOperation(std::make_shared<JoiningOperation>());
    queue.waitUntilAllOperationsAreFinished();
}

TEST(OperationQueueWaits, CallsTheBlockDirectlyOnTheMainThreadForTheMainQueue) {
    bool ran = false;
    addOperationWithBlockAndWaitUntilFinished(OperationQueue::mainQueue(), [&] { ran = platform::isMainThread(); });
    EXPECT_TRUE(ran);
}

TEST(OperationQueueWaits, WaitsForABlockOnAnotherQueue) {
    OperationQueue queue;
    bool ranElsewhere = false;
    addOperationWithBlockAndWaitUntilFinished(queue, [&] { ranElsewhere = !platform::isMainThread(); });
    EXPECT_TRUE(ranElsewhere);
}

TEST(OperationQueueWaits, RunWhatIsForMeanwhileWhileTheQueueWorks) {
    OperationQueue queue;
    std::atomic<bool> ranMeanwhile = false;
    addOperationWithBlockAndWaitUntilFinished(
        queue, [&] { ranMeanwhile.wait(false); }, // would never end if it had to end first
        [&] {
            EXPECT_TRUE(platform::isMainThread());
            ranMeanwhile = true;
            ranMeanwhile.notify_one();
        });
    EXPECT_TRUE(ranMeanwhile);
}

TEST(OperationQueueWaits, WaitForTheBlockThoughWhatRunsMeanwhileThrows) {
    OperationQueue queue;
    std::atomic<bool> thrown = false, ended = false;
    const auto block = [&] {
        thrown.wait(false);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ended = true;
    };
    const auto throwing = [&] {
        thrown = true;
        thrown.notify_one();
        throw std::runtime_error("meanwhile");
    };
    EXPECT_THROW(addOperationWithBlockAndWaitUntilFinished(queue, block, throwing), std::runtime_error);
    EXPECT_TRUE(ended);
}

TEST(OperationQueueWaits, RunTheBlockFirstWhereTheCallerWouldWaitForItself) {
    std::string order;
    addOperationWithBlockAndWaitUntilFinished(
        OperationQueue::mainQueue(), [&] { order += "block "; }, [&] { order += "meanwhile"; });
    EXPECT_EQ(order, "block meanwhile");
}

TEST(OperationQueueWaits, HandsABlockFromAWorkerToTheMainThread) {
    OperationQueue queue;
    bool onMain = false;
    std::atomic<bool> ended = false;
    queue.addOperationWithBlock([&] {
        addOperationWithBlockAndWaitUntilFinished(OperationQueue::mainQueue(),
                                                  [&] { onMain = platform::isMainThread(); });
        ended = true;
        platform::wakeMainQueue();
    });
    platform::runMainQueueUntil([&] { return ended.load(); });
    EXPECT_TRUE(onMain);
}

// A fixed clock and a system log that a test reads.
class LogLines : public testing::Test {
  protected:
    void SetUp() override {
        environment->now = [] { return platform::Date::fromUnixTime(1714554902); };
        saved = platform::setSystemLogSink([this](std::string_view entry) { entries.emplace_back(entry); });
    }
    void TearDown() override { platform::setSystemLogSink(saved); }

    platform::ScopedEnvironment environment;
    platform::SystemLogSink saved;
    std::vector<std::string> entries;
    tests::ScratchDirectory scratch;
};

TEST_F(LogLines, AppendDateTextAndLineFeed) {
    const auto path = scratch / "Export.log";
    tests::writeFile(path, "Importing /x.enex");
    OutputStream stream(path.string());
    stream.open();
    EXPECT_EQ(writeLogLine(stream, "Größe"), 34);
    EXPECT_EQ(writeLogLine(stream, "two\nlines"), 36);
    EXPECT_EQ(tests::readFile(path), "Importing /x.enex2024-05-01 09:15:02 +0000 Größe\n"
                                     "2024-05-01 09:15:02 +0000 two\nlines\n");
    EXPECT_EQ(entries, (std::vector<std::string>{"Größe", "two\nlines"}));
}

TEST_F(LogLines, FailOnAStreamThatIsNotOpenButReachTheSystemLog) {
    OutputStream stream((scratch / "missing" / "x.log").string());
    EXPECT_LT(writeLogLine(stream, "before"), 0);
    stream.open();
    EXPECT_FALSE(stream.isOpen());
    EXPECT_LT(writeLogLine(stream, "after"), 0);
    EXPECT_EQ(entries.size(), 2U);
}

TEST_F(LogLines, EndWithTheStream) {
    OutputStream stream((scratch / "x.log").string());
    stream.open();
    EXPECT_GT(writeLogLine(stream, "one"), 0);
    stream.close();
    EXPECT_LT(writeLogLine(stream, "two"), 0);
}

TEST_F(LogLines, NeverFollowALinkNorWaitForAFifo) {
    tests::writeFile(scratch / "target", "safe");
    std::filesystem::create_symlink(scratch / "target", scratch / "link.log");
    ASSERT_EQ(::mkfifo((scratch / "fifo.log").c_str(), 0600), 0);
    for (const auto* name : {"link.log", "fifo.log"}) {
        OutputStream stream((scratch / name).string());
        stream.open();
        EXPECT_FALSE(stream.isOpen()) << name;
    }
    EXPECT_EQ(tests::readFile(scratch / "target"), "safe");
}

} // namespace
} // namespace quillet
