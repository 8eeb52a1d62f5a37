// Colors of style text (CSS Color 4), as sRGB.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "platform/graphics/Color.h"
#include "platform/html/CssTokenizer.h"

namespace platform {

using CssRGBA = Color::RGBA; // components 0 to 1

// The color that begins at `at` (which then lies behind it): a name, a hash, or a function. `currentcolor` is none:
// the caller looks for it first. Nothing for what is no color.
std::optional<CssRGBA> cssColor(std::span<const CssToken> tokens, std::size_t& at);

// A color attribute (bgcolor, color, text): a name or a hash, else by HTML's rules for legacy colors, which make a
// color of nearly anything.
std::optional<CssRGBA> legacyColor(std::string_view text);

} // namespace platform
