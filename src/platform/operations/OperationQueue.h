// Counterpart of NSOperationQueue: runs operations one after another on a thread of its own; the main queue runs them
// on the main thread, when that drains it.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "platform/operations/Operation.h"

namespace platform {

class OperationQueue {
  public:
    OperationQueue();
    // Does not wait: what has been added is still run, by a thread that ends with the last operation.
    ~OperationQueue();
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;

    static OperationQueue& mainQueue();

    // Runs after everything added before; the next operation starts when this one has finished, an asynchronous one
    // too. Callable from any thread. Throws std::system_error, with nothing added, when the queue needs a thread and
    // the system has none.
    void addOperation(std::shared_ptr<Operation> operation);
    // @sel addOperations:waitUntilFinished:
    void addOperations(std::span<const std::shared_ptr<Operation>> operations, bool waitUntilFinished);
    void addOperationWithBlock(std::move_only_function<void()> block);

    // Blocks until nothing is queued or running. Not to be called from an operation of the same queue.
    void waitUntilAllOperationsAreFinished();
    void cancelAllOperations();

  private:
    friend void drainMainQueue();
    friend void runMainQueueUntil(const std::function<bool()>& done);
    friend void wakeMainQueue();
    friend void setMainQueueWakeUp(std::function<void()> wakeUp);

    struct State;
    explicit OperationQueue(bool isMain);
    void startThread(const Operation* added);
    std::shared_ptr<State> state_; // shared with the worker thread, which may outlive the queue
};

// Whether the caller runs on the thread that entered main().
bool isMainThread();

// For the main thread. Runs what the main queue holds now, in order, and returns.
void drainMainQueue();
// For the main thread. Runs the main queue's operations as they come until `done` answers true. It is asked at the
// start, after each operation and after each wakeMainQueue().
void runMainQueueUntil(const std::function<bool()>& done);
// Makes a running runMainQueueUntil ask its question again. Callable from any thread.
void wakeMainQueue();
// For a program whose main thread lives in another event loop: called on the adding thread whenever the main queue
// has got something to run; it should make that loop call drainMainQueue.
void setMainQueueWakeUp(std::function<void()> wakeUp);

} // namespace platform
