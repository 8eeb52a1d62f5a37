// Counterpart of stringWithFormat: for the placeholders that our texts have.
//
// "%@" and "%ld" take the next argument, "%2$@" and "%2$ld" the second (a translation may change the order), "%%" is a
// percent sign; every other "%" stands for itself. An absent argument, or one too few, prints "(null)".
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

// Refers to the text; lives as long as the call.
class FormatArgument {
  public:
    FormatArgument(std::nullopt_t) {}
    FormatArgument(std::string_view utf8) : value_(utf8) {}
    FormatArgument(const std::string& utf8) : value_(std::string_view(utf8)) {}
    FormatArgument(const char* utf8) : value_(std::string_view(utf8)) {}
    FormatArgument(std::u16string_view text) : value_(text) {}
    FormatArgument(const std::u16string& text) : value_(std::u16string_view(text)) {}
    FormatArgument(const char16_t* text) : value_(std::u16string_view(text)) {}
    FormatArgument(std::integral auto number) : value_(static_cast<std::int64_t>(number)) {}
    template<class T>
    FormatArgument(const std::optional<T>& argument) {
        if (argument) *this = FormatArgument(*argument);
    }

    void appendTo(std::string& out) const;
    void appendTo(std::u16string& out) const;

  private:
    std::variant<std::monostate, std::string_view, std::u16string_view, std::int64_t> value_;
};

std::string formatted(std::string_view format, std::initializer_list<FormatArgument> arguments);
// Lone surrogates of UTF-16 arguments stay.
std::u16string formatted(std::u16string_view format, std::initializer_list<FormatArgument> arguments);

} // namespace platform
