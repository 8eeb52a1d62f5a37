#include "service/operations/OperationQueueWaits.h"

#include <span>
#include <utility>

namespace quillet {

void addOperationAndWaitUntilFinished(platform::OperationQueue& queue,
                                      const std::shared_ptr<platform::Operation>& operation) {
    queue.addOperations(std::span(&operation, 1), true);
}

void addOperationWithBlockAndWaitUntilFinished(platform::OperationQueue& queue, std::move_only_function<void()> block) {
    if (platform::isMainThread() && &queue == &platform::OperationQueue::mainQueue()) {
        block();
        return;
    }
    addOperationAndWaitUntilFinished(queue, std::make_shared<platform::BlockOperation>(std::move(block)));
}

} // namespace quillet
