#include "platform/base/Range.h"

#include <charconv>

#include <fmt/core.h>

namespace platform {

namespace {

constexpr std::string_view kDigits = "0123456789";

// Takes the first run of digits off the text.
std::size_t takeNumber(std::string_view& text) {
    const std::size_t start = text.find_first_of(kDigits);
    if (start == std::string_view::npos) return 0;
    text.remove_prefix(start);
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::size_t>::max() : number;
}

} // namespace

std::string stringFromRange(Range range) {
    return fmt::format("{{{}, {}}}", range.location, range.length);
}

Range rangeFromString(std::string_view text) {
    const std::size_t location = takeNumber(text);
    return Range{location, takeNumber(text)};
}

} // namespace platform
