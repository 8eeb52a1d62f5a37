// Runs become pieces: text, blanks at its edges, line breaks, attachments. Markers must touch what they enclose, so
// blanks and breaks are written after the markers that close before them and before those that open behind. One walk
// over the pieces does that; a marker that both neighbours have stays open. Code is written piece by piece.
#include "programs/export/MarkdownSpans.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/PathString.h"
#include "richtext/highlights/Highlights.h"
#include "util/FileNames.h"
#include "util/Markdown.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Range;
using platform::TextAttachment;

namespace {

struct SpanStyle {
    std::u16string link; // a destination; "" when none
    bool highlight = false, strike = false, strong = false, emphasis = false, code = false;
    friend bool operator==(const SpanStyle&, const SpanStyle&) = default;
};

enum class PieceKind { text, blank, lineBreak, object };

struct Piece {
    PieceKind kind = PieceKind::text;
    SpanStyle style;
    std::u16string text; // of an object its Markdown
};

bool floats(const Piece& piece) {
    return piece.kind == PieceKind::blank || piece.kind == PieceKind::lineBreak;
}

bool isBlank(char16_t unit) {
    return platform::CharacterSet::whitespaceAndNewline().containsUnit(unit);
}
bool isAlphanumeric(char16_t unit) {
    return platform::CharacterSet::alphanumeric().containsUnit(unit);
}
bool isLineBreak(char16_t unit) {
    return unit == 0x2028 || unit == u'\v' || unit == u'\f' || unit == u'\n' || unit == u'\r' || unit == 0x85;
}

// Parentheses would end the address, angle brackets and blanks break it.
std::u16string destination(std::string_view address) {
    std::string safe;
    for (const char c : address) {
        switch (c) {
        case '(':
            safe += "%28";
            break;
        case ')':
            safe += "%29";
            break;
        case '<':
            safe += "%3C";
            break;
        case '>':
            safe += "%3E";
            break;
        case ' ':
            safe += "%20";
            break;
        default:
            safe += c;
        }
    }
    return platform::utf16FromUTF8(safe);
}

std::u16string linkOf(const AttributeSet& attributes) {
    if (const auto* url = attributes.find<platform::URL>(platform::kLinkAttributeName))
        return destination(url->absoluteString());
    if (const auto* text = attributes.find<std::u16string>(platform::kLinkAttributeName))
        return destination(percentEncodedURLString(*text));
    return {};
}

bool isEscaped(std::u16string_view text, std::size_t at, bool inTable) {
    const char16_t unit = text[at];
    const char16_t before = at > 0 ? text[at - 1] : u' ', after = at + 1 < text.size() ? text[at + 1] : u' ';
    switch (unit) {
    case u'\\':
    case u'`':
    case u'*':
    case u'[':
    case u']':
    case u'<':
    case u'~':
        return true;
    case u'_':
        return !(isAlphanumeric(before) && isAlphanumeric(after)); // never a marker inside a word
    case u'&':
        return isAlphanumeric(after) || after == u'#';
    case u'|':
        return inTable;
    default:
        return false;
    }
}

std::u16string escaped(std::u16string_view text, bool inTable) {
    std::u16string safe;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isEscaped(text, at, inTable)) safe += u'\\';
        safe += text[at];
    }
    return safe;
}

// Fenced by one backtick more than it holds in a row.
std::u16string codeSpan(std::u16string_view code, bool inTable) {
    std::size_t longest = 0, current = 0;
    std::u16string content;
    for (const char16_t unit : code) {
        current = unit == u'`' ? current + 1 : 0;
        longest = std::max(longest, current);
        if (inTable && unit == u'|') content += u'\\';
        content += unit;
    }
    const std::u16string fence(longest + 1, u'`');
    const bool touches = code.starts_with(u'`') || code.ends_with(u'`');
    const std::u16string_view gap = touches ? u" " : u"";
    return fence + std::u16string(gap) + content + std::u16string(gap) + fence;
}

std::string nameOf(const TextAttachment& attachment) {
    const auto& wrapper = attachment.fileWrapper();
    if (!wrapper) return {};
    return wrapper->preferredFilename().empty() ? wrapper->filename() : wrapper->preferredFilename();
}

// The pieces of one paragraph, in order.
class Pieces {
  public:
    Pieces(const FileLink& fileLink, const MarkdownSpanOptions& options) : fileLink_(fileLink), options_(options) {}

    std::vector<Piece> of(const AttributedString& text, Range range) {
        text.enumerateAttributes(range, [&](const AttributeSet& attributes, Range run) {
            addRun(std::u16string_view(text.string()).substr(run.location, run.length), attributes);
        });
        trimBlanks();
        merge();
        return std::move(pieces_);
    }

  private:
    SpanStyle styleOf(const AttributeSet& attributes) const {
        SpanStyle style;
        style.link = linkOf(attributes);
        style.highlight = isHighlight(attributes.find(QLTHighlightTextAttributeName));
        if (const auto* strike = attributes.find(platform::kStrikethroughStyleAttributeName))
            style.strike = platform::integerValue(*strike) != 0;
        if (const auto* font = attributes.find<platform::Font>(platform::kFontAttributeName)) {
            const std::uint32_t traits = font->traits();
            style.strong = (traits & platform::kBoldFontTrait) != 0 && !options_.inHeading;
            style.emphasis = (traits & platform::kItalicFontTrait) != 0;
        }
        style.code = isCode(attributes);
        return style;
    }

    void addRun(std::u16string_view text, const AttributeSet& attributes) {
        const SpanStyle style = styleOf(attributes);
        const auto* attachment = attributes.find<platform::TextAttachmentReference>(platform::kAttachmentAttributeName);
        std::u16string piece;
        const auto flush = [&] { addText(std::exchange(piece, {}), style); };
        for (const char16_t unit : text) {
            if (unit == platform::kAttachmentCharacter) {
                flush();
                if (attachment && *attachment) addObject(**attachment, style);
            } else if (isLineBreak(unit)) {
                flush();
                pieces_.push_back({PieceKind::lineBreak, {}, {}});
            } else if (unit >= u' ' || unit == u'\t') {
                piece += unit;
            }
        }
        flush();
    }

    void addText(std::u16string_view text, const SpanStyle& style) {
        const auto first = std::ranges::find_if_not(text, isBlank);
        if (first == text.end()) {
            if (!text.empty()) pieces_.push_back({PieceKind::blank, {}, std::u16string(text)});
            return;
        }
        const auto start = static_cast<std::size_t>(first - text.begin());
        std::size_t end = text.size();
        while (isBlank(text[end - 1])) --end;
        if (start > 0) pieces_.push_back({PieceKind::blank, {}, std::u16string(text.substr(0, start))});
        pieces_.push_back({PieceKind::text, style, std::u16string(text.substr(start, end - start))});
        if (end < text.size()) pieces_.push_back({PieceKind::blank, {}, std::u16string(text.substr(end))});
    }

    void addObject(const TextAttachment& attachment, SpanStyle style) {
        style.strong = style.emphasis = style.code = false;
        std::u16string markdown;
        if (const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(&attachment)) {
            markdown = box->isOn() ? QLTMarkdownChecklistOnString : QLTMarkdownChecklistOffString;
        } else if (dynamic_cast<const QLTDividerTextAttachment*>(&attachment)) {
            markdown = u"<hr>"; // where a line of its own has no room: in a table
        } else {
            markdown = fileMarkdown(attachment, style);
        }
        if (!markdown.empty()) pieces_.push_back({PieceKind::object, std::move(style), std::move(markdown)});
    }

    // Links do not nest: only an image keeps the link around it.
    std::u16string fileMarkdown(const TextAttachment& attachment, SpanStyle& style) const {
        const std::string name = nameOf(attachment);
        if (name.empty()) { // an image that was never fetched
            const std::u16string address = std::exchange(style.link, {});
            return address.empty() ? address : markdownImageLinkWithAltText(u"", address, u"");
        }
        const std::u16string shown = escaped(platform::utf16FromUTF8(name), options_.inTable);
        const std::u16string address = destination(fileLink_(name));
        const auto type = platform::UTType::typeWithIdentifier(attachment.fileType());
        if (type && type->conformsTo(platform::kUTTypeImage)) return markdownImageLinkWithAltText(shown, address, u"");
        style.link.clear();
        return markdownLinkWithText(shown, address, u"");
    }

    // Those at the ends of the paragraph go.
    void trimBlanks() {
        while (!pieces_.empty() && floats(pieces_.back())) pieces_.pop_back();
        pieces_.erase(pieces_.begin(), std::ranges::find_if_not(pieces_, floats));
    }

    // Two texts of one style are one, with the blanks between them.
    void merge() {
        std::vector<Piece> merged;
        for (Piece& piece : pieces_) {
            const std::size_t count = merged.size();
            const bool afterBlank = count >= 2 && merged[count - 1].kind == PieceKind::blank;
            Piece* before = count == 0 ? nullptr : &merged[count - (afterBlank ? 2 : 1)];
            const bool joins = before && piece.kind == PieceKind::text && before->kind == PieceKind::text &&
                               before->style == piece.style;
            if (!joins) {
                merged.push_back(std::move(piece));
                continue;
            }
            if (afterBlank) before->text += merged.back().text;
            before->text += piece.text;
            if (afterBlank) merged.pop_back();
        }
        pieces_ = std::move(merged);
    }

    const FileLink& fileLink_;
    const MarkdownSpanOptions& options_;
    std::vector<Piece> pieces_;
};

// One marker that is open: what closes it again.
struct Marker {
    std::u16string open, close;
    friend bool operator==(const Marker&, const Marker&) = default;
};

std::vector<Marker> markersOf(const SpanStyle& style) {
    std::vector<Marker> markers;
    const auto add = [&](std::u16string_view open, std::u16string_view close) {
        markers.push_back({std::u16string(open), std::u16string(close)});
    };
    if (!style.link.empty()) markers.push_back({u"[", u"](" + style.link + u")"});
    if (style.highlight) add(QLTMarkdownOpeningHighlightMarker, QLTMarkdownClosingHighlightMarker);
    if (style.strike) add(QLTMarkdownOpeningStrikeMarker, QLTMarkdownClosingStrikeMarker);
    if (style.strong) add(QLTMarkdownStrongAsterisk, QLTMarkdownStrongAsterisk);
    if (style.emphasis) add(QLTMarkdownEmphasisAsterisk, QLTMarkdownEmphasisAsterisk);
    return markers;
}

// How many of the open markers stay open, outermost first; these are taken out of the wanted ones.
std::size_t markersThatStay(const std::vector<Marker>& open, std::vector<Marker>& wanted) {
    std::size_t stay = 0;
    for (; stay < open.size(); ++stay) {
        const auto found = std::ranges::find(wanted, open[stay]);
        if (found == wanted.end()) break;
        wanted.erase(found);
    }
    return stay;
}

std::u16string markdownOf(const Piece& piece, const MarkdownSpanOptions& options) {
    switch (piece.kind) {
    case PieceKind::lineBreak:
        return std::u16string(options.lineBreak) + options.indent;
    case PieceKind::blank:
    case PieceKind::object:
        return piece.text;
    default:
        return piece.style.code ? codeSpan(piece.text, options.inTable) : escaped(piece.text, options.inTable);
    }
}

} // namespace

bool isCode(const AttributeSet& attributes) {
    const auto* font = attributes.find<platform::Font>(platform::kFontAttributeName);
    return font && (font->traits() & platform::kFixedPitchFontTrait) != 0;
}

std::u16string markdownSpans(const AttributedString& text, Range range, const FileLink& fileLink,
                             const MarkdownSpanOptions& options) {
    std::u16string out, blanks; // blanks wait until it is known which markers end before them
    std::vector<Marker> open;
    const auto closeDownTo = [&](std::size_t count) {
        for (; open.size() > count; open.pop_back()) out += open.back().close;
    };
    for (const Piece& piece : Pieces(fileLink, options).of(text, range)) {
        if (floats(piece)) {
            blanks += markdownOf(piece, options);
            continue;
        }
        std::vector<Marker> wanted = markersOf(piece.style);
        closeDownTo(markersThatStay(open, wanted));
        out += std::exchange(blanks, {});
        for (Marker& marker : wanted) {
            out += marker.open;
            open.push_back(std::move(marker));
        }
        out += markdownOf(piece, options);
    }
    closeDownTo(0);
    return out;
}

std::u16string escapedAtLineStart(std::u16string_view line) {
    const auto escapedAt = [&](std::size_t at) {
        return std::u16string(line.substr(0, at)) + u"\\" + std::u16string(line.substr(at));
    };
    if (line.empty()) return {};
    const auto blankAt = [&](std::size_t at) { return at >= line.size() || isBlank(line[at]); };
    switch (line.front()) {
    case u'#':
    case u'>':
    case u'=':
        return escapedAt(0);
    case u'+':
        return blankAt(1) ? escapedAt(0) : std::u16string(line);
    case u'-':
        return blankAt(1) || line[1] == u'-' ? escapedAt(0) : std::u16string(line);
    default:
        break;
    }
    constexpr std::size_t kLongestNumber = 9; // of a list item
    const std::size_t digits = std::min(line.find_first_not_of(u"0123456789"), line.size());
    if (digits == 0 || digits > kLongestNumber || digits == line.size()) return std::u16string(line);
    const bool isNumber = (line[digits] == u'.' || line[digits] == u')') && blankAt(digits + 1);
    return isNumber ? escapedAt(digits) : std::u16string(line);
}

} // namespace quillet
