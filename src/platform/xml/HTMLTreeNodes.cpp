// The links between the nodes of the tree under construction.
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/xml/HTMLTreeBuilder.h"

namespace platform {

HTMLTreeBuilder::NodeIndex HTMLTreeBuilder::makeElement(std::string_view name, HTMLTag tag,
                                                        std::span<const Attribute> attributes) {
    HTMLDocument::Node node;
    node.tag = tag;
    node.start = static_cast<std::uint32_t>(document_.attributes_.size());
    node.count = static_cast<std::uint32_t>(attributes.size());
    for (const Attribute& attribute : attributes) document_.attributes_.push_back(attribute);
    if (tag == HTMLTag::unknown) {
        const auto number = static_cast<std::uint16_t>(std::min<std::size_t>(document_.otherNames_.size(), 0xFFFF));
        const auto [entry, isNew] = otherNames_.try_emplace(std::string(name), number);
        if (isNew && document_.otherNames_.size() <= 0xFFFF) document_.otherNames_.emplace_back(name);
        node.otherName = entry->second;
    }
    if (tag == HTMLTag::style) ++document_.styleElements_;
    document_.nodes_.push_back(node);
    return static_cast<NodeIndex>(document_.nodes_.size() - 1);
}

// A new element of the same name that shares the attributes.
HTMLTreeBuilder::NodeIndex HTMLTreeBuilder::copyElement(NodeIndex original) {
    HTMLDocument::Node node;
    node.tag = document_.nodes_[original].tag;
    node.start = document_.nodes_[original].start;
    node.count = document_.nodes_[original].count;
    document_.nodes_.push_back(node);
    return static_cast<NodeIndex>(document_.nodes_.size() - 1);
}

void HTMLTreeBuilder::appendChild(NodeIndex parent, NodeIndex child) {
    auto& nodes = document_.nodes_;
    const NodeIndex last = nodes[parent].last;
    nodes[child].parent = parent;
    nodes[child].previous = last;
    (last == HTMLDocument::kNone ? nodes[parent].first : nodes[last].next) = child;
    nodes[parent].last = child;
}

void HTMLTreeBuilder::insertBefore(NodeIndex sibling, NodeIndex child) {
    auto& nodes = document_.nodes_;
    const NodeIndex parent = nodes[sibling].parent;
    const NodeIndex previous = nodes[sibling].previous;
    nodes[child].parent = parent;
    nodes[child].previous = previous;
    nodes[child].next = sibling;
    (previous == HTMLDocument::kNone ? nodes[parent].first : nodes[previous].next) = child;
    nodes[sibling].previous = child;
}

void HTMLTreeBuilder::detach(NodeIndex child) {
    auto& nodes = document_.nodes_;
    auto& node = nodes[child];
    if (node.parent == HTMLDocument::kNone) return;
    (node.previous == HTMLDocument::kNone ? nodes[node.parent].first : nodes[node.previous].next) = node.next;
    (node.next == HTMLDocument::kNone ? nodes[node.parent].last : nodes[node.next].previous) = node.previous;
    node.parent = node.previous = node.next = HTMLDocument::kNone;
}

void HTMLTreeBuilder::addMissingAttributes(NodeIndex index, std::span<const Attribute> attributes) {
    auto& all = document_.attributes_;
    auto& node = document_.nodes_[index];
    std::vector<Attribute> merged(all.begin() + node.start, all.begin() + node.start + node.count);
    for (const Attribute& attribute : attributes)
        if (std::ranges::find(merged, attribute.name, &Attribute::name) == merged.end()) merged.push_back(attribute);
    node.start = static_cast<std::uint32_t>(all.size());
    node.count = static_cast<std::uint32_t>(merged.size());
    all.insert(all.end(), merged.begin(), merged.end());
}

void HTMLTreeBuilder::appendText(NodeIndex parent, NodeIndex before, std::string_view characters) {
    auto& nodes = document_.nodes_;
    const NodeIndex last = before == HTMLDocument::kNone ? nodes[parent].last : nodes[before].previous;
    const bool extends = last != HTMLDocument::kNone && nodes[last].kind == HTMLDocument::NodeKind::text &&
                         nodes[last].start + nodes[last].count == document_.text_.size();
    if (extends) {
        nodes[last].count += static_cast<std::uint32_t>(characters.size());
    } else {
        HTMLDocument::Node node;
        node.kind = HTMLDocument::NodeKind::text;
        node.start = static_cast<std::uint32_t>(document_.text_.size());
        node.count = static_cast<std::uint32_t>(characters.size());
        nodes.push_back(node);
        const auto index = static_cast<NodeIndex>(nodes.size() - 1);
        before == HTMLDocument::kNone ? appendChild(parent, index) : insertBefore(before, index);
    }
    document_.text_ += characters;
}

} // namespace platform
