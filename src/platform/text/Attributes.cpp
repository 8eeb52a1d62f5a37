#include "platform/text/Attributes.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <mutex>
#include <unordered_set>

namespace platform {

namespace {

// Names live as long as the process: static objects of other files may hold them until the very end.
class NameTable {
  public:
    static NameTable& shared() {
        static auto& table = *new NameTable;
        return table;
    }
    const std::string* add(std::string_view name) {
        const std::scoped_lock lock(mutex_);
        return &*names_.emplace(name).first;
    }
    const std::string* find(std::string_view name) {
        const std::scoped_lock lock(mutex_);
        const auto found = names_.find(name);
        return found == names_.end() ? nullptr : &*found;
    }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };
    std::mutex mutex_;
    std::unordered_set<std::string, Hash, std::equal_to<>> names_;
};

bool equalReals(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

constexpr double kTwoTo63 = 9223372036854775808.0;

// Exact, so that equality stays transitive where reals are sparser than integers.
bool equalNumbers(std::int64_t integer, double real) {
    return real >= -kTwoTo63 && real < kTwoTo63 && static_cast<double>(static_cast<std::int64_t>(real)) == real &&
           static_cast<std::int64_t>(real) == integer;
}

bool byName(const AttributeSet::Entry& a, const AttributeSet::Entry& b) {
    return a.first != b.first && a.first.string() < b.first.string();
}

} // namespace

AttributeName::AttributeName(std::string_view name) : name_(NameTable::shared().add(name)) {}

std::optional<AttributeName> AttributeName::known(std::string_view name) {
    const std::string* const found = NameTable::shared().find(name);
    return found ? std::optional(AttributeName(found)) : std::nullopt;
}

bool equalAttributeValues(const AttributeValue& a, const AttributeValue& b) {
    if (const auto* real = std::get_if<double>(&a)) {
        if (const auto* integer = std::get_if<std::int64_t>(&b)) return equalNumbers(*integer, *real);
        const auto* other = std::get_if<double>(&b);
        return other && equalReals(*real, *other);
    }
    if (const auto* integer = std::get_if<std::int64_t>(&a)) {
        if (const auto* real = std::get_if<double>(&b)) return equalNumbers(*integer, *real);
    }
    if (const auto* style = std::get_if<ParagraphStyleReference>(&a)) {
        const auto* other = std::get_if<ParagraphStyleReference>(&b);
        return other && (*style == *other || (*style && *other && **style == **other));
    }
    return a == b;
}

std::int64_t integerValue(const AttributeValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer;
    const auto* real = std::get_if<double>(&value);
    if (!real || std::isnan(*real)) return 0;
    if (*real >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
    if (*real < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(*real);
}

double doubleValue(const AttributeValue& value) {
    if (const auto* real = std::get_if<double>(&value)) return *real;
    const auto* integer = std::get_if<std::int64_t>(&value);
    return integer ? static_cast<double>(*integer) : 0;
}

AttributeSet::AttributeSet(std::initializer_list<Entry> entries) : AttributeSet(std::vector<Entry>(entries)) {}

AttributeSet::AttributeSet(std::vector<Entry> entries) {
    entries_.reserve(entries.size());
    for (Entry& entry : entries) {
        const auto place = std::lower_bound(entries_.begin(), entries_.end(), entry, byName);
        if (place != entries_.end() && place->first == entry.first) {
            place->second = std::move(entry.second);
        } else {
            entries_.insert(place, std::move(entry));
        }
    }
}

const AttributeSet::Reference& AttributeSet::empty() {
    static const auto& set = *new Reference(std::make_shared<const AttributeSet>());
    return set;
}

const AttributeValue* AttributeSet::find(AttributeName name) const {
    for (const Entry& entry : entries_)
        if (entry.first == name) return &entry.second;
    return nullptr;
}

AttributeSet AttributeSet::with(AttributeName name, AttributeValue value) const {
    AttributeSet changed;
    Entry added(name, std::move(value));
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), added, byName);
    const bool replaces = place != entries_.end() && place->first == name;
    changed.entries_.reserve(entries_.size() + (replaces ? 0 : 1)); // sets live long: no room to grow
    changed.entries_.assign(entries_.begin(), place);
    changed.entries_.push_back(std::move(added));
    changed.entries_.insert(changed.entries_.end(), place + (replaces ? 1 : 0), entries_.end());
    return changed;
}

AttributeSet AttributeSet::without(AttributeName name) const {
    AttributeSet changed;
    changed.entries_.reserve(entries_.size());
    for (const Entry& entry : entries_)
        if (entry.first != name) changed.entries_.push_back(entry);
    return changed;
}

AttributeSet AttributeSet::merging(const AttributeSet& other) const {
    AttributeSet merged;
    merged.entries_.reserve(entries_.size() + other.entries_.size());
    auto ours = entries_.begin();
    auto theirs = other.entries_.begin();
    while (ours != entries_.end() || theirs != other.entries_.end()) {
        const bool takeOurs = theirs == other.entries_.end() || (ours != entries_.end() && byName(*ours, *theirs));
        if (takeOurs) {
            merged.entries_.push_back(*ours++);
            continue;
        }
        if (ours != entries_.end() && ours->first == theirs->first) ++ours;
        merged.entries_.push_back(*theirs++);
    }
    return merged;
}

bool operator==(const AttributeSet& a, const AttributeSet& b) {
    return std::equal(a.entries_.begin(), a.entries_.end(), b.entries_.begin(), b.entries_.end(),
                      [](const AttributeSet::Entry& x, const AttributeSet::Entry& y) {
                          return x.first == y.first && equalAttributeValues(x.second, y.second);
                      });
}

} // namespace platform
