// The attribute sets of a page's text, from what its styles come to and the lists and cells that are open. Equal sets
// in one place (the page, one list, one cell) are one object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <memory_resource>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/html/HTMLStyleAttributes.h"
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
    explicit HTMLAttributes(HTMLStyleAttributes& styles, HTMLParagraphContext around = {})
        : styles_(styles), context_(std::move(around)) {
        constexpr std::size_t kUsualSets = 32;
        complete_.reserve(kUsualSets);
    }

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
    using Look = HTMLStyleAttributes::Look;

    // The innermost list and the innermost cell, each with a number of its own; 0 is the page. Every list is entered
    // once, with the same lists around it to its end, and every cell likewise: the two numbers say what is open. A cell
    // may outlast the list in which it began.
    struct Place {
        std::uint32_t list = 0, cell = 0;
        friend bool operator==(const Place&, const Place&) = default;
    };

    // Of complete sets, and without characters and directions of paragraph styles. Looks and characters are addresses
    // here: there is one of each value.
    struct Key {
        const Look* look = nullptr;
        Place place;
        std::uint32_t directions = 0;
        const AttributeSet* characters = nullptr;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };

    // Of lists and cells: the sets depend on styles alone.
    bool isOutside() const { return context_.lists.empty() && context_.blocks.empty(); }
    const ParagraphStyleReference& paragraph(const Look& look);
    const Reference& otherComplete(const AttributeSet* characters, const CssStyle& block, HTMLTag blockTag,
                                   const std::vector<std::int64_t>& directions);
    Place place() const { return {lists_.back(), cells_.back()}; }

    // What the tables find things by is small and goes all at once, with the page.
    static constexpr std::size_t kUsualMemory = 4096;
    std::pmr::monotonic_buffer_resource memory_{kUsualMemory};
    HTMLStyleAttributes& styles_;
    std::map<std::vector<std::int64_t>, std::uint32_t> directions_;
    HTMLParagraphContext context_;
    std::vector<std::uint32_t> lists_{0}, cells_{0}; // the open ones' numbers
    std::uint32_t listCount_ = 0, cellCount_ = 0;
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

} // namespace platform
