#include "platform/foundation/StringFormat.h"

#include <algorithm>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

constexpr std::string_view kNull = "(null)";

struct Placeholder {
    std::size_t length = 0;   // units behind the "%"; 0: none
    std::size_t position = 0; // from 1; 0: the next argument
};

// What stands behind a "%".
template<class C>
Placeholder placeholder(std::basic_string_view<C> text) {
    const auto unit = [text](std::size_t i) { return i < text.size() ? text[i] : C(0); };
    Placeholder found;
    std::size_t i = 0;
    if (unit(0) >= C('1') && unit(0) <= C('9') && unit(1) == C('$')) {
        found.position = static_cast<std::size_t>(unit(0) - C('0'));
        i = 2;
    }
    if (unit(i) == C('@'))
        found.length = i + 1;
    else if (unit(i) == C('l') && unit(i + 1) == C('d'))
        found.length = i + 2;
    return found;
}

template<class C>
std::basic_string<C> replaced(std::basic_string_view<C> format, std::initializer_list<FormatArgument> arguments) {
    std::basic_string<C> out;
    out.reserve(format.size() + 32);
    std::size_t next = 1;
    for (std::size_t i = 0; i < format.size();) {
        const std::size_t percent = std::min(format.find(C('%'), i), format.size());
        out.append(format.substr(i, percent - i));
        if (percent == format.size()) break;
        i = percent + 1;
        const Placeholder found = placeholder(format.substr(i));
        if (found.length == 0) {
            out += C('%');
            if (i < format.size() && format[i] == C('%')) ++i;
            continue;
        }
        i += found.length;
        const std::size_t position = found.position ? found.position : next++;
        const FormatArgument absent = std::nullopt;
        (position <= arguments.size() ? arguments.begin()[position - 1] : absent).appendTo(out);
    }
    return out;
}

} // namespace

void FormatArgument::appendTo(std::string& out) const {
    if (const auto* utf8 = std::get_if<std::string_view>(&value_))
        out += *utf8;
    else if (const auto* text = std::get_if<std::u16string_view>(&value_))
        out += utf8FromUTF16(*text);
    else if (const auto* number = std::get_if<std::int64_t>(&value_))
        out += std::to_string(*number);
    else
        out += kNull;
}

void FormatArgument::appendTo(std::u16string& out) const {
    if (const auto* text = std::get_if<std::u16string_view>(&value_)) {
        out += *text;
        return;
    }
    std::string utf8;
    appendTo(utf8);
    out += utf16FromUTF8(utf8);
}

std::string formatted(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    return replaced(format, arguments);
}

std::u16string formatted(std::u16string_view format, std::initializer_list<FormatArgument> arguments) {
    return replaced(format, arguments);
}

} // namespace platform
