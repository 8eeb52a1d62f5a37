#include "service/operations/QLTAsynchronousOperation.h"

#include <array>
#include <string_view>

namespace quillet {

namespace {

constexpr std::string_view kOperationExecutingKey = "operationExecuting";
constexpr std::string_view kOperationFinishedKey = "operationFinished";
constexpr std::array kExecutingKeyPaths = {kOperationExecutingKey, kOperationFinishedKey};
constexpr std::array kFinishedKeyPaths = {kOperationFinishedKey};

} // namespace

platform::Operation::KeyPaths QLTAsynchronousOperation::keyPathsForValuesAffectingExecuting() {
    return kExecutingKeyPaths;
}

platform::Operation::KeyPaths QLTAsynchronousOperation::keyPathsForValuesAffectingFinished() {
    return kFinishedKeyPaths;
}

void QLTAsynchronousOperation::setOperationExecuting(bool executing) {
    operationExecuting_ = executing;
    didChangeValueForKey(kOperationExecutingKey);
}

void QLTAsynchronousOperation::setOperationFinished(bool finished) {
    changeOperationFinished(finished);
    didChangeValueForKey(kOperationFinishedKey);
}

} // namespace quillet
