// The tables at the head of an RTF text as the reader collects them: fonts, colors, lists. Each takes the words and
// the text that stand in its destination.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/graphics/Color.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextList.h"

namespace platform {

// The ICU name of a Windows code page's number; that of 1252 for an unknown one.
std::string_view codePageName(std::int32_t codePage);

class RTFReadFonts {
  public:
    void word(std::string_view name, std::optional<std::int32_t> number);
    void text(std::u16string_view text); // names, each ended by a semicolon

    // The code page of bytes in this font; the document's own for a font that does not say.
    std::int32_t codePageOf(std::int32_t font, std::int32_t documentCodePage) const;
    Font font(std::int32_t font, bool bold, bool italic, double pointSize);

  private:
    struct Entry {
        std::string name;
        std::optional<std::int32_t> codePage;
        bool complete = false;
        std::array<std::optional<Font>, 4> faces; // by bold + 2 · italic, at one point
    };
    static Font face(const std::string& name, bool bold, bool italic);

    std::unordered_map<std::int32_t, Entry> entries_;
    Entry* current_ = nullptr;
    std::u16string name_;
};

class RTFReadColors {
  public:
    void word(std::string_view name, std::optional<std::int32_t> number);
    void expandedWord(std::string_view name, std::optional<std::int32_t> number);
    void text(std::u16string_view text); // semicolons, each ending an entry
    void expandedText(std::u16string_view text);

    // Plain numbers stand for generic RGB when the platform's own text system wrote them, else for sRGB.
    void setGeneric() { generic_ = true; }
    std::optional<Color> color(std::int32_t index) const;

  private:
    struct Entry {
        bool given = false;
        std::array<std::int32_t, 3> rgb{};
        std::optional<Color> expanded;
    };
    std::optional<Color> expandedColor() const;

    std::vector<Entry> entries_;
    Entry current_;
    std::size_t expandedIndex_ = 0;
    std::string space_; // the word of the expanded entry's space
    std::vector<std::int32_t> components_;
    std::string name_;
    bool inName_ = false;
    bool generic_ = false;
};

class RTFReadLists {
  public:
    enum class Part : std::uint8_t { other, marker, levelText };

    void word(std::string_view name, std::optional<std::int32_t> number);
    void overrideWord(std::string_view name, std::optional<std::int32_t> number);
    void text(Part part, std::u16string_view text);
    void levelTextByte(unsigned char byte); // \'xx in a level's text: its length, or the number of a level

    // The lists of a paragraph, outermost first; none for a number that no table explains.
    std::vector<std::shared_ptr<TextList>> chain(std::int32_t list, std::int32_t level);

  private:
    struct Level {
        std::int32_t number = 0, start = 1;
        std::u16string marker, text;
        bool hasLength = false, prependsOuter = false;
        std::size_t placeholder = std::u16string::npos; // of the level's own number, in text
    };
    struct List {
        std::vector<Level> levels;
    };
    static std::shared_ptr<TextList> makeList(const Level& level);
    Level* level();

    List current_;
    std::map<std::int32_t, List> lists_;                                  // by list id
    std::map<std::int32_t, std::int32_t> overrides_;                      // \ls → list id
    std::map<std::int32_t, std::vector<std::shared_ptr<TextList>>> made_; // \ls → objects by level
    std::int32_t overrideListId_ = 0;
};

} // namespace platform
