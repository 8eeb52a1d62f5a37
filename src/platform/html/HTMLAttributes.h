// From computed styles to attribute sets. Equal sets in one place (the page, one list, one cell) are one object. A page
// has far fewer styles than elements: what a style or a pair of sets leads to is made once and found by number or
// address.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
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
    explicit HTMLAttributes(HTMLParagraphContext around = {}) : context_(std::move(around)), places_(1) {
        constexpr std::size_t kUsualSets = 32;
        characters_.reserve(kUsualSets);
        united_.reserve(kUsualSets);
        distinct_.reserve(kUsualSets);
        places_.front().complete.reserve(kUsualSets);
    }

    // The character attributes that an element sets itself. Nothing of its surroundings is in them. They live as long
    // as this object.
    const AttributeSet* characters(const CssStyle& style, HTMLTag tag);
    // The outer element's attributes, if there is one, with the inner one's laid over them. Of sets from here.
    const AttributeSet* united(const AttributeSet* outer, const AttributeSet* inner);
    // What is written into the text: character attributes with the paragraph style of the nearest block element.
    // Directions are those of embeddings around, outermost first. The reference is good until the next call.
    const Reference& complete(const AttributeSet* characters, const CssStyle& block, HTMLTag blockTag,
                              const std::vector<std::int64_t>& directions);

    // A list or a cell begins or ends. What was made inside is of no use outside, and is not kept.
    void enterList(std::shared_ptr<TextList> list);
    void leaveList();
    void enterCell(std::shared_ptr<TextBlock> cell);
    void leaveCell();
    const HTMLParagraphContext& context() const { return context_; }

  private:
    struct Key {
        const void* first;
        const void* second;
        std::uint64_t third;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    struct SetHash {
        std::size_t operator()(const AttributeSet& set) const { return hashOf(set); }
    };
    struct StyleHash {
        std::size_t operator()(const ParagraphStyleReference& style) const { return hashOf(AttributeValue(style)); }
    };
    struct StyleEqual {
        bool operator()(const ParagraphStyleReference& a, const ParagraphStyleReference& b) const { return *a == *b; }
    };
    // The innermost list or cell, or the page outside them all.
    struct Place {
        std::unordered_map<Key, Reference, KeyHash> complete;
        Key lastKey{nullptr, nullptr, 0};
        const Reference* last = nullptr; // what the last key led to
        std::unordered_set<ParagraphStyleReference, StyleHash, StyleEqual> paragraphs;
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
    const ParagraphStyleReference& paragraph(const CssStyle& block, HTMLTag tag);

    // Keys are addresses: what they name lives as long as the maps.
    std::vector<const AttributeSet*> characters_; // by the number of the style
    std::unordered_map<Key, const AttributeSet*, KeyHash> united_;
    std::unordered_set<AttributeSet, SetHash> distinct_;              // of both
    std::array<std::optional<std::pair<FontChoice, Font>>, 8> fonts_; // the last ones
    std::size_t nextFont_ = 0;
    std::map<std::vector<std::int64_t>, std::uint64_t> directions_;
    HTMLParagraphContext context_;
    std::vector<Place> places_;
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
