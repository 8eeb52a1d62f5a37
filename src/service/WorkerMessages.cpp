#include "service/WorkerMessages.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "enex/EvernoteXMLParseOperation.h"
#include "service/NoteDispatch.h"
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

constexpr std::string_view kWrittenButTooLongText =
    "The note was written, but its title or another of its properties is too long for the reply.";
constexpr std::string_view kTooLongText = "The note was not written, and the reason is too long for the reply.";

// Of a log line or an entry of the system log, in bytes.
constexpr std::size_t kMaximumPiece = std::size_t{1} << 20;

// As much of a title as tells which note it is.
std::u16string beginning(const Value& title) {
    constexpr std::size_t kUnits = 200;
    const auto* text = title.as<std::u16string>();
    return text ? text->substr(0, kUnits) : std::u16string();
}

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
    // Not inside the braces: g++ 12 forgets what it has made there when a later member returns.
    URL file = TRY(urlUnder(message, kFileKey));
    URL directory = TRY(urlUnder(message, kDirectoryKey));
    return WorkerRequest{std::move(file), std::move(directory), flagUnder(message, kDebugKey),
                         flagUnder(message, kWebClippingsAsNotesKey)};
}

// False when the message would be too long.
bool WorkerReport::sendIfShortEnough(std::string_view event, Value value) const {
    const Result<> sent = channel_.send({{std::string(event), std::move(value)}});
    if (sent) return true;
    if (sent.error().code != EMSGSIZE) std::_Exit(EXIT_FAILURE);
    return false;
}

// What is too long here has no shorter form.
void WorkerReport::send(std::string_view event, Value value) const {
    if (!sendIfShortEnough(event, std::move(value))) std::_Exit(EXIT_FAILURE);
}

void WorkerReport::exported(Result<ItemEntry> item) const {
    const Value* title =
        item ? platform::find(*item, kNameItemKey) : platform::find(item.error().userInfo, kNoteNameKey);
    const Value shownTitle = title ? Value(beginning(*title)) : Value();
    const bool written = item.has_value();
    if (written ? sendIfShortEnough(kEntryEvent, Value(*std::move(item)))
                : sendIfShortEnough(kNoteErrorEvent, Value(item.error())))
        return;
    Error error =
        Error::withDescription(platform::kPOSIXErrorDomain, EMSGSIZE, written ? kWrittenButTooLongText : kTooLongText);
    if (!shownTitle.isNull()) error.userInfo[std::string(kNoteNameKey)] = shownTitle;
    send(kNoteErrorEvent, Value(std::move(error)));
}

void WorkerReport::progress(std::uint64_t read, std::uint64_t total) const {
    send(kProgressEvent, Value(Array{Value(read), Value(total)}));
}

void WorkerReport::systemLog(std::string_view entry) const {
    send(kSystemLogEvent, Value(entry.substr(0, kMaximumPiece)));
}

void WorkerReport::finish(const std::optional<Error>& error) const {
    if (sendIfShortEnough(kFinishEvent, error ? Value(*error) : Value(true))) return;
    send(kFinishEvent, Value(Error(error->domain, error->code)));
}

std::shared_ptr<OutputStream> WorkerReport::logStream() const {
    return std::make_shared<OutputStream>([report = *this](std::string_view bytes) {
        for (std::string_view rest = bytes; !rest.empty(); rest.remove_prefix(std::min(rest.size(), kMaximumPiece)))
            report.send(kLogEvent, Value(platform::Data(std::string(rest.substr(0, kMaximumPiece)))));
        return static_cast<std::ptrdiff_t>(bytes.size());
    });
}

} // namespace quillet
