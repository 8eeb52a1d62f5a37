// Fonts that this machine has besides those of the built-in table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/graphics/FontTable.h"

namespace platform {

struct InstalledFont {
    std::string family;
    std::uint32_t traits = 0; // FontTrait bits
    int weight = 5;           // 0 to 15
    FontMetrics metrics;
};

// Asks fontconfig, which reads its configuration at the first call: callers look in the table first. Nothing when no
// scalable font has exactly this PostScript name, or fontconfig cannot be used here.
std::optional<InstalledFont> installedFontNamed(const std::string& postScriptName);

} // namespace platform
