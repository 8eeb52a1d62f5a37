// The confined process that reads one export: it gets a request over its channel, takes from itself what the import
// does not need, and only then opens the export.
#pragma once

#include <functional>

#include "service/WorkerMessages.h"

namespace quillet {

// What a worker does once it is confined; reports all but the finish when it returns an error.
using WorkerBody = std::function<std::optional<platform::Error>(
    const WorkerRequest& request, const WorkerReport& report, platform::MessageChannel& channel)>;

// Imports the request's export. A cancel, or the service's end, lets it finish the note under way.
std::optional<platform::Error> importInWorker(const WorkerRequest& request, const WorkerReport& report,
                                              platform::MessageChannel& channel);

// The worker's main: never returns, since nothing of this process is worth a tidy end.
[[noreturn]] void runWorker(const WorkerBody& body);

} // namespace quillet
