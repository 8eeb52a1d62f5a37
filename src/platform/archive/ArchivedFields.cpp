#include "platform/archive/ArchivedFields.h"

#include <cmath>

namespace platform {

double ArchivedFields::decodeLength(std::string_view key) const {
    const double length = decodeDouble(key);
    return std::isfinite(length) ? length : 0;
}

Error undecodable(std::string_view description) {
    return Error::withDescription(kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::coderReadCorrupt),
                                  description);
}

} // namespace platform
