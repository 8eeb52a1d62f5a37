// Counterpart of NSCharacterSet: a set of Unicode code points, as a value.
//
// Text is walked by code point: a surrogate pair is judged as the one character that it is, a lone surrogate as its own
// code point. The functions that say "unit" look at each UTF-16 unit by itself.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

class CharacterSet {
  public:
    CharacterSet(); // empty

    // Each code point of the text.
    static CharacterSet withCharacters(std::u16string_view text);
    // Closed ranges of code points; ends beyond U+10FFFF are cut.
    static CharacterSet withRanges(std::initializer_list<std::pair<char32_t, char32_t>> ranges);

    // The platform's sets. Each is built once; the reference stays valid.
    static const CharacterSet& whitespace();           // Zs, TAB and U+200B
    static const CharacterSet& newline();              // U+000A to U+000D, U+0085, U+2028, U+2029
    static const CharacterSet& whitespaceAndNewline(); // both
    static const CharacterSet& control();              // Cc and Cf
    static const CharacterSet& illegal();              // Cn: noncharacters and code points without a character
    static const CharacterSet& alphanumeric();         // L, M and N
    static const CharacterSet& letter();               // L and M
    static const CharacterSet& uppercaseLetter();      // Lu and Lt
    static const CharacterSet& lowercaseLetter();      // Ll
    static const CharacterSet& decimalDigit();         // Nd
    static const CharacterSet& punctuation();          // P

    bool contains(char32_t point) const;
    bool containsUnit(char16_t unit) const;

    CharacterSet united(const CharacterSet& other) const;
    CharacterSet subtracting(const CharacterSet& other) const;
    CharacterSet inverted() const;

    friend bool operator==(const CharacterSet& a, const CharacterSet& b);

  private:
    struct Members;
    explicit CharacterSet(std::shared_ptr<const Members> members) : members_(std::move(members)) {}
    static CharacterSet withPattern(std::u16string_view pattern);

    std::shared_ptr<const Members> members_; // shared by copies, never changed
};

// The text without members of the set at its ends; a view into `text`.
std::u16string_view trimmed(std::u16string_view text, const CharacterSet& set);
std::u16string_view trimmedStart(std::u16string_view text, const CharacterSet& set);

// Position of the first member at or after `from`, or npos.
std::size_t findFirstOf(std::u16string_view text, const CharacterSet& set, std::size_t from = 0);
std::size_t findFirstNotOf(std::u16string_view text, const CharacterSet& set, std::size_t from = 0);

// The text without the units that the set contains.
std::u16string removingUnits(std::u16string_view text, const CharacterSet& set);

} // namespace platform
