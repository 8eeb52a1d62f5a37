// The walk over a page's tree that writes rich text. It keeps its own stack of open elements; on entering an element it
// ends the paragraph before it, on leaving it ends the element's own, and in between text is written with the
// attributes of all open elements laid over each other. Newlines, separators and objects carry those of their own
// element alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/html/CssStyleResolver.h"
#include "platform/html/HTMLAttributes.h"
#include "platform/html/HTMLImages.h"
#include "platform/html/HTMLListMarkers.h"
#include "platform/html/HTMLStyleAttributes.h"
#include "platform/html/HTMLTables.h"
#include "platform/html/HTMLTextBuilder.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

class HTMLPageWalk {
  public:
    using NodeIndex = HTMLDocument::NodeIndex;
    using Newline = HTMLTextBuilder::Newline;

    static constexpr std::size_t kUsualDepth = 16;

    HTMLPageWalk(HTMLDocument page, HTMLImages images, HTMLParagraphContext around = {})
        : page_(std::move(page)), styles_(page_), blocksAround_(around.blocks.size()),
          attributes_(styleAttributes_, std::move(around)), tables_(page_), images_(std::move(images)) {
        text_.reserve(page_.textSize() + page_.size()); // most elements write one character or none
        open_.reserve(kUsualDepth);
    }

    void run();
    const HTMLDocument& page() const { return page_; }
    // The tree is as large as the text that is made next, and not needed for it.
    void releasePage() { page_ = HTMLDocument(); }
    HTMLTextBuilder& written() { return text_; }
    const HTMLListLinks& listLinks() const { return listLinks_; }
    const std::optional<CssRGBA>& background() const { return background_; }

  private:
    // An open element.
    struct Frame {
        NodeIndex node = HTMLDocument::kNone;
        NodeIndex next = HTMLDocument::kNone; // the child to visit next
        const CssStyle* style = nullptr;
        HTMLTag tag = HTMLTag::unknown;
        bool isBlock = false;
        bool pushedDirection = false;
        bool pushedList = false, pushedTable = false, pushedCell = false;
        bool ownsLooseTable = false;    // its children are rows or cells without a table
        std::size_t block = 0;          // index of the nearest open block, itself included
        std::size_t start = 0;          // length of the text when the element was entered
        std::vector<NodeIndex> footers; // of a table: visited when its rows are through
        std::size_t footersVisited = 0;
        HTMLStyleAttributes::Characters characters;
    };

    Frame& top() { return open_.back(); }
    bool enter(NodeIndex node);
    bool process(Frame& frame);
    void leave();
    void writeText(NodeIndex node);
    void writeBreak(const Frame& frame);
    void writeObject(const Frame& frame, HTMLImage image);
    void writeFrame(const Frame& frame);
    bool processByTag(Frame& frame);
    void openList(Frame& frame);
    void openCell(Frame& frame);
    void prepareLooseTable(const CssStyle& child);
    void endLooseTable();
    void addColumns(const Frame& group);
    void closeLink(const Frame& frame);
    bool transforms(const Frame& frame) const;
    void transform(std::u16string& text, const Frame& frame) const;
    void newline(const Frame& frame, Newline when, bool replacesSoft);
    const AttributeSet::Reference& ownAttributes(const Frame& frame) { return complete(frame, frame.characters.own); }
    const AttributeSet::Reference& textAttributes(const Frame& frame) {
        return complete(frame, frame.characters.united);
    }
    const AttributeSet::Reference& complete(const Frame& frame, const AttributeSet* characters);
    bool inList() const { return !attributes_.context().lists.empty(); }
    // A block inside a list that is no list and no item ends lines, not paragraphs.
    bool endsLineOnly(const Frame& frame) const {
        return inList() && frame.style->display == CssDisplay::block && frame.tag != HTMLTag::li &&
               frame.tag != HTMLTag::ul && frame.tag != HTMLTag::ol;
    }
    std::optional<AttributeValue> linkOf(const Frame& frame) const;

    HTMLDocument page_;
    CssStyleResolver styles_;
    HTMLStyleAttributes styleAttributes_;
    std::size_t blocksAround_; // cells that a page within a page stands in
    HTMLAttributes attributes_;
    HTMLTables tables_;
    HTMLImages images_;
    HTMLTextBuilder text_;
    std::vector<Frame> open_;
    std::vector<std::int64_t> directions_;
    HTMLListLinks listLinks_;
    std::optional<CssRGBA> background_;
    std::size_t quoteDepth_ = 0;
    std::size_t framesAround_ = 0, framedBytes_ = 0;
};

} // namespace platform
