#include "platform/rtf/RTFTokenizer.h"

#include <algorithm>
#include <limits>

namespace platform {

namespace {

constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool endsText(char c) {
    return c == '\\' || c == '{' || c == '}' || c == '\n' || c == '\r';
}
constexpr int hexDigit(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

RTFToken makeToken(RTFToken::Kind kind, std::string_view bytes = {}, unsigned char byte = 0) {
    return {kind, bytes, std::nullopt, byte};
}

} // namespace

RTFToken RTFTokenizer::next() {
    while (position_ < input_.size() && (input_[position_] == '\n' || input_[position_] == '\r')) ++position_;
    start_ = position_;
    if (position_ == input_.size()) return {};
    switch (input_[position_]) {
    case '{':
        ++position_;
        return makeToken(RTFToken::Kind::beginGroup);
    case '}':
        ++position_;
        return makeToken(RTFToken::Kind::endGroup);
    case '\\':
        ++position_;
        return control();
    default:
        break;
    }
    while (position_ < input_.size() && !endsText(input_[position_])) ++position_;
    return makeToken(RTFToken::Kind::text, input_.substr(start_, position_ - start_));
}

RTFToken RTFTokenizer::control() {
    if (position_ == input_.size()) return {};
    const char c = input_[position_];
    if (isLetter(c)) return word();
    ++position_;
    if (c == '\'') return hex();
    if (c == '\r' && position_ < input_.size() && input_[position_] == '\n') ++position_;
    return makeToken(RTFToken::Kind::symbol, {}, static_cast<unsigned char>(c));
}

RTFToken RTFTokenizer::hex() {
    const int high = position_ < input_.size() ? hexDigit(input_[position_]) : -1;
    const int low = position_ + 1 < input_.size() ? hexDigit(input_[position_ + 1]) : -1;
    if (high < 0 || low < 0) return makeToken(RTFToken::Kind::symbol, {}, '\'');
    position_ += 2;
    return makeToken(RTFToken::Kind::hex, {}, static_cast<unsigned char>(high * 16 + low));
}

RTFToken RTFTokenizer::word() {
    const std::size_t begin = position_;
    while (position_ < input_.size() && isLetter(input_[position_])) ++position_;
    RTFToken result = makeToken(RTFToken::Kind::word, input_.substr(begin, position_ - begin));
    const bool negative = position_ + 1 < input_.size() && input_[position_] == '-' && isDigit(input_[position_ + 1]);
    if (negative) ++position_;
    if (position_ < input_.size() && isDigit(input_[position_])) {
        constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
        std::int64_t number = 0;
        for (; position_ < input_.size() && isDigit(input_[position_]); ++position_)
            number = std::min(number * 10 + (input_[position_] - '0'), kLargest);
        result.number = static_cast<std::int32_t>(negative ? -number : number);
    }
    if (position_ < input_.size() && input_[position_] == ' ') ++position_;
    if (result.bytes != "bin") return result;

    const auto length = static_cast<std::size_t>(std::max(result.number.value_or(0), 0));
    truncated_ = length > input_.size() - position_;
    result.kind = RTFToken::Kind::binary;
    result.bytes = input_.substr(position_, length);
    position_ += result.bytes.size();
    return result;
}

std::size_t RTFTokenizer::line() const {
    const std::string_view before = input_.substr(0, start_);
    std::size_t lines = 1;
    for (std::size_t i = 0; i < before.size(); ++i)
        if (before[i] == '\n' || (before[i] == '\r' && (i + 1 == before.size() || before[i + 1] != '\n'))) ++lines;
    return lines;
}

} // namespace platform
