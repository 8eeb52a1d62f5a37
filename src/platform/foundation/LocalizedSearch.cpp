// Both texts are folded; each folded unit remembers where its character stood. The folded pattern is then found by the
// method of Knuth, Morris and Pratt, which never steps back in the text: a pattern like "aaaab" in a long run of "a"
// must not take quadratic time.
#include "platform/foundation/LocalizedSearch.h"

#include "platform/foundation/Environment.h"

namespace platform {

namespace {

FoldingOptions searchFolding() {
    const std::string& locale = Environment::current().localeIdentifier;
    const std::string_view language = std::string_view(locale).substr(0, locale.find('_'));
    return {.ignoreCase = true,
            .ignoreDiacritics = true,
            .ignoreWidth = false,
            .turkic = language == "tr" || language == "az"};
}

std::vector<std::size_t> bordersOf(std::u16string_view pattern) {
    std::vector<std::size_t> borders(pattern.size() + 1, 0);
    for (std::size_t i = 1, length = 0; i < pattern.size(); ++i) {
        while (length > 0 && pattern[i] != pattern[length]) length = borders[length];
        if (pattern[i] == pattern[length]) ++length;
        borders[i + 1] = length;
    }
    return borders;
}

} // namespace

LocalizedSearch::LocalizedSearch(std::u16string_view text, std::u16string_view searched)
    : textLength_(text.size()), pattern_(foldedText(searched, searchFolding())), borders_(bordersOf(pattern_)) {
    if (pattern_.empty()) return;
    const FoldingOptions options = searchFolding();
    folded_.reserve(text.size());
    origins_.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t origin = position;
        appendFolded(takeCodePoint(text, position), options, folded_);
        origins_.resize(folded_.size(), origin);
    }
}

bool LocalizedSearch::isCharacterBoundary(std::size_t folded) const {
    return folded == 0 || folded == folded_.size() || origins_[folded] != origins_[folded - 1];
}

Range LocalizedSearch::rangeInText(std::size_t foldedStart, std::size_t foldedEnd) const {
    const std::size_t start = origins_[foldedStart];
    const std::size_t end = foldedEnd < folded_.size() ? origins_[foldedEnd] : textLength_;
    return {start, end - start};
}

std::optional<Range> LocalizedSearch::next() {
    if (pattern_.empty()) return std::nullopt;
    std::size_t matched = 0;
    while (position_ < folded_.size()) {
        const char16_t unit = folded_[position_++];
        while (matched > 0 && unit != pattern_[matched]) matched = borders_[matched];
        if (unit == pattern_[matched]) ++matched;
        if (matched < pattern_.size()) continue;
        const std::size_t start = position_ - matched;
        if (isCharacterBoundary(start) && isCharacterBoundary(position_)) return rangeInText(start, position_);
        matched = borders_[matched];
    }
    return std::nullopt;
}

bool localizedStandardHasPrefix(std::u16string_view text, std::u16string_view prefix) {
    const FoldingOptions options = searchFolding();
    const std::u16string wanted = foldedText(prefix, options);
    std::u16string_view left = wanted;
    std::u16string folded; // of one character
    for (std::size_t position = 0; position < text.size() && !left.empty();) {
        const bool isFirst = position == 0;
        folded.clear();
        appendFolded(takeCodePoint(text, position), options, folded);
        // A mark without a letter before it, and a first difference, end the test.
        if ((isFirst && folded.empty()) || !left.starts_with(folded)) return false;
        left.remove_prefix(folded.size());
    }
    return left.empty() && !wanted.empty();
}

} // namespace platform
