// Reads the XML property list form. See propertyListFromData.
#pragma once

#include <string_view>

#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

Result<Value> valueFromXMLPropertyList(std::string_view bytes);

} // namespace platform
