// Accepts every client of the service and gives each an importer of its own.
#pragma once

#include "platform/ipc/Listener.h"
#include "service/Capacity.h"
#include "service/ConfinedParseOperation.h"

namespace quillet {

// Clients share nothing but the number of imports that may run; what else the delegate holds says how workers are
// started.
class ServiceDelegate : public platform::ListenerDelegate {
  public:
    // Each import is a process that may take gigabytes.
    static constexpr int kMaximumImports = 64;

    explicit ServiceDelegate(WorkerProgram program) : program_(std::move(program)) {}

    // @sel listener:shouldAcceptNewConnection:
    bool listenerShouldAcceptNewConnection(platform::Listener& listener,
                                           const std::shared_ptr<platform::Connection>& connection) override;

  private:
    WorkerProgram program_;
    Capacity imports_{kMaximumImports};
};

// The service as it is offered on the bus.
platform::ServiceDescription serviceDescription();

} // namespace quillet
