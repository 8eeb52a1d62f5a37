#include "platform/base/Value.h"

#include <limits>

#include "platform/base/Error.h"

namespace platform {

Value::Value(const Error& error) : variant_(std::make_shared<const Error>(error)) {}

std::string Value::utf8() const {
    const auto* text = as<std::u16string>();
    return text ? utf8FromUTF16(*text) : std::string();
}

std::int64_t Value::integerValue() const {
    if (const auto* integer = as<std::int64_t>()) return *integer;
    if (const auto* boolean = as<bool>()) return *boolean ? 1 : 0;
    if (const auto* real = as<double>()) {
        // 2^63: the first double that no 64-bit integer holds.
        constexpr double kLimit = 9223372036854775808.0;
        if (*real >= kLimit) return std::numeric_limits<std::int64_t>::max();
        if (*real < -kLimit) return std::numeric_limits<std::int64_t>::min();
        return *real == *real ? static_cast<std::int64_t>(*real) : 0;
    }
    return 0;
}

double Value::doubleValue() const {
    if (const auto* real = as<double>()) return *real;
    return static_cast<double>(integerValue());
}

bool Value::boolValue() const {
    if (const auto* real = as<double>()) return *real != 0;
    return integerValue() != 0;
}

bool operator==(const Value& a, const Value& b) {
    const Error* left = a.asError();
    const Error* right = b.asError();
    if (left && right) return *left == *right;
    return a.variant_ == b.variant_;
}

const Value* find(const Dictionary& dictionary, std::string_view key) {
    const auto place = dictionary.find(key);
    return place == dictionary.end() ? nullptr : &place->second;
}

} // namespace platform
