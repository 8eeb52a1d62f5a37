// An import that a client has started without waiting for it: an object on the bus, for that client alone.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ipc/Connection.h"
#include "platform/ipc/Listener.h"
#include "platform/operations/OperationQueue.h"
#include "service/ImportRun.h"
#include "service/ProgressPace.h"
#include "service/Quillet_ENEX_Import.h"

namespace quillet {

class ImportJob : public platform::ExportedObject, public std::enable_shared_from_this<ImportJob> {
  public:
    // `stay` is held for as long as the object may be asked for its reply.
    ImportJob(std::string path, std::weak_ptr<platform::Connection> connection, std::shared_ptr<void> stay)
        : path_(std::move(path)), connection_(std::move(connection)), stay_(std::move(stay)) {}

    // `place` is held until the import has ended.
    void start(std::shared_ptr<ImportRun> run, platform::OperationQueue& queue, platform::Listener& listener,
               Quillet_ENEX_Import::ProgressBlock sendProgress, std::shared_ptr<void> place);

    void handleCall(platform::MethodCall call, platform::MethodReply reply) override;
    platform::Value property(std::string_view interface, std::string_view name) override;

  private:
    platform::Dictionary properties() const;
    void progressed(const ImportProgress& progress);
    void finish(platform::Dictionary reply);

    std::string path_;
    std::weak_ptr<platform::Connection> connection_;
    std::shared_ptr<void> stay_;
    std::shared_ptr<ImportRun> run_;
    ProgressPace pace_;

    mutable std::mutex mutex_; // guards everything below
    ImportProgress progress_;
    std::optional<platform::Dictionary> reply_;
    std::vector<platform::MethodReply> waiting_;
};

// Where to look when a reply is too large to be sent.
std::string tooLargeText(const platform::Dictionary& reply);

} // namespace quillet
