#include "service/ImportJob.h"

#include <utility>

#include "platform/ipc/BusError.h"
#include "service/ServiceNames.h"

namespace quillet {

using platform::Array;
using platform::Dictionary;
using platform::Value;

std::string tooLargeText(const Dictionary& reply) {
    const Value* log = platform::find(reply, kLogFileReplyKey);
    return "The outputs are in place; the log is " + (log ? log->utf8() : "missing") + ".";
}

void ImportJob::start(std::shared_ptr<ImportRun> run, platform::OperationQueue& queue, platform::Listener& listener,
                      Quillet_ENEX_Import::ProgressBlock sendProgress, std::shared_ptr<void> place) {
    run_ = std::move(run);
    const std::weak_ptr<ImportJob> weak = weak_from_this();
    run_->begin(
        queue, listener,
        [weak, send = std::move(sendProgress)](const ImportProgress& progress) {
            send(progress);
            if (const auto job = weak.lock()) job->progressed(progress);
        },
        [weak, place = std::move(place)](Dictionary reply) mutable {
            place.reset(); // before the reply, after which the client may call again
            if (const auto job = weak.lock()) job->finish(std::move(reply));
        });
}

void ImportJob::handleCall(platform::MethodCall call, platform::MethodReply reply) {
    if (call.method == kCancelMethod) {
        run_->cancel();
        return reply(Array{}, {});
    }
    const std::lock_guard lock(mutex_);
    if (!reply_) {
        waiting_.push_back(std::move(reply));
    } else {
        reply(Array{Value(*reply_)}, tooLargeText(*reply_));
    }
}

Dictionary ImportJob::properties() const {
    const std::lock_guard lock(mutex_);
    return {{"BytesRead", Value(progress_.bytesRead)},
            {"BytesTotal", Value(progress_.bytesTotal)},
            {"NotesWritten", Value(progress_.notesWritten)},
            {"NotesFailed", Value(progress_.notesFailed)},
            {"Finished", Value(reply_.has_value())}};
}

Value ImportJob::property(std::string_view, std::string_view name) {
    const Dictionary all = properties();
    const Value* value = platform::find(all, name);
    return value ? *value : Value();
}

void ImportJob::progressed(const ImportProgress& progress) {
    {
        const std::lock_guard lock(mutex_);
        progress_ = progress;
    }
    const auto client = connection_.lock();
    if (client && pace_.isDue()) client->emitPropertiesChanged(path_, kJobInterface, properties());
}

void ImportJob::finish(Dictionary reply) {
    std::vector<platform::MethodReply> waiting;
    {
        const std::lock_guard lock(mutex_);
        reply_ = std::move(reply);
        waiting = std::move(waiting_);
    }
    for (platform::MethodReply& answer : waiting) answer(Array{Value(*reply_)}, tooLargeText(*reply_));
    if (const auto client = connection_.lock()) client->emitPropertiesChanged(path_, kJobInterface, properties());
}

} // namespace quillet
