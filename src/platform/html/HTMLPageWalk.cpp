// The course of the walk: what is open, where paragraphs end, what text becomes. What single elements do is in
// HTMLPageElements.cpp.
#include "platform/html/HTMLPageWalk.h"

#include <algorithm>

#include "platform/base/UTF16.h"
#include "platform/foundation/Capitalization.h"

namespace platform {

namespace {

constexpr HTMLDocument::NodeIndex kNone = HTMLDocument::kNone;
constexpr char16_t kNoBreakSpace = 0xA0;
constexpr std::size_t kMostCellsAround = 32; // deeper ones take part in those around them, as with lists

} // namespace

const AttributeSet::Reference& HTMLPageWalk::complete(const Frame& frame, const AttributeSet* characters) {
    const Frame& block = frame.block < open_.size() ? open_[frame.block] : frame;
    static const std::vector<std::int64_t> kNoDirections;
    return attributes_.complete(characters, *block.style, block.tag, frame.isBlock ? kNoDirections : directions_);
}

void HTMLPageWalk::newline(const Frame& frame, Newline when, bool replacesSoft) {
    if (when == Newline::ifMissing && text_.endsInNewline()) return;
    directions_.clear();
    text_.appendNewline(when, replacesSoft, ownAttributes(frame));
}

void HTMLPageWalk::run() {
    for (NodeIndex at = page_.head(); at != kNone; at = page_.following(at, page_.head())) {
        const auto base = page_[at].tag == HTMLTag::base ? page_.attribute(at, HTMLAttribute::href) : std::nullopt;
        if (!base) continue;
        images_.setBase(*base);
        break;
    }
    if (enter(page_.root())) {
        while (!open_.empty()) {
            Frame& frame = top();
            const NodeIndex child = frame.next;
            if (child == kNone && frame.footersVisited < frame.footers.size()) {
                enter(frame.footers[frame.footersVisited++]);
            } else if (child == kNone) {
                leave();
            } else {
                frame.next = page_[child].next;
                page_.isElement(child) ? static_cast<void>(enter(child)) : writeText(child);
            }
        }
    }
}

// Opens an element, or deals with it at once when it has no content to walk. False when it leaves nothing open.
bool HTMLPageWalk::enter(NodeIndex node) {
    const CssStyle* outer = open_.empty() ? nullptr : top().style;
    const CssStyle* style = styles_.style(node, outer);
    if (style->display == CssDisplay::none) return false;
    Frame frame;
    frame.node = node;
    frame.next = page_[node].first;
    frame.style = style;
    frame.tag = page_[node].tag;
    frame.isBlock = isBlockDisplay(*style);
    frame.block = frame.isBlock || open_.empty() ? open_.size() : top().block;
    frame.characters =
        styleAttributes_.characters(*style, frame.tag, open_.empty() ? nullptr : top().characters.united);
    if (style->display == CssDisplay::tableFooterGroup && !open_.empty() && top().pushedTable && top().next != kNone) {
        top().footers.push_back(node); // behind the rows that are still to come
        return false;
    }
    const bool isLooseCell = style->display == CssDisplay::tableCell && tables_.empty();
    if (!open_.empty()) prepareLooseTable(*style);
    if (frame.isBlock && frame.tag != HTMLTag::br && !isLooseCell && !endsLineOnly(frame)) {
        if (frame.tag == HTMLTag::html || frame.tag == HTMLTag::body) {
            if (!text_.endsInNewline()) text_.dropSoftEnd();
        } else {
            newline(frame, Newline::ifMissing, true);
        }
    }
    if (!frame.isBlock &&
        (style->unicodeBidi == CssUnicodeBidi::embed || style->unicodeBidi == CssUnicodeBidi::override_)) {
        constexpr std::int64_t kOverride = 2;
        directions_.push_back((style->unicodeBidi == CssUnicodeBidi::override_ ? kOverride : 0) +
                              (style->direction == CssDirection::rtl ? 1 : 0));
        frame.pushedDirection = true;
    }
    frame.start = text_.length();
    if (!process(frame)) {
        if (frame.pushedDirection && !directions_.empty()) directions_.pop_back();
        return false;
    }
    open_.push_back(std::move(frame));
    return true;
}

// What an element is beyond its style. False when its content is not walked.
bool HTMLPageWalk::process(Frame& frame) {
    switch (frame.style->display) {
    case CssDisplay::table:
    case CssDisplay::inlineTable:
        tables_.enterTable(frame.node, *frame.style);
        frame.pushedTable = true;
        break;
    case CssDisplay::tableRow:
        tables_.enterRow(*frame.style);
        break;
    case CssDisplay::tableCell:
        openCell(frame);
        break;
    case CssDisplay::tableColumn:
        tables_.addColumns(frame.node, *frame.style);
        return false;
    case CssDisplay::tableColumnGroup:
        addColumns(frame);
        return false;
    default:
        break;
    }
    return processByTag(frame);
}

// A group stands for its columns, or for as many as its span says when it has none.
void HTMLPageWalk::addColumns(const Frame& group) {
    bool hasColumns = false;
    for (NodeIndex child = page_[group.node].first; child != kNone; child = page_[child].next) {
        if (!page_.isElement(child) || page_[child].tag != HTMLTag::col) continue;
        hasColumns = true;
        tables_.addColumns(child, *styles_.style(child, group.style));
    }
    if (!hasColumns) tables_.addColumns(group.node, *group.style);
}

// Rows and cells that follow each other without a table around them share one that the page does not have.
void HTMLPageWalk::prepareLooseTable(const CssStyle& child) {
    const bool isPart = child.display == CssDisplay::tableRow || child.display == CssDisplay::tableCell;
    if (!isPart) return endLooseTable();
    if (tables_.depth() > attributes_.context().blocks.size() - blocksAround_)
        return; // a table is open whose cell this can be
    tables_.enterAnonymousTable();
    top().ownsLooseTable = true;
}

void HTMLPageWalk::endLooseTable() {
    if (!std::exchange(top().ownsLooseTable, false)) return;
    tables_.leaveTable();
}

void HTMLPageWalk::openCell(Frame& frame) {
    auto cell = tables_.addCell(frame.node, *frame.style);
    if (attributes_.context().blocks.size() >= kMostCellsAround) return;
    attributes_.enterCell(std::move(cell));
    frame.pushedCell = true;
}

void HTMLPageWalk::leave() {
    endLooseTable();
    const Frame& frame = top();
    if (frame.tag == HTMLTag::q)
        text_.appendObject(--quoteDepth_ % 2 == 0 ? u"\u201D" : u"\u2019", ownAttributes(frame));
    if (frame.tag == HTMLTag::a) closeLink(frame);
    if (frame.isBlock) {
        const bool isEmpty = text_.length() == frame.start;
        if (frame.tag == HTMLTag::html || frame.tag == HTMLTag::body) {
            text_.dropSoftEnd();
        } else if (endsLineOnly(frame)) {
            directions_.clear();
            text_.appendLineSeparator(ownAttributes(frame));
        } else {
            newline(frame, isEmpty ? Newline::always : Newline::ifMissing, true);
        }
    } else if (frame.pushedDirection && !directions_.empty()) {
        directions_.pop_back();
    }
    if (frame.pushedList) attributes_.leaveList();
    if (frame.pushedCell) attributes_.leaveCell();
    if (frame.pushedTable) tables_.leaveTable();
    open_.pop_back();
}

// Whether an element's text may become another one.
bool HTMLPageWalk::transforms(const Frame& frame) const {
    return frame.style->breaksNbsp || frame.style->textTransform != CssTextTransform::none ||
           (frame.tag == HTMLTag::span && page_.attribute(frame.node, HTMLAttribute::class_));
}

// Blanks that pages write so that they do not collapse, and letters in another case.
void HTMLPageWalk::transform(std::u16string& text, const Frame& frame) const {
    if (frame.style->breaksNbsp) std::ranges::replace(text, kNoBreakSpace, u' ');
    if (frame.tag == HTMLTag::span) {
        const auto name = page_.attribute(frame.node, HTMLAttribute::class_);
        const bool isTab = name == "Apple-tab-span";
        if (isTab || name == "Apple-converted-space") std::ranges::replace(text, kNoBreakSpace, u' ');
        if (isTab) {
            constexpr std::size_t kBlanksPerTab = 4;
            std::u16string tabbed;
            for (std::size_t at = 0; at < text.size();) {
                std::size_t end = at;
                while (end < text.size() && end - at < kBlanksPerTab && text[end] == u' ') ++end;
                tabbed += end > at ? u'\t' : text[at++];
                at = std::max(at, end);
            }
            text = std::move(tabbed);
        }
    }
    switch (frame.style->textTransform) {
    case CssTextTransform::none:
        return;
    case CssTextTransform::uppercase:
        text = localizedUppercased(text);
        return;
    case CssTextTransform::lowercase:
        text = localizedLowercased(text);
        return;
    case CssTextTransform::capitalize:
        text = localizedWordStartsCapitalized(text);
        return;
    }
}

void HTMLPageWalk::writeText(NodeIndex node) {
    const Frame& frame = top();
    const CssWhiteSpace whiteSpace = frame.style->whiteSpace;
    const bool preserves = whiteSpace != CssWhiteSpace::normal && whiteSpace != CssWhiteSpace::nowrap &&
                           whiteSpace != CssWhiteSpace::breakSpaces;
    if (preserves) {
        std::u16string text = utf16FromUTF8(page_.text(node));
        if (text.empty()) return;
        if (text != u" ") endLooseTable();
        transform(text, frame);
        text_.appendPreserved(text, textAttributes(frame));
        return;
    }
    const std::size_t start = text_.length();
    text_.beginCollapsed(page_.text(node));
    const std::u16string_view written = std::u16string_view(text_.text()).substr(start);
    if (written.empty()) return;
    if (written != u" ") endLooseTable();
    if (!transforms(frame)) return text_.endCollapsed(textAttributes(frame));
    std::u16string text(written);
    transform(text, frame);
    text_.endCollapsed(textAttributes(frame), text);
}

} // namespace platform
