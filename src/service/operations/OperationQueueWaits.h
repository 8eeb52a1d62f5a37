// Waiting additions to an operation queue.
#pragma once

#include <functional>
#include <memory>

#include "platform/operations/OperationQueue.h"

namespace quillet {

// Adds the operation and blocks the caller until it has finished.
void addOperationAndWaitUntilFinished(platform::OperationQueue& queue,
                                      const std::shared_ptr<platform::Operation>& operation);

// Runs the block on the queue and waits for it. On the main thread with the main queue the block is called directly,
// since that thread would wait for itself. `meanwhile` runs on the calling thread before it begins to wait, so that
// what does not need the block's result is done while the other thread works.
void addOperationWithBlockAndWaitUntilFinished(
    platform::OperationQueue& queue, std::move_only_function<void()> block,
    const std::function<void()>& meanwhile = [] {});

} // namespace quillet
