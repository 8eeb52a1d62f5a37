// Counterpart of NSTextList: one list of a text. Has identity: all paragraphs of a list share the object, which keeps
// their numbering together.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

inline constexpr std::string_view kTextListMarkerDisc = "{disc}";
inline constexpr std::string_view kTextListMarkerCircle = "{circle}";
inline constexpr std::string_view kTextListMarkerSquare = "{square}";
inline constexpr std::string_view kTextListMarkerHyphen = "{hyphen}";
inline constexpr std::string_view kTextListMarkerCheck = "{check}";
inline constexpr std::string_view kTextListMarkerDiamond = "{diamond}";
inline constexpr std::string_view kTextListMarkerBox = "{box}";
inline constexpr std::string_view kTextListMarkerDecimal = "{decimal}";
inline constexpr std::string_view kTextListMarkerLowercaseAlpha = "{lower-alpha}";
inline constexpr std::string_view kTextListMarkerUppercaseAlpha = "{upper-alpha}";
inline constexpr std::string_view kTextListMarkerLowercaseRoman = "{lower-roman}";
inline constexpr std::string_view kTextListMarkerUppercaseRoman = "{upper-roman}";
inline constexpr std::string_view kTextListMarkerLowercaseLatin = "{lower-latin}"; // the same as alpha
inline constexpr std::string_view kTextListMarkerUppercaseLatin = "{upper-latin}";
inline constexpr std::string_view kTextListMarkerOctal = "{octal}";
inline constexpr std::string_view kTextListMarkerLowercaseHexadecimal = "{lower-hexadecimal}";
inline constexpr std::string_view kTextListMarkerUppercaseHexadecimal = "{upper-hexadecimal}";

// Bit of a list's options: the enclosing list's marker goes before this one's.
inline constexpr std::int64_t kTextListPrependEnclosingMarker = 1;

class TextList {
  public:
    // The format is free text with one brace token, for example "{decimal}."; options 1 prepends the enclosing marker.
    explicit TextList(std::string_view markerFormat, std::int64_t options = 0, std::int64_t startingItemNumber = 1)
        : markerFormat_(markerFormat), options_(options), startingItemNumber_(startingItemNumber) {}

    const std::string& markerFormat() const { return markerFormat_; } // UTF-8
    std::int64_t listOptions() const { return options_; }
    std::int64_t startingItemNumber() const { return startingItemNumber_; }
    void setStartingItemNumber(std::int64_t number) { startingItemNumber_ = number; }

    // Counterpart of markerForItemNumber: the format with its token replaced. The number is the item's own, counted
    // by the caller. Symbols do not depend on it; letters and Roman digits of numbers below 1 are the decimal number.
    std::u16string markerForItemNumber(std::int64_t number) const;

    // Counterpart of the class property: whether the text system keeps list markers in the text itself (it does).
    static bool includesTextListMarkers();
    static void setIncludesTextListMarkers(bool includes); // for tests

  private:
    std::string markerFormat_;
    std::int64_t options_;
    std::int64_t startingItemNumber_;
};

} // namespace platform
