// A fixed list of names with a lookup that costs a few instructions: open addressing, laid out by the compiler. Names
// of up to eight bytes, which nearly all are, are compared as one number.
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
            keys_[i] = keyOf(names[i]);
            std::size_t slot = slotOf(keys_[i]);
            while (slots_[slot] != kFree) slot = (slot + 1) % kSlots;
            slots_[slot] = static_cast<std::uint16_t>(i);
        }
    }

    // The place of the name in the list, Count for a name that is not there.
    constexpr std::size_t find(std::string_view name) const {
        if (name.empty()) return Count;
        const std::uint64_t key = keyOf(name);
        for (std::size_t slot = slotOf(key); slots_[slot] != kFree; slot = (slot + 1) % kSlots)
            if (keys_[slots_[slot]] == key && names_[slots_[slot]].size() == name.size() &&
                (name.size() <= sizeof key || names_[slots_[slot]] == name))
                return slots_[slot];
        return Count;
    }

  private:
    static constexpr std::size_t kSlots = std::bit_ceil(Count * 4);
    static constexpr std::uint16_t kFree = 0xFFFF;
    static_assert(Count > 0 && Count < kFree);

    // Of names of one length up to eight bytes equal keys mean equal names; of longer ones it is the first bytes.
    static constexpr std::uint64_t keyOf(std::string_view name) {
        const auto byte = [name](std::size_t at) { return std::uint64_t{static_cast<unsigned char>(name[at])}; };
        const auto four = [&](std::size_t at) {
            return byte(at) | byte(at + 1) << 8 | byte(at + 2) << 16 | byte(at + 3) << 24;
        };
        if (name.size() >= 8) return four(0) | four(4) << 32;
        if (name.size() >= 4) return four(0) | four(name.size() - 4) << 32;
        return byte(0) | byte(name.size() / 2) << 8 | byte(name.size() - 1) << 16;
    }
    static constexpr std::size_t slotOf(std::uint64_t key) {
        return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15) >> (64 - std::countr_zero(kSlots)));
    }

    std::array<std::string_view, Count> names_;
    std::array<std::uint64_t, Count> keys_{};
    std::array<std::uint16_t, kSlots> slots_{};
};

} // namespace platform
