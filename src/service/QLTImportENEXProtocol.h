// The interface that the service exports: one operation with one reply. A transport carries its arguments and its
// reply; the import does not know which.
#pragma once

#include <functional>
#include <string_view>

#include "platform/base/Value.h"

namespace platform {
class URL;
}

namespace quillet {

// Keys of the options, read as booleans; an absent one is false.
inline constexpr std::string_view kDebugOption = "Debug";
inline constexpr std::string_view QLTImportENEXOptionWebClippingsAsNotes = "QLTImportENEXOptionWebClippingsAsNotes";

// Keys of the reply. Either the lists and the log file, or the error and the log file.
inline constexpr std::string_view kItemsReplyKey = "Items";
inline constexpr std::string_view kErrorNotesReplyKey = "Error Notes";
inline constexpr std::string_view kLogFileReplyKey = "Log File";
inline constexpr std::string_view kErrorReplyKey = "Error";

class QLTImportENEXProtocol {
  public:
    using Reply = std::move_only_function<void(platform::Dictionary reply)>;

    virtual ~QLTImportENEXProtocol() = default;

    // Imports one export file into a directory. Returns at once; the reply is called exactly once, later, on another
    // thread. @sel importENEXFile:options:toDirectoryAtURL:withReply:
    virtual void importENEXFile(const platform::URL& file, const platform::Dictionary& options,
                                const platform::URL& directory, Reply reply) = 0;
};

} // namespace quillet
