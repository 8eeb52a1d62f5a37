// Finding the number of a thing again: a hash table for whoever keeps the things themselves, by number, in a vector.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory_resource>
#include <utility>
#include <vector>

namespace platform {

// Numbers under their things' hashes, in one block of memory; nothing is ever taken out. A thing is compared only with
// those of its very hash, so a hash must spread over all 32 bits. Numbers stay below 2^32 - 1.
class NumberTable {
  public:
    // Nothing is allocated for a table that stays empty, and once for one of fewer numbers than expected.
    // The memory must outlive it.
    explicit NumberTable(std::size_t expected = 32,
                         std::pmr::memory_resource& memory = *std::pmr::get_default_resource())
        : initialSlots_(std::bit_ceil(2 * expected)), slots_(&memory) {}

    // The number of a thing, and whether it is new: the one of this hash for which `isSame(number)` holds, or else
    // `number`, which stands for it from now on.
    template<class IsSame>
    std::pair<std::uint32_t, bool> findOrAdd(std::uint32_t hash, std::uint32_t number, IsSame&& isSame) {
        if (count_ * 2 >= slots_.size()) grow();
        const std::size_t mask = slots_.size() - 1;
        std::size_t place = hash & mask;
        for (; slots_[place].number != kNone; place = (place + 1) & mask)
            if (slots_[place].hash == hash && isSame(slots_[place].number)) return {slots_[place].number, false};
        slots_[place] = {number, hash};
        ++count_;
        return {number, true};
    }

  private:
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
    struct Slot {
        std::uint32_t number = kNone;
        std::uint32_t hash = 0;
    };

    void grow() {
        std::pmr::vector<Slot> larger(slots_.empty() ? initialSlots_ : slots_.size() * 2, slots_.get_allocator());
        const std::size_t mask = larger.size() - 1;
        for (const Slot& old : slots_) {
            if (old.number == kNone) continue;
            std::size_t place = old.hash & mask;
            while (larger[place].number != kNone) place = (place + 1) & mask;
            larger[place] = old;
        }
        slots_ = std::move(larger);
    }

    std::size_t initialSlots_;
    std::pmr::vector<Slot> slots_; // a power of two
    std::size_t count_ = 0;
};

// A hash of all 32 bits from one word: an address, or another hash.
inline std::uint32_t spreadHash(std::uint64_t word) {
    return static_cast<std::uint32_t>(word * 0x9E3779B97F4A7C15 >> 32);
}

} // namespace platform
