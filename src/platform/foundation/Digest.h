// Message digests.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace platform {

using MD5Digest = std::array<std::uint8_t, 16>;

// MD5 (RFC 1321): names an attachment, guards nothing.
MD5Digest md5Checksum(std::string_view bytes);

// Two lower-case digits a byte, in byte order.
std::string hexadecimalString(std::span<const std::uint8_t> bytes);

} // namespace platform
