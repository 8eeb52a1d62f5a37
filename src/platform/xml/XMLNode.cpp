#include "platform/xml/XMLNode.h"

#include <algorithm>

#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLWriter.h"

namespace platform {

XMLElement* XMLNode::asElement() {
    return kind_ == XMLNodeKind::element ? static_cast<XMLElement*>(this) : nullptr;
}

const XMLElement* XMLNode::asElement() const {
    return kind_ == XMLNodeKind::element ? static_cast<const XMLElement*>(this) : nullptr;
}

std::string XMLNode::stringValue() const {
    if (isText()) return text_;
    std::string result;
    forEachNodeInOrder(*this, [&](const XMLNode& node, NodeEdge edge) {
        if (edge == NodeEdge::leaf && node.isText()) result += node.text();
    });
    return result;
}

std::string XMLNode::XMLString() const {
    std::string result;
    writeXML(*this, result);
    return result;
}

// A deep tree is taken down from a list: the destructors of nested members would recurse once a level.
XMLElement::~XMLElement() {
    std::vector<std::unique_ptr<XMLNode>> doomed = std::move(children_);
    while (!doomed.empty()) {
        const auto node = std::move(doomed.back());
        doomed.pop_back();
        if (XMLElement* element = node->asElement()) {
            std::ranges::move(element->children_, std::back_inserter(doomed));
            element->children_.clear();
        }
    }
}

Result<std::unique_ptr<XMLElement>> XMLElement::initWithXMLString(std::string_view xml) {
    auto document = TRY(XMLDocument::initWithXMLString(xml, XMLDocumentParsing::strict));
    return document.takeRootElement();
}

std::optional<std::string_view> XMLElement::attributeForName(std::string_view name) const {
    const auto found = std::ranges::find(attributes_, name, &XMLAttribute::name);
    if (found == attributes_.end()) return std::nullopt;
    return found->value;
}

void XMLElement::setAttribute(std::string_view name, std::string_view value) {
    const auto found = std::ranges::find(attributes_, name, &XMLAttribute::name);
    if (found != attributes_.end()) {
        found->value = value;
    } else {
        attributes_.push_back({std::string(name), std::string(value)});
    }
}

XMLNode& XMLElement::addChild(std::unique_ptr<XMLNode> child) {
    child->parent_ = this;
    return *children_.emplace_back(std::move(child));
}

std::unique_ptr<XMLNode> XMLElement::detachChildAtIndex(std::size_t index) {
    const auto place = children_.begin() + static_cast<std::ptrdiff_t>(index);
    auto child = std::move(*place);
    children_.erase(place);
    child->parent_ = nullptr;
    return child;
}

} // namespace platform
