// What computed styles come to in attributes, wherever their elements stand. Pages have far fewer styles than elements:
// what a style leads to is made once and found by its number.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <map>
#include <memory>
#include <memory_resource>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/text/AttributedString.h"
#include "platform/xml/HTMLTags.h"

namespace platform {

// Of the styles of one resolver. What it returns lives as long as it does.
class HTMLStyleAttributes {
  public:
    HTMLStyleAttributes() {
        constexpr std::size_t kUsualSets = 32;
        characters_.reserve(kUsualSets);
        looks_.reserve(kUsualSets);
        distinct_.reserve(kUsualSets);
    }

    // The character attributes of an element.
    struct Characters {
        const AttributeSet* own = nullptr;    // what the element sets itself
        const AttributeSet* united = nullptr; // laid over what the elements around it set
    };
    // `outer` is what the elements around it come to, null for the root. It follows from the style, which is of one
    // element name and one parent style.
    Characters characters(const CssStyle& style, HTMLTag tag, const AttributeSet* outer);

    // What a block makes of its paragraphs, apart from the lists and cells around it. Of few kinds on a page.
    struct Look {
        TextAlignment alignment = TextAlignment::natural;
        WritingDirection direction = WritingDirection::leftToRight;
        int headerLevel = 0;
        bool hyphenates = false;
        double firstLineHeadIndent = 0, headIndent = 0, tailIndent = 0, paragraphSpacing = 0; // points; none is NaN
        friend auto operator<=>(const Look&, const Look&) = default;
    };

    // There is one of each value.
    const Look* look(const CssStyle& block, HTMLTag tag, bool isInList);

    // The paragraph style of such a look outside lists and cells, and character attributes with it.
    const ParagraphStyleReference& paragraph(const Look& look);
    const AttributeSet::Reference& complete(const AttributeSet* characters, const Look& look);

  private:
    struct SetHash {
        std::size_t operator()(const AttributeSet& set) const { return hashOf(set); }
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

    static constexpr std::size_t kUsualMemory = 4096;
    std::pmr::monotonic_buffer_resource memory_{kUsualMemory};          // of the tables of what is distinct
    std::vector<Characters> characters_;                                // by the number of the style
    std::pmr::unordered_set<AttributeSet, SetHash> distinct_{&memory_}; // own and united
    std::vector<std::array<const Look*, 2>> looks_;                     // by the number of the style: no list, a list
    std::pmr::set<Look> distinctLooks_{&memory_};                       // of both
    std::pmr::map<const Look*, ParagraphStyleReference> paragraphs_{&memory_};
    std::pmr::map<std::pair<const Look*, const AttributeSet*>, AttributeSet::Reference> complete_{&memory_};
    std::array<std::optional<std::pair<FontChoice, Font>>, 8> fonts_; // the last ones
    std::size_t nextFont_ = 0;
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
