// Passing over the stretches of a text that need no attention.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

namespace platform {

// The units of a text that stop a scan: all outside first…last, and the special ones.
template<class Unit, Unit first, Unit last, Unit... special>
class StopUnits {
  public:
    using Bits = std::make_unsigned_t<std::conditional_t<sizeof(Unit) == 1, std::int8_t, std::int16_t>>;
    static_assert(sizeof(Unit) == sizeof(Bits));

    static constexpr bool stops(Unit unit) {
        return static_cast<Bits>(static_cast<Bits>(unit) - static_cast<Bits>(first)) > kSpan ||
               ((unit == special) || ...);
    }

    static constexpr std::size_t kBlock = 16 / sizeof(Unit); // units, one vector of any processor

    // How much of a whole block's start holds no unit that stops. A vector of the compiler's, since left to itself it
    // makes one of some loops over units and not of others.
    static std::size_t lengthInBlock(const Unit* units) {
        Block block;
        std::memcpy(&block, units, sizeof block);
        auto found = block != block; // nothing yet
        if constexpr (kSpan != std::numeric_limits<Bits>::max())
            found |= static_cast<Block>(block - static_cast<Bits>(first)) > kSpan;
        ((found |= block == static_cast<Bits>(special)), ...);
        const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(found);
        if (halves[0] != 0) return unitsBeforeFirst(halves[0]);
        return kBlock / 2 + (halves[1] != 0 ? unitsBeforeFirst(halves[1]) : kBlock / 2);
    }

  private:
    using Block [[gnu::vector_size(16)]] = Bits;
    static constexpr auto kSpan = static_cast<Bits>(static_cast<Bits>(last) - static_cast<Bits>(first));

    // All bits of a unit are set where it stops.
    static std::size_t unitsBeforeFirst(std::uint64_t found) {
        const int bits = std::endian::native == std::endian::little ? std::countr_zero(found) : std::countl_zero(found);
        return static_cast<std::size_t>(bits) / (8 * sizeof(Unit));
    }
};

// How much of the text's start holds no unit that stops; whole blocks are tested at once.
template<class Stop, class Unit>
std::size_t lengthBefore(std::basic_string_view<Unit> text) {
    if (text.size() < Stop::kBlock) {
        std::size_t length = 0;
        while (length < text.size() && !Stop::stops(text[length])) ++length;
        return length;
    }
    // The last block ends with the text: what it shares with the one before does not stop.
    for (std::size_t start = 0;; start = std::min(start + Stop::kBlock, text.size() - Stop::kBlock)) {
        const std::size_t length = Stop::lengthInBlock(text.data() + start);
        if (length < Stop::kBlock || start + Stop::kBlock == text.size()) return start + length;
    }
}

} // namespace platform
