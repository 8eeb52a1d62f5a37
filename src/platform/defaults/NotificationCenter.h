// Counterpart of NSNotificationCenter: tells whoever listens that something of that name has happened.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class NotificationCenter {
    struct Observer;

  public:
    // Ends when it is destroyed; after that the callback is not called again (a call under way on another thread
    // runs to its end). May outlive the centre.
    class Subscription {
      public:
        Subscription() = default;
        ~Subscription() { end(); }
        Subscription(Subscription&&) noexcept = default;
        Subscription& operator=(Subscription&& other) noexcept;
        void end();

      private:
        friend class NotificationCenter;
        explicit Subscription(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}
        std::shared_ptr<Observer> observer_;
    };

    static NotificationCenter& defaultCenter();

    [[nodiscard]] Subscription addObserver(std::string_view name, std::function<void()> callback);

    // Calls the observers of that name in the order in which they were added, on the calling thread. Those added
    // meanwhile are not called, those that end meanwhile neither.
    void post(std::string_view name);

  private:
    std::mutex mutex_;
    std::vector<std::shared_ptr<Observer>> observers_;
};

} // namespace platform
