// The size of a picture out of its file's head: nothing is decoded.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

struct ImageSize {
    std::uint32_t width = 0, height = 0; // pixels
    friend bool operator==(const ImageSize&, const ImageSize&) = default;
};

// PNG, JPEG and GIF; nothing for other bytes, for a damaged head, and for a picture without extent.
std::optional<ImageSize> imageSize(std::string_view bytes);

} // namespace platform
