// A page need not be printed from a tree and tokenized again: what the parser underneath would report, which is the
// tags and texts that printing would write, is told to the tree builder straight away, at a fraction of the cost.
//
// The parser has habits of its own, and for what could meet one of them the tree is refused, so that the caller parses
// the markup: elements and attributes that are not plain, markup in style sheets, control characters, text between the
// cells of a table (whose pieces the builder judges one by one), and a page that is not a head and a body.
#include <algorithm>

#include "platform/base/UTF16.h"
#include "platform/xml/HTMLDocument.h"
#include "platform/xml/HTMLEncoding.h"
#include "platform/xml/HTMLTreeBuilder.h"
#include "platform/xml/PageLayout.h"
#include "platform/xml/PlainMarkup.h"
#include "platform/xml/XMLDocument.h"

namespace platform {

namespace {

constexpr std::string_view kPlainDocumentType =
    "<!DOCTYPE html>";                                         // the one that means no quirks mode, without parsing it
constexpr std::size_t kDeepest = 200;                          // far below what makes the parser drop levels
constexpr std::size_t kUsualNodes = 512, kUsualText = 8192;    // room for those of a note, so that they need not move
constexpr std::size_t kUsualAttributes = 64, kUsualDepth = 16; // likewise
constexpr std::size_t kMostAttributes = 64;                    // far below what makes it refuse a tag
constexpr std::size_t kLongestComment = 1024; // longer ones may look to it like a tag of too many attributes

// Elements that the parser, or its end tags, treat in a way of their own.
constexpr bool isPeculiar(HTMLTag tag) {
    switch (tag) {
    case HTMLTag::unknown:
    case HTMLTag::frame:
    case HTMLTag::frameset:
    case HTMLTag::noframes:
    case HTMLTag::plaintext:
    case HTMLTag::script:
        return true;
    default:
        return false;
    }
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\n") == std::string_view::npos;
}

// Whether the page stays UTF-8 with a meta element, in which a reader looks for "charset" wherever it stands.
bool keepsEncoding(const XMLElement& meta) {
    return std::ranges::all_of(meta.attributes(), [](const XMLAttributeView& attribute) {
        if (attribute.name == "charset") return namesUnicode(attribute.value);
        return !mentionsEncoding(attribute.name) && !mentionsEncoding(attribute.value);
    });
}

} // namespace

// The sink of the layout that builds the tree.
class HTMLPrintedPage {
  public:
    HTMLPrintedPage(HTMLDocument& document, bool hasPlainTexts)
        : document_(document), builder_(document), hasPlainTexts_(hasPlainTexts) {
        open_.reserve(kUsualDepth);
    }

    bool isComplete() const { return !refused_ && part_ == Part::body; }

    void startTag(const XMLElement& element, bool isVoid);
    void endTag(const XMLElement& element) {
        if (refused_) return;
        builder_.endTag(element.name(), open_.back());
        open_.pop_back();
    }
    void leaf(const XMLNode& node, bool isRaw);
    void whiteSpace(std::string_view text) {
        if (!refused_) builder_.text(text);
    }

  private:
    enum class Part : std::uint8_t { none, page, head, body };

    bool entersPart(HTMLTag tag);

    HTMLDocument& document_;
    HTMLTreeBuilder builder_;
    std::vector<HTMLDocument::Attribute> attributes_;
    std::vector<HTMLTag> open_;
    Part part_ = Part::none; // the last of those that have begun
    bool hasPlainTexts_;
    bool refused_ = false;
};

// Whether the element is where it belongs: html outermost, in it at most one head and then one body, and all else
// there.
bool HTMLPrintedPage::entersPart(HTMLTag tag) {
    const auto begins = [&](Part part, std::size_t depth) {
        if (open_.size() != depth || part_ >= part) return false;
        part_ = part;
        return true;
    };
    switch (tag) {
    case HTMLTag::html:
        return begins(Part::page, 0);
    case HTMLTag::head:
        return begins(Part::head, 1);
    case HTMLTag::body:
        return begins(Part::body, 1);
    default:
        return open_.size() >= 2;
    }
}

void HTMLPrintedPage::startTag(const XMLElement& element, bool isVoid) {
    const HTMLTag tag = htmlTagNamed(element.name());
    refused_ = refused_ || !entersPart(tag) || isPeculiar(tag) || open_.size() > kDeepest ||
               element.attributes().size() > kMostAttributes || hasFlag(tag, kVoidTag) != isVoid ||
               (tag == HTMLTag::meta && !keepsEncoding(element));
    if (refused_) return;
    attributes_.clear();
    for (const XMLAttributeView& attribute : element.attributes()) {
        refused_ = refused_ || !isPlainAttributeName(attribute.name) || !isValidUTF8(attribute.value);
        if (const HTMLAttribute known = htmlAttributeNamed(attribute.name); known != HTMLAttribute::none)
            attributes_.push_back(document_.stored(known, attribute.value));
    }
    if (refused_) return;
    builder_.startTag(element.name(), tag, attributes_, isVoid);
    if (!isVoid) open_.push_back(tag);
}

void HTMLPrintedPage::leaf(const XMLNode& node, bool isRaw) {
    if (refused_) return;
    const std::string_view text = node.text();
    switch (node.kind()) {
    case XMLNodeKind::text:
        refused_ = !(hasPlainTexts_ || isPlainText(text)) || (isRaw && text.contains('<')) ||
                   (open_.size() < 2 && !isBlank(text)) || (builder_.isBetweenCells() && !isBlank(text));
        if (!refused_) builder_.text(text);
        return;
    case XMLNodeKind::comment: // leaves no trace
        refused_ = text.size() > kLongestComment || text.contains("--") || text.starts_with('-') ||
                   text.starts_with('>') || text.ends_with('-') || text.contains('<') || !isPlainText(text);
        return;
    default:
        refused_ = true;
        return;
    }
}

std::optional<HTMLDocument> HTMLDocument::fromPrintedPage(const XMLDocument& source) {
    const bool isPlain = source.documentType() == kPlainDocumentType;
    if (!source.rootElement() || (!isPlain && !source.documentType().empty())) return std::nullopt;
    HTMLDocument document;
    document.encoding_ = "utf-8";
    document.quirksMode_ = !isPlain;
    document.nodes_.reserve(kUsualNodes);
    document.text_.reserve(kUsualText);
    document.attributes_.reserve(kUsualAttributes);
    HTMLPrintedPage reading(document, source.hasPlainTexts());
    forEachNodeInOrder(*source.rootElement(), PageLayoutWalk(PageLayout::indented, reading));
    if (!reading.isComplete()) return std::nullopt;
    reading.whiteSpace("\n"); // behind the root
    return document;
}

} // namespace platform
