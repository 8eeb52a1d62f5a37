// One import that a client has asked for: waits for its turn on the client's queue, runs, and can be ended in either
// state.
#pragma once

#include <atomic>
#include <memory>

#include "platform/ipc/Listener.h"
#include "platform/operations/OperationQueue.h"
#include "service/ImportCall.h"
#include "service/Quillet_ENEX_Import.h"

namespace quillet {

class ImportRun : public std::enable_shared_from_this<ImportRun> {
  public:
    ImportRun(std::shared_ptr<Quillet_ENEX_Import> importer, ImportCall call)
        : importer_(std::move(importer)), call_(std::move(call)) {}

    // Starts the import on the queue: opening the destination may take as long as its file system likes, and other
    // clients do not wait for it. The service stays up until the reply, which comes on another thread.
    void begin(platform::OperationQueue& queue, platform::Listener& listener,
               Quillet_ENEX_Import::ProgressBlock progress, QLTImportENEXProtocol::Reply reply);
    // Callable from any thread.
    void cancel();

  private:
    void start(Quillet_ENEX_Import::ProgressBlock progress, std::shared_ptr<QLTImportENEXProtocol::Reply> finish);

    std::shared_ptr<Quillet_ENEX_Import> importer_;
    ImportCall call_;
    std::atomic<bool> cancelled_ = false;
};

} // namespace quillet
