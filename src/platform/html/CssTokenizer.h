// Style text as tokens (CSS Syntax 3, the part that declarations and simple sheets need).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class CssTokenKind : std::uint8_t {
    identifier, // lower case
    function,   // lower-case name; what follows up to its ")" are tokens of their own
    atKeyword,  // lower case, without "@"
    hash,       // without "#"
    string,
    badString, // ended by a line break; makes a declaration invalid
    url,
    number,
    percentage,
    dimension, // the unit in `text`, lower case
    whitespace,
    delimiter, // any other character, itself in `text`
    end,
};

struct CssToken {
    CssTokenKind kind = CssTokenKind::end;
    std::string text;  // of a name: lower case; of a hash or a string: as it stands, escapes resolved
    double number = 0; // of a number, percentage or dimension
    bool isInteger = false;
    std::string original; // a name as it was spelled, when that is not lower case

    bool is(char delimiter) const {
        return kind == CssTokenKind::delimiter && text.size() == 1 && text[0] == delimiter;
    }
    bool isName(std::string_view name) const { return kind == CssTokenKind::identifier && text == name; }
    const std::string& spelling() const { return original.empty() ? text : original; }
};

class CssTokenizer {
  public:
    explicit CssTokenizer(std::string_view text) : text_(text) {}

    CssToken next();
    bool atEnd() const { return at_ >= text_.size(); }

  private:
    char peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
    bool startsName(std::size_t ahead) const;
    bool startsNumber() const;
    void skipComments();
    std::string name();
    void appendEscaped(std::string& out);
    CssToken named();
    CssToken numeric();
    CssToken quoted();
    CssToken address();

    std::string_view text_;
    std::size_t at_ = 0;
};

std::string asciiLowerCase(std::string_view text);

} // namespace platform
