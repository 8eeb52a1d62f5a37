// A fixed list of names with a lookup that costs a few instructions: open addressing over a hash of the length and
// three of the bytes, laid out by the compiler.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

template<std::size_t Count>
class NameTable {
  public:
    // The names must outlive the table and be distinct and not empty.
    constexpr explicit NameTable(const std::array<std::string_view, Count>& names) : names_(names) {
        slots_.fill(kFree);
        for (std::size_t i = 0; i < Count; ++i) {
            std::size_t slot = slotOf(names[i]);
            while (slots_[slot] != kFree) slot = (slot + 1) % kSlots;
            slots_[slot] = static_cast<std::uint16_t>(i);
        }
    }

    // The place of the name in the list, Count for a name that is not there.
    constexpr std::size_t find(std::string_view name) const {
        if (name.empty()) return Count;
        for (std::size_t slot = slotOf(name); slots_[slot] != kFree; slot = (slot + 1) % kSlots)
            if (names_[slots_[slot]] == name) return slots_[slot];
        return Count;
    }

  private:
    static constexpr std::size_t kSlots = std::bit_ceil(Count * 4);
    static constexpr std::uint16_t kFree = 0xFFFF;
    static_assert(Count > 0 && Count < kFree);

    static constexpr std::size_t slotOf(std::string_view name) {
        const auto byte = [name](std::size_t at) {
            return static_cast<std::size_t>(static_cast<unsigned char>(name[at]));
        };
        return (name.size() + 7 * byte(0) + 29 * byte(name.size() / 2) + 59 * byte(name.size() - 1)) % kSlots;
    }

    std::array<std::string_view, Count> names_;
    std::array<std::uint16_t, kSlots> slots_{};
};

} // namespace platform
