#include "service/ImportWorker.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include "conversion/NoteOutput.h"
#include "enex/EvernoteXMLParseOperation.h"
#include "platform/base/SystemLog.h"
#include "platform/ipc/WorkerProcess.h"
#include "platform/operations/OperationQueue.h"
#include "service/GroupSuite.h"
#include "service/ImportConfinement.h"
#include "service/NoteDispatch.h"

namespace quillet {

using platform::Error;
using platform::MessageChannel;
using platform::Result;

std::optional<Error> importInWorker(const WorkerRequest& request, const WorkerReport& report, MessageChannel& channel) {
    readGroupSuite();
    NoteOutput output(request.directory);
    const auto operation =
        EvernoteXMLParseOperation::evernoteParseOperationForFileAtURL(request.file, request.directory);
    operation->setDebugMode(request.debug);
    operation->setSaveWebClippingsAsNotes(request.webClippingsAsNotes);
    operation->setLogStream(report.logStream());
    operation->getItemDict = [&output](EvernoteXMLItem& item) -> Result<std::optional<ItemEntry>> {
        return TRY(getItemDict(item, output));
    };
    operation->parseOperationDidExportItemBlock = [&report](Result<ItemEntry> item) {
        report.exported(std::move(item));
    };
    operation->progressHandler = [&report](std::uint64_t read, std::uint64_t total) { report.progress(read, total); };

    std::optional<Error> outcome;
    std::atomic<bool> finished = false;
    operation->parseOperationCompletionBlock = [&](const std::optional<Error>& error) {
        outcome = error;
        finished = true;
        platform::wakeMainQueue();
    };
    // A message can only be a cancel; no message means that the service is gone.
    std::thread([operation, &channel] {
        (void)channel.receive();
        operation->cancel();
    }).detach();
    platform::OperationQueue queue;
    queue.addOperation(operation);
    platform::runMainQueueUntil([&] { return finished.load(); });
    queue.waitUntilAllOperationsAreFinished();
    if (const Result<> flushed = output.flush(); !flushed) platform::systemLog(flushed.error().description());
    return outcome;
}

void runWorker(const WorkerBody& body) {
    MessageChannel channel{platform::Descriptor(platform::WorkerProcess::kChannelDescriptor)};
    const WorkerReport report(channel);
    platform::setSystemLogSink([&report](std::string_view entry) { report.systemLog(entry); });

    const auto message = channel.receive();
    if (!message || !*message) std::_Exit(EXIT_FAILURE);
    const Result<WorkerRequest> request = WorkerRequest::fromMessage(**message);
    if (!request) std::_Exit(EXIT_FAILURE);
    const std::array exports{request->file.path()};
    if (const Result<> confined = confineForImport(exports, request->directory.path()); !confined) {
        report.finish(confined.error());
    } else {
        report.finish(body(*request, report, channel));
    }
    std::_Exit(EXIT_SUCCESS);
}

} // namespace quillet
