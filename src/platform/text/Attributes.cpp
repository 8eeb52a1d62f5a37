#include "platform/text/Attributes.h"

#include <algorithm>
#include <bit>
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

std::size_t combined(std::size_t seed, std::size_t hash) {
    return seed ^ (hash + 0x9E3779B97F4A7C15 + (seed << 6) + (seed >> 2));
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

std::size_t hashOf(const AttributeValue& value) {
    struct Hash {
        std::size_t operator()(std::int64_t integer) const { return (*this)(static_cast<double>(integer)); }
        std::size_t operator()(double real) const {
            if (real == 0 || real != real) return 0; // both zeros, every NaN
            const std::uint64_t spread = std::bit_cast<std::uint64_t>(real) * 0x9E3779B97F4A7C15;
            return static_cast<std::size_t>(spread ^ (spread >> 32));
        }
        std::size_t operator()(const std::u16string& text) const { return std::hash<std::u16string>()(text); }
        std::size_t operator()(const URL& url) const { return std::hash<std::string>()(url.absoluteString()); }
        std::size_t operator()(const Font& font) const {
            // A font name is one object.
            return combined(std::hash<const void*>()(&font.fontName()), (*this)(font.pointSize()));
        }
        std::size_t operator()(const Color& color) const {
            const std::string& name = color.colorNameComponent();
            std::size_t hash = name.empty() ? 0 : std::hash<std::string>()(name);
            for (const double component : color.components()) hash = combined(hash, (*this)(component));
            return hash;
        }
        std::size_t operator()(const ParagraphStyleReference& style) const {
            if (!style) return 0;
            std::size_t hash = static_cast<std::size_t>(style->alignment);
            for (const double length :
                 {style->headIndent, style->firstLineHeadIndent, style->tailIndent, style->lineSpacing,
                  style->paragraphSpacing, style->paragraphSpacingBefore, style->lineHeightMultiple,
                  style->minimumLineHeight, style->maximumLineHeight, style->defaultTabInterval})
                hash = combined(hash, (*this)(length));
            if (!style->tabStops.empty()) // those of one text mostly differ at an end, if at all
                hash = combined(combined(hash, (*this)(style->tabStops.front().location)),
                                (*this)(style->tabStops.back().location));
            for (const auto& list : style->textLists) hash = combined(hash, std::hash<const void*>()(list.get()));
            for (const auto& block : style->textBlocks) hash = combined(hash, std::hash<const void*>()(block.get()));
            return hash;
        }
        std::size_t operator()(const TextAttachmentReference& attachment) const {
            return std::hash<const void*>()(attachment.get());
        }
        std::size_t operator()(const Shadow& shadow) const {
            std::size_t hash = shadow.color() ? (*this)(*shadow.color()) : 0;
            for (const double length : {shadow.offsetX(), shadow.offsetY(), shadow.blurRadius()})
                hash = combined(hash, (*this)(length));
            return hash;
        }
        std::size_t operator()(const std::vector<std::int64_t>& numbers) const {
            std::size_t hash = numbers.size();
            for (const std::int64_t number : numbers) hash = combined(hash, (*this)(number));
            return hash;
        }
    };
    return std::visit(Hash(), value);
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
    const auto isMisplaced = [](const Entry& a, const Entry& b) { return !byName(a, b); };
    if (std::ranges::adjacent_find(entries, isMisplaced) == entries.end()) { // as most makers of sets give them
        entries_ = std::move(entries);
        return;
    }
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

AttributeSet AttributeSet::with(AttributeName name, AttributeValue value) const& {
    AttributeSet changed;
    Entry added(name, std::move(value));
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), added, byName);
    const bool replaces = place != entries_.end() && place->first == name;
    changed.entries_.reserve(entries_.size() + (replaces ? 0 : 1)); // sets live long: no room to grow
    for (auto entry = entries_.begin(); entry != place; ++entry) changed.entries_.push_back(*entry);
    changed.entries_.push_back(std::move(added));
    for (auto entry = place + (replaces ? 1 : 0); entry != entries_.end(); ++entry) changed.entries_.push_back(*entry);
    return changed;
}

AttributeSet AttributeSet::with(AttributeName name, AttributeValue value) && {
    Entry added(name, std::move(value));
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), added, byName);
    if (place != entries_.end() && place->first == name)
        place->second = std::move(added.second);
    else
        entries_.insert(place, std::move(added));
    return std::move(*this);
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

std::size_t hashOf(const AttributeSet& set) {
    std::size_t hash = 0;
    for (const auto& [name, value] : set.entries())
        hash = combined(combined(hash, std::hash<const void*>()(&name.string())), hashOf(value));
    return hash;
}

bool operator==(const AttributeSet& a, const AttributeSet& b) {
    return std::equal(a.entries_.begin(), a.entries_.end(), b.entries_.begin(), b.entries_.end(),
                      [](const AttributeSet::Entry& x, const AttributeSet::Entry& y) {
                          return x.first == y.first && equalAttributeValues(x.second, y.second);
                      });
}

} // namespace platform
