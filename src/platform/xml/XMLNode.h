// Counterparts of NSXMLNode and NSXMLElement: the tree of a small document, such as one note's content.
//
// Nodes and their texts lie in their document's arena and are good as long as it lives. Nothing here recurses over the
// depth of a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/xml/XMLArena.h"
#include "platform/xml/XMLParser.h"

namespace platform {

enum class XMLNodeKind : std::uint8_t { element, text, cdata, comment, processingInstruction };

class XMLDocument;
class XMLElement;

class XMLNode {
  public:
    // A text, CDATA section, comment or processing instruction ("target data") with its text, which lies in the arena.
    XMLNode(XMLNodeKind kind, std::string_view text) : text_(text), kind_(kind) {}
    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;

    XMLNodeKind kind() const { return kind_; }
    bool isText() const { return kind_ == XMLNodeKind::text || kind_ == XMLNodeKind::cdata; }
    XMLElement* parent() const { return parent_; }
    XMLNode* nextSibling() const { return next_; }

    // This node as an element, or null.
    XMLElement* asElement();
    const XMLElement* asElement() const;

    // The name of an element; empty for every other node.
    std::string_view name() const { return kind_ == XMLNodeKind::element ? text_ : std::string_view(); }
    // The node's own text, not escaped; empty for an element.
    std::string_view text() const { return kind_ == XMLNodeKind::element ? std::string_view() : text_; }

    // The text of the node and of all below it, in order; comments and instructions have no part in it.
    std::string stringValue() const;
    // The markup of the node. Every element has an end tag ("<br></br>"), values stand in double quotes, and
    // "&", "<" and ">" are escaped.
    std::string XMLString() const;

  private:
    friend class XMLElement;
    friend class XMLTreeBuilder;
    std::string_view text_; // an element's name
    XMLElement* parent_ = nullptr;
    XMLNode* next_ = nullptr;
    XMLNodeKind kind_;
};

// The children of an element in order, as pointers.
class XMLChildren {
  public:
    class Iterator {
      public:
        using difference_type = std::ptrdiff_t;
        using value_type = XMLNode*;
        Iterator() = default;
        explicit Iterator(XMLNode* node) : node_(node) {}
        XMLNode* operator*() const { return node_; }
        Iterator& operator++() {
            node_ = node_->nextSibling();
            return *this;
        }
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator&) const = default;

      private:
        XMLNode* node_ = nullptr;
    };

    explicit XMLChildren(XMLNode* first) : first_(first) {}
    bool empty() const { return first_ == nullptr; }
    XMLNode* front() const { return first_; }
    Iterator begin() const { return Iterator(first_); }
    static Iterator end() { return Iterator(); }

  private:
    XMLNode* first_;
};

class XMLElement : public XMLNode {
  public:
    // The name lies in the arena.
    XMLElement(XMLArena& arena, std::string_view name) : XMLNode(XMLNodeKind::element, name), arena_(arena) {}

    // One element, well-formed, as the whole of the text: the root of the document. Entity names of HTML are known;
    // errors are the parser's. @sel initWithXMLString:error:
    static Result<XMLDocument> initWithXMLString(std::string_view xml);

    // In document order; a new name goes behind the others.
    std::span<const XMLAttributeView> attributes() const { return {attributes_, attributeCount_}; }
    // The value, or nothing. Names are compared exactly. @sel attributeForName:
    std::optional<std::string_view> attributeForName(std::string_view name) const;
    void setAttribute(std::string_view name, std::string_view value);

    XMLChildren children() const { return XMLChildren(first_); }
    // What is added goes behind the children that are there. A text is joined to a text of the same kind before it.
    XMLElement& addElement(std::string_view name);
    void addText(XMLNodeKind kind, std::string_view text);
    XMLNode& addNode(XMLNodeKind kind, std::string_view text);

  private:
    friend class XMLDocument;
    void addChild(XMLNode& child);

    XMLArena& arena_;
    XMLAttributeView* attributes_ = nullptr;
    std::uint32_t attributeCount_ = 0, attributeCapacity_ = 0;
    XMLNode* first_ = nullptr;
    XMLNode* last_ = nullptr;
};

inline XMLElement* XMLNode::asElement() {
    return kind_ == XMLNodeKind::element ? static_cast<XMLElement*>(this) : nullptr;
}

inline const XMLElement* XMLNode::asElement() const {
    return kind_ == XMLNodeKind::element ? static_cast<const XMLElement*>(this) : nullptr;
}

} // namespace platform
