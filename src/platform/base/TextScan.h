// Passing over the stretches of a text that need no attention.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
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
    // The same as 1 or 0, in numbers of the unit's size and without branches, for the compiler's vectors.
    static constexpr Bits stopBit(Unit unit) {
        const auto bits = static_cast<Bits>(unit);
        Bits found = static_cast<Bits>(bits - static_cast<Bits>(first)) > kSpan ? 1 : 0;
        ((found = static_cast<Bits>(found | static_cast<Bits>(bits == static_cast<Bits>(special) ? 1 : 0))), ...);
        return found;
    }

  private:
    static constexpr auto kSpan = static_cast<Bits>(static_cast<Bits>(last) - static_cast<Bits>(first));
};

// How much of the text's start holds no unit that stops; whole blocks are tested at once.
template<class Stop, class Unit>
std::size_t lengthBefore(std::basic_string_view<Unit> text) {
    constexpr std::size_t kBlock = 16;
    std::size_t length = 0;
    for (; length + kBlock <= text.size(); length += kBlock) {
        typename Stop::Bits found = 0;
        for (std::size_t i = 0; i < kBlock; ++i)
            found = static_cast<typename Stop::Bits>(found | Stop::stopBit(text[length + i]));
        if (found != 0) break;
    }
    while (length < text.size() && !Stop::stops(text[length])) ++length;
    return length;
}

} // namespace platform
