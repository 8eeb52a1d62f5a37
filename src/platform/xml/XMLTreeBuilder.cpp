#include "platform/xml/XMLTreeBuilder.h"

#include <fmt/core.h>

#include "platform/xml/XMLWriter.h"

namespace platform {

bool XMLTreeBuilder::openElement(std::string_view name, XMLAttributes attributes) {
    if (open_.size() > XMLParser::kMaximumDepth) return false;
    auto element = std::make_unique<XMLElement>(std::string(name));
    for (const auto& attribute : attributes) element->setAttribute(attribute.name, attribute.value);
    XMLElement* added = element.get();
    open_.back()->addChild(std::move(element));
    open_.push_back(added);
    return true;
}

void XMLTreeBuilder::closeElement() {
    if (open_.size() > 1) open_.pop_back();
}

void XMLTreeBuilder::addText(XMLNodeKind kind, std::string_view text) {
    const auto& siblings = open_.back()->children();
    if (!siblings.empty() && siblings.back()->kind() == kind) {
        siblings.back()->appendText(text);
    } else {
        addNode(kind, std::string(text));
    }
}

void XMLTreeBuilder::addNode(XMLNodeKind kind, std::string text) {
    open_.back()->addChild(std::make_unique<XMLNode>(kind, std::move(text)));
}

void XMLTreeBuilder::setDocumentType(std::string_view name, std::string_view publicID, std::string_view systemID) {
    documentType_ = fmt::format("<!DOCTYPE {}", name);
    if (!publicID.empty()) documentType_ += fmt::format(" PUBLIC \"{}\"", publicID);
    if (!systemID.empty()) documentType_ += fmt::format("{} \"{}\"", publicID.empty() ? " SYSTEM" : "", systemID);
    documentType_ += '>';
}

XMLDocument XMLTreeBuilder::documentWithRoot(std::string_view name) {
    const XMLElement* root = nullptr;
    const XMLElement* first = nullptr;
    forEachNodeInOrder(holder_, [&](const XMLNode& node, NodeEdge edge) {
        if (edge != NodeEdge::enter || &node == &holder_ || root) return !root;
        if (!first) first = node.asElement();
        if (node.name() == name) root = node.asElement();
        return !root;
    });
    if (!root) root = first;
    XMLDocument document;
    document.documentType_ = std::move(documentType_);
    if (!root) return document;
    XMLElement& parent = *root->parent();
    for (std::size_t i = 0; i < parent.children().size(); ++i)
        if (parent.children()[i].get() == root) {
            auto node = parent.detachChildAtIndex(i);
            document.root_.reset(static_cast<XMLElement*>(node.release()));
            break;
        }
    return document;
}

} // namespace platform
