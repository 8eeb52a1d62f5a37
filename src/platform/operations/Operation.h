// Counterpart of NSOperation and NSBlockOperation: one piece of work that a queue runs once.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <span>
#include <string_view>

namespace platform {

class Operation {
  public:
    using KeyPaths = std::span<const std::string_view>;

    Operation() : Operation(keyPathsForValuesAffectingExecuting(), keyPathsForValuesAffectingFinished()) {}
    virtual ~Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    virtual bool isAsynchronous() const { return false; }
    virtual bool isExecuting() const { return executing_; }
    virtual bool isFinished() const { return finished_; }
    bool isCancelled() const { return cancelled_; }

    // The values whose change may change the answer of isExecuting and of isFinished. A subclass that overrides a
    // query declares its own under the same name and passes them to the protected constructor.
    static KeyPaths keyPathsForValuesAffectingExecuting();
    static KeyPaths keyPathsForValuesAffectingFinished();

    // Runs the work on the calling thread; a cancelled operation finishes without running main. Finished on return
    // unless the subclass is asynchronous.
    virtual void start();
    virtual void main() {}

    // Asks the work to end early. Callable from any thread; never waits.
    virtual void cancel() { cancelled_ = true; }

    // Blocks until the change to finished has been announced, that is, until all that the operation does at its end
    // is done. One that is not asynchronous must live until its start() has returned.
    void waitUntilFinished();

    // Called after each announced change of a state, on the thread that made the change. The queue sets it before it
    // starts the operation; there is one.
    using ChangeCallback = std::function<void(Operation&)>;
    void setChangeCallback(ChangeCallback callback);

  protected:
    Operation(KeyPaths executing, KeyPaths finished) : executingKeyPaths_(executing), finishedKeyPaths_(finished) {}

    // To be called after the value of a key has been changed: announces the states that depend on it.
    void didChangeValueForKey(std::string_view key);

  private:
    KeyPaths executingKeyPaths_;
    KeyPaths finishedKeyPaths_;
    std::atomic<bool> executing_ = false;
    std::atomic<bool> finished_ = false;
    std::atomic<bool> cancelled_ = false;

    std::mutex mutex_;
    std::condition_variable announced_;
    std::atomic<bool> finishAnnounced_ = false; // set under mutex_
    ChangeCallback changeCallback_;             // guarded by mutex_
};

class BlockOperation : public Operation {
  public:
    explicit BlockOperation(std::move_only_function<void()> block) : block_(std::move(block)) {}
    void main() override { block_(); }

  private:
    std::move_only_function<void()> block_;
};

} // namespace platform
