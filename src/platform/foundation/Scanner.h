// Counterpart of NSScanner: reads a text from left to right, leaving out skipped characters before each item.
//
// Comparison is exact, unit by unit. A call that reads nothing leaves the position where it was.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/foundation/CharacterSet.h"

namespace platform {

class Scanner {
  public:
    // The text must outlive the scanner.
    explicit Scanner(std::u16string_view text, CharacterSet skipped = CharacterSet::whitespaceAndNewline())
        : text_(text), skipped_(std::move(skipped)) {}

    std::size_t scanLocation() const { return location_; }
    void setScanLocation(std::size_t location);

    // Whether nothing but skipped characters is left.
    bool isAtEnd() const { return afterSkipped() == text_.size(); }

    bool scanString(std::u16string_view string);

    // What stands before the string, or all the rest without one. Nothing when that is empty.
    std::optional<std::u16string_view> scanUpToString(std::u16string_view string);
    std::optional<std::u16string_view> scanUpToCharacters(const CharacterSet& set);
    std::optional<std::u16string_view> scanCharacters(const CharacterSet& set);

  private:
    std::size_t afterSkipped() const;
    std::optional<std::u16string_view> take(std::size_t start, std::size_t end);

    std::u16string_view text_;
    CharacterSet skipped_;
    std::size_t location_ = 0;
};

} // namespace platform
