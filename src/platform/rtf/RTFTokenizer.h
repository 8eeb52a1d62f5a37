// RTF bytes as a stream of tokens. Nothing is copied: names and text are views of the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

struct RTFToken {
    enum class Kind : std::uint8_t {
        beginGroup,
        endGroup,
        word,   // name, and number when one is given
        symbol, // a backslash and one character other than a letter: byte
        hex,    // \'xx: byte
        text,   // bytes, without line ends
        binary, // bytes behind \bin
        end
    };
    Kind kind = Kind::end;
    std::string_view bytes; // the word's name, the text
    std::optional<std::int32_t> number;
    unsigned char byte = 0;
};

class RTFTokenizer {
  public:
    explicit RTFTokenizer(std::string_view input) : input_(input) {}

    RTFToken next();

    // Where the last token began.
    std::size_t offset() const { return start_; }
    // The same as a line, from 1. Counts from the beginning: for errors only.
    std::size_t line() const;
    // Whether \bin promised more bytes than there are.
    bool truncated() const { return truncated_; }

  private:
    RTFToken control();
    RTFToken word();
    RTFToken hex();

    std::string_view input_;
    std::size_t position_ = 0, start_ = 0;
    bool truncated_ = false;
};

} // namespace platform
