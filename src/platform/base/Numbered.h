// Things of one kind under numbers of their own, each kept once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "platform/base/NumberTable.h"

namespace platform {

// Numbers count from 0 in the order in which the things were first met. What NumberTable says of hashes holds here.
template<class Thing>
class Numbered {
  public:
    // Makes room for so many things when the first one comes. The memory must outlive this.
    explicit Numbered(std::size_t expected = kUsualCount,
                      std::pmr::memory_resource& memory = *std::pmr::get_default_resource())
        : expected_(expected), things_(&memory), numbers_(expected, memory) {}
    explicit Numbered(std::pmr::memory_resource& memory) : Numbered(kUsualCount, memory) {}

    // The number of the thing of this hash for which `isSame(thing)` holds; when there is none, `make()` gives it.
    template<class IsSame, class Make>
    std::uint32_t numberOf(std::uint32_t hash, IsSame&& isSame, Make&& make) {
        const auto [number, isNew] =
            numbers_.findOrAdd(hash, static_cast<std::uint32_t>(things_.size()),
                               [&](std::uint32_t candidate) { return isSame(things_[candidate]); });
        if (isNew) {
            if (things_.empty()) things_.reserve(expected_);
            things_.push_back(make());
        }
        return number;
    }

    const Thing& operator[](std::size_t number) const { return things_[number]; }
    std::size_t size() const { return things_.size(); }
    auto begin() const { return things_.begin(); }
    auto end() const { return things_.end(); }

  private:
    static constexpr std::size_t kUsualCount = 32;

    std::size_t expected_;
    std::pmr::vector<Thing> things_;
    NumberTable numbers_;
};

} // namespace platform
