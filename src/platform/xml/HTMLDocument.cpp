// libxml2's HTML parser serves as the tokenizer: of its events only start tags, texts and genuine end tags are used,
// and HTMLTreeBuilder makes the tree. That parser ends elements by HTML 4 tables of its own; such an ending is told
// from an end tag of the page by the input position (right behind "</name>"), and end tags that it drops as
// unexpected are taken from its error reports. No tree of its own is built.
#include "platform/xml/HTMLDocument.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <utility>

#include <fmt/core.h>
#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include "platform/base/UTF16.h"
#include "platform/xml/HTMLEncoding.h"
#include "platform/xml/HTMLReferences.h"
#include "platform/xml/HTMLTreeBuilder.h"

namespace platform {

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;
constexpr std::size_t kLargeValue = 4096; // bytes; taken over instead of copied
// The parser searches its own stack of open elements for every stray end tag; beyond this it is kept from growing.
constexpr int kParserStack = 512;
constexpr std::size_t kShortTag = 8; // bytes that a tag has, with the text behind it, on pages that say something
constexpr std::size_t kImpliedNodes = 16;
constexpr std::size_t kLongTag = 2048; // bytes; shorter tags cannot hold too many attributes

std::string_view view(const xmlChar* text) {
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

struct ReleaseContext {
    void operator()(xmlParserCtxt* context) const { htmlFreeParserCtxt(context); }
};

// How many attribute-like words the tag at `at` holds, and where it ends. Quoted values count as nothing.
std::pair<std::size_t, std::size_t> countWords(std::string_view page, std::size_t at) {
    std::size_t words = 0;
    bool inWord = true; // the element's name is no attribute
    while (++at < page.size() && page[at] != '>') {
        if (page[at] == '"' || page[at] == '\'') {
            const std::size_t end = page.find(page[at], at + 1);
            if (end == std::string_view::npos) break;
            at = end;
            inWord = false;
        } else if (isSpace(page[at]) || page[at] == '/') {
            inWord = false;
        } else if (!inWord) {
            inWord = true;
            ++words;
        }
    }
    return {words, at};
}

// How many tags a page has at most.
Result<std::size_t> countTags(std::string_view page) {
    std::size_t tags = 0;
    std::size_t end = 0; // of the tag; looked for again only behind the last one found
    for (std::size_t at = page.find('<'); at != std::string_view::npos; at = page.find('<', at + 1)) {
        ++tags;
        if (end < at) end = std::min(page.find('>', at), page.size());
        if (end - at < kLongTag) continue;
        const auto [words, next] = countWords(page, at);
        if (words > HTMLDocument::kMaximumAttributes) {
            const auto line = std::count(page.begin(), page.begin() + static_cast<std::ptrdiff_t>(at), '\n') + 1;
            return failure(Error::withDescription(
                kHTMLDocumentErrorDomain, static_cast<std::int64_t>(HTMLDocumentError::tooManyAttributes),
                fmt::format("line {}: a tag has more than {} attributes", line, HTMLDocument::kMaximumAttributes)));
        }
        at = std::max(at, std::min(next, page.size() - 1) - 1);
    }
    return tags;
}

// Document types that browsers read in quirks mode, by the start of their public identifier in lower case.
constexpr auto kQuirksIdentifiers = std::to_array<std::string_view>({
    "-//w3c//dtd html 3",
    "-//ietf//dtd html",
    "-//w3c//dtd html 4.0 frameset//",
    "-//w3c//dtd html 4.0 transitional//",
    "-//netscape comm",
    "-//microsoft//dtd internet explorer",
    "-//w3o//dtd w3 html",
    "html",
});

bool isQuirksType(std::string_view name, std::string_view publicIdentifier, bool hasSystemIdentifier) {
    std::string identifier(publicIdentifier);
    std::ranges::transform(identifier, identifier.begin(), lower);
    if (name != "html" && name != "HTML") return true;
    if (!hasSystemIdentifier && identifier.starts_with("-//w3c//dtd html 4.01 transitional//")) return true;
    return std::ranges::any_of(kQuirksIdentifiers, [&](std::string_view start) {
        return start == "html" ? identifier == start : identifier.starts_with(start);
    });
}

} // namespace

HTMLDocument::Attribute HTMLDocument::stored(HTMLAttribute name, std::string_view value) {
    std::span<char> place = freeInBlock_;
    if (value.size() > place.size()) {
        const std::size_t size = value.size() < kLargeValue ? kBlockSize : value.size();
        place = {blocks_.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get(), size};
    }
    if (!value.empty()) std::memcpy(place.data(), value.data(), value.size());
    if (value.size() < kLargeValue) freeInBlock_ = place.subspan(value.size());
    return {place.data(), static_cast<std::uint32_t>(value.size()), name};
}

void HTMLDocument::ReleaseValue::operator()(char* value) const {
    xmlFree(value);
}

// One parse: the callbacks and what they share.
class HTMLPageParser {
  public:
    explicit HTMLPageParser(HTMLDocument& document) : document_(document), builder_(document) {}

    Result<> parse(const std::string& page);

  private:
    static HTMLPageParser& self(void* user) { return *static_cast<HTMLPageParser*>(user); }
    static xmlSAXHandler handler();

    void startElement(const xmlChar* name, const xmlChar** attributes);
    void endElement(const xmlChar* name);
    void error(const xmlError& error);
    HTMLDocument::Attribute kept(HTMLAttribute name, const xmlChar*& value);
    std::size_t position() const;
    bool behindEndTag(std::string_view name) const;
    bool isImplied(std::string_view name, const xmlChar** attributes) const;

    HTMLDocument& document_;
    HTMLTreeBuilder builder_;
    std::unique_ptr<xmlParserCtxt, ReleaseContext> context_;
    std::size_t startedAt_ = 0; // input position at the last start tag
    std::size_t endedAt_ = 0;   // input position at which an end tag was dealt with
    std::vector<HTMLDocument::Attribute> pending_;
};

std::size_t HTMLPageParser::position() const {
    const xmlParserInput& input = *context_->input;
    return input.consumed + static_cast<std::size_t>(input.cur - input.base);
}

// Whether the page has "</name>" right before the present position.
bool HTMLPageParser::behindEndTag(std::string_view name) const {
    const auto* base = reinterpret_cast<const char*>(context_->input->base);
    const auto* cur = reinterpret_cast<const char*>(context_->input->cur);
    if (cur == base || cur[-1] != '>') return false;
    constexpr std::ptrdiff_t kLongestEndTag = 80; // the parser keeps that much behind it
    const char* from = cur - std::min(cur - base, kLongestEndTag);
    const char* at = cur - 1;
    while (at > from && *at != '<') --at;
    if (*at != '<' || at[1] != '/' || cur - at < static_cast<std::ptrdiff_t>(name.size()) + 3) return false;
    return std::equal(name.begin(), name.end(), at + 2, [](char a, char b) { return a == lower(b); });
}

// The parser opens a p for text before any body; HTML5 does not.
bool HTMLPageParser::isImplied(std::string_view name, const xmlChar** attributes) const {
    if (name != "p" || attributes != nullptr || context_->nameNr > 3) return false;
    const auto* base = reinterpret_cast<const char*>(context_->input->base);
    const auto* at = reinterpret_cast<const char*>(context_->input->cur);
    while (at > base && isSpace(at[-1])) --at;
    return at - base < 2 || lower(at[-1]) != 'p' || at[-2] != '<';
}

HTMLDocument::Attribute HTMLPageParser::kept(HTMLAttribute name, const xmlChar*& value) {
    const std::string_view text = view(value);
    if (text.size() < kLargeValue) return document_.stored(name, text);
    document_.largeValues_.emplace_back(reinterpret_cast<char*>(const_cast<xmlChar*>(value)));
    value = nullptr; // ours now; the parser frees what it still finds
    return {document_.largeValues_.back().get(), static_cast<std::uint32_t>(text.size()), name};
}

void HTMLPageParser::startElement(const xmlChar* xmlName, const xmlChar** attributes) {
    const std::string_view name = view(xmlName);
    if (isImplied(name, attributes)) return;
    pending_.clear();
    for (const xmlChar** pair = attributes; pair != nullptr && pair[0] != nullptr; pair += 2)
        if (const HTMLAttribute known = htmlAttributeNamed(view(pair[0])); known != HTMLAttribute::none)
            pending_.push_back(kept(known, pair[1]));
    startedAt_ = position();
    const xmlChar* cur = context_->input->cur;
    builder_.startTag(name, pending_, cur[0] == '/' && cur[1] == '>');
    const bool isRaw = name == "script" || name == "style"; // the parser must know that it is inside
    if (context_->nameNr > kParserStack && !isRaw) {
        --context_->nameNr;
        context_->name = context_->nameTab[context_->nameNr - 1];
    }
}

void HTMLPageParser::endElement(const xmlChar* xmlName) {
    const std::size_t at = position();
    if (at == endedAt_ || at <= startedAt_ + 2 || !behindEndTag(view(xmlName))) return; // ended by the parser
    endedAt_ = at;
    builder_.endTag(view(xmlName));
}

void HTMLPageParser::error(const xmlError& error) {
    if (error.code != XML_ERR_TAG_NAME_MISMATCH || error.str1 == nullptr || position() == endedAt_) return;
    endedAt_ = position();
    builder_.endTag(error.str1);
}

xmlSAXHandler HTMLPageParser::handler() {
    xmlSAXHandler made{};
    made.initialized = XML_SAX2_MAGIC;
    made.internalSubset = [](void* user, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId) {
        self(user).document_.quirksMode_ = isQuirksType(view(name), view(publicId), systemId != nullptr);
    };
    made.startElement = [](void* user, const xmlChar* name, const xmlChar** attributes) {
        self(user).startElement(name, attributes);
    };
    made.endElement = [](void* user, const xmlChar* name) { self(user).endElement(name); };
    const auto text = [](void* user, const xmlChar* characters, int length) {
        self(user).builder_.text({reinterpret_cast<const char*>(characters), static_cast<std::size_t>(length)});
    };
    made.characters = text;
    made.ignorableWhitespace = text;
    made.cdataBlock = text;
    made.serror = [](void* user, xmlErrorPtr error) { self(user).error(*error); };
    return made;
}

Result<> HTMLPageParser::parse(const std::string& page) {
    static const bool initialised = (xmlInitParser(), true);
    static_cast<void>(initialised);
    const auto noMemory = [] {
        return failure(Error::withDescription(kHTMLDocumentErrorDomain,
                                              static_cast<std::int64_t>(HTMLDocumentError::outOfMemory),
                                              "no memory for reading the page"));
    };
    context_.reset(htmlNewParserCtxt());
    if (!context_) return noMemory();
    *context_->sax = handler();
    context_->userData = this;
    htmlCtxtUseOptions(context_.get(), HTML_PARSE_RECOVER | HTML_PARSE_NONET | HTML_PARSE_IGNORE_ENC);
    context_->options |= XML_PARSE_HUGE; // not settable for HTML otherwise; without it long texts are cut
    auto* buffer = xmlParserInputBufferCreateMem(page.data(), static_cast<int>(page.size()), XML_CHAR_ENCODING_UTF8);
    auto* input = buffer ? xmlNewIOInputStream(context_.get(), buffer, XML_CHAR_ENCODING_UTF8) : nullptr;
    if (input == nullptr) return noMemory();
    inputPush(context_.get(), input);
    htmlParseDocument(context_.get());
    if (context_->errNo == XML_ERR_NO_MEMORY) return noMemory();
    return {};
}

Result<HTMLDocument> HTMLDocument::parse(std::string_view bytes) {
    HTMLDocument document;
    DecodedHTML page = decodedHTML(bytes);
    if (std::string rewritten; rewriteReferences(page.text, rewritten)) page.text = std::move(rewritten);
    if (page.text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return failure(Error::withDescription(kHTMLDocumentErrorDomain,
                                              static_cast<std::int64_t>(HTMLDocumentError::tooLarge),
                                              "the page is larger than 2 GB"));
    document.encoding_ = std::move(page.encoding);
    // A tag or a text is a node. What is not used of this is never touched; growing would move a large tree a dozen
    // times, and hold it twice.
    const std::size_t tags = TRY(countTags(page.text));
    document.nodes_.reserve(std::min(tags, page.text.size() / kShortTag) + kImpliedNodes);
    document.text_.reserve(page.text.size());
    HTMLPageParser parser(document);
    TRY(parser.parse(page.text));
    return document;
}

std::string_view HTMLDocument::text(NodeIndex index) const {
    return std::string_view(text_).substr(nodes_[index].start, nodes_[index].count);
}

std::string_view HTMLDocument::name(NodeIndex index) const {
    const Node& node = nodes_[index];
    return node.tag == HTMLTag::unknown ? std::string_view(otherNames_[node.otherName]) : htmlTagName(node.tag);
}

std::optional<std::string_view> HTMLDocument::attribute(NodeIndex index, HTMLAttribute name) const {
    const Node& node = nodes_[index];
    if (node.kind == NodeKind::element)
        for (std::uint32_t i = node.start; i < node.start + node.count; ++i)
            if (attributes_[i].name == name) return attributes_[i].text();
    return std::nullopt;
}

HTMLDocument::NodeIndex HTMLDocument::following(NodeIndex index, NodeIndex end) const {
    return nodes_[index].first != kNone ? nodes_[index].first : followingSkippingChildren(index, end);
}

HTMLDocument::NodeIndex HTMLDocument::followingSkippingChildren(NodeIndex index, NodeIndex end) const {
    for (; index != end && index != kNone; index = nodes_[index].parent)
        if (nodes_[index].next != kNone) return nodes_[index].next;
    return kNone;
}

bool operator==(const HTMLDocument& a, const HTMLDocument& b) {
    return a.nodes_ == b.nodes_ && a.attributes_ == b.attributes_ && a.text_ == b.text_ &&
           a.otherNames_ == b.otherNames_ && a.encoding_ == b.encoding_ && a.quirksMode_ == b.quirksMode_;
}

std::string HTMLDocument::textContent(NodeIndex index) const {
    std::string joined;
    for (NodeIndex at = following(index, index); at != kNone; at = following(at, index))
        if (!isElement(at)) joined += text(at);
    return joined;
}

} // namespace platform
