// Writing a tree as markup, and the walk over a tree that it is made of.
#pragma once

#include <concepts>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/xml/XMLNode.h"

namespace platform {

enum class NodeEdge { enter, leave, leaf }; // elements are entered and left, other nodes are leaves

// Calls visit(node, edge) for the node and all below it in document order, on an explicit stack. A visit that returns
// a bool answers for the edge "enter" whether to go into the element; "leave" is called either way.
template<class Visit>
void forEachNodeInOrder(const XMLNode& root, Visit&& visit) {
    const auto enter = [&](const XMLNode& node) -> bool {
        if constexpr (std::same_as<decltype(visit(node, NodeEdge::enter)), bool>) {
            return visit(node, NodeEdge::enter);
        } else {
            visit(node, NodeEdge::enter);
            return true;
        }
    };
    std::vector<std::pair<const XMLElement*, std::size_t>> open; // element and its next child
    const auto visitNode = [&](const XMLNode& node) {
        const XMLElement* element = node.asElement();
        if (!element) {
            visit(node, NodeEdge::leaf);
        } else {
            open.emplace_back(element, enter(node) ? 0 : element->children().size());
        }
    };
    visitNode(root);
    while (!open.empty()) {
        auto& [element, next] = open.back();
        if (next < element->children().size()) {
            visitNode(*element->children()[next++]);
        } else {
            const XMLElement* left = element;
            open.pop_back();
            visit(*left, NodeEdge::leave);
        }
    }
}

// Appends the node with every element in expanded form.
void writeXML(const XMLNode& node, std::string& out);

enum class PageLayout { plain, indented };

// Appends the node as a page that browsers and XML readers read alike: void elements of HTML as "<br />", every other
// element with an end tag, scripts and style sheets unescaped. Indentation goes only where no reader keeps it: between
// the blocks of an element that holds nothing but blocks, and never below an element that preserves white space.
void writePage(const XMLNode& node, PageLayout layout, std::string& out);

// Text with "&", "<" and ">" escaped, appended.
void appendEscapedText(std::string_view text, std::string& out);
// A value for double quotes, escaped so that a reader gives it back to the letter, appended.
void appendEscapedAttribute(std::string_view value, std::string& out);

} // namespace platform
