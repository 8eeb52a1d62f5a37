// Accepts every client of the service and gives each an importer of its own.
#pragma once

#include "platform/ipc/Listener.h"
#include "service/ConfinedParseOperation.h"

namespace quillet {

// Nothing is shared between clients; what the delegate holds says only how workers are started.
class ServiceDelegate : public platform::ListenerDelegate {
  public:
    explicit ServiceDelegate(WorkerProgram program) : program_(std::move(program)) {}

    // @sel listener:shouldAcceptNewConnection:
    bool listenerShouldAcceptNewConnection(platform::Listener& listener,
                                           const std::shared_ptr<platform::Connection>& connection) override;

  private:
    WorkerProgram program_;
};

// The service as it is offered on the bus.
platform::ServiceDescription serviceDescription();

} // namespace quillet
