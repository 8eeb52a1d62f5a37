// Reads the binary property list form. See propertyListFromData.
#pragma once

#include <string_view>

#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

bool isBinaryPropertyList(std::string_view bytes);

Result<Value> valueFromBinaryPropertyList(std::string_view bytes);

} // namespace platform
