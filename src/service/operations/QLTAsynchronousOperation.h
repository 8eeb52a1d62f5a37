// An operation that finishes later than its start returns: a subclass sets two properties, and the queue learns from
// them.
#pragma once

#include <atomic>

#include "platform/operations/Operation.h"

namespace quillet {

class QLTAsynchronousOperation : public platform::Operation {
  public:
    QLTAsynchronousOperation()
        : Operation(keyPathsForValuesAffectingExecuting(), keyPathsForValuesAffectingFinished()) {}

    bool isAsynchronous() const override { return true; }
    bool isExecuting() const override { return !isFinished() && operationExecuting(); }
    bool isFinished() const override { return operationFinished(); }

    static KeyPaths keyPathsForValuesAffectingExecuting();
    static KeyPaths keyPathsForValuesAffectingFinished();

    bool operationExecuting() const { return operationExecuting_; }
    void setOperationExecuting(bool executing);

    bool operationFinished() const { return operationFinished_; }
    // Stores the value through changeOperationFinished, then tells the queue: whoever waits for the operation goes on
    // only when all that a subclass does at its end is done.
    void setOperationFinished(bool finished);

  protected:
    // The setter's body. A subclass that acts when it finishes overrides it and calls this one to store the value.
    virtual void changeOperationFinished(bool finished) { operationFinished_ = finished; }

  private:
    std::atomic<bool> operationExecuting_ = false;
    std::atomic<bool> operationFinished_ = false;
};

} // namespace quillet
