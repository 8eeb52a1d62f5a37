// A set is an ICU set for its algebra, and a table of one bit for each UTF-16 unit: all but a few characters of a note
// lie in the first plane, where membership is then one look-up. The table costs 8 kB a set; sets are few and shared.
#include "platform/foundation/CharacterSet.h"

#include <bitset>

#include <unicode/uniset.h>
#include <unicode/utf16.h>

namespace platform {

struct CharacterSet::Members {
    icu::UnicodeSet points;
    std::bitset<0x10000> units;

    // A frozen set's copy is frozen as well, and would let every change pass by in silence.
    icu::UnicodeSet thawed() const { return *std::unique_ptr<icu::UnicodeSet>(points.cloneAsThawed()); }

    explicit Members(const icu::UnicodeSet& set) : points(set) {
        points.freeze();
        for (int32_t i = 0; i < points.getRangeCount(); ++i) {
            const UChar32 last = std::min<UChar32>(points.getRangeEnd(i), 0xFFFF);
            for (UChar32 point = points.getRangeStart(i); point <= last; ++point)
                units.set(static_cast<std::size_t>(point));
        }
    }
};

CharacterSet::CharacterSet() {
    static const auto empty = std::make_shared<const Members>(icu::UnicodeSet());
    members_ = empty;
}

CharacterSet CharacterSet::withCharacters(std::u16string_view text) {
    icu::UnicodeSet points;
    points.addAll(icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size())));
    return CharacterSet(std::make_shared<const Members>(points));
}

CharacterSet CharacterSet::withRanges(std::initializer_list<std::pair<char32_t, char32_t>> ranges) {
    icu::UnicodeSet points;
    for (const auto& [first, last] : ranges)
        points.add(static_cast<UChar32>(first), static_cast<UChar32>(std::min<char32_t>(last, 0x10FFFF)));
    return CharacterSet(std::make_shared<const Members>(points));
}

CharacterSet CharacterSet::withPattern(std::u16string_view pattern) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeSet points(icu::UnicodeString(pattern.data(), static_cast<int32_t>(pattern.size())), status);
    return CharacterSet(std::make_shared<const Members>(points));
}

// U+200B has been a format character since Unicode 4.0.1, but the platform's white space kept it.
const CharacterSet& CharacterSet::whitespace() {
    static const CharacterSet set = withPattern(u"[[:Zs:]\\u0009\\u200B]");
    return set;
}
const CharacterSet& CharacterSet::newline() {
    static const CharacterSet set = withPattern(u"[\\u000A-\\u000D\\u0085\\u2028\\u2029]");
    return set;
}
const CharacterSet& CharacterSet::whitespaceAndNewline() {
    static const CharacterSet set = whitespace().united(newline());
    return set;
}
const CharacterSet& CharacterSet::control() {
    static const CharacterSet set = withPattern(u"[[:Cc:][:Cf:]]");
    return set;
}
const CharacterSet& CharacterSet::illegal() {
    static const CharacterSet set = withPattern(u"[:Cn:]");
    return set;
}
const CharacterSet& CharacterSet::alphanumeric() {
    static const CharacterSet set = withPattern(u"[[:L:][:M:][:N:]]");
    return set;
}
const CharacterSet& CharacterSet::letter() {
    static const CharacterSet set = withPattern(u"[[:L:][:M:]]");
    return set;
}
const CharacterSet& CharacterSet::uppercaseLetter() {
    static const CharacterSet set = withPattern(u"[[:Lu:][:Lt:]]");
    return set;
}
const CharacterSet& CharacterSet::lowercaseLetter() {
    static const CharacterSet set = withPattern(u"[:Ll:]");
    return set;
}
const CharacterSet& CharacterSet::decimalDigit() {
    static const CharacterSet set = withPattern(u"[:Nd:]");
    return set;
}
const CharacterSet& CharacterSet::punctuation() {
    static const CharacterSet set = withPattern(u"[:P:]");
    return set;
}

bool CharacterSet::contains(char32_t point) const {
    if (point < 0x10000) return members_->units[point];
    return point <= 0x10FFFF && members_->points.contains(static_cast<UChar32>(point));
}

bool CharacterSet::containsUnit(char16_t unit) const {
    return members_->units[unit];
}

CharacterSet CharacterSet::united(const CharacterSet& other) const {
    icu::UnicodeSet points = members_->thawed();
    points.addAll(other.members_->points);
    return CharacterSet(std::make_shared<const Members>(points));
}

CharacterSet CharacterSet::subtracting(const CharacterSet& other) const {
    icu::UnicodeSet points = members_->thawed();
    points.removeAll(other.members_->points);
    return CharacterSet(std::make_shared<const Members>(points));
}

CharacterSet CharacterSet::inverted() const {
    icu::UnicodeSet points = members_->thawed();
    points.complement();
    return CharacterSet(std::make_shared<const Members>(points));
}

bool operator==(const CharacterSet& a, const CharacterSet& b) {
    return a.members_ == b.members_ || a.members_->points == b.members_->points;
}

namespace {

// Index of the first code point at or after `from` whose membership is `wanted`.
std::size_t findFirst(std::u16string_view text, const CharacterSet& set, std::size_t from, bool wanted) {
    while (from < text.size()) {
        const std::size_t start = from;
        char32_t point = text[from++];
        if (U16_IS_LEAD(point) && from < text.size() && U16_IS_TRAIL(text[from]))
            point = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(point, text[from++]));
        if (set.contains(point) == wanted) return start;
    }
    return std::u16string_view::npos;
}

std::u16string_view trimmedEnd(std::u16string_view text, const CharacterSet& set) {
    while (!text.empty()) {
        char32_t point = text.back();
        std::size_t units = 1;
        if (U16_IS_TRAIL(point) && text.size() > 1 && U16_IS_LEAD(text[text.size() - 2])) {
            point = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(text[text.size() - 2], point));
            units = 2;
        }
        if (!set.contains(point)) break;
        text.remove_suffix(units);
    }
    return text;
}

} // namespace

std::u16string_view trimmedStart(std::u16string_view text, const CharacterSet& set) {
    text.remove_prefix(std::min(findFirst(text, set, 0, false), text.size()));
    return text;
}

std::u16string_view trimmed(std::u16string_view text, const CharacterSet& set) {
    return trimmedEnd(trimmedStart(text, set), set);
}

std::size_t findFirstOf(std::u16string_view text, const CharacterSet& set, std::size_t from) {
    return findFirst(text, set, from, true);
}

std::size_t findFirstNotOf(std::u16string_view text, const CharacterSet& set, std::size_t from) {
    return findFirst(text, set, from, false);
}

std::u16string removingUnits(std::u16string_view text, const CharacterSet& set) {
    std::u16string kept(text);
    std::erase_if(kept, [&set](char16_t unit) { return set.containsUnit(unit); });
    return kept;
}

} // namespace platform
