// Counterpart of NSXPCListener with its delegate: offers a service on the session bus, started on demand and leaving by
// itself.
//
// Everything runs on the thread that runs run(): the delegate, and all calls to exported objects. Replies and signals
// may be sent from any thread.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/Result.h"
#include "platform/ipc/Connection.h"
#include "platform/ipc/MessageCoding.h"

namespace platform {

class Listener;

class ListenerDelegate {
  public:
    virtual ~ListenerDelegate() = default;

    // Called once for each client, at its first call. The delegate sets the connection's exported object; false turns
    // the client away. @sel listener:shouldAcceptNewConnection:
    virtual bool listenerShouldAcceptNewConnection(Listener& listener,
                                                   const std::shared_ptr<Connection>& connection) = 0;
};

struct ServiceDescription {
    std::string busName;
    std::string objectPath;
    // Introspection data: one document with all interfaces, of the object at objectPath and of those that connections
    // add.
    std::string interfaces;
    std::vector<std::string> objectInterfaces; // those of the object at objectPath
    std::vector<ListSignature> lists;
};

class Listener {
  public:
    enum class End { idle, stopped, busGone };

    Listener(ServiceDescription description, ListenerDelegate& delegate, std::chrono::milliseconds idleTime);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Takes the name and serves until there has been nothing to do for the idle time, or until it is told to stop and
    // the last work has ended. An error when there is no bus or another process has the name.
    //
    // Leaving loses no call: the name is given back first, what arrives within the next half second is served, and only
    // with nothing left to do the process goes. A call to the name after that starts the service anew.
    Result<End> run();

    // Keeps the service up while the result lives. `stop` is called, at most once, when the process is asked to end
    // (SIGTERM, SIGINT, or the bus is gone): the work should come to its end soon, and is waited for. Callable from any
    // thread.
    std::shared_ptr<void> beginWork(std::function<void()> stop);
    // Keeps the service from leaving for idleness alone, while the result lives.
    std::shared_ptr<void> stayForGuest();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace platform
