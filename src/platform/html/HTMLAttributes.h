// From computed styles to attribute sets. Equal sets in one place (the page, one list, one cell) are one object. A page
// has far fewer styles than elements: what a style leads to is made once and found by its number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <memory_resource>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {

// The lists and table cells that are open, outermost first.
struct HTMLParagraphContext {
    std::vector<std::shared_ptr<TextList>> lists;
    std::vector<std::shared_ptr<TextBlock>> blocks;
};

class HTMLAttributes {
  public:
    using Reference = AttributeSet::Reference;

    // A page within a page stands in the lists and cells around it.
    explicit HTMLAttributes(HTMLParagraphContext around = {}) : context_(std::move(around)) {
        constexpr std::size_t kUsualSets = 32;
        characters_.reserve(kUsualSets);
        looks_.reserve(kUsualSets);
        distinct_.reserve(kUsualSets);
        complete_.reserve(kUsualSets);
    }

    // The character attributes of an element. They live as long as this object.
    struct Characters {
        const AttributeSet* own = nullptr;    // what the element sets itself
        const AttributeSet* united = nullptr; // laid over what the elements around it set
    };
    // `outer` is what the elements around it come to, null for the root. It follows from the style, which is of one
    // element name and one parent style.
    Characters characters(const CssStyle& style, HTMLTag tag, const AttributeSet* outer);
    // What is written into the text: character attributes with the paragraph style of the nearest block element.
    // Directions are those of embeddings around, outermost first. The reference is good as long as this object.
    const Reference& complete(const AttributeSet* characters, const CssStyle& block, HTMLTag blockTag,
                              const std::vector<std::int64_t>& directions) {
        // As for the paragraphs of a page one after another.
        if (characters == last_.characters && &block == last_.block && directions.empty()) return *last_.complete;
        return otherComplete(characters, block, blockTag, directions);
    }

    // A list or a cell begins or ends.
    void enterList(std::shared_ptr<TextList> list);
    void leaveList();
    void enterCell(std::shared_ptr<TextBlock> cell);
    void leaveCell();
    const HTMLParagraphContext& context() const { return context_; }

  private:
    struct SetHash {
        std::size_t operator()(const AttributeSet& set) const { return hashOf(set); }
    };

    // What a block makes of its paragraphs, apart from the lists and cells around it. Of few kinds on a page.
    struct Look {
        TextAlignment alignment = TextAlignment::natural;
        WritingDirection direction = WritingDirection::leftToRight;
        int headerLevel = 0;
        bool hyphenates = false;
        double firstLineHeadIndent = 0, headIndent = 0, tailIndent = 0, paragraphSpacing = 0; // points; none is NaN
        friend auto operator<=>(const Look&, const Look&) = default;
    };

    // Of complete sets, and without characters and directions of paragraph styles. Looks and characters are addresses
    // here: there is one of each value.
    struct Key {
        const Look* look = nullptr;
        std::uint32_t place = 0;
        std::uint32_t directions = 0;
        const AttributeSet* characters = nullptr;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };

    // What a font is chosen by.
    struct FontChoice {
        std::shared_ptr<const CssFamilies> families;
        double size = 0, weight = 0;
        bool isItalic = false;
        friend bool operator==(const FontChoice&, const FontChoice&) = default;
    };

    const Font& font(const CssStyle& style);
    AttributeSet madeCharacters(const CssStyle& style, HTMLTag tag);
    const AttributeSet* shared(AttributeSet set) { return &*distinct_.insert(std::move(set)).first; }
    const Look* look(const CssStyle& block, HTMLTag tag);
    const ParagraphStyleReference& paragraph(const Look& look);
    const Reference& otherComplete(const AttributeSet* characters, const CssStyle& block, HTMLTag blockTag,
                                   const std::vector<std::int64_t>& directions);
    void enterPlace();
    void leavePlace();

    // What the tables find things by is small and goes all at once, with the page.
    static constexpr std::size_t kUsualMemory = 8192;
    std::pmr::monotonic_buffer_resource memory_{kUsualMemory};
    std::vector<Characters> characters_;                                // by the number of the style
    std::pmr::unordered_set<AttributeSet, SetHash> distinct_{&memory_}; // own and united
    std::vector<std::array<const Look*, 2>> looks_;                     // by the number of the style: no list, a list
    std::pmr::set<Look> distinctLooks_{&memory_};                       // of both
    std::array<std::optional<std::pair<FontChoice, Font>>, 8> fonts_;   // the last ones
    std::size_t nextFont_ = 0;
    std::map<std::vector<std::int64_t>, std::uint32_t> directions_;
    HTMLParagraphContext context_;
    // Places are the page, each list and each cell, by number; these are the open ones.
    std::vector<std::uint32_t> places_{0};
    std::uint32_t placeCount_ = 1;
    std::pmr::unordered_map<Key, ParagraphStyleReference, KeyHash> paragraphs_{&memory_};
    std::pmr::unordered_map<Key, Reference, KeyHash> complete_{&memory_};
    // What the last question in this place, without directions, led to.
    struct Answer {
        const AttributeSet* characters = nullptr;
        const CssStyle* block = nullptr;
        const Reference* complete = nullptr;
    };
    Answer last_;
};

// The font of a style: the first family that is known, in the nearest face.
Font fontForStyle(const CssStyle& style);

Color colorFromCss(const CssRGBA& color);
inline bool isBlockDisplay(const CssStyle& style) {
    return style.display == CssDisplay::block || style.display == CssDisplay::listItem ||
           style.display == CssDisplay::table || style.display >= CssDisplay::tableRowGroup ||
           style.cssFloat != CssFloat::none;
}
// h1 to h6: 1 to 6; 0 for every other element.
int headingLevel(HTMLTag tag);

} // namespace platform
