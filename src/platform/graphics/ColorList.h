// Counterpart of NSColorList: the platform's lists of named colors.
#pragma once

#include <optional>
#include <string_view>

#include "platform/graphics/Color.h"

namespace platform {

// The color of a key in a list ("Apple", "Crayons"); nothing when there is no such list or key. Of each list only the
// ends of its gray scale are known here: white, black, and what stands between them.
std::optional<Color> colorWithKey(std::string_view listName, std::string_view key);

} // namespace platform
