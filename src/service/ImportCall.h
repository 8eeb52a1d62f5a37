// The arguments of an import as they come over the bus, checked.
#pragma once

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"

namespace quillet {

struct ImportCall {
    platform::URL file;
    platform::Dictionary options;
    platform::URL directory;

    // InvalidArgs for a URL that is no file URL of this machine, and for an option of the wrong type.
    static platform::Result<ImportCall> fromArguments(const platform::Array& arguments);
};

} // namespace quillet
