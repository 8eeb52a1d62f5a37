// An HTML page as a compact tree: nodes in one array, named by index; names as numbers, texts in one arena. The one
// adapter to the HTML parser underneath; the tree is the one that HTML5 builds, whatever that parser makes of a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/xml/HTMLTags.h"

namespace platform {

class XMLDocument;

inline constexpr std::string_view kHTMLDocumentErrorDomain = "HTMLDocumentErrorDomain";
enum class HTMLDocumentError : std::int64_t { tooManyAttributes = 1, tooLarge = 2, outOfMemory = 3 };

class HTMLDocument {
  public:
    using NodeIndex = std::uint32_t;
    static constexpr NodeIndex kNone = 0xFFFFFFFF;
    // Elements nested deeper are left out: what they hold stands in the deepest one, their lines parted by br. No text
    // is lost.
    static constexpr std::size_t kMaximumDepth = 512;
    // A tag with more attributes than this is refused: looking for doubled names is quadratic in the parser underneath.
    static constexpr std::size_t kMaximumAttributes = 512;

    enum class NodeKind : std::uint8_t { element, text };

    struct Node {
        NodeIndex parent = kNone, previous = kNone, next = kNone, first = kNone, last = kNone;
        std::uint32_t start = 0; // element: its first attribute; text: its first byte
        std::uint32_t count = 0; // element: number of attributes; text: bytes of UTF-8
        std::uint16_t otherName = 0;
        HTMLTag tag = HTMLTag::unknown;
        NodeKind kind = NodeKind::element;
        friend bool operator==(const Node&, const Node&) = default;
    };

    // Bytes of any encoding: a byte order mark, a declaration within the first 1024 bytes, UTF-8 when the bytes are
    // well-formed UTF-8, else Windows-1252. Ill-formed markup is no error. Linear in time and memory, whatever the
    // nesting. The tree does not refer to the bytes afterwards.
    static Result<HTMLDocument> parse(std::string_view bytes);

    // The tree that parse() would make of the document's prettyPrintedPage(), without printing it. Nothing when it is
    // not certain that it would be the same tree, or when parse() may refuse the page.
    static std::optional<HTMLDocument> fromPrintedPage(const XMLDocument& source);

    NodeIndex root() const { return 0; }
    NodeIndex head() const { return 1; }
    NodeIndex body() const { return 2; }
    std::size_t size() const { return nodes_.size(); }
    const Node& operator[](NodeIndex index) const { return nodes_[index]; }
    bool isElement(NodeIndex index) const { return nodes_[index].kind == NodeKind::element; }

    // The text of a text node; UTF-8, well-formed.
    std::string_view text(NodeIndex index) const;
    // The lower-case name of an element.
    std::string_view name(NodeIndex index) const;
    // An attribute's value, of the first of that name; nothing when absent.
    std::optional<std::string_view> attribute(NodeIndex index, HTMLAttribute name) const;
    // Style elements that were made; those of the tree are no more.
    std::size_t styleElementCount() const { return styleElements_; }
    // Bytes of all texts of the page.
    std::size_t textSize() const { return text_.size(); }
    // The texts of all descendants of an element joined.
    std::string textContent(NodeIndex index) const;

    // Whether the page has no document type, or one of those that browsers read in quirks mode.
    bool quirksMode() const { return quirksMode_; }
    // The name of the encoding that the bytes were read in, lower case ("utf-8").
    const std::string& encoding() const { return encoding_; }

    // The node that follows in document order; with `end`, the walk stays below that element.
    NodeIndex following(NodeIndex index, NodeIndex end) const;
    NodeIndex followingSkippingChildren(NodeIndex index, NodeIndex end) const;

    // Whether both were built in the same steps, to the same tree.
    friend bool operator==(const HTMLDocument& a, const HTMLDocument& b);

  private:
    friend class HTMLTreeBuilder;
    friend class HTMLPageParser;
    friend class HTMLPrintedPage;
    struct Attribute {
        const char* value;
        std::uint32_t length;
        HTMLAttribute name;
        std::string_view text() const { return {value, length}; }
        friend bool operator==(const Attribute& a, const Attribute& b) {
            return a.name == b.name && a.text() == b.text();
        }
    };
    // Storage of attribute values that the parser underneath allocated, taken over as it is.
    struct ReleaseValue {
        void operator()(char* value) const;
    };

    // The attribute with its value copied to where the document keeps it.
    Attribute stored(HTMLAttribute name, std::string_view value);

    std::vector<Node> nodes_;
    std::vector<Attribute> attributes_;
    std::string text_;
    std::vector<std::string> otherNames_;
    std::vector<std::unique_ptr<char[]>> blocks_; // attribute values
    std::span<char> freeInBlock_;                 // what is left of the block of small ones
    std::vector<std::unique_ptr<char, ReleaseValue>> largeValues_;
    std::string encoding_;
    std::uint32_t styleElements_ = 0;
    bool quirksMode_ = true;
};

} // namespace platform
