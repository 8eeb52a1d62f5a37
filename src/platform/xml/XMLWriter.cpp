#include "platform/xml/XMLWriter.h"

#include <algorithm>
#include <array>

#include "platform/base/TextScan.h"
#include "platform/xml/NameTable.h"
#include "platform/xml/PageLayout.h"

namespace platform {

namespace {

struct PageElementRow {
    std::string_view name;
    unsigned flags;
};

constexpr unsigned V = kVoidElement, B = kBlockElement, P = kPreservingElement, R = kRawTextElement;

constexpr auto kPageElements = std::to_array<PageElementRow>({
    {"address", B},    {"area", V},     {"article", B},   {"aside", B},
    {"base", V | B},   {"basefont", V}, {"bgsound", V},   {"blockquote", B},
    {"body", B},       {"br", V},       {"caption", B},   {"center", B},
    {"col", V | B},    {"colgroup", B}, {"command", V},   {"dd", B},
    {"dir", B},        {"div", B},      {"dl", B},        {"dt", B},
    {"embed", V},      {"fieldset", B}, {"figure", B},    {"footer", B},
    {"form", B},       {"frame", V},    {"h1", B},        {"h2", B},
    {"h3", B},         {"h4", B},       {"h5", B},        {"h6", B},
    {"head", B},       {"header", B},   {"hr", V | B},    {"html", B},
    {"image", V},      {"img", V},      {"input", V},     {"keygen", V},
    {"li", B},         {"link", V | B}, {"listing", P},   {"main", B},
    {"menu", B},       {"meta", V | B}, {"nav", B},       {"ol", B},
    {"p", B},          {"param", V},    {"plaintext", P}, {"pre", B | P},
    {"script", P | R}, {"section", B},  {"source", V},    {"style", B | P | R},
    {"table", B},      {"tbody", B},    {"td", B},        {"textarea", P},
    {"tfoot", B},      {"th", B},       {"thead", B},     {"title", B | P},
    {"tr", B},         {"track", V},    {"ul", B},        {"wbr", V},
    {"xmp", P},
});

// Which characters are escaped.
using EscapedInText = StopUnits<char, '\0', '\xFF', '&', '<', '>', '\r'>;
// A reader turns bare line breaks and tabs in a value into blanks.
using EscapedInAttributes = StopUnits<char, '\0', '\xFF', '&', '<', '>', '"', '\t', '\n', '\r'>;

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
template<class Escaped>
void appendEscaping(std::string_view text, std::string& out) {
    for (;;) {
        const std::size_t plain = lengthBefore<Escaped>(text);
        out.append(text, 0, plain);
        if (plain == text.size()) return;
        out += escape(text[plain]);
        text.remove_prefix(plain + 1);
    }
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

// The layout as markup.
class MarkupSink {
  public:
    explicit MarkupSink(std::string& out) : out_(out) {}

    void startTag(const XMLElement& element, bool isVoid) {
        out_.append("<").append(element.name());
        appendAttributes(element, out_);
        out_ += isVoid ? " />" : ">";
    }
    void endTag(const XMLElement& element) { appendEndTag(element, out_); }
    void leaf(const XMLNode& node, bool isRaw) {
        if (isRaw) {
            out_ += node.text();
        } else {
            appendLeaf(node, out_);
        }
    }
    void whiteSpace(std::string_view text) { out_ += text; }

  private:
    std::string& out_;
};

} // namespace

std::uint8_t pageElementFlags(std::string_view name) {
    static constexpr NameTable kNames([] {
        std::array<std::string_view, kPageElements.size()> names;
        std::ranges::transform(kPageElements, names.begin(), &PageElementRow::name);
        return names;
    }());
    const std::size_t found = kNames.find(name);
    return found < kPageElements.size() ? static_cast<std::uint8_t>(kPageElements[found].flags) : 0;
}

bool isBlankText(const XMLNode& node) {
    return node.kind() == XMLNodeKind::text && node.text().find_first_not_of(" \t\r\n") == std::string_view::npos;
}

void appendEscapedText(std::string_view text, std::string& out) {
    appendEscaping<EscapedInText>(text, out);
}

void appendEscapedAttribute(std::string_view value, std::string& out) {
    appendEscaping<EscapedInAttributes>(value, out);
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
    MarkupSink sink(out);
    forEachNodeInOrder(node, PageLayoutWalk(layout, sink));
}

} // namespace platform
