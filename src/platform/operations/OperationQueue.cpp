#include "platform/operations/OperationQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <unistd.h>

namespace platform {

struct OperationQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::shared_ptr<Operation>> waiting;
    std::shared_ptr<Operation> running;
    bool hasWorker = false;       // a worker thread lives only while there is work
    bool isMain = false;          // constant after construction
    bool askAgain = false;        // main queue: wakeMainQueue was called
    std::function<void()> wakeUp; // main queue only

    // Takes the next operation and marks it as running; nothing when the queue is empty.
    std::shared_ptr<Operation> takeNext() {
        const std::lock_guard lock(mutex);
        if (waiting.empty()) {
            hasWorker = false;
            return nullptr;
        }
        running = std::move(waiting.front());
        waiting.pop_front();
        return running;
    }

    void run(const std::shared_ptr<Operation>& operation) {
        operation->start();
        operation->waitUntilFinished();
        const std::lock_guard lock(mutex);
        running = nullptr;
        changed.notify_all();
    }
};

OperationQueue::OperationQueue() : OperationQueue(false) {}

OperationQueue::OperationQueue(bool isMain) : state_(std::make_shared<State>()) {
    state_->isMain = isMain;
}

OperationQueue::~OperationQueue() = default;

OperationQueue& OperationQueue::mainQueue() {
    static OperationQueue queue(true);
    return queue;
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    const Operation* const added = operation.get();
    std::function<void()> wakeUp;
    bool startWorker = false;
    {
        const std::lock_guard lock(state_->mutex);
        state_->waiting.push_back(std::move(operation));
        wakeUp = state_->wakeUp;
        startWorker = !state_->isMain && !state_->hasWorker;
        if (startWorker) state_->hasWorker = true;
    }
    state_->changed.notify_all(); // not under the lock, for which whoever wakes would wait
    if (startWorker) startThread(added);
    if (wakeUp) wakeUp();
}

void OperationQueue::startThread(const Operation* added) {
    try {
        std::thread([state = state_] {
            while (const auto next = state->takeNext()) state->run(next);
        }).detach();
    } catch (...) { // no more threads: the queue is as it was
        const std::lock_guard lock(state_->mutex);
        state_->hasWorker = false;
        std::erase_if(state_->waiting, [added](const auto& waiting) { return waiting.get() == added; });
        throw;
    }
}

void OperationQueue::addOperations(std::span<const std::shared_ptr<Operation>> operations, bool waitUntilFinished) {
    for (const auto& operation : operations) addOperation(operation);
    if (!waitUntilFinished) return;
    for (const auto& operation : operations) operation->waitUntilFinished();
}

void OperationQueue::addOperationWithBlock(std::move_only_function<void()> block) {
    addOperation(std::make_shared<BlockOperation>(std::move(block)));
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->waiting.empty() && !state_->running; });
}

void OperationQueue::cancelAllOperations() {
    std::deque<std::shared_ptr<Operation>> operations;
    {
        const std::lock_guard lock(state_->mutex);
        operations = state_->waiting;
        if (state_->running) operations.push_front(state_->running);
    }
    for (const auto& operation : operations) operation->cancel();
}

bool isMainThread() {
    return ::gettid() == ::getpid();
}

void drainMainQueue() {
    auto& state = *OperationQueue::mainQueue().state_;
    while (const auto next = state.takeNext()) state.run(next);
}

void runMainQueueUntil(const std::function<bool()>& done) {
    auto& state = *OperationQueue::mainQueue().state_;
    while (!done()) {
        if (const auto next = state.takeNext()) {
            state.run(next);
            continue;
        }
        std::unique_lock lock(state.mutex);
        state.changed.wait(lock, [&] { return state.askAgain || !state.waiting.empty(); });
        state.askAgain = false;
    }
}

void wakeMainQueue() {
    auto& state = *OperationQueue::mainQueue().state_;
    const std::lock_guard lock(state.mutex);
    state.askAgain = true;
    state.changed.notify_all();
}

void setMainQueueWakeUp(std::function<void()> wakeUp) {
    auto& state = *OperationQueue::mainQueue().state_;
    const std::lock_guard lock(state.mutex);
    state.wakeUp = std::move(wakeUp);
}

} // namespace platform
