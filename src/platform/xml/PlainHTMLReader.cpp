// Reads plain pages. A parser of HTML ends some elements at the start of others and opens some that are not there. The
// rules here tell where it does neither, so that the tags alone make the tree.
#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <libxml/HTMLparser.h>

#include "platform/xml/HTMLTags.h"
#include "platform/xml/PlainMarkup.h"
#include "platform/xml/PlainReader.h"

namespace platform {

namespace {

constexpr std::size_t kLongestBlanks = 500; // between elements; the library takes 1,000 for text

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

} // namespace

// Its references are to plain characters too.
bool readPlainHTML(std::string_view page, XMLTreeBuilder& builder) {
    if (!isPlainDocument(page) || !PlainHTMLReader(builder.storedSource(page), builder).run()) return false;
    builder.setHasPlainTexts();
    return true;
}

} // namespace platform
