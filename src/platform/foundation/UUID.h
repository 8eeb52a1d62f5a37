// Counterpart of NSUUID.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace platform {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    // A random one (RFC 4122, version 4), from the environment's source of identifiers.
    static UUID random();

    // "68753A44-4D6F-1226-9C60-0050E4C00067": 36 characters, upper case.
    std::string string() const;

    friend bool operator==(const UUID&, const UUID&) = default;
};

} // namespace platform
