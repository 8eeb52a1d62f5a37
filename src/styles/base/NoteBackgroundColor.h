// The background of notes as the user chose it.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/base/Data.h"
#include "platform/graphics/Color.h"

namespace quillet {

inline constexpr std::string_view kNoteDefaultBackgroundColorDefaultsKey = "QLTNoteDefaultBackgroundColor";

// Turns archived data back into a color and refuses everything else.
class QLTSecureUnarchiveColorFromDataTransformer {
  public:
    static std::vector<std::string_view> allowedTopLevelClasses() { return {"NSColor"}; }
    // Nothing for data that is no archive, or holds another object. @sel transformedValue:
    std::optional<platform::Color> transformedValue(const platform::Data& data) const;
};

// Pure white or black, like no choice at all, means the system's own background, which follows the appearance.
platform::Color defaultNoteBackgroundColor();

} // namespace quillet
