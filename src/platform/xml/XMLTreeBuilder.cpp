#include "platform/xml/XMLTreeBuilder.h"

#include "platform/xml/XMLWriter.h"

namespace platform {

namespace {

constexpr std::size_t kTreePerMarkup = 5; // bytes for each byte of markup, about
constexpr std::size_t kUsualDepth = 16;

} // namespace

XMLTreeBuilder::XMLTreeBuilder(std::size_t markupSize) {
    document_.tree_ = std::make_unique<XMLDocument::Tree>(kTreePerMarkup * markupSize);
    document_.wrapRootElement({});
    open_.reserve(kUsualDepth);
    open_.push_back(document_.rootElement());
}

bool XMLTreeBuilder::openElement(std::string_view name, XMLAttributes attributes) {
    if (open_.size() > XMLParser::kMaximumDepth) return false;
    XMLElement& element = open_.back()->addElement(name);
    for (const auto& attribute : attributes) element.setAttribute(attribute.name, attribute.value);
    open_.push_back(&element);
    return true;
}

void XMLTreeBuilder::closeElement() {
    if (open_.size() > 1) open_.pop_back();
}

void XMLTreeBuilder::addText(XMLNodeKind kind, std::string_view text) {
    open_.back()->addText(kind, text);
}

void XMLTreeBuilder::addNode(XMLNodeKind kind, std::string_view text) {
    open_.back()->addNode(kind, text);
}

void XMLTreeBuilder::setDocumentType(std::string_view name, std::string_view publicID, std::string_view systemID) {
    std::string& type = document_.documentType_;
    type = "<!DOCTYPE ";
    type += name;
    if (!publicID.empty()) type.append(" PUBLIC \"").append(publicID).append("\"");
    if (!systemID.empty()) type.append(publicID.empty() ? " SYSTEM \"" : " \"").append(systemID).append("\"");
    type += '>';
}

XMLDocument XMLTreeBuilder::documentWithRoot(std::string_view name) {
    const XMLElement& holder = *document_.tree_->root;
    const XMLElement* root = nullptr;
    const XMLElement* first = nullptr;
    forEachNodeInOrder(holder, [&](const XMLNode& node, NodeEdge edge) {
        if (edge != NodeEdge::enter || &node == &holder || root) return !root;
        if (!first) first = node.asElement();
        if (name.empty() || node.name() == name) root = node.asElement();
        return !root;
    });
    if (!root) root = first;
    document_.tree_->root = const_cast<XMLElement*>(root); // it lies in the tree that is ours to change
    if (root) {
        document_.tree_->root->parent_ = nullptr;
        document_.tree_->root->next_ = nullptr;
    }
    open_.clear();
    return std::move(document_);
}

} // namespace platform
