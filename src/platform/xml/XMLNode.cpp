#include "platform/xml/XMLNode.h"

#include <algorithm>

#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLWriter.h"

namespace platform {

std::string XMLNode::stringValue() const {
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

Result<XMLDocument> XMLElement::initWithXMLString(std::string_view xml) {
    return XMLDocument::initWithXMLString(xml, XMLDocumentParsing::strict);
}

std::optional<std::string_view> XMLElement::attributeForName(std::string_view name) const {
    const auto found = std::ranges::find(attributes(), name, &XMLAttributeView::name);
    if (found == attributes().end()) return std::nullopt;
    return found->value;
}

void XMLElement::setAttribute(std::string_view name, std::string_view value) {
    const std::span<XMLAttributeView> present(attributes_, attributeCount_);
    if (const auto found = std::ranges::find(present, name, &XMLAttributeView::name); found != present.end()) {
        found->value = arena_.stored(value);
        return;
    }
    if (attributeCount_ == attributeCapacity_) {
        attributeCapacity_ = std::max(2U, 2 * attributeCapacity_);
        attributes_ = arena_.makeArray<XMLAttributeView>(attributeCapacity_);
        std::ranges::copy(present, attributes_);
    }
    attributes_[attributeCount_++] = {arena_.stored(name), arena_.stored(value)};
}

XMLElement& XMLElement::addElement(std::string_view name) {
    auto* element = arena_.make<XMLElement>(arena_, arena_.stored(name));
    addChild(*element);
    return *element;
}

void XMLElement::addText(XMLNodeKind kind, std::string_view text) {
    if (last_ && last_->kind_ == kind) {
        last_->text_ = arena_.extended(last_->text_, text);
    } else {
        addNode(kind, text);
    }
}

XMLNode& XMLElement::addNode(XMLNodeKind kind, std::string_view text) {
    auto* node = arena_.make<XMLNode>(kind, std::string_view());
    node->text_ = arena_.stored(text); // behind the node, so that it can grow
    addChild(*node);
    return *node;
}

void XMLElement::addChild(XMLNode& child) {
    child.parent_ = this;
    (last_ ? last_->next_ : first_) = &child;
    last_ = &child;
}

} // namespace platform
