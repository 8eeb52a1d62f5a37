// Counterparts of NSXMLNode and NSXMLElement: the tree of a small document, such as one note's content.
//
// A node is owned by its parent, or by whoever has detached it. Nothing here recurses over the depth of a tree.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Result.h"
#include "platform/xml/XMLParser.h"

namespace platform {

enum class XMLNodeKind { element, text, cdata, comment, processingInstruction };

class XMLElement;

class XMLNode {
  public:
    // A text, CDATA section, comment or processing instruction ("target data") with its text.
    XMLNode(XMLNodeKind kind, std::string text) : kind_(kind), text_(std::move(text)) {}
    virtual ~XMLNode() = default;
    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;

    XMLNodeKind kind() const { return kind_; }
    bool isText() const { return kind_ == XMLNodeKind::text || kind_ == XMLNodeKind::cdata; }
    XMLElement* parent() const { return parent_; }

    // This node as an element, or null.
    XMLElement* asElement();
    const XMLElement* asElement() const;

    // The name of an element; empty for every other node.
    virtual std::string_view name() const { return {}; }
    // The node's own text, not escaped; empty for an element.
    const std::string& text() const { return text_; }
    void appendText(std::string_view more) { text_ += more; }

    // The text of the node and of all below it, in order; comments and instructions have no part in it.
    std::string stringValue() const;
    // The markup of the node. Every element has an end tag ("<br></br>"), values stand in double quotes, and
    // "&", "<" and ">" are escaped.
    std::string XMLString() const;

  private:
    friend class XMLElement;
    XMLNodeKind kind_;
    XMLElement* parent_ = nullptr;
    std::string text_;
};

class XMLElement : public XMLNode {
  public:
    explicit XMLElement(std::string name) : XMLNode(XMLNodeKind::element, {}), name_(std::move(name)) {}
    ~XMLElement() override;

    // One element, well-formed, as the whole of the text. Entity names of HTML are known; errors are the parser's.
    // @sel initWithXMLString:error:
    static Result<std::unique_ptr<XMLElement>> initWithXMLString(std::string_view xml);

    std::string_view name() const override { return name_; }

    // In document order; a new name goes behind the others.
    const std::vector<XMLAttribute>& attributes() const { return attributes_; }
    // The value, or nothing. Names are compared exactly. @sel attributeForName:
    std::optional<std::string_view> attributeForName(std::string_view name) const;
    void setAttribute(std::string_view name, std::string_view value);

    const std::vector<std::unique_ptr<XMLNode>>& children() const { return children_; }
    XMLNode& addChild(std::unique_ptr<XMLNode> child);
    // Takes a child out; it belongs to the caller then.
    std::unique_ptr<XMLNode> detachChildAtIndex(std::size_t index);

  private:
    std::string name_;
    std::vector<XMLAttribute> attributes_;
    std::vector<std::unique_ptr<XMLNode>> children_;
};

} // namespace platform
