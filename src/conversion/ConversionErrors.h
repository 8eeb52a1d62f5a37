// Errors of turning one note into its output.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/base/Error.h"

namespace quillet {

inline constexpr std::string_view EvernoteXMLItemErrorDomain = "EvernoteXMLItemErrorDomain";
enum EvernoteXMLItemErrorCode : std::int64_t {
    kInvalidTagErrorCode = 1001, // a tag of the note markup whose end is missing; has a description
    kNoPageErrorCode = 1002,     // the note cannot be an HTML page; without user information
};

inline platform::Error noPageError() {
    return platform::Error(EvernoteXMLItemErrorDomain, kNoPageErrorCode);
}

} // namespace quillet
