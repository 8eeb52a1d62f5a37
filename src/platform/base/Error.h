// Counterpart of NSError: what failed, as a value that travels up unchanged.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/base/Value.h"

namespace platform {

inline constexpr std::string_view kLocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr std::string_view kUnderlyingErrorKey = "NSUnderlyingError";
inline constexpr std::string_view kFilePathErrorKey = "NSFilePath";

inline constexpr std::string_view kCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view kPOSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr std::string_view kXMLParserErrorDomain = "NSXMLParserErrorDomain";

struct Error {
    std::string domain;
    std::int64_t code = 0;
    Dictionary userInfo; // the description and the underlying error live here, under the keys above

    Error(std::string_view errorDomain, std::int64_t errorCode, Dictionary information = {})
        : domain(errorDomain), code(errorCode), userInfo(std::move(information)) {}

    static Error withDescription(std::string_view domain, std::int64_t code, std::string_view description);

    // The description in UTF-8; without one, "The operation couldn't be completed." with domain and code.
    std::string localizedDescription() const;

    // The underlying error, or null.
    const Error* underlyingError() const;

    // One line for logs: the localized description, then "(domain code)", then the underlying error's line.
    std::string description() const;

    friend bool operator==(const Error&, const Error&) = default;
};

// Codes of NSCocoaErrorDomain that file work gives.
enum class CocoaError : std::int64_t {
    fileNoSuchFile = 4,
    fileReadUnknown = 256,
    fileReadNoPermission = 257,
    fileReadCorruptFile = 259,
    fileReadNoSuchFile = 260,
    fileReadTooLarge = 263,
    fileWriteUnknown = 512,
    fileWriteNoPermission = 513,
    fileWriteInvalidFileName = 514,
    fileWriteFileExists = 516,
    fileWriteOutOfSpace = 640,
    fileWriteVolumeReadOnly = 642,
    propertyListReadCorrupt = 3840,
    coderReadCorrupt = 4864,
    xpcConnectionInterrupted = 4097,
};

enum class FileAccess { reading, writing };

// The error of a failed file call: the NSCocoaErrorDomain code that errno means for this kind of access, the path
// under NSFilePath, and the NSPOSIXErrorDomain error underneath. The description names the path and the reason.
Error errorFromErrno(int errorNumber, FileAccess access, std::string_view path);

} // namespace platform
