#include "platform/archive/ArchivedFields.h"

namespace platform {

Error undecodable(std::string_view description) {
    return Error::withDescription(kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::coderReadCorrupt),
                                  description);
}

} // namespace platform
