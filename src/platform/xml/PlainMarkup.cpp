// What is plain in either language, and the steps of both readers that are too long to stand in line: attributes, and
// references by number.
#include "platform/xml/PlainMarkup.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"
#include "platform/xml/PlainReader.h"

namespace platform {

namespace {

constexpr std::size_t kMostAttributes = 64; // of a tag; few enough to compare each with all before it
constexpr std::size_t kLongestName = 64;    // of an attribute

} // namespace

bool isPlainText(std::string_view text) {
    using OtherThanASCII = StopUnits<char, ' ', '~'>;
    for (std::size_t at = 0;;) {
        at += lengthBefore<OtherThanASCII>(text.substr(at));
        if (at == text.size()) return true;
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            if (text[at] != '\t' && text[at] != '\n') return false;
            ++at;
            continue;
        }
        const char32_t point = takeCodePoint(text, at); // U+FFFD for what is ill-formed
        if (point < 0xA0 || (point >= 0xFFC0 && point <= 0xFFFF)) return false;
    }
}

bool isPlainAttributeName(std::string_view name) {
    const auto isLowerCase = [](char c) { return c >= 'a' && c <= 'z'; };
    return !name.empty() && name.size() <= kLongestName && isLowerCase(name.front()) &&
           std::ranges::all_of(name, [&](char c) {
               return isLowerCase(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':';
           });
}

bool isPlainDocument(std::string_view markup) {
    return markup.starts_with('<') && isPlainText(markup);
}

std::optional<PlainReader::CharacterReference> PlainReader::characterReference(std::string_view text) {
    const bool isHexadecimal = text.starts_with("&#x");
    const std::size_t start = isHexadecimal ? 3 : 2;
    std::uint32_t value = 0;
    const auto [end, error] =
        std::from_chars(text.data() + start, text.data() + text.size(), value, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end == text.data() + text.size() || *end != ';') return std::nullopt;
    if (value < ' ' || value > 0xFFFF || (value >= 0xD800 && value < 0xE000) || value >= 0xFFF0) return std::nullopt;
    return CharacterReference{utf8FromUTF16(std::u16string(1, static_cast<char16_t>(value))),
                              static_cast<std::size_t>(end - text.data()) + 1};
}

bool PlainReader::takeEachAttribute() {
    decoded_.clear();
    while (skipBlanks() && !rest_.empty() && isLetter(rest_.front())) {
        const std::string_view name = takeName();
        const bool isPlain = language_ == Language::html ? isPlainAttributeName(name)
                                                         : name.size() <= kLongestName && !name.starts_with("xml");
        const bool isNew = std::ranges::find(attributes_, name, &XMLAttributeView::name) == attributes_.end();
        if (!isPlain || !isNew || attributes_.size() == kMostAttributes || !skip("=")) return false;
        const auto value = takeQuoted();
        if (!value || value->contains('<') || value->contains('\n') || value->contains('\t')) return false;
        attributes_.push_back({name, *value});
        if (!value->contains('&')) continue;
        std::string& decoded = decoded_.emplace_front();
        if (!forEachPiece(*value, [&](std::string_view piece) { decoded += piece; })) return false;
        attributes_.back().value = decoded;
    }
    return true;
}

} // namespace platform
