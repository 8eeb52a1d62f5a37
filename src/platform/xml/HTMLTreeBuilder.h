// Builds the tree of an HTML page from its tags and texts in source order, by the rules of HTML5 (section "tree
// construction"): elements that end by themselves, formatting opened again after mis-nesting, rows and cells implied,
// content misplaced in a table put before it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/xml/HTMLDocument.h"

namespace platform {

class HTMLTreeBuilder {
  public:
    using NodeIndex = HTMLDocument::NodeIndex;
    using Attribute = HTMLDocument::Attribute;

    // The document gets its html, head and body at once.
    explicit HTMLTreeBuilder(HTMLDocument& document);

    // Attribute values must outlive the document (they lie in its arena). A self-closed element ends at once.
    void startTag(std::string_view name, std::span<const Attribute> attributes, bool selfClosed) {
        startTag(name, htmlTagNamed(name), attributes, selfClosed);
    }
    void endTag(std::string_view name) { endTag(name, htmlTagNamed(name)); }
    // The same for a caller that knows the tag of the name already.
    void startTag(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes, bool selfClosed);
    void endTag(std::string_view name, HTMLTag tag);
    void text(std::string_view characters);
    // Whether text that is more than blanks would be misplaced: a table's cell, or the page's body, is yet to begin.
    bool isBetweenCells() const { return hasFlag(current(), kTableContextTag) || current() == HTMLTag::colgroup; }

  private:
    struct Open {
        NodeIndex node;
        HTMLTag tag;
    };

    static constexpr std::size_t kNotOpen = static_cast<std::size_t>(-1); // no place on the stack

    HTMLTag current() const { return open_.back().tag; }
    NodeIndex makeElement(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes);
    NodeIndex copyElement(NodeIndex node);
    void appendChild(NodeIndex parent, NodeIndex child);
    void insertBefore(NodeIndex sibling, NodeIndex child);
    void detach(NodeIndex node);
    void place(NodeIndex node); // where the next node goes: the current element, or before a table
    void appendText(NodeIndex parent, NodeIndex before, std::string_view characters);
    // An element beyond the depth limit is made but is in no tree; its content goes to the deepest one.
    NodeIndex insertElement(HTMLTag tag);
    NodeIndex insertElement(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes);
    void insertOwedBreak();
    void addMissingAttributes(NodeIndex node, std::span<const Attribute> attributes);

    void startInHead(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes, bool selfClosed);
    bool startInTable(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes);
    void closeForStart(HTMLTag tag);
    void closeListItem(HTMLTag first, HTMLTag second);
    void endHeading();
    void endOther(std::string_view name, HTMLTag tag);

    // Searches stop at elements that hide what is around them; `extra` adds to those.
    bool inScope(HTMLTag tag, std::span<const HTMLTag> extra = {}) const;
    bool inTableScope(HTMLTag tag) const;
    bool inParagraphScope() const;
    void pop();
    void popUntil(HTMLTag tag);
    void popToTableContext(std::span<const HTMLTag> contexts);
    void closeImpliedEnds(HTMLTag except);
    void closeParagraph();

    void rememberFormatting(NodeIndex node);
    void reopenFormatting() {
        if (!formatting_.empty()) reopenEachFormatting();
    }
    void reopenEachFormatting();
    void clearFormattingToMarker();
    void endFormatting(HTMLTag tag);
    bool adoptOnce(HTMLTag tag);
    void adopt(NodeIndex element, std::size_t at, std::size_t furthest);
    NodeIndex rememberedFormatting(HTMLTag tag) const;
    std::size_t findOpen(NodeIndex node) const;

    HTMLDocument& document_;
    std::vector<Open> open_;            // outermost first
    std::vector<NodeIndex> formatting_; // elements to open again; kNone marks the edge of a cell
    std::vector<HTMLTag> beyondDepth_;  // elements open beyond the depth limit, for their end tags
    bool breakOwed_ = false;            // between what is before and what comes, both beyond the depth limit
    std::unordered_map<std::string, std::uint16_t> otherNames_;
    NodeIndex headElement_ = HTMLDocument::kNone; // the element of the head that is open
    std::size_t tags_ = 0, reopened_ = 0;
    std::size_t openParagraphs_ = 0; // on the stack: mostly none, and then none has to be looked for
    bool bodyBegun_ = false;
    bool dropNewline_ = false; // directly after <pre>
};

} // namespace platform
