// The fonts that this system knows without asking anyone: families, faces, metrics. Only Font.cpp and the font manager
// look in here.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace platform {

// Vertical metrics of a face, in units of its em square. The descent is positive here.
struct FontMetrics {
    int unitsPerEm = 0, ascent = 0, descent = 0, lineGap = 0;
};

struct FontFace {
    std::string_view postScriptName;
    std::uint32_t traits; // FontTrait bits
    int weight;           // 0 to 15, as the font manager counts: 5 regular, 9 bold
};

struct FontFamily {
    std::string_view name;
    FontMetrics metrics;             // of all faces
    std::span<const FontFace> faces; // the regular one first
};

std::span<const FontFamily> fontFamilies();

} // namespace platform
