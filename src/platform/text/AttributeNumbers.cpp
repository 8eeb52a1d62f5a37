#include "platform/text/AttributeNumbers.h"

#include <algorithm>

namespace platform {

namespace {

std::uint64_t addressOf(const void* object) {
    return reinterpret_cast<std::uintptr_t>(object);
}

bool sameMember(const AttributeNumbers::Member& a, const AttributeNumbers::Member& b) {
    return a.value == b.value && a.entry->first == b.entry->first;
}

} // namespace

AttributeNumbers::AttributeNumbers() {
    known_.reserve(kUsualCount);
    sets_.reserve(kUsualCount);
    members_.reserve(kUsualCount * kUsualMembers);
    values_.reserve(kUsualCount);
}

// Runs mostly share their sets: the address of one that was met before is enough.
std::uint32_t AttributeNumbers::numberOf(const AttributeSet& set) {
    const auto [index, isNew] =
        knownByAddress_.findOrAdd(spreadHash(addressOf(&set)), static_cast<std::uint32_t>(known_.size()),
                                  [&](std::uint32_t candidate) { return known_[candidate].set == &set; });
    if (isNew) known_.push_back({&set, numberByMembers(set)});
    return known_[index].number;
}

std::uint32_t AttributeNumbers::numberByMembers(const AttributeSet& set) {
    const Members added{members_.size(), set.entries().size()};
    const Members before = sets_.empty() ? Members{0, 0} : sets_.back();
    std::uint64_t hash = 0;
    for (const AttributeSet::Entry& entry : set.entries()) {
        // Most values are those that the set before has at the same place.
        const std::size_t place = members_.size() - added.start;
        const Member* const likely = place < before.length ? &members_[before.start + place] : nullptr;
        const bool isSame =
            likely && likely->entry->first == entry.first && equalAttributeValues(likely->entry->second, entry.second);
        const std::uint32_t value = isSame ? likely->value : valueNumber(entry.second);
        members_.push_back({&entry, value});
        hash = (hash ^ addressOf(&entry.first.string()) ^ value) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 32;
    }
    const auto [number, isNew] = setsByMembers_.findOrAdd(
        static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(sets_.size()), [&](std::uint32_t candidate) {
            const auto other = members(candidate);
            return std::ranges::equal(std::span(members_).subspan(added.start), other, sameMember);
        });
    if (isNew)
        sets_.push_back(added);
    else
        members_.resize(added.start);
    return number;
}

std::uint32_t AttributeNumbers::valueNumber(const AttributeValue& value) {
    const auto [number, isNew] = valuesByHash_.findOrAdd(
        spreadHash(hashOf(value)), static_cast<std::uint32_t>(values_.size()),
        [&](std::uint32_t candidate) { return equalAttributeValues(*values_[candidate], value); });
    if (isNew) values_.push_back(&value);
    return number;
}

} // namespace platform
