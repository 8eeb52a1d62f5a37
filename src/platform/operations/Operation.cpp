#include "platform/operations/Operation.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace platform {

namespace {

constexpr std::string_view kExecutingKey = "executing";
constexpr std::string_view kFinishedKey = "finished";
constexpr std::array kExecutingKeyPaths = {kExecutingKey};
constexpr std::array kFinishedKeyPaths = {kFinishedKey};

// How long a waiting thread stays awake before it sleeps. To sleep and be woken takes 50 microseconds and more where an
// idle processor halts, and the page of an ordinary note is read in 100: a thread that sleeps meanwhile costs a tenth
// of the whole import. It yields, so that with one processor the other thread runs at once.
constexpr std::chrono::microseconds kWaitAwake{200};

} // namespace

Operation::KeyPaths Operation::keyPathsForValuesAffectingExecuting() {
    return kExecutingKeyPaths;
}

Operation::KeyPaths Operation::keyPathsForValuesAffectingFinished() {
    return kFinishedKeyPaths;
}

void Operation::start() {
    if (isFinished()) return;
    if (!isCancelled()) {
        executing_ = true;
        didChangeValueForKey(kExecutingKey);
        main();
    }
    executing_ = false;
    finished_ = true;
    didChangeValueForKey(kExecutingKey);
    didChangeValueForKey(kFinishedKey);
}

void Operation::waitUntilFinished() {
    // Not the end of the wait: whoever announces may still hold the lock.
    const auto sleepAt = std::chrono::steady_clock::now() + kWaitAwake;
    while (!finishAnnounced_ && std::chrono::steady_clock::now() < sleepAt) std::this_thread::yield();
    std::unique_lock lock(mutex_);
    announced_.wait(lock, [this] { return finishAnnounced_.load(); });
}

void Operation::setChangeCallback(ChangeCallback callback) {
    const std::lock_guard lock(mutex_);
    changeCallback_ = std::move(callback);
}

void Operation::didChangeValueForKey(std::string_view key) {
    const bool affectsFinished = std::ranges::find(finishedKeyPaths_, key) != finishedKeyPaths_.end();
    if (!affectsFinished && std::ranges::find(executingKeyPaths_, key) == executingKeyPaths_.end()) return;
    // Whoever runs start() keeps the operation until it returns. One that ends elsewhere may be let go of as soon as a
    // waiter sees it: that waiter is told under the lock, which it has to take first.
    const bool endsElsewhere = isAsynchronous();
    ChangeCallback callback;
    bool isEnd = false;
    {
        const std::lock_guard lock(mutex_);
        callback = changeCallback_;
        isEnd = affectsFinished && isFinished() && !finishAnnounced_.exchange(true);
        if (isEnd && endsElsewhere) announced_.notify_all();
    }
    if (isEnd && !endsElsewhere) announced_.notify_all(); // not under the lock, for which whoever wakes would wait
    if (callback) callback(*this);
}

} // namespace platform
