// What the service and the confined worker of one import say to each other: dictionaries over a channel.
//
// First the request goes to the worker; later, perhaps, a cancel. The worker answers with any number of events, each a
// dictionary of one key, and last with the finish.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "enex/EvernoteXMLItem.h"
#include "platform/base/Result.h"
#include "platform/foundation/URL.h"
#include "platform/ipc/MessageChannel.h"

namespace quillet {

class OutputStream;

inline constexpr std::string_view kCancelMessage = "cancel";

inline constexpr std::string_view kEntryEvent = "entry";         // an item entry
inline constexpr std::string_view kNoteErrorEvent = "noteError"; // the error of a note that failed
inline constexpr std::string_view kProgressEvent = "progress";   // an array: bytes read, bytes in all
inline constexpr std::string_view kLogEvent = "log"; // bytes for the import's log, a piece of a line at least
inline constexpr std::string_view kSystemLogEvent = "systemLog"; // an entry for the system log
inline constexpr std::string_view kFinishEvent = "finish";       // true, or the error that ended the import

struct WorkerRequest {
    platform::URL file;
    platform::URL directory;
    bool debug = false;
    bool webClippingsAsNotes = false;

    platform::Dictionary message() const;
    static platform::Result<WorkerRequest> fromMessage(const platform::Dictionary& message);
};

// The worker's end: sends events. When the service is gone there is nothing left to work for, and the process ends.
//
// A channel's messages have a greatest size, and a note may have a title or a source that passes it: such a note is
// reported as failed, in a few words, and the import goes on.
class WorkerReport {
  public:
    explicit WorkerReport(platform::MessageChannel& channel) : channel_(channel) {}

    void exported(platform::Result<ItemEntry> item) const;
    void progress(std::uint64_t read, std::uint64_t total) const;
    void systemLog(std::string_view entry) const;
    void finish(const std::optional<platform::Error>& error) const;
    // A stream whose lines are log events.
    std::shared_ptr<OutputStream> logStream() const;

  private:
    void send(std::string_view event, platform::Value value) const;
    bool sendIfShortEnough(std::string_view event, platform::Value value) const;

    platform::MessageChannel& channel_;
};

} // namespace quillet
