// The stack of open elements says where the next node goes; the list of formatting elements says what is opened again
// when a block or a cell ended it too early. Every search over either is bounded by the depth limit.
#include "platform/xml/HTMLTreeBuilder.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t kRememberedEnds = 1024; // end tags owed beyond the depth limit
constexpr std::size_t kUsualDepth = 16;

constexpr std::array kListScope{HTMLTag::ol, HTMLTag::ul};
constexpr std::array kButtonScope{HTMLTag::button};

bool isBlank(std::string_view characters) {
    return characters.find_first_not_of(" \t\n\f\r") == std::string_view::npos;
}

bool hasMarker(HTMLTag tag) {
    return hasFlag(tag, kMarkerTag);
}

bool isRawText(HTMLTag tag) {
    return tag == HTMLTag::script || tag == HTMLTag::style;
}

bool isRawContainer(HTMLTag tag) {
    return isRawText(tag) || tag == HTMLTag::title || tag == HTMLTag::template_;
}

} // namespace

HTMLTreeBuilder::HTMLTreeBuilder(HTMLDocument& document) : document_(document) {
    const NodeIndex html = makeElement("html", HTMLTag::html, {});
    const NodeIndex head = makeElement("head", HTMLTag::head, {});
    const NodeIndex body = makeElement("body", HTMLTag::body, {});
    appendChild(html, head);
    appendChild(html, body);
    open_.reserve(kUsualDepth);
    open_.push_back({html, HTMLTag::html});
    open_.push_back({body, HTMLTag::body});
}

// Elements

// What may not stand between cells goes before their table.
void HTMLTreeBuilder::place(NodeIndex node) {
    if (!hasFlag(current(), kTableContextTag)) return appendChild(open_.back().node, node);
    const auto table = std::ranges::find(open_.rbegin(), open_.rend(), HTMLTag::table, &Open::tag);
    if (table == open_.rend() || document_.nodes_[table->node].parent == HTMLDocument::kNone)
        return appendChild(open_.back().node, node);
    insertBefore(table->node, node);
}

HTMLTreeBuilder::NodeIndex HTMLTreeBuilder::insertElement(HTMLTag tag) {
    return insertElement(htmlTagName(tag), tag, {});
}

HTMLTreeBuilder::NodeIndex HTMLTreeBuilder::insertElement(std::string_view name, HTMLTag tag,
                                                          std::span<const Attribute> attributes) {
    const NodeIndex node = makeElement(name, tag, attributes);
    const bool isVoid = hasFlag(tag, kVoidTag);
    // Raw text would become visible text outside its element, and goes no deeper.
    if (!isVoid && !isRawText(tag) && open_.size() >= HTMLDocument::kMaximumDepth) {
        if (beyondDepth_.size() < kRememberedEnds) beyondDepth_.push_back(tag);
        breakOwed_ = breakOwed_ || hasFlag(tag, kSpecialTag);
        return node;
    }
    if (isVoid && tag != HTMLTag::br) insertOwedBreak();
    const bool belongsInTable = hasFlag(tag, kTableContextTag) ? tag != HTMLTag::table
                                                               : hasMarker(tag) || tag == HTMLTag::colgroup ||
                                                                     tag == HTMLTag::col || isRawContainer(tag);
    if (belongsInTable) {
        appendChild(open_.back().node, node);
    } else {
        place(node);
    }
    if (isVoid) return node;
    open_.push_back({node, tag});
    if (tag == HTMLTag::p) ++openParagraphs_; // the only one that goes on the stack, and pop() the only way off it
    if (hasMarker(tag)) formatting_.push_back(HTMLDocument::kNone);
    return node;
}

// Elements beyond the depth limit are not in the tree, but the lines that their starts and ends make are: an empty
// element in the place of each would be an empty line.
void HTMLTreeBuilder::insertOwedBreak() {
    if (!std::exchange(breakOwed_, false)) return;
    NodeIndex last = document_.nodes_[open_.back().node].last;
    while (last != HTMLDocument::kNone && !document_.isElement(last) && isBlank(document_.text(last)))
        last = document_.nodes_[last].previous;
    if (last == HTMLDocument::kNone || document_.nodes_[last].tag == HTMLTag::br) return;
    place(makeElement(htmlTagName(HTMLTag::br), HTMLTag::br, {}));
}

// Scopes

bool HTMLTreeBuilder::inScope(HTMLTag tag, std::span<const HTMLTag> extra) const {
    for (std::size_t i = open_.size(); i-- > 0;) {
        if (open_[i].tag == tag) return true;
        if (hasFlag(open_[i].tag, kScopeTag) || std::ranges::find(extra, open_[i].tag) != extra.end()) return false;
    }
    return false;
}

bool HTMLTreeBuilder::inTableScope(HTMLTag tag) const {
    for (std::size_t i = open_.size(); i-- > 0;) {
        if (open_[i].tag == tag) return true;
        if (open_[i].tag == HTMLTag::table || open_[i].tag == HTMLTag::template_) return false;
    }
    return false;
}

bool HTMLTreeBuilder::inParagraphScope() const {
    return openParagraphs_ > 0 && inScope(HTMLTag::p, kButtonScope);
}

void HTMLTreeBuilder::pop() {
    if (hasMarker(current())) clearFormattingToMarker();
    if (current() == HTMLTag::p) --openParagraphs_;
    open_.pop_back();
    beyondDepth_.clear();
    breakOwed_ = false; // what was open ends with a line of its own
}

void HTMLTreeBuilder::popUntil(HTMLTag tag) {
    while (open_.size() > 2 && current() != tag) pop();
    if (open_.size() > 2) pop();
}

void HTMLTreeBuilder::popToTableContext(std::span<const HTMLTag> contexts) {
    while (open_.size() > 2 && std::ranges::find(contexts, current()) == contexts.end()) pop();
}

void HTMLTreeBuilder::closeImpliedEnds(HTMLTag except) {
    while (open_.size() > 2 && current() != except && hasFlag(current(), kImpliedEndTag)) pop();
}

void HTMLTreeBuilder::closeParagraph() {
    closeImpliedEnds(HTMLTag::p);
    popUntil(HTMLTag::p);
}

// Start tags

void HTMLTreeBuilder::startTag(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes,
                               bool selfClosed) {
    dropNewline_ = false;
    ++tags_;
    if (tag == HTMLTag::html) return addMissingAttributes(document_.root(), attributes);
    if (tag == HTMLTag::body) {
        bodyBegun_ = true;
        return addMissingAttributes(document_.body(), attributes);
    }
    if (tag == HTMLTag::head) return;
    if (!bodyBegun_) {
        if (headElement_ != HTMLDocument::kNone) return; // markup inside a title is none
        if (hasFlag(tag, kHeadTag)) return startInHead(name, tag, attributes, selfClosed);
        bodyBegun_ = true;
    }
    if (startInTable(name, tag, attributes)) return;
    closeForStart(tag);
    if (!hasFlag(tag, kClosesParagraph) && !isRawContainer(tag) && tag != HTMLTag::textarea) reopenFormatting();
    const NodeIndex node = insertElement(name, tag, attributes);
    const bool pushed = open_.back().node == node;
    if (pushed && selfClosed) return pop();
    if (pushed && hasFlag(tag, kFormattingTag)) rememberFormatting(node);
    dropNewline_ = tag == HTMLTag::pre || tag == HTMLTag::listing || tag == HTMLTag::textarea;
}

void HTMLTreeBuilder::startInHead(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes,
                                  bool selfClosed) {
    const NodeIndex node = makeElement(name, tag, attributes);
    appendChild(document_.head(), node);
    if (!selfClosed && !hasFlag(tag, kVoidTag)) headElement_ = node;
}

// The parts of a table; what is missing between a table and a cell is made. Outside a table they are no elements.
bool HTMLTreeBuilder::startInTable(std::string_view name, HTMLTag tag, std::span<const Attribute> attributes) {
    static constexpr std::array kInTable{HTMLTag::table};
    static constexpr std::array kInColumns{HTMLTag::colgroup, HTMLTag::table};
    static constexpr std::array kInRows{HTMLTag::tbody, HTMLTag::thead, HTMLTag::tfoot, HTMLTag::table};
    static constexpr std::array kInRow{HTMLTag::tr, HTMLTag::tbody, HTMLTag::thead, HTMLTag::tfoot, HTMLTag::table};
    std::span<const HTMLTag> contexts = kInTable;
    switch (tag) {
    case HTMLTag::caption:
    case HTMLTag::colgroup:
    case HTMLTag::tbody:
    case HTMLTag::thead:
    case HTMLTag::tfoot:
        break;
    case HTMLTag::col:
        contexts = kInColumns;
        break;
    case HTMLTag::tr:
        contexts = kInRows;
        break;
    case HTMLTag::td:
    case HTMLTag::th:
        contexts = kInRow;
        break;
    case HTMLTag::table: // directly between rows: the outer table ends
        if (hasFlag(current(), kTableContextTag)) popUntil(HTMLTag::table);
        return false;
    default:
        return false;
    }
    if (!inTableScope(HTMLTag::table)) return true;
    popToTableContext(contexts);
    if (tag == HTMLTag::col && current() == HTMLTag::table) insertElement(HTMLTag::colgroup);
    const bool isCell = tag == HTMLTag::td || tag == HTMLTag::th;
    if ((isCell || tag == HTMLTag::tr) && current() == HTMLTag::table) insertElement(HTMLTag::tbody);
    if (isCell && current() != HTMLTag::tr) insertElement(HTMLTag::tr);
    insertElement(name, tag, attributes);
    return true;
}

void HTMLTreeBuilder::closeForStart(HTMLTag tag) {
    const bool keepsParagraph = tag == HTMLTag::table && document_.quirksMode_;
    if (!hasFlag(tag, kEndsOthersTag)) {
        if (hasFlag(tag, kClosesParagraph) && !keepsParagraph && inParagraphScope()) closeParagraph();
        return;
    }
    if (tag == HTMLTag::li) closeListItem(HTMLTag::li, HTMLTag::li);
    if (tag == HTMLTag::dd || tag == HTMLTag::dt) closeListItem(HTMLTag::dd, HTMLTag::dt);
    if (hasFlag(tag, kClosesParagraph) && inParagraphScope()) closeParagraph();
    if (hasFlag(tag, kHeadingTag) && hasFlag(current(), kHeadingTag)) pop();
    if (tag == HTMLTag::button && inScope(tag)) popUntil(tag);
    if (tag == HTMLTag::option && current() == HTMLTag::option) pop();
    if (tag == HTMLTag::optgroup) closeImpliedEnds(HTMLTag::unknown);
    if ((tag == HTMLTag::rt || tag == HTMLTag::rp) && inScope(HTMLTag::ruby)) closeImpliedEnds(HTMLTag::unknown);
    if (tag == HTMLTag::nobr && inScope(tag)) endFormatting(tag);
    if (tag == HTMLTag::a) {
        const NodeIndex open = rememberedFormatting(tag);
        if (open == HTMLDocument::kNone) return;
        endFormatting(tag);
        std::erase(formatting_, open);
        if (const std::size_t at = findOpen(open); at != kNotOpen)
            open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

// An item ends the one before it, unless a block in between holds it.
void HTMLTreeBuilder::closeListItem(HTMLTag first, HTMLTag second) {
    for (std::size_t i = open_.size(); i-- > 2;) {
        const HTMLTag tag = open_[i].tag;
        if (tag == first || tag == second) {
            closeImpliedEnds(tag);
            return popUntil(tag);
        }
        if (hasFlag(tag, kSpecialTag) && tag != HTMLTag::address && tag != HTMLTag::div && tag != HTMLTag::p) return;
    }
}

// Text

void HTMLTreeBuilder::text(std::string_view characters) {
    if (std::exchange(dropNewline_, false) && characters.starts_with('\n')) characters.remove_prefix(1);
    if (characters.empty()) return;
    if (!bodyBegun_ && headElement_ != HTMLDocument::kNone)
        return appendText(headElement_, HTMLDocument::kNone, characters);
    if (!bodyBegun_ || hasFlag(current(), kTableContextTag) || current() == HTMLTag::colgroup) {
        if (isBlank(characters)) return;
        if (current() == HTMLTag::colgroup) pop();
    }
    bodyBegun_ = true;
    if (!isRawContainer(current())) reopenFormatting();
    if (breakOwed_ && !isRawText(current()) && !isBlank(characters)) insertOwedBreak();
    NodeIndex parent = open_.back().node, before = HTMLDocument::kNone;
    if (hasFlag(current(), kTableContextTag)) {
        const auto table = std::ranges::find(open_.rbegin(), open_.rend(), HTMLTag::table, &Open::tag);
        if (table != open_.rend()) {
            before = table->node;
            parent = document_.nodes_[before].parent;
        }
    }
    appendText(parent, before, characters);
}

// End tags

void HTMLTreeBuilder::endTag(std::string_view name, HTMLTag tag) {
    dropNewline_ = false;
    if (!bodyBegun_) {
        if (headElement_ != HTMLDocument::kNone && document_.name(headElement_) == name)
            headElement_ = HTMLDocument::kNone;
        return;
    }
    if (const auto owed = std::ranges::find(beyondDepth_.rbegin(), beyondDepth_.rend(), tag);
        owed != beyondDepth_.rend()) {
        beyondDepth_.erase(owed.base() - 1, beyondDepth_.end());
        breakOwed_ = breakOwed_ || hasFlag(tag, kSpecialTag);
        return;
    }
    if (tag == HTMLTag::html || tag == HTMLTag::body || tag == HTMLTag::head || hasFlag(tag, kVoidTag)) return;
    if (tag == HTMLTag::p) {
        if (!inParagraphScope()) insertElement(HTMLTag::p);
        if (inParagraphScope()) closeParagraph();
    } else if (hasFlag(tag, kTableContextTag) || tag == HTMLTag::td || tag == HTMLTag::th || tag == HTMLTag::caption ||
               tag == HTMLTag::colgroup) {
        if (inTableScope(tag)) popUntil(tag);
    } else if (hasFlag(tag, kHeadingTag)) {
        endHeading();
    } else if (hasFlag(tag, kFormattingTag)) {
        endFormatting(tag);
    } else if (hasFlag(tag, kClosesParagraph) || hasMarker(tag) || tag == HTMLTag::button) {
        const auto extra = tag == HTMLTag::li ? std::span<const HTMLTag>(kListScope) : std::span<const HTMLTag>();
        if (!inScope(tag, extra)) return;
        closeImpliedEnds(tag);
        popUntil(tag);
    } else {
        endOther(name, tag);
    }
}

// Any heading's end tag ends the open heading.
void HTMLTreeBuilder::endHeading() {
    for (std::size_t i = open_.size(); i-- > 2;) {
        if (hasFlag(open_[i].tag, kHeadingTag)) return popUntil(open_[i].tag);
        if (hasFlag(open_[i].tag, kScopeTag)) return;
    }
}

void HTMLTreeBuilder::endOther(std::string_view name, HTMLTag tag) {
    for (std::size_t i = open_.size(); i-- > 2;) {
        if (open_[i].tag == tag && (tag != HTMLTag::unknown || document_.name(open_[i].node) == name)) {
            while (open_.size() > i) pop();
            return;
        }
        if (hasFlag(open_[i].tag, kSpecialTag)) return;
    }
}

} // namespace platform
