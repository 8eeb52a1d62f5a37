#include "platform/foundation/Scanner.h"

#include <algorithm>

namespace platform {

void Scanner::setScanLocation(std::size_t location) {
    location_ = std::min(location, text_.size());
}

std::size_t Scanner::afterSkipped() const {
    return std::min(findFirstNotOf(text_, skipped_, location_), text_.size());
}

std::optional<std::u16string_view> Scanner::take(std::size_t start, std::size_t end) {
    if (end <= start) return std::nullopt;
    location_ = end;
    return text_.substr(start, end - start);
}

bool Scanner::scanString(std::u16string_view string) {
    const std::size_t start = afterSkipped();
    return text_.substr(start).starts_with(string) && take(start, start + string.size());
}

std::optional<std::u16string_view> Scanner::scanUpToString(std::u16string_view string) {
    const std::size_t start = afterSkipped();
    return take(start, std::min(text_.find(string, start), text_.size()));
}

std::optional<std::u16string_view> Scanner::scanUpToCharacters(const CharacterSet& set) {
    const std::size_t start = afterSkipped();
    return take(start, std::min(findFirstOf(text_, set, start), text_.size()));
}

std::optional<std::u16string_view> Scanner::scanCharacters(const CharacterSet& set) {
    const std::size_t start = afterSkipped();
    return take(start, std::min(findFirstNotOf(text_, set, start), text_.size()));
}

} // namespace platform
