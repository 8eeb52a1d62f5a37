#include "platform/xml/XMLWriter.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

// The elements of HTML that have no content and no end tag (HTML, 13.1.2), with the obsolete ones that readers treat
// alike.
constexpr auto kVoidElements = std::to_array<std::string_view>(
    {"area",  "base", "basefont", "bgsound", "br",   "col",  "command", "embed",  "frame", "hr",
     "image", "img",  "input",    "keygen",  "link", "meta", "param",   "source", "track", "wbr"});

// Elements between which an HTML reader drops white space.
constexpr auto kBlockElements = std::to_array<std::string_view>(
    {"address", "article", "aside", "base",  "blockquote", "body",     "caption", "center", "col",     "colgroup",
     "dd",      "dir",     "div",   "dl",    "dt",         "fieldset", "figure",  "footer", "form",    "h1",
     "h2",      "h3",      "h4",    "h5",    "h6",         "head",     "header",  "hr",     "html",    "li",
     "link",    "main",    "menu",  "meta",  "nav",        "ol",       "p",       "pre",    "section", "style",
     "table",   "tbody",   "td",    "tfoot", "th",         "thead",    "title",   "tr",     "ul"});

// Elements whose white space counts.
constexpr auto kPreservingElements =
    std::to_array<std::string_view>({"listing", "plaintext", "pre", "script", "style", "textarea", "title", "xmp"});

// Elements whose text HTML readers take as it stands.
constexpr auto kRawTextElements = std::to_array<std::string_view>({"script", "style"});

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
    return std::ranges::binary_search(names, name);
}
static_assert(std::ranges::is_sorted(kVoidElements) && std::ranges::is_sorted(kBlockElements) &&
              std::ranges::is_sorted(kPreservingElements) && std::ranges::is_sorted(kRawTextElements));

// Which characters are escaped, by their byte: a search by table, where find_first_of would search the set for each.
using CharacterTable = std::array<bool, 256>;

constexpr CharacterTable tableOf(std::string_view characters) {
    CharacterTable table{};
    for (const char character : characters) table[static_cast<unsigned char>(character)] = true;
    return table;
}

constexpr CharacterTable kEscapedInText = tableOf("&<>\r");
// A reader turns bare line breaks and tabs in a value into blanks.
constexpr CharacterTable kEscapedInAttributes = tableOf("&<>\"\t\n\r");

std::string_view escape(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    default:
        return "&#13;";
    }
}

// Runs of plain characters are appended whole.
void appendEscaping(std::string_view text, const CharacterTable& escaped, std::string& out) {
    std::size_t copied = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!escaped[static_cast<unsigned char>(text[at])]) continue;
        out.append(text, copied, at - copied).append(escape(text[at]));
        copied = at + 1;
    }
    out.append(text, copied);
}

void appendAttributes(const XMLElement& element, std::string& out) {
    for (const auto& attribute : element.attributes()) {
        out += ' ';
        out += attribute.name;
        out += "=\"";
        appendEscapedAttribute(attribute.value, out);
        out += '"';
    }
}

void appendLeaf(const XMLNode& node, std::string& out) {
    switch (node.kind()) {
    case XMLNodeKind::cdata:
        out.append("<![CDATA[").append(node.text()).append("]]>");
        return;
    case XMLNodeKind::comment:
        out.append("<!--").append(node.text()).append("-->");
        return;
    case XMLNodeKind::processingInstruction:
        out.append("<?").append(node.text()).append("?>");
        return;
    default:
        appendEscapedText(node.text(), out);
        return;
    }
}

void appendEndTag(const XMLElement& element, std::string& out) {
    out.append("</").append(element.name()).append(">");
}

bool isBlank(const XMLNode& node) {
    return node.kind() == XMLNodeKind::text && node.text().find_first_not_of(" \t\r\n") == std::string::npos;
}

// Whether white space between the children is dropped by a reader: all of them are blocks.
bool holdsOnlyBlocks(const XMLElement& element) {
    if (!isOneOf(kBlockElements, element.name()) || element.children().empty()) return false;
    return std::ranges::all_of(element.children(), [](const auto& child) {
        return isBlank(*child) || (child->asElement() && isOneOf(kBlockElements, child->name()));
    });
}

bool preservesWhiteSpace(const XMLElement& element) {
    if (isOneOf(kPreservingElements, element.name())) return true;
    const auto style = element.attributeForName("style");
    return (style && style->find("white-space") != std::string_view::npos) || element.attributeForName("xml:space");
}

class PageWriter {
  public:
    PageWriter(PageLayout layout, std::string& out) : indents_(layout == PageLayout::indented), out_(out) {}

    void operator()(const XMLNode& node, NodeEdge edge) {
        if (edge == NodeEdge::enter) return enter(*node.asElement());
        if (edge == NodeEdge::leave) return leave(*node.asElement());
        if (!open_.empty() && open_.back().indented && isBlank(node)) return;
        const bool raw = !open_.empty() && node.isText() && isOneOf(kRawTextElements, open_.back().name);
        if (raw) {
            out_ += node.text();
        } else {
            appendLeaf(node, out_);
        }
    }

  private:
    struct Open {
        std::string_view name;
        bool indented;  // its children stand on lines of their own
        bool preserves; // it or an element above keeps white space
    };

    void enter(const XMLElement& element) {
        if (!open_.empty() && open_.back().indented) newLine(open_.size());
        out_.append("<").append(element.name());
        appendAttributes(element, out_);
        out_ += isVoid(element) ? " />" : ">";
        const bool preserves = (!open_.empty() && open_.back().preserves) || preservesWhiteSpace(element);
        open_.push_back({element.name(), indents_ && !preserves && holdsOnlyBlocks(element), preserves});
    }

    void leave(const XMLElement& element) {
        const bool indented = open_.back().indented;
        open_.pop_back();
        if (isVoid(element)) return;
        if (indented) newLine(open_.size());
        appendEndTag(element, out_);
    }

    static bool isVoid(const XMLElement& element) {
        return element.children().empty() && isOneOf(kVoidElements, element.name());
    }

    // Depth beyond this many levels is not shown: the page would grow with the square of the depth.
    static constexpr std::size_t kDeepestIndent = 32;

    void newLine(std::size_t depth) {
        out_ += '\n';
        out_.append(2 * std::min(depth, kDeepestIndent), ' ');
    }

    bool indents_;
    std::string& out_;
    std::vector<Open> open_;
};

} // namespace

void appendEscapedText(std::string_view text, std::string& out) {
    appendEscaping(text, kEscapedInText, out);
}

void appendEscapedAttribute(std::string_view value, std::string& out) {
    appendEscaping(value, kEscapedInAttributes, out);
}

void writeXML(const XMLNode& root, std::string& out) {
    forEachNodeInOrder(root, [&](const XMLNode& node, NodeEdge edge) {
        if (edge == NodeEdge::leaf) return appendLeaf(node, out);
        if (edge == NodeEdge::leave) return appendEndTag(*node.asElement(), out);
        out.append("<").append(node.name());
        appendAttributes(*node.asElement(), out);
        out += '>';
    });
}

void writePage(const XMLNode& node, PageLayout layout, std::string& out) {
    forEachNodeInOrder(node, PageWriter(layout, out));
}

} // namespace platform
