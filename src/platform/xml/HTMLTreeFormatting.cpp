// Formatting that a block or a cell ended too early: what is opened again, and HTML5's "adoption agency", which parts
// an element that ends inside a block in two.
#include <algorithm>
#include <vector>

#include "platform/xml/HTMLTreeBuilder.h"

namespace platform {

namespace {

constexpr std::size_t kRememberedFormatting = 64;  // more at once is no real page
constexpr std::size_t kElementsReopenedPerTag = 8; // a page that reopens more is built to explode

} // namespace

// Of four equal ones in a row the first is forgotten.
void HTMLTreeBuilder::rememberFormatting(NodeIndex node) {
    const auto equalElements = [&](NodeIndex a, NodeIndex b) {
        const auto &x = document_.nodes_[a], &y = document_.nodes_[b];
        if (x.tag != y.tag || x.count != y.count) return false;
        return std::equal(document_.attributes_.begin() + x.start, document_.attributes_.begin() + x.start + x.count,
                          document_.attributes_.begin() + y.start);
    };
    std::size_t same = 0, remembered = 0, earliestSame = 0, i = formatting_.size();
    for (; i > 0 && formatting_[i - 1] != HTMLDocument::kNone; --i) {
        ++remembered;
        if (equalElements(formatting_[i - 1], node)) {
            ++same;
            earliestSame = i - 1;
        }
    }
    if (same >= 3) {
        formatting_.erase(formatting_.begin() + static_cast<std::ptrdiff_t>(earliestSame));
    } else if (remembered >= kRememberedFormatting) {
        formatting_.erase(formatting_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    formatting_.push_back(node);
}

void HTMLTreeBuilder::reopenEachFormatting() {
    std::size_t from = formatting_.size();
    while (from > 0 && formatting_[from - 1] != HTMLDocument::kNone && findOpen(formatting_[from - 1]) == kNotOpen)
        --from;
    for (std::size_t i = from; i < formatting_.size(); ++i) {
        if (open_.size() + 1 >= HTMLDocument::kMaximumDepth || reopened_ > kElementsReopenedPerTag * (tags_ + 64))
            return;
        ++reopened_;
        const NodeIndex copy = copyElement(formatting_[i]);
        place(copy);
        open_.push_back({copy, document_.nodes_[copy].tag});
        formatting_[i] = copy;
    }
}

void HTMLTreeBuilder::clearFormattingToMarker() {
    while (!formatting_.empty()) {
        const NodeIndex last = formatting_.back();
        formatting_.pop_back();
        if (last == HTMLDocument::kNone) return;
    }
}

std::size_t HTMLTreeBuilder::findOpen(NodeIndex node) const {
    for (std::size_t i = open_.size(); i-- > 0;)
        if (open_[i].node == node) return i;
    return kNotOpen;
}

// The last remembered element of that name in the present cell.
HTMLTreeBuilder::NodeIndex HTMLTreeBuilder::rememberedFormatting(HTMLTag tag) const {
    for (std::size_t i = formatting_.size(); i-- > 0 && formatting_[i] != HTMLDocument::kNone;)
        if (document_.nodes_[formatting_[i]].tag == tag) return formatting_[i];
    return HTMLDocument::kNone;
}

void HTMLTreeBuilder::endFormatting(HTMLTag tag) {
    if (current() == tag && std::ranges::find(formatting_, open_.back().node) == formatting_.end()) return pop();
    constexpr int kRounds = 8;
    for (int round = 0; round < kRounds && adoptOnce(tag); ++round) {
    }
}

// One round of HTML5's "adoption agency"; false when there is nothing more to do.
bool HTMLTreeBuilder::adoptOnce(HTMLTag tag) {
    const NodeIndex element = rememberedFormatting(tag);
    if (element == HTMLDocument::kNone) {
        endOther(htmlTagName(tag), tag);
        return false;
    }
    const std::size_t at = findOpen(element);
    if (at == kNotOpen) {
        std::erase(formatting_, element);
        return false;
    }
    for (std::size_t i = at + 1; i < open_.size(); ++i)
        if (hasFlag(open_[i].tag, kScopeTag)) return false;
    std::size_t furthest = at + 1;
    while (furthest < open_.size() && !hasFlag(open_[furthest].tag, kSpecialTag)) ++furthest;
    if (furthest == open_.size()) {
        while (open_.size() > at) pop();
        std::erase(formatting_, element);
        return false;
    }
    adopt(element, at, furthest);
    return true;
}

// The block at `furthest` moves out of the formatting element at `at`; the elements in between are made anew around
// it, and the formatting element anew inside it.
void HTMLTreeBuilder::adopt(NodeIndex element, std::size_t at, std::size_t furthest) {
    const Open block = open_[furthest];
    const Open ancestor = open_[at - 1];
    std::size_t bookmark = static_cast<std::size_t>(std::ranges::find(formatting_, element) - formatting_.begin());
    NodeIndex last = block.node;
    int inner = 0;
    for (std::size_t i = furthest; i-- > at + 1;) {
        ++inner;
        auto remembered = std::ranges::find(formatting_, open_[i].node);
        if (inner > 3 && remembered != formatting_.end()) {
            if (static_cast<std::size_t>(remembered - formatting_.begin()) < bookmark) --bookmark;
            formatting_.erase(remembered);
            remembered = formatting_.end();
        }
        if (remembered == formatting_.end()) {
            open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        const NodeIndex copy = copyElement(open_[i].node);
        open_[i].node = *remembered = copy;
        if (last == block.node) bookmark = static_cast<std::size_t>(remembered - formatting_.begin()) + 1;
        detach(last);
        appendChild(copy, last);
        last = copy;
    }
    detach(last);
    const bool beforeTable = hasFlag(ancestor.tag, kTableContextTag);
    const auto table = std::ranges::find(open_.rbegin(), open_.rend(), HTMLTag::table, &Open::tag);
    if (beforeTable && table != open_.rend() && table->node != last) {
        insertBefore(table->node, last);
    } else {
        appendChild(ancestor.node, last);
    }
    const NodeIndex renewed = copyElement(element);
    auto& nodes = document_.nodes_;
    nodes[renewed].first = nodes[block.node].first;
    nodes[renewed].last = nodes[block.node].last;
    for (NodeIndex child = nodes[renewed].first; child != HTMLDocument::kNone; child = nodes[child].next)
        nodes[child].parent = renewed;
    nodes[block.node].first = nodes[block.node].last = HTMLDocument::kNone;
    appendChild(block.node, renewed);

    const auto old = static_cast<std::size_t>(std::ranges::find(formatting_, element) - formatting_.begin());
    formatting_.insert(formatting_.begin() + static_cast<std::ptrdiff_t>(std::min(bookmark, formatting_.size())),
                       renewed);
    formatting_.erase(formatting_.begin() + static_cast<std::ptrdiff_t>(old + (old >= bookmark ? 1 : 0)));
    std::erase_if(open_, [&](const Open& entry) { return entry.node == element; });
    open_.insert(open_.begin() + static_cast<std::ptrdiff_t>(findOpen(block.node) + 1), {renewed, nodes[renewed].tag});
}

} // namespace platform
