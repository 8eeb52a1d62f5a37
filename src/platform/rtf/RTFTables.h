// The tables at the head of an RTF text, filled while the body is written: what the body names by number is here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Numbered.h"
#include "platform/graphics/Color.h"
#include "platform/graphics/Font.h"
#include "platform/rtf/RTFOutput.h"

namespace platform {

class TextList;

class RTFFontTable {
  public:
    explicit RTFFontTable(std::pmr::memory_resource& memory) : entries_(memory) {}

    struct Entry {
        Font font; // of any size; its name is the entry's
        bool bold = false, italic = false;
    };

    std::size_t indexOf(const Font& font);
    const Entry& operator[](std::size_t index) const { return entries_[index]; }
    void write(RTFOutput& out) const;

  private:
    Numbered<Entry> entries_; // by name: fonts of one name share it while one of them lives, which one does here
};

// Number 0 stands for no color, 1 is white and never given out: as a background it means none.
class RTFColorTable {
  public:
    explicit RTFColorTable(std::pmr::memory_resource& memory) : known_(memory), entries_(memory) {}

    std::size_t indexOf(const Color& color);
    void write(RTFOutput& out) const;

  private:
    // A color as it is written: the space's word, its components in hundred-thousandths, a catalog color's name.
    struct Entry {
        std::string_view spaceWord;
        std::array<std::int64_t, 4> components{}; // alpha last
        std::size_t count = 0;                    // of components besides alpha
        std::string name;
        std::array<std::int64_t, 3> generic{}; // 0 to 255
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    // Copies of a color share what it is made of, by which one that was met before is known without its entry.
    struct KnownColor {
        Color color;
        std::size_t index;
    };
    std::size_t newIndexOf(const Color& color);
    static std::optional<Entry> entryFor(const Color& color);
    static std::uint32_t hashOf(const Entry& entry);
    static void writeExpanded(const Entry& entry, RTFOutput& out);

    Numbered<KnownColor> known_; // by what they are made of
    Numbered<Entry> entries_;    // from number 2 on
};

// Where a paragraph's lists stand: \ls and \ilvl.
struct RTFListPlace {
    std::size_t list = 0;  // 1-based
    std::size_t level = 0; // 0-based
};

class RTFListTable {
  public:
    explicit RTFListTable(std::pmr::memory_resource& memory) : nodes_(memory), lists_(&memory) {}

    using Chain = std::vector<std::shared_ptr<TextList>>;

    // The place of an outermost-first chain of lists, which is not empty. Lists below the ninth level count as ninth.
    RTFListPlace placeOf(const Chain& chain);
    void write(RTFOutput& out) const;

  private:
    static constexpr std::size_t kMaximumLevels = 9;
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    // A list in its place below those that enclose it. All of a chain is met at once, hence what is above is known.
    struct Node {
        std::uint32_t above; // the node, or kNone
        const TextList* list;
        RTFListPlace place;
    };
    RTFListPlace newPlace(std::uint32_t above, std::size_t level);

    Numbered<Node> nodes_;
    std::pmr::vector<std::uint32_t> lists_; // the node of each one's deepest level
};

} // namespace platform
