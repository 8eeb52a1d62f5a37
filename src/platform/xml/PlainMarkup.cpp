#include "platform/xml/PlainMarkup.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <charconv>
#include <forward_list>
#include <optional>
#include <string>
#include <vector>

#include <libxml/HTMLparser.h>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"
#include "platform/xml/HTMLTags.h"

namespace platform {

namespace {

constexpr std::size_t kMostAttributes = 64; // of a tag; few enough to compare each with all before it
constexpr std::size_t kLongestName = 64;    // of an attribute
constexpr std::size_t kUsualDepth = 16;     // room for a note's, so that what is there need not move
constexpr std::size_t kUsualAttributes = 8; // of a tag, likewise
constexpr std::size_t kLongestBlanks = 500; // between elements; the library takes 1,000 for text

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\n' || c == '\t';
}
constexpr bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr auto kIsNameCharacter = [] {
    std::array<bool, 256> is{};
    for (std::size_t c = 0; c < 128; ++c)
        is[c] = isLetter(static_cast<char>(c)) || (c >= '0' && c <= '9') || c == '-' || c == '_';
    return is;
}();
constexpr bool isNameCharacter(char c) {
    return kIsNameCharacter[static_cast<unsigned char>(c)];
}

struct Reference {
    std::string_view name, character;
};
constexpr Reference kReferences[] = {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}};

// The character of a reference by number ("&#160;", "&#xA0;") at the start of the text, with the reference's length.
struct CharacterReference {
    std::string character;
    std::size_t length;
};
std::optional<CharacterReference> characterReference(std::string_view text) {
    const bool isHexadecimal = text.starts_with("&#x");
    const std::size_t start = isHexadecimal ? 3 : 2;
    std::uint32_t value = 0;
    const auto [end, error] =
        std::from_chars(text.data() + start, text.data() + text.size(), value, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end == text.data() + text.size() || *end != ';') return std::nullopt;
    if (value < ' ' || value > 0xFFFF || (value >= 0xD800 && value < 0xE000) || value >= 0xFFF0) return std::nullopt;
    return CharacterReference{utf8FromUTF16(std::u16string(1, static_cast<char16_t>(value))),
                              static_cast<std::size_t>(end - text.data()) + 1};
}

enum class Language : std::uint8_t { xml, html };

// What the two languages share: names, values and texts, taken from the front of what is left to read.
class PlainReader {
  protected:
    PlainReader(Language language, std::string_view markup, XMLTreeBuilder& builder)
        : rest_(markup), builder_(builder), language_(language) {
        attributes_.reserve(kUsualAttributes);
    }
    ~PlainReader() = default;

    bool skip(std::string_view literal) {
        if (!rest_.starts_with(literal)) return false;
        rest_.remove_prefix(literal.size());
        return true;
    }
    // False when there is none.
    bool skipBlanks() {
        const std::size_t before = rest_.size();
        while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
        return rest_.size() < before;
    }
    std::string_view take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view takeTextBeforeTag() {
        if (rest_.starts_with('<')) return {}; // as behind most tags
        return take(std::min(rest_.find('<'), rest_.size()));
    }
    // "" when there is none.
    std::string_view takeName() {
        if (rest_.empty() || !isLetter(rest_.front())) return {};
        std::size_t length = 1;
        while (length < rest_.size() && isNameCharacter(rest_[length])) ++length;
        return take(length);
    }
    // The name in an end tag, when it is that one.
    bool skipName(std::string_view name) {
        if (!rest_.starts_with(name) || (rest_.size() > name.size() && isNameCharacter(rest_[name.size()])))
            return false;
        rest_.remove_prefix(name.size());
        return true;
    }
    std::optional<std::string_view> takeQuoted() {
        if (rest_.empty() || (rest_.front() != '"' && rest_.front() != '\'')) return std::nullopt;
        const std::size_t end = rest_.find(rest_.front(), 1);
        if (end == std::string_view::npos) return std::nullopt;
        return take(end + 1).substr(1, end - 1);
    }
    // Up to the ">" or "/>".
    bool takeAttributes() {
        attributes_.clear();
        return rest_.starts_with('>') || takeEachAttribute(); // most have none
    }

    // Calls piece(std::string_view) for the stretches between references and for what these stand for.
    bool forEachPiece(std::string_view text, auto piece) const {
        for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&')) {
            piece(text.substr(0, at));
            text.remove_prefix(at);
            const auto* const known =
                std::ranges::find_if(kReferences, [&](const auto& each) { return text.starts_with(each.name); });
            if (known != std::end(kReferences)) {
                piece(known->character);
                text.remove_prefix(known->name.size());
            } else if (language_ == Language::xml && text.starts_with("&#")) {
                const auto reference = characterReference(text);
                if (!reference) return false;
                piece(reference->character);
                text.remove_prefix(reference->length);
            } else {
                return false;
            }
        }
        if (!text.empty()) piece(text);
        return true;
    }
    bool addText(std::string_view text) {
        if (text.empty()) return true; // as between most tags
        return forEachPiece(text, [this](std::string_view piece) { builder_.addText(XMLNodeKind::text, piece); });
    }

    std::string_view rest_;
    XMLTreeBuilder& builder_;
    std::vector<XMLAttributeView> attributes_; // of the last start tag

  private:
    bool takeEachAttribute();

    std::forward_list<std::string> decoded_; // values that had references in them
    Language language_;
};

bool PlainReader::takeEachAttribute() {
    decoded_.clear();
    while (skipBlanks() && !rest_.empty() && isLetter(rest_.front())) {
        const std::string_view name = takeName();
        const bool isPlain = language_ == Language::html ? isPlainAttributeName(name)
                                                         : name.size() <= kLongestName && !name.starts_with("xml");
        const bool isNew = std::ranges::find(attributes_, name, &XMLAttributeView::name) == attributes_.end();
        if (!isPlain || !isNew || attributes_.size() == kMostAttributes || !skip("=")) return false;
        const auto value = takeQuoted();
        if (!value || value->contains('<') || value->contains('\n') || value->contains('\t')) return false;
        attributes_.push_back({name, *value});
        if (!value->contains('&')) continue;
        std::string& decoded = decoded_.emplace_front();
        if (!forEachPiece(*value, [&](std::string_view piece) { decoded += piece; })) return false;
        attributes_.back().value = decoded;
    }
    return true;
}

class PlainXMLReader : PlainReader {
  public:
    PlainXMLReader(std::string_view xml, XMLTreeBuilder& builder) : PlainReader(Language::xml, xml, builder) {
        open_.reserve(kUsualDepth);
    }

    bool run() {
        if (!takeDeclaration() || !takeDocumentType()) return false;
        do {
            if (!skip("<") || !takeTag()) return false;
            if (!open_.empty() && !addText(takeTextBeforeTag())) return false;
        } while (!open_.empty());
        skipBlanks();
        return rest_.empty();
    }

  private:
    bool takeDeclaration();
    bool takeDocumentType();
    bool takeTag();

    std::vector<std::string_view> open_; // names
};

// Encodings are not read from it, but one that cannot be true would be an error.
bool PlainXMLReader::takeDeclaration() {
    if (!skip("<?xml ")) return true;
    const auto takeValue = [this](std::string_view name) -> std::optional<std::string_view> {
        return skip(name) && skip("=") ? takeQuoted() : std::nullopt;
    };
    if (takeValue("version") != "1.0") return false;
    bool isApart = skipBlanks();
    if (isApart && rest_.starts_with("encoding")) {
        const auto encoding = takeValue("encoding");
        if (encoding != "UTF-8" && encoding != "utf-8") return false;
        isApart = skipBlanks();
    }
    if (isApart && rest_.starts_with("standalone")) {
        const auto standalone = takeValue("standalone");
        if (standalone != "yes" && standalone != "no") return false;
        skipBlanks();
    }
    if (!skip("?>")) return false;
    skipBlanks();
    return true;
}

bool PlainXMLReader::takeDocumentType() {
    if (!skip("<!DOCTYPE ")) return true;
    const std::string_view name = takeName();
    std::optional<std::string_view> publicID, systemID;
    if (name.empty()) return false;
    if (skipBlanks() && rest_.starts_with('P')) {
        if (!skip("PUBLIC ") || !(publicID = takeQuoted()) || !skip(" ") || !(systemID = takeQuoted())) return false;
    } else if (rest_.starts_with('S')) {
        if (!skip("SYSTEM ") || !(systemID = takeQuoted())) return false;
    }
    const auto isPlain = [](std::optional<std::string_view> text) {
        return std::ranges::all_of(text.value_or(""), [](char c) {
            return isNameCharacter(c) || c == ' ' || c == '/' || c == ':' || c == '.';
        });
    };
    skipBlanks();
    if (!isPlain(publicID) || !isPlain(systemID) || !skip(">")) return false;
    skipBlanks();
    builder_.setDocumentType(name, publicID.value_or(""), systemID.value_or(""));
    return true;
}

bool PlainXMLReader::takeTag() {
    if (skip("/")) {
        if (open_.empty() || !skipName(open_.back())) return false;
        skipBlanks();
        open_.pop_back();
        builder_.closeElement();
        return skip(">");
    }
    const std::string_view name = takeName();
    if (name.empty() || !takeAttributes() || !builder_.openElement(name, attributes_)) return false;
    if (skip(">")) {
        open_.push_back(name);
        return true;
    }
    builder_.closeElement();
    return skip("/>");
}

// The elements of note text that readers treat like any other, save for those that they close on their own.
constexpr HTMLTag kTextTags[] = {
    // clang-format off
    HTMLTag::a, HTMLTag::abbr, HTMLTag::b, HTMLTag::big, HTMLTag::blockquote, HTMLTag::br, HTMLTag::caption,
    HTMLTag::center, HTMLTag::cite, HTMLTag::code, HTMLTag::dd, HTMLTag::del, HTMLTag::div, HTMLTag::dl, HTMLTag::dt,
    HTMLTag::em, HTMLTag::font, HTMLTag::h1, HTMLTag::h2, HTMLTag::h3, HTMLTag::h4, HTMLTag::h5, HTMLTag::h6,
    HTMLTag::hr, HTMLTag::i, HTMLTag::img, HTMLTag::ins, HTMLTag::kbd, HTMLTag::li, HTMLTag::ol, HTMLTag::p,
    HTMLTag::pre, HTMLTag::q, HTMLTag::s, HTMLTag::small, HTMLTag::span, HTMLTag::strike, HTMLTag::strong,
    HTMLTag::sub, HTMLTag::sup, HTMLTag::table, HTMLTag::tbody, HTMLTag::td, HTMLTag::tfoot, HTMLTag::th,
    HTMLTag::thead, HTMLTag::tr, HTMLTag::tt, HTMLTag::u, HTMLTag::ul,
    // clang-format on
};
// Of these, what may stand directly in its like. (The library tells only of two different elements.)
constexpr HTMLTag kNestingTags[] = {HTMLTag::b,      HTMLTag::blockquote, HTMLTag::div, HTMLTag::em,
                                    HTMLTag::font,   HTMLTag::i,          HTMLTag::ol,  HTMLTag::span,
                                    HTMLTag::strong, HTMLTag::table,      HTMLTag::u,   HTMLTag::ul};

// Which elements the library closes at the start of which others.
class ClosingTable {
  public:
    static const ClosingTable& instance() {
        static const ClosingTable table;
        return table;
    }
    bool isText(HTMLTag tag) const { return isText_[index(tag)]; }
    // Whether the start of one leaves the other open around it.
    bool mayStandIn(HTMLTag inner, HTMLTag outer) const { return mayStandIn_[index(inner)][index(outer)]; }

  private:
    static constexpr std::size_t kSize = 256;
    static constexpr std::size_t index(HTMLTag tag) { return static_cast<std::uint8_t>(tag); }

    ClosingTable() {
        for (const HTMLTag inner : kTextTags) {
            isText_.set(index(inner));
            mayStandIn_[index(inner)].set(index(HTMLTag::body));
            for (const HTMLTag outer : kTextTags) mayStandIn_[index(inner)].set(index(outer), !closes(inner, outer));
            mayStandIn_[index(inner)].reset(index(inner));
        }
        for (const HTMLTag tag : kNestingTags) mayStandIn_[index(tag)].set(index(tag));
    }
    static bool closes(HTMLTag inner, HTMLTag outer) {
        const std::string innerName(htmlTagName(inner)), outerName(htmlTagName(outer));
        xmlNode node{};
        node.name = BAD_CAST innerName.c_str();
        return htmlAutoCloseTag(nullptr, BAD_CAST outerName.c_str(), &node) != 0;
    }

    std::bitset<kSize> isText_;
    std::array<std::bitset<kSize>, kSize> mayStandIn_;
};

class PlainHTMLReader : PlainReader {
  public:
    PlainHTMLReader(std::string_view page, XMLTreeBuilder& builder) : PlainReader(Language::html, page, builder) {
        open_.reserve(kUsualDepth);
    }

    bool run() {
        if (!skip("<!DOCTYPE html>")) return false;
        builder_.setDocumentType("html", "", "");
        skipBlanks();
        do {
            if (!skip("<") || !(skip("/") ? takeEndTag() : takeStartTag())) return false;
            if (open_.empty()) break;
            const std::string_view text = takeTextBeforeTag();
            if ((holdsNoText(open_.back()) && !isFewBlanks(text)) || !addText(text)) return false;
        } while (!open_.empty());
        return isFewBlanks(rest_);
    }

  private:
    static bool holdsNoText(HTMLTag tag) { return tag == HTMLTag::html || tag == HTMLTag::head; }
    static bool isFewBlanks(std::string_view text) {
        return text.size() <= kLongestBlanks && std::ranges::all_of(text, isBlank);
    }
    bool takeStartTag();
    bool takeEndTag();
    bool takeStyleSheet();
    bool mayOpen(HTMLTag tag);

    std::vector<HTMLTag> open_;
    bool hadHead_ = false, hadBody_ = false;
};

bool PlainHTMLReader::mayOpen(HTMLTag tag) {
    if (open_.empty()) return tag == HTMLTag::html;
    switch (open_.back()) {
    case HTMLTag::html:
        if (tag == HTMLTag::head) return !std::exchange(hadHead_, true);
        return tag == HTMLTag::body && hadHead_ && !std::exchange(hadBody_, true);
    case HTMLTag::head:
        return tag == HTMLTag::meta || tag == HTMLTag::title || tag == HTMLTag::style;
    default:
        return ClosingTable::instance().isText(tag) && ClosingTable::instance().mayStandIn(tag, open_.back());
    }
}

bool PlainHTMLReader::takeStartTag() {
    const std::string_view name = takeName();
    const HTMLTag tag = htmlTagNamed(name);
    if (!mayOpen(tag) || !takeAttributes() || !builder_.openElement(name, attributes_)) return false;
    const bool endsAtOnce = skip("/");
    if (!skip(">")) return false;
    if (endsAtOnce || hasFlag(tag, kVoidTag)) {
        builder_.closeElement();
        return true;
    }
    open_.push_back(tag);
    return tag != HTMLTag::style || takeStyleSheet();
}

// Nothing in it is markup, but what looks like it the library may take for some. Its end tag is left.
bool PlainHTMLReader::takeStyleSheet() {
    builder_.addText(XMLNodeKind::text, takeTextBeforeTag());
    return rest_.starts_with("</style>");
}

bool PlainHTMLReader::takeEndTag() {
    if (!open_.empty() && skipName(htmlTagName(open_.back()))) {
        open_.pop_back();
        builder_.closeElement();
    } else {
        // The end of a void element says nothing: printed trees have it.
        const HTMLTag tag = htmlTagNamed(takeName());
        if (!ClosingTable::instance().isText(tag) || !hasFlag(tag, kVoidTag)) return false;
    }
    return skip(">");
}

// Both readers take the bytes as UTF-8 without a mark in front.
bool isPlainDocument(std::string_view markup) {
    return markup.starts_with('<') && isPlainText(markup);
}

} // namespace

bool isPlainText(std::string_view text) {
    using OtherThanASCII = StopUnits<char, ' ', '~'>;
    for (std::size_t at = 0;;) {
        at += lengthBefore<OtherThanASCII>(text.substr(at));
        if (at == text.size()) return true;
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            if (text[at] != '\t' && text[at] != '\n') return false;
            ++at;
            continue;
        }
        const char32_t point = takeCodePoint(text, at); // U+FFFD for what is ill-formed
        if (point < 0xA0 || (point >= 0xFFC0 && point <= 0xFFFF)) return false;
    }
}

bool isPlainAttributeName(std::string_view name) {
    const auto isLowerCase = [](char c) { return c >= 'a' && c <= 'z'; };
    return !name.empty() && name.size() <= kLongestName && isLowerCase(name.front()) &&
           std::ranges::all_of(name, [&](char c) {
               return isLowerCase(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':';
           });
}

// "]]>" may not stand in the text of XML.
bool readPlainXML(std::string_view xml, XMLTreeBuilder& builder) {
    return isPlainDocument(xml) && !xml.contains("]]>") && PlainXMLReader(builder.storedSource(xml), builder).run();
}

// Its references are to plain characters too.
bool readPlainHTML(std::string_view page, XMLTreeBuilder& builder) {
    if (!isPlainDocument(page) || !PlainHTMLReader(builder.storedSource(page), builder).run()) return false;
    builder.setHasPlainTexts();
    return true;
}

} // namespace platform
