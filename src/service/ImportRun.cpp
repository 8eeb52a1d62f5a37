#include "service/ImportRun.h"

#include <cerrno>
#include <exception>
#include <string>
#include <utility>

#include "platform/base/SystemLog.h"

namespace quillet {

using platform::Dictionary;
using platform::Error;
using platform::Value;

namespace {

// The reply to an import that has not begun: there is no thread for it, or no memory.
Dictionary notBegun(const ImportCall& call, const std::exception& reason) {
    const Error error = Error::withDescription(platform::kPOSIXErrorDomain, EAGAIN,
                                               std::string("The import could not be started: ") + reason.what());
    platform::systemLog(error.description());
    return {{std::string(kErrorReplyKey), Value(error)},
            {std::string(kLogFileReplyKey),
             Value(Quillet_ENEX_Import::logFileURL(call.file, call.directory).absoluteString())}};
}

} // namespace

void ImportRun::begin(platform::OperationQueue& queue, platform::Listener& listener,
                      Quillet_ENEX_Import::ProgressBlock progress, QLTImportENEXProtocol::Reply reply) {
    auto work = listener.beginWork([weak = weak_from_this()] {
        if (const auto run = weak.lock()) run->cancel();
    });
    // The importer keeps the reply, and with it this run, until it has replied.
    auto finish = std::make_shared<QLTImportENEXProtocol::Reply>(
        [self = shared_from_this(), held = std::move(reply), work = std::move(work)](Dictionary answer) mutable {
            held(std::move(answer));
            work.reset();
        });
    try {
        queue.addOperationWithBlock([self = shared_from_this(), progress = std::move(progress), finish]() mutable {
            self->start(std::move(progress), std::move(finish));
        });
    } catch (const std::exception& exception) {
        (*finish)(notBegun(call_, exception));
    }
}

void ImportRun::start(Quillet_ENEX_Import::ProgressBlock progress,
                      std::shared_ptr<QLTImportENEXProtocol::Reply> finish) {
    // Exceptions end at this boundary, too: one import failed, the service stays.
    try {
        importer_->setProgressBlock(std::move(progress));
        importer_->importENEXFile(call_.file, call_.options, call_.directory,
                                  [finish](Dictionary answer) { (*finish)(std::move(answer)); });
    } catch (const std::exception& exception) {
        return (*finish)(notBegun(call_, exception));
    }
    if (cancelled_) importer_->cancel(); // it came before the import had begun
}

void ImportRun::cancel() {
    cancelled_ = true;
    importer_->cancel();
}

} // namespace quillet
