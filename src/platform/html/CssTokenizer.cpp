#include "platform/html/CssTokenizer.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace platform {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool isNamePart(char c) {
    return isNameStart(c) || isDigit(c) || c == '-';
}

void appendUTF8(std::string& out, std::uint32_t point) {
    if (point == 0 || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) point = 0xFFFD;
    const auto continuation = [&](int shift) { out += static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        out += static_cast<char>(point);
    } else if (point < 0x800) {
        out += static_cast<char>(0xC0 | (point >> 6));
        continuation(0);
    } else if (point < 0x10000) {
        out += static_cast<char>(0xE0 | (point >> 12));
        continuation(6);
        continuation(0);
    } else {
        out += static_cast<char>(0xF0 | (point >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

} // namespace

std::string asciiLowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return lower;
}

bool CssTokenizer::startsName(std::size_t ahead) const {
    const char first = peek(ahead);
    if (isNameStart(first)) return true;
    if (first == '\\') return peek(ahead + 1) != '\n' && at_ + ahead + 1 < text_.size();
    return first == '-' && (peek(ahead + 1) == '-' || isNameStart(peek(ahead + 1)) || peek(ahead + 1) == '\\');
}

bool CssTokenizer::startsNumber() const {
    const std::size_t sign = peek() == '+' || peek() == '-' ? 1 : 0;
    return isDigit(peek(sign)) || (peek(sign) == '.' && isDigit(peek(sign + 1)));
}

void CssTokenizer::skipComments() {
    while (peek() == '/' && peek(1) == '*') {
        const std::size_t end = text_.find("*/", at_ + 2);
        at_ = end == std::string_view::npos ? text_.size() : end + 2;
    }
}

// At a backslash.
void CssTokenizer::appendEscaped(std::string& out) {
    ++at_;
    if (!isHexDigit(peek())) {
        if (at_ < text_.size()) out += text_[at_++];
        return;
    }
    std::uint32_t point = 0;
    constexpr int kMostDigits = 6;
    for (int digits = 0; digits < kMostDigits && isHexDigit(peek()); ++digits, ++at_) {
        const char c = peek();
        point = point * 16 + static_cast<std::uint32_t>(isDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    if (isSpace(peek())) ++at_;
    appendUTF8(out, point);
}

std::string_view CssTokenizer::name() {
    const std::size_t start = at_;
    while (isNamePart(peek())) ++at_;
    if (peek() != '\\') return text_.substr(start, at_ - start);
    std::string out(text_.substr(start, at_ - start));
    while (at_ < text_.size()) {
        if (peek() == '\\' && peek(1) != '\n' && at_ + 1 < text_.size()) {
            appendEscaped(out);
        } else if (isNamePart(peek())) {
            out += text_[at_++];
        } else {
            break;
        }
    }
    return kept(std::move(out));
}

std::string_view CssTokenizer::lowered(std::string_view text) {
    const bool isLower = std::ranges::none_of(text, [](char c) { return c >= 'A' && c <= 'Z'; });
    return isLower ? text : kept(asciiLowerCase(text));
}

CssToken CssTokenizer::named() {
    CssToken token;
    const std::string_view spelling = name();
    token.text = lowered(spelling);
    if (token.text != spelling) token.original = spelling;
    token.kind = CssTokenKind::identifier;
    if (peek() != '(') return token;
    ++at_;
    token.kind = CssTokenKind::function;
    if (token.text != "url") return token;
    std::size_t quote = at_;
    while (quote < text_.size() && isSpace(text_[quote])) ++quote;
    return quote < text_.size() && (text_[quote] == '"' || text_[quote] == '\'') ? token : address();
}

// An unquoted address, behind "url(".
CssToken CssTokenizer::address() {
    CssToken token;
    token.kind = CssTokenKind::url;
    const std::size_t end = std::min(text_.find(')', at_), text_.size());
    token.text = text_.substr(at_, end - at_);
    at_ = std::min(end + 1, text_.size());
    return token;
}

CssToken CssTokenizer::numeric() {
    CssToken token;
    const std::size_t start = at_;
    if (peek() == '+' || peek() == '-') ++at_;
    while (isDigit(peek())) ++at_;
    token.isInteger = true;
    if (peek() == '.' && isDigit(peek(1))) {
        token.isInteger = false;
        ++at_;
        while (isDigit(peek())) ++at_;
    }
    if ((peek() | 0x20) == 'e') {
        const std::size_t sign = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
        if (isDigit(peek(sign))) {
            token.isInteger = false;
            at_ += sign;
            while (isDigit(peek())) ++at_;
        }
    }
    std::string_view digits = text_.substr(start, at_ - start);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    std::from_chars(digits.data(), digits.data() + digits.size(), token.number); // out of range stays 0
    token.kind = CssTokenKind::number;
    if (peek() == '%') {
        ++at_;
        token.kind = CssTokenKind::percentage;
    } else if (startsName(0)) {
        token.kind = CssTokenKind::dimension;
        token.text = lowered(name());
    }
    return token;
}

CssToken CssTokenizer::quoted() {
    CssToken token;
    token.kind = CssTokenKind::string;
    const char quote = text_[at_++];
    const std::string_view plain = text_.substr(at_, text_.find_first_of("\"'\\\n", at_) - at_);
    at_ += plain.size();
    token.text = plain;
    if (at_ < text_.size() && peek() == quote) {
        ++at_;
        return token;
    }
    std::string text(plain);
    while (at_ < text_.size() && peek() != quote) {
        if (peek() == '\n') {
            token.kind = CssTokenKind::badString;
            break;
        }
        if (peek() == '\\' && peek(1) == '\n') {
            at_ += 2;
        } else if (peek() == '\\') {
            appendEscaped(text);
        } else {
            text += text_[at_++];
        }
    }
    token.text = kept(std::move(text));
    if (at_ < text_.size() && token.kind == CssTokenKind::string) ++at_;
    return token;
}

CssToken CssTokenizer::next() {
    skipComments();
    CssToken token;
    if (at_ >= text_.size()) return token;
    const char c = peek();
    if (isSpace(c)) {
        while (isSpace(peek())) ++at_;
        token.kind = CssTokenKind::whitespace;
        return token;
    }
    if (c == '"' || c == '\'') return quoted();
    if (startsNumber()) return numeric();
    if (startsName(0)) return named();
    if (c == '#' && (isNamePart(peek(1)) || peek(1) == '\\')) {
        ++at_;
        token.kind = CssTokenKind::hash;
        token.text = name();
        return token;
    }
    if (c == '@' && startsName(1)) {
        ++at_;
        token.kind = CssTokenKind::atKeyword;
        token.text = lowered(name());
        return token;
    }
    token.kind = CssTokenKind::delimiter;
    token.text = text_.substr(at_++, 1);
    return token;
}

} // namespace platform
