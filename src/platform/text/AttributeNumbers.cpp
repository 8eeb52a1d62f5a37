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

// Runs mostly share their sets: the address of one that was met before is enough.
std::uint32_t AttributeNumbers::numberOf(const AttributeSet& set) {
    const std::uint32_t index = known_.numberOf(
        spreadHash(addressOf(&set)), [&](const KnownSet& known) { return known.set == &set; },
        [&] {
            return KnownSet{&set, numberByMembers(set)};
        });
    return known_[index].number;
}

std::uint32_t AttributeNumbers::numberByMembers(const AttributeSet& set) {
    const Members added{members_.size(), set.entries().size()};
    const Members before = sets_.size() == 0 ? Members{0, 0} : sets_[sets_.size() - 1];
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
    const auto isSame = [&](const Members& known) {
        const auto all = std::span(members_);
        return std::ranges::equal(all.subspan(added.start), all.subspan(known.start, known.length), sameMember);
    };
    const std::uint32_t number = sets_.numberOf(static_cast<std::uint32_t>(hash), isSame, [&] { return added; });
    if (sets_[number].start != added.start) members_.resize(added.start); // it was not new
    return number;
}

std::uint32_t AttributeNumbers::valueNumber(const AttributeValue& value) {
    return values_.numberOf(
        spreadHash(hashOf(value)), [&](const AttributeValue* known) { return equalAttributeValues(*known, value); },
        [&] { return &value; });
}

} // namespace platform
