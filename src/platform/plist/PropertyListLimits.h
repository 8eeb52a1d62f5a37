// What the readers and writers refuse, and how they say so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/base/Result.h"

namespace platform {

// Containers inside each other.
inline constexpr std::size_t kMaximumPropertyListDepth = 512;
inline constexpr std::size_t kMaximumPropertyListSize = std::size_t{1} << 30;

inline constexpr std::int64_t kPropertyListWriteError = 3851; // of NSCocoaErrorDomain

inline std::unexpected<Error> corruptPropertyList(std::string_view description) {
    constexpr auto kCode = static_cast<std::int64_t>(CocoaError::propertyListReadCorrupt);
    return failure(Error::withDescription(kCocoaErrorDomain, kCode, description));
}

inline std::unexpected<Error> unwritable(std::string_view description) {
    return failure(Error::withDescription(kCocoaErrorDomain, kPropertyListWriteError, description));
}

} // namespace platform
