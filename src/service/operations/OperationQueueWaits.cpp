#include "service/operations/OperationQueueWaits.h"

#include <span>
#include <utility>

namespace quillet {

namespace {

// Waits also when an exception passes: the operation's block may refer to what the caller is about to lose.
struct FinishedAtEnd {
    platform::Operation& operation;
    ~FinishedAtEnd() { operation.waitUntilFinished(); }
};

} // namespace

void addOperationAndWaitUntilFinished(platform::OperationQueue& queue,
                                      const std::shared_ptr<platform::Operation>& operation) {
    queue.addOperations(std::span(&operation, 1), true);
}

void addOperationWithBlockAndWaitUntilFinished(platform::OperationQueue& queue, std::move_only_function<void()> block,
                                               const std::function<void()>& meanwhile) {
    if (platform::isMainThread() && &queue == &platform::OperationQueue::mainQueue()) {
        block();
        meanwhile();
        return;
    }
    const auto operation = std::make_shared<platform::BlockOperation>(std::move(block));
    queue.addOperation(operation);
    const FinishedAtEnd finished{*operation};
    meanwhile();
}

} // namespace quillet
