// An import by the service, as seen from the command: the same reply and the same progress as in its own process.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/base/Result.h"
#include "platform/ipc/RemoteService.h"
#include "service/Quillet_ENEX_Import.h"

namespace platform {
class URL;
}

namespace quillet {

class ServiceImport {
  public:
    // An error when there is no bus; whether there is a service shows at the first import.
    static platform::Result<std::unique_ptr<ServiceImport>> connect();

    // Waits for the reply as long as it takes. Errors are the bus's: no service, or one that has died.
    platform::Result<platform::Dictionary> import(const platform::URL& file, const platform::Dictionary& options,
                                                  const platform::URL& directory,
                                                  const Quillet_ENEX_Import::ProgressBlock& progress);
    // Ends the running import after the note under way. Callable from any thread.
    void cancel();

  private:
    explicit ServiceImport(std::unique_ptr<platform::RemoteService> service);

    std::unique_ptr<platform::RemoteService> service_;
    std::string fileURL_;
    Quillet_ENEX_Import::ProgressBlock progress_;
    std::mutex mutex_;
    std::string job_;        // the running job's path, "" before; guarded by mutex_
    bool cancelled_ = false; // guarded by mutex_
};

} // namespace quillet
