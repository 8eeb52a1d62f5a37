// How many of a thing there may be at once.
#pragma once

#include <atomic>
#include <memory>

namespace quillet {

// Callable from any thread.
class Capacity {
  public:
    explicit Capacity(int most) : most_(most), taken_(std::make_shared<std::atomic<int>>(0)) {}

    // A place, given back when the result and its copies are gone; null when all are taken.
    std::shared_ptr<void> take() const {
        if (taken_->fetch_add(1) >= most_) {
            --*taken_;
            return nullptr;
        }
        return {taken_.get(), [taken = taken_](void*) { --*taken; }};
    }

  private:
    int most_;
    std::shared_ptr<std::atomic<int>> taken_; // outlives the capacity in places that are still held
};

} // namespace quillet
