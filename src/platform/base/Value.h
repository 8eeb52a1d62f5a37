// What property lists, user information and reply dictionaries are made of.
#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Date.h"
#include "platform/base/UTF16.h"

namespace platform {

struct Error;
class Value;

using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>; // keys in UTF-8, sorted: every writer is deterministic

// A reference inside a keyed archive (the UID type of property lists).
struct UID {
    std::uint64_t value = 0;
    friend bool operator==(UID, UID) = default;
};

// One value of a closed set of kinds. Strings are UTF-16, since user text may hold lone surrogates.
class Value {
  public:
    using ErrorReference = std::shared_ptr<const Error>;
    using Variant = std::variant<std::monostate, bool, std::int64_t, double, std::u16string, Data, Date, UID, Array,
                                 Dictionary, ErrorReference>;

    Value() = default;
    template<class T>
        requires std::same_as<T, bool>
    Value(T boolean) : variant_(boolean) {}
    template<class T>
        requires(std::integral<T> && !std::same_as<T, bool>)
    Value(T integer) : variant_(static_cast<std::int64_t>(integer)) {}
    Value(double real) : variant_(real) {}
    Value(std::u16string text) : variant_(std::move(text)) {}
    Value(std::u16string_view text) : variant_(std::u16string(text)) {}
    Value(std::string_view utf8) : variant_(utf16FromUTF8(utf8)) {}
    Value(const std::string& utf8) : Value(std::string_view(utf8)) {}
    Value(const char* utf8) : Value(std::string_view(utf8)) {}
    Value(Data data) : variant_(std::move(data)) {}
    Value(Date date) : variant_(date) {}
    Value(UID uid) : variant_(uid) {}
    Value(Array array) : variant_(std::move(array)) {}
    Value(Dictionary dictionary) : variant_(std::move(dictionary)) {}
    Value(const Error& error);

    bool isNull() const { return std::holds_alternative<std::monostate>(variant_); }

    // The alternative T, or null when the value is of another kind.
    template<class T>
    const T* as() const {
        return std::get_if<T>(&variant_);
    }
    template<class T>
    T* as() {
        return std::get_if<T>(&variant_);
    }
    const Error* asError() const {
        const auto* reference = as<ErrorReference>();
        return reference ? reference->get() : nullptr;
    }

    // The string in UTF-8; empty for a value that is no string.
    std::string utf8() const;

    // Conversions between numbers, as the platform's number class makes them: a bool reads as 0 or 1, a real is cut
    // toward zero, any non-zero number is true. A value that is no number reads as 0, 0.0, false.
    std::int64_t integerValue() const;
    double doubleValue() const;
    bool boolValue() const;

    const Variant& variant() const { return variant_; }
    friend bool operator==(const Value& a, const Value& b);

  private:
    Variant variant_;
};

// The value under a key, or null when there is none.
const Value* find(const Dictionary& dictionary, std::string_view key);

} // namespace platform
