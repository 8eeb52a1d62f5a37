// The attribute sets of a text, and the values in them, by number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/base/Numbered.h"
#include "platform/text/Attributes.h"

namespace platform {

// Equal sets have one number, and so have equal values: each counts from 0 in the order in which it is first met. A
// value is hashed once in a set, whatever the number of runs, and sets are compared as lists of numbers. The sets must
// live as long as this does.
class AttributeNumbers {
  public:
    struct Member {
        const AttributeSet::Entry* entry;
        std::uint32_t value; // an integer and a real of its value have one number, as they are equal attributes
    };

    AttributeNumbers() { members_.reserve(kUsualCount * kUsualMembers); }

    std::uint32_t numberOf(const AttributeSet& set);

    std::size_t setCount() const { return sets_.size(); }
    std::size_t valueCount() const { return values_.size(); }
    // The entries of the set of this number; of equal sets, those of the one that was met first.
    std::span<const Member> members(std::uint32_t set) const {
        return std::span(members_).subspan(sets_[set].start, sets_[set].length);
    }

  private:
    struct Members {
        std::size_t start, length; // in members_
    };
    struct KnownSet {
        const AttributeSet* set;
        std::uint32_t number;
    };

    std::uint32_t numberByMembers(const AttributeSet& set);
    std::uint32_t valueNumber(const AttributeValue& value);

    // A text of some pages has no more sets and no more values than this, and so many members in a set.
    static constexpr std::size_t kUsualCount = 64, kUsualMembers = 8;

    Numbered<KnownSet> known_{kUsualCount}; // every set object that was met, by address
    Numbered<Members> sets_{kUsualCount};
    std::vector<Member> members_; // of all sets
    Numbered<const AttributeValue*> values_{kUsualCount};
};

} // namespace platform
