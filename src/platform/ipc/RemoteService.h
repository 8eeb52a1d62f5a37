// A client's side of a service on the session bus: calls that wait for their answer as long as it takes, and signals.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Result.h"

namespace platform {

// Used on one thread; only send may be called from another.
class RemoteService {
  public:
    static Result<std::unique_ptr<RemoteService>> connect(const std::string& busName);
    ~RemoteService();
    RemoteService(const RemoteService&) = delete;
    RemoteService& operator=(const RemoteService&) = delete;

    // Waits without a time limit; signals are delivered meanwhile. Errors of the bus come in kBusErrorDomain.
    Result<Array> call(const std::string& path, const std::string& interface, const std::string& method,
                       const Array& arguments, std::string_view signature);
    // Sends a call whose answer nobody waits for. Callable from any thread, also while another call waits.
    void send(const std::string& path, const std::string& interface, const std::string& method);
    void onSignal(const std::string& interface, const std::string& signal, std::function<void(const Array&)> handler);

  private:
    struct State;
    explicit RemoteService(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace platform
