// From computed styles to attribute sets. Sets are shared: equal styles in equal places give one pointer.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {

// The lists and table cells that are open, outermost first. `number` names the combination: equal numbers mean equal
// lists and cells.
struct HTMLParagraphContext {
    std::vector<std::shared_ptr<TextList>> lists;
    std::vector<std::shared_ptr<TextBlock>> blocks;
    std::uint32_t number = 0;
};

class HTMLAttributes {
  public:
    using Reference = AttributeSet::Reference;

    // The character attributes that an element sets itself. Nothing of its surroundings is in them.
    Reference characters(const CssStyle& style, HTMLTag tag);
    // The outer element's attributes with the inner one's laid over them.
    Reference united(const Reference& outer, const Reference& inner);
    // The style of a paragraph whose nearest block element is that one.
    ParagraphStyleReference paragraph(const CssStyle& block, HTMLTag tag, const HTMLParagraphContext& context);
    // All together: what is written into the text. Directions are those of embeddings around, outermost first.
    Reference complete(const Reference& characters, const ParagraphStyleReference& paragraph,
                       const std::vector<std::int64_t>& directions);

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
    AttributeSet madeCharacters(const CssStyle& style, HTMLTag tag);

    std::unordered_map<Key, Reference, KeyHash> characters_, united_, complete_;
    std::unordered_map<Key, ParagraphStyleReference, KeyHash> paragraphs_;
    std::map<std::vector<std::int64_t>, std::uint64_t> directions_;
    // Keys are addresses: what they name must not be freed and made anew elsewhere.
    std::vector<Reference> kept_;
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
