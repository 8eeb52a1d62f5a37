#include "programs/ServiceImport.h"

#include <utility>

#include "platform/foundation/URL.h"
#include "platform/ipc/BusError.h"
#include "service/ServiceNames.h"

namespace quillet {

using platform::Array;
using platform::Dictionary;
using platform::Result;
using platform::URL;
using platform::Value;

ServiceImport::ServiceImport(std::unique_ptr<platform::RemoteService> service) : service_(std::move(service)) {
    service_->onSignal(kJobsInterface, kProgressSignal, [this](const Array& arguments) {
        constexpr std::size_t kArguments = 5;
        if (!progress_ || arguments.size() != kArguments || arguments[0].utf8() != fileURL_) return;
        const auto number = [&](std::size_t index) {
            return static_cast<std::uint64_t>(arguments[index].integerValue());
        };
        progress_({number(1), number(2), number(3), number(4)});
    });
}

Result<std::unique_ptr<ServiceImport>> ServiceImport::connect() {
    return std::unique_ptr<ServiceImport>(new ServiceImport(TRY(platform::RemoteService::connect(kServiceBusName))));
}

Result<Dictionary> ServiceImport::import(const URL& file, const Dictionary& options, const URL& directory,
                                         const Quillet_ENEX_Import::ProgressBlock& progress) {
    fileURL_ = file.absoluteString();
    progress_ = progress;
    const Array started =
        TRY(service_->call(kServicePath, kJobsInterface, std::string(kStartImportMethod),
                           {Value(fileURL_), Value(options), Value(directory.absoluteString())}, kImportSignature));
    const std::string job = started.empty() ? std::string() : started.front().utf8();
    bool cancelled = false;
    {
        const std::lock_guard lock(mutex_);
        job_ = job;
        cancelled = cancelled_;
    }
    if (cancelled) cancel();
    Array reply = TRY(service_->call(job, kJobInterface, std::string(kGetReplyMethod), {}, "()"));
    if (auto* members = reply.empty() ? nullptr : reply.front().as<Dictionary>()) return std::move(*members);
    return platform::failure(platform::busError(platform::BusError::failed, "The service's reply is none."));
}

void ServiceImport::cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    if (!job_.empty()) service_->send(job_, kJobInterface, std::string(kCancelMethod));
}

} // namespace quillet
