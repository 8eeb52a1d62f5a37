#include "platform/operations/Operation.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

namespace {

constexpr std::string_view kExecutingKey = "executing";
constexpr std::string_view kFinishedKey = "finished";
constexpr std::array kExecutingKeyPaths = {kExecutingKey};
constexpr std::array kFinishedKeyPaths = {kFinishedKey};

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
    std::unique_lock lock(mutex_);
    announced_.wait(lock, [this] { return finishAnnounced_; });
}

void Operation::setChangeCallback(ChangeCallback callback) {
    const std::lock_guard lock(mutex_);
    changeCallback_ = std::move(callback);
}

void Operation::didChangeValueForKey(std::string_view key) {
    const bool affectsFinished = std::ranges::find(finishedKeyPaths_, key) != finishedKeyPaths_.end();
    if (!affectsFinished && std::ranges::find(executingKeyPaths_, key) == executingKeyPaths_.end()) return;
    const std::shared_ptr<Operation> self = weak_from_this().lock(); // a waiter may let go of it at once
    ChangeCallback callback;
    bool isEnd = false;
    {
        const std::lock_guard lock(mutex_);
        callback = changeCallback_;
        isEnd = affectsFinished && isFinished() && !std::exchange(finishAnnounced_, true);
    }
    if (isEnd) announced_.notify_all(); // not under the lock, for which whoever wakes would wait
    if (callback) callback(*this);
}

} // namespace platform
