// Searching for a literal in a text.
#pragma once

#include <cstring>
#include <string_view>

namespace platform {

// std::string_view::find stops at each occurrence of the literal's first byte, which in markup is every tag. This one
// compares whole literals at a time. Like it, npos when there is none.
inline std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t from = 0) {
    if (from > text.size() || literal.size() > text.size() - from) return std::string_view::npos;
    if (literal.empty()) return from;
    const void* found = ::memmem(text.data() + from, text.size() - from, literal.data(), literal.size());
    if (found == nullptr) return std::string_view::npos;
    return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

// The same in units of UTF-16, for literals that begin with a unit that is rare in texts, at each of which this stops.
inline std::size_t findLiteral(std::u16string_view text, std::u16string_view literal, std::size_t from = 0) {
    if (from > text.size() || literal.size() > text.size() - from) return std::u16string_view::npos;
    if (literal.empty()) return from;
    const auto bytesOf = [](std::u16string_view units) {
        return std::string_view(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
    };
    const std::string_view bytes = bytesOf(text), wanted = bytesOf(literal);
    for (std::size_t at = from * sizeof(char16_t);; ++at) {
        at = bytes.find(wanted.front(), at);
        if (at == std::string_view::npos || wanted.size() > bytes.size() - at) return std::u16string_view::npos;
        const bool isWhole = at % sizeof(char16_t) == 0; // else it is the other half of a unit
        if (isWhole && bytes.substr(at).starts_with(wanted)) return at / sizeof(char16_t);
    }
}

} // namespace platform
