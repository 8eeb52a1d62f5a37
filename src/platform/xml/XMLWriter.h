// Writing a tree as markup, and the walk over a tree that it is made of.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "platform/xml/XMLNode.h"

namespace platform {

enum class NodeEdge { enter, leave, leaf }; // elements are entered and left, other nodes are leaves

// Calls visit(node, edge) for the node and all below it in document order, without recursion. A visit that returns a
// bool answers for the edge "enter" whether to go into the element; "leave" is called either way.
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
    for (const XMLNode* node = &root;;) {
        const XMLElement* element = node->asElement();
        if (!element) {
            visit(*node, NodeEdge::leaf);
        } else if (enter(*node) && !element->children().empty()) {
            node = element->children().front();
            continue;
        } else {
            visit(*node, NodeEdge::leave);
        }
        while (node != &root && !node->nextSibling()) {
            node = node->parent();
            visit(*node, NodeEdge::leave);
        }
        if (node == &root) return;
        node = node->nextSibling();
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
