#include "service/WorkerMessages.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "service/operations/OutputStream.h"

namespace quillet {

using platform::Array;
using platform::Dictionary;
using platform::Error;
using platform::Result;
using platform::URL;
using platform::Value;

namespace {

constexpr std::string_view kFileKey = "file";
constexpr std::string_view kDirectoryKey = "directory";
constexpr std::string_view kDebugKey = "debug";
constexpr std::string_view kWebClippingsAsNotesKey = "webClippingsAsNotes";

Result<URL> urlUnder(const Dictionary& message, std::string_view key) {
    const Value* text = platform::find(message, key);
    const auto url = text ? URL::fromString(text->utf8()) : std::nullopt;
    if (url) return *url;
    return platform::failure(Error::withDescription(platform::kPOSIXErrorDomain, EBADMSG,
                                                    "The request has no URL under " + std::string(key) + "."));
}

bool flagUnder(const Dictionary& message, std::string_view key) {
    const Value* flag = platform::find(message, key);
    return flag && flag->boolValue();
}

} // namespace

Dictionary WorkerRequest::message() const {
    return {{std::string(kFileKey), Value(file.absoluteString())},
            {std::string(kDirectoryKey), Value(directory.absoluteString())},
            {std::string(kDebugKey), Value(debug)},
            {std::string(kWebClippingsAsNotesKey), Value(webClippingsAsNotes)}};
}

Result<WorkerRequest> WorkerRequest::fromMessage(const Dictionary& message) {
    return WorkerRequest{TRY(urlUnder(message, kFileKey)), TRY(urlUnder(message, kDirectoryKey)),
                         flagUnder(message, kDebugKey), flagUnder(message, kWebClippingsAsNotesKey)};
}

void WorkerReport::send(std::string_view event, Value value) const {
    if (!channel_.send({{std::string(event), std::move(value)}})) std::_Exit(EXIT_FAILURE);
}

void WorkerReport::exported(Result<ItemEntry> item) const {
    item ? send(kEntryEvent, Value(*std::move(item))) : send(kNoteErrorEvent, Value(item.error()));
}

void WorkerReport::progress(std::uint64_t read, std::uint64_t total) const {
    send(kProgressEvent, Value(Array{Value(read), Value(total)}));
}

void WorkerReport::systemLog(std::string_view entry) const {
    send(kSystemLogEvent, Value(entry));
}

void WorkerReport::finish(const std::optional<Error>& error) const {
    send(kFinishEvent, error ? Value(*error) : Value(true));
}

std::shared_ptr<OutputStream> WorkerReport::logStream() const {
    return std::make_shared<OutputStream>([report = *this](std::string_view bytes) {
        report.send(kLogEvent, Value(platform::Data(std::string(bytes))));
        return static_cast<std::ptrdiff_t>(bytes.size());
    });
}

} // namespace quillet
