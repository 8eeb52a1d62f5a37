#include "service/ConfinedParseOperation.h"

#include <cerrno>
#include <exception>
#include <utility>

#include "platform/base/SystemLog.h"
#include "service/WorkerMessages.h"

namespace quillet {

using platform::Array;
using platform::Dictionary;
using platform::Error;
using platform::Result;
using platform::Value;

namespace {

Error nonsense(std::string_view event) {
    return Error::withDescription(platform::kPOSIXErrorDomain, EBADMSG,
                                  "The worker sent an event that is none: " + std::string(event));
}

} // namespace

void ConfinedParseOperation::start() {
    setOperationExecuting(true);
    Result<> outcome = converse();
    if (!outcome) finishWithError(deathError(outcome.error()));
}

// What a worker sends may be an attacker's: whatever it does to this process ends its own import alone.
Result<> ConfinedParseOperation::converse() {
    try {
        TRY(startWorker());
        return readEvents();
    } catch (const std::exception& exception) {
        return platform::failure(Error::withDescription(platform::kPOSIXErrorDomain, ENOMEM, exception.what()));
    }
}

Result<> ConfinedParseOperation::startWorker() {
    auto worker = TRY(platform::WorkerProcess::start(program_.path, program_.arguments));
    const WorkerRequest request{evernoteFileURL(), directoryURL(), debugMode(), saveWebClippingsAsNotes()};
    TRY(worker->channel().send(request.message()));
    const std::lock_guard lock(mutex_);
    worker_ = std::move(worker);
    if (isCancelled()) sendCancel();
    return {};
}

void ConfinedParseOperation::cancel() {
    EvernoteXMLParseOperation::cancel();
    const std::lock_guard lock(mutex_);
    if (worker_) sendCancel();
}

// Once: a worker reads no second one, and a full channel would hold up who cancels. One that is gone needs none, and
// its end is noticed elsewhere.
void ConfinedParseOperation::sendCancel() {
    if (std::exchange(cancelSent_, true)) return;
    (void)worker_->channel().send({{std::string(kCancelMessage), Value(true)}});
}

Result<> ConfinedParseOperation::readEvents() {
    while (!operationFinished()) {
        const std::optional<Dictionary> message = TRY(worker_->channel().receive(program_.patience));
        if (!message)
            return platform::failure(
                Error::withDescription(platform::kPOSIXErrorDomain, ECONNRESET, "The worker ended without a finish."));
        TRY(handleMessage(*message));
    }
    return {};
}

// Nothing counts behind the finish: the reply has been sent.
Result<> ConfinedParseOperation::handleMessage(const Dictionary& message) {
    for (const auto& [event, value] : message) {
        if (operationFinished()) break;
        TRY(handleEvent(event, value));
    }
    return {};
}

Result<> ConfinedParseOperation::handleEvent(std::string_view event, const Value& value) {
    const auto* members = value.as<Dictionary>();
    const auto* list = value.as<Array>();
    const auto* bytes = value.as<platform::Data>();
    if (event == kEntryEvent && members) {
        parseOperationDidExportItemBlock(*members);
    } else if (event == kNoteErrorEvent && value.asError()) {
        parseOperationDidExportItemBlock(platform::failure(*value.asError()));
    } else if (event == kProgressEvent && list && list->size() == 2) {
        if (progressHandler)
            progressHandler(static_cast<std::uint64_t>(list->front().integerValue()),
                            static_cast<std::uint64_t>(list->back().integerValue()));
    } else if (event == kLogEvent && bytes) {
        if (logStream()) logStream()->write(bytes->bytes());
    } else if (event == kSystemLogEvent) {
        platform::systemLog(value.utf8());
    } else if (event == kFinishEvent) {
        workerFinished_ = true;
        if (const Error* error = value.asError()) {
            finishWithError(*error);
        } else {
            setOperationFinished(true);
        }
    } else {
        return platform::failure(nonsense(event));
    }
    return {};
}

Error ConfinedParseOperation::deathError(const Error& reason) {
    std::string text = "The import process could not be started.";
    if (worker_) {
        worker_->kill(); // one that still runs is not to write any longer
        text = "The import process ended before the import: " + worker_->waitUntilExit() + ".";
    }
    Error error = Error::withDescription(platform::kCocoaErrorDomain,
                                         std::to_underlying(platform::CocoaError::xpcConnectionInterrupted), text);
    error.userInfo[std::string(platform::kUnderlyingErrorKey)] = Value(reason);
    platform::systemLog(error.description());
    return error;
}

// The worker has logged its own finish.
void ConfinedParseOperation::changeOperationFinished(bool finished) {
    if (!workerFinished_ || finished == operationFinished())
        return EvernoteXMLParseOperation::changeOperationFinished(finished);
    QLTAsynchronousOperation::changeOperationFinished(finished);
    setOperationExecuting(false);
    if (parseOperationCompletionBlock) parseOperationCompletionBlock(operationError());
}

} // namespace quillet
