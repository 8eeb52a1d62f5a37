// What one client of the service sees: its importer, its jobs, and progress for it alone.
#pragma once

#include <memory>

#include "platform/ipc/Connection.h"
#include "platform/ipc/Listener.h"
#include "service/ConfinedParseOperation.h"
#include "service/ImportCall.h"
#include "service/Quillet_ENEX_Import.h"

namespace quillet {

// One importer serves all ImportENEXFile calls of the client; each job has one of its own, so that jobs do not mix.
class ImportClient : public platform::ExportedObject {
  public:
    ImportClient(platform::Listener& listener, std::weak_ptr<platform::Connection> connection, WorkerProgram program);

    void handleCall(platform::MethodCall call, platform::MethodReply reply) override;
    platform::Value property(std::string_view interface, std::string_view name) override;

  private:
    void import(const ImportCall& call, platform::MethodReply reply);
    platform::Result<platform::Array> startJob(const ImportCall& call);
    std::shared_ptr<Quillet_ENEX_Import> makeImporter() const;
    Quillet_ENEX_Import::ProgressBlock progressSender(const platform::URL& file) const;

    platform::Listener& listener_;
    std::weak_ptr<platform::Connection> connection_;
    WorkerProgram program_;
    std::shared_ptr<Quillet_ENEX_Import> importer_;
};

} // namespace quillet
