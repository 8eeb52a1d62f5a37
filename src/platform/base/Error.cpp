#include "platform/base/Error.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fmt/core.h>

namespace platform {

namespace {

struct ErrnoRow {
    int errorNumber;
    CocoaError reading, writing;
};

// Rows not here give fileReadUnknown or fileWriteUnknown.
constexpr std::array kErrnoTable{
    ErrnoRow{ENOENT, CocoaError::fileReadNoSuchFile, CocoaError::fileNoSuchFile},
    ErrnoRow{EACCES, CocoaError::fileReadNoPermission, CocoaError::fileWriteNoPermission},
    ErrnoRow{EPERM, CocoaError::fileReadNoPermission, CocoaError::fileWriteNoPermission},
    ErrnoRow{EEXIST, CocoaError::fileReadUnknown, CocoaError::fileWriteFileExists},
    ErrnoRow{ENOTEMPTY, CocoaError::fileReadUnknown, CocoaError::fileWriteFileExists},
    ErrnoRow{ENOSPC, CocoaError::fileReadUnknown, CocoaError::fileWriteOutOfSpace},
    ErrnoRow{EDQUOT, CocoaError::fileReadUnknown, CocoaError::fileWriteOutOfSpace},
    ErrnoRow{EROFS, CocoaError::fileReadUnknown, CocoaError::fileWriteVolumeReadOnly},
    ErrnoRow{ENAMETOOLONG, CocoaError::fileReadUnknown, CocoaError::fileWriteInvalidFileName},
    ErrnoRow{EFBIG, CocoaError::fileReadTooLarge, CocoaError::fileWriteOutOfSpace},
};

CocoaError cocoaCode(int errorNumber, FileAccess access) {
    for (const ErrnoRow& row : kErrnoTable)
        if (row.errorNumber == errorNumber) return access == FileAccess::reading ? row.reading : row.writing;
    return access == FileAccess::reading ? CocoaError::fileReadUnknown : CocoaError::fileWriteUnknown;
}

} // namespace

Error Error::withDescription(std::string_view domain, std::int64_t code, std::string_view description) {
    return Error(domain, code, {{std::string(kLocalizedDescriptionKey), Value(description)}});
}

std::string Error::localizedDescription() const {
    if (const Value* text = find(userInfo, kLocalizedDescriptionKey)) return text->utf8();
    return fmt::format("The operation couldn't be completed. ({} error {}.)", domain, code);
}

const Error* Error::underlyingError() const {
    const Value* underlying = find(userInfo, kUnderlyingErrorKey);
    return underlying ? underlying->asError() : nullptr;
}

std::string Error::description() const {
    std::string text;
    for (const Error* error = this; error; error = error->underlyingError()) {
        if (!text.empty()) text += ": ";
        text += fmt::format("{} ({} {})", error->localizedDescription(), error->domain, error->code);
    }
    return text;
}

Error errorFromErrno(int errorNumber, FileAccess access, std::string_view path) {
    const std::string reason = std::generic_category().message(errorNumber);
    Dictionary information{
        {std::string(kLocalizedDescriptionKey),
         Value(
             fmt::format("{} “{}”: {}", access == FileAccess::reading ? "Cannot read" : "Cannot write", path, reason))},
        {std::string(kFilePathErrorKey), Value(path)},
        {std::string(kUnderlyingErrorKey), Value(Error::withDescription(kPOSIXErrorDomain, errorNumber, reason))},
    };
    return Error(kCocoaErrorDomain, static_cast<std::int64_t>(cocoaCode(errorNumber, access)), std::move(information));
}

} // namespace platform
