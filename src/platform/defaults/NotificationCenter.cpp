#include "platform/defaults/NotificationCenter.h"

#include <atomic>
#include <utility>

namespace platform {

struct NotificationCenter::Observer {
    std::string name;
    std::function<void()> callback;
    std::atomic<bool> active = true;
};

NotificationCenter::Subscription& NotificationCenter::Subscription::operator=(Subscription&& other) noexcept {
    if (this != &other) {
        end();
        observer_ = std::move(other.observer_);
    }
    return *this;
}

void NotificationCenter::Subscription::end() {
    if (observer_) observer_->active = false;
    observer_.reset();
}

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

auto NotificationCenter::addObserver(std::string_view name, std::function<void()> callback) -> Subscription {
    auto observer = std::make_shared<Observer>();
    observer->name = name;
    observer->callback = std::move(callback);
    const std::lock_guard lock(mutex_);
    std::erase_if(observers_, [](const auto& each) { return !each->active; });
    observers_.push_back(observer);
    return Subscription(std::move(observer));
}

// The lock is not held during the calls, so that an observer may add, end and post.
void NotificationCenter::post(std::string_view name) {
    std::vector<std::shared_ptr<Observer>> called;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& observer : observers_)
            if (observer->name == name) called.push_back(observer);
    }
    for (const auto& observer : called)
        if (observer->active) observer->callback();
}

} // namespace platform
