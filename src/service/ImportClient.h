// What one client of the service sees: its importer, its jobs, and progress for it alone.
#pragma once

#include <memory>

#include "platform/ipc/Connection.h"
#include "platform/ipc/Listener.h"
#include "platform/operations/OperationQueue.h"
#include "service/Capacity.h"
#include "service/ConfinedParseOperation.h"
#include "service/ImportCall.h"
#include "service/Quillet_ENEX_Import.h"

namespace quillet {

// One importer serves all ImportENEXFile calls of the client; each job has one of its own, so that jobs do not mix.
//
// A client may have so many imports under way, and so many jobs whose replies are kept until it leaves; all clients
// together have places for so many imports. What goes beyond is answered with LimitsExceeded.
class ImportClient : public platform::ExportedObject {
  public:
    static constexpr int kMaximumImports = 16;
    static constexpr int kMaximumJobs = 1000;

    ImportClient(platform::Listener& listener, std::weak_ptr<platform::Connection> connection, WorkerProgram program,
                 Capacity importsInAll);

    void handleCall(platform::MethodCall call, platform::MethodReply reply) override;
    platform::Value property(std::string_view interface, std::string_view name) override;

  private:
    using Place = std::shared_ptr<void>;

    void import(const ImportCall& call, platform::MethodReply reply);
    platform::Result<platform::Array> startJob(const ImportCall& call);
    platform::Result<Place> takePlace() const;
    std::shared_ptr<Quillet_ENEX_Import> makeImporter() const;
    Quillet_ENEX_Import::ProgressBlock progressSender(const platform::URL& file) const;

    platform::Listener& listener_;
    std::weak_ptr<platform::Connection> connection_;
    WorkerProgram program_;
    std::shared_ptr<Quillet_ENEX_Import> importer_;
    platform::OperationQueue calls_; // this client's imports are started here, one after another
    Capacity importsInAll_;
    Capacity imports_{kMaximumImports};
    Capacity jobs_{kMaximumJobs};
};

} // namespace quillet
