// Where the writer's bytes go: control words, and text with its escapes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

// The byte of Windows-1252 for a character of its upper half, 0 for any other character.
char windows1252Byte(char16_t unit);

class RTFOutput {
  public:
    // As it stands: "\\pard", "{\\listtext".
    void raw(std::string_view bytes) { bytes_ += bytes; }
    void raw(char byte) { bytes_ += byte; }
    // A word with its number: word("\\fs", 24) gives "\fs24".
    void word(std::string_view name, std::int64_t number);

    // Text: ASCII as it is, the upper half of Windows-1252 in hexadecimal, the rest as \u words, whose numbers are
    // unsigned. Surrogates go one by one, so that lone ones survive. A line feed (or CR, or both) ends the paragraph.
    void text(std::u16string_view text);
    void text(std::string_view utf8);
    // Bytes that are no text of the document (a file name): what is not ASCII in hexadecimal.
    void bytes(std::string_view bytes);

    // Before a group that may hold text, and after it: \uc0 counts to the end of the group that it stands in.
    bool enterGroup();
    void leaveGroup(bool outer) { skipsNoReplacement_ = outer; }

    // What was written from there on, for when it must be written once more. Text in it stands in groups of its own, as
    // \uc0 is not thought of again.
    struct Part {
        std::size_t begin = 0, length = 0;
    };
    std::size_t size() const { return bytes_.size(); }
    Part partSince(std::size_t begin) const { return {begin, bytes_.size() - begin}; }
    std::string_view part(Part which) const { return std::string_view(bytes_).substr(which.begin, which.length); }
    void repeat(Part which) { bytes_.append(bytes_, which.begin, which.length); }

    std::string& string() { return bytes_; }

  private:
    std::pair<char*, const char16_t*> put(const char16_t* next, const char16_t* end, char* out, const char* limit);
    char* putSpecial(char16_t unit, char* out);

    std::string bytes_;
    bool skipsNoReplacement_ = false; // \uc0 is in force
};

} // namespace platform
