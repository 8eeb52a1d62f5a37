// Style text as tokens (CSS Syntax 3, the part that declarations and simple sheets need). Nearly all tokens are pieces
// of the text; only for names in upper case and for escapes does the tokenizer keep strings of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <string>
#include <string_view>
#include <utility>

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
    bool isInteger = false;
    double number = 0;         // of a number, percentage or dimension
    std::string_view text;     // of a name: lower case; of a hash or a string: as it stands, escapes resolved
    std::string_view original; // a name as it was spelled, when that is not lower case

    bool is(char delimiter) const {
        return kind == CssTokenKind::delimiter && text.size() == 1 && text[0] == delimiter;
    }
    bool isName(std::string_view name) const { return kind == CssTokenKind::identifier && text == name; }
    std::string_view spelling() const { return original.empty() ? text : original; }
};

// The texts of its tokens are good as long as the text and the tokenizer live.
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
    std::string_view name();
    std::string_view lowered(std::string_view text);
    std::string_view kept(std::string text) { return kept_.emplace_front(std::move(text)); }
    void appendEscaped(std::string& out);
    CssToken named();
    CssToken numeric();
    CssToken quoted();
    CssToken address();

    std::string_view text_;
    std::size_t at_ = 0;
    std::forward_list<std::string> kept_; // what tokens need beyond the text
};

std::string asciiLowerCase(std::string_view text);

} // namespace platform
