#include "platform/files/ByteLimit.h"

#include <array>
#include <utility>

namespace platform {

namespace {

constexpr bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The code point that starts at the offset; its value matters only for well-formed text.
char32_t codePointAt(std::string_view text, std::size_t offset) {
    const auto lead = static_cast<unsigned char>(text[offset]);
    char32_t value = lead < 0x80 ? lead : lead < 0xE0 ? lead & 0x1F : lead < 0xF0 ? lead & 0x0F : lead & 0x07;
    for (++offset; offset < text.size() && isContinuation(text[offset]); ++offset)
        value = value << 6 | (static_cast<unsigned char>(text[offset]) & 0x3F);
    return value;
}

// Code points that belong to the character before them: the blocks of combining marks, variation selectors, skin
// tones, the joiner and tags. A file name needs no finer segmentation.
bool attachesToPrevious(char32_t codePoint) {
    constexpr std::array<std::pair<char32_t, char32_t>, 9> kRanges{{
        {0x0300, 0x036F},
        {0x1AB0, 0x1AFF},
        {0x1DC0, 0x1DFF},
        {0x200D, 0x200D},
        {0x20D0, 0x20FF},
        {0xFE00, 0xFE0F},
        {0xFE20, 0xFE2F},
        {0x1F3FB, 0x1F3FF},
        {0xE0020, 0xE01EF},
    }};
    for (const auto& [first, last] : kRanges)
        if (codePoint >= first && codePoint <= last) return true;
    return false;
}

// The longest beginning of at most `limit` bytes that ends where a code point does; where it can, where a character
// does.
std::string_view prefixOf(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text;
    std::size_t end = limit;
    while (end > 0 && isContinuation(text[end])) --end;
    const bool isStrayRun = end == 0 && isContinuation(text[0]); // cut anywhere
    const std::size_t codePointEnd = isStrayRun ? limit : end;
    constexpr char32_t kJoiner = 0x200D;
    std::size_t characterEnd = codePointEnd;
    while (characterEnd > 0) {
        std::size_t previous = characterEnd - 1;
        while (previous > 0 && isContinuation(text[previous])) --previous;
        const bool joined = codePointAt(text, previous) == kJoiner;
        if (!joined && !attachesToPrevious(codePointAt(text, characterEnd))) break;
        characterEnd = previous;
    }
    return text.substr(0, characterEnd == 0 ? codePointEnd : characterEnd);
}

} // namespace

std::string nameLimitedInBytes(std::string_view name, std::size_t reserved, std::size_t limit) {
    const std::size_t room = limit > reserved ? limit - reserved : 0;
    if (name.size() <= room) return std::string(name);
    const std::size_t dot = name.rfind('.');
    const bool hasExtension = dot != std::string_view::npos && dot > 0 && dot + 1 < name.size();
    const std::string_view extension = hasExtension ? name.substr(dot) : std::string_view();
    if (!extension.empty() && extension.size() < room) {
        const std::string_view stem = prefixOf(name.substr(0, dot), room - extension.size());
        if (!stem.empty()) return std::string(stem).append(extension);
    }
    return std::string(prefixOf(name, room));
}

} // namespace platform
