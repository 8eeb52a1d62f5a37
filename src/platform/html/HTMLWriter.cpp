// One pass over the paragraphs: tables and lists are opened and closed by comparing what encloses one paragraph with
// what encloses the next. The body is made first, since the head's style sheet is known only after it.
#include "platform/html/HTMLWriter.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Percent.h"
#include "platform/html/HTMLStyleRules.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {

namespace {

constexpr std::string_view kVersion = "2685.7"; // of the form of the pages, in the meta element CocoaVersion
constexpr double kDefaultFontSize = 12;

std::string escaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else {
            out += c;
        }
    }
    return out;
}

std::string escapedAttribute(std::string_view text) {
    std::string out;
    for (const char c : escaped(text)) c == '"' ? out += "&quot;" : out += c;
    return out;
}

Font fontOf(const AttributeSet& run) {
    const Font* font = run.find<Font>(kFontAttributeName);
    return font ? *font : Font::userFont(kDefaultFontSize);
}

const ParagraphStyle& paragraphOf(const AttributeSet& run) {
    const auto* style = run.find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    return style && *style ? **style : *ParagraphStyle::defaultParagraphStyle();
}

bool isOrdered(std::string_view format) {
    static constexpr std::array<std::string_view, 5> kNumbered{"decimal", "alpha", "latin", "roman", "hexadecimal"};
    return format.find("octal") != std::string_view::npos ||
           std::ranges::any_of(kNumbered,
                               [format](std::string_view part) { return format.find(part) != std::string_view::npos; });
}

// The name between the braces of a marker format.
std::string_view listStyleType(std::string_view format) {
    const std::size_t start = format.find('{'), end = format.find('}');
    if (start == std::string_view::npos || end == std::string_view::npos || end < start) return "disc";
    return format.substr(start + 1, end - start - 1);
}

std::string addressOf(const AttributeValue& link) {
    if (const auto* url = std::get_if<URL>(&link)) return url->absoluteString();
    if (const auto* text = std::get_if<std::u16string>(&link)) return utf8FromUTF16(*text);
    return {};
}

class BodyWriter {
  public:
    explicit BodyWriter(const AttributedString& text) : text_(text), units_(text.string()) {}

    std::string write();
    const HTMLStyleRules& rules() const { return rules_; }

  private:
    struct OpenCell {
        std::shared_ptr<TextBlock> block;
        std::size_t listsInside = 0; // lists that are open in this cell
    };
    struct OpenList {
        std::shared_ptr<TextList> list;
        bool ordered = false;
    };

    void line(std::string_view text) { fmt::format_to(std::back_inserter(body_), "{:{}}{}\n", "", indent_, text); }
    void paragraph(Range contents, Range enclosing);
    void enterBlocks(const ParagraphStyle& style);
    void openTable(const TextTableBlock& cell);
    void openCell(const std::shared_ptr<TextBlock>& block);
    void closeCell(bool endsTable, bool endsRow);
    void enterLists(const ParagraphStyle& style);
    void closeLists(std::size_t keep);
    void writeItem(Range contents, Range enclosing, const ParagraphStyle& style);
    std::string content(Range contents, const HTMLParagraphLook& look);
    void appendRun(std::string& out, const AttributeSet& run, Range range);
    void appendText(std::string& out, Range range);
    std::string attachment(const TextAttachment& attachment) const;
    HTMLParagraphLook look(Range enclosing) const;
    std::size_t markerLength(Range contents, const TextList& list);
    std::size_t listBase() const { return cells_.empty() ? 0 : lists_.size() - cells_.back().listsInside; }

    const AttributedString& text_;
    std::u16string_view units_;
    HTMLStyleRules rules_;
    std::string body_;
    std::size_t indent_ = 0;
    std::vector<OpenCell> cells_;
    std::vector<OpenList> lists_;
    std::unordered_map<const TextList*, std::int64_t> itemNumbers_; // of the next item
    Range paragraph_;
};

std::string BodyWriter::write() {
    for (std::size_t at = 0; at < units_.size();) {
        const Line found = paragraphAt(units_, at);
        paragraph_ = found.contents;
        paragraph(found.contents, found.enclosing);
        at = found.enclosing.end();
    }
    closeLists(listBase());
    while (!cells_.empty()) closeCell(true, true);
    closeLists(0);
    return std::move(body_);
}

void BodyWriter::paragraph(Range contents, Range enclosing) {
    const ParagraphStyle& style = paragraphOf(text_.attributesAt(enclosing.location));
    enterBlocks(style);
    enterLists(style);
    writeItem(contents, enclosing, style);
}

// Tables

void BodyWriter::enterBlocks(const ParagraphStyle& style) {
    std::vector<std::shared_ptr<TextBlock>> wanted;
    for (const auto& block : style.textBlocks)
        if (const auto* cell = dynamic_cast<const TextTableBlock*>(block.get()); cell && cell->table)
            wanted.push_back(block);
    std::size_t common = 0;
    while (common < wanted.size() && common < cells_.size() && cells_[common].block == wanted[common]) ++common;
    if (common == wanted.size() && common == cells_.size()) return;
    const auto* next = common < wanted.size() ? static_cast<const TextTableBlock*>(wanted[common].get()) : nullptr;
    while (cells_.size() > common) {
        closeLists(listBase());
        const auto& open = static_cast<const TextTableBlock&>(*cells_.back().block);
        const bool sameTable = cells_.size() == common + 1 && next && next->table == open.table;
        closeCell(!sameTable, !sameTable || next->startingRow != open.startingRow);
        if (sameTable) {
            if (next->startingRow != open.startingRow) {
                line("<tr>");
                indent_ += 2;
            }
            openCell(wanted[common++]);
            break;
        }
    }
    for (; common < wanted.size(); ++common) {
        closeLists(listBase());
        openTable(static_cast<const TextTableBlock&>(*wanted[common]));
        openCell(wanted[common]);
    }
}

void BodyWriter::openTable(const TextTableBlock& cell) {
    const std::string declarations = tableDeclarations(*cell.table);
    std::string start = "<table cellspacing=\"0\" cellpadding=\"0\"";
    if (const BlockLength& width = cell.table->dimension(BlockDimension::width); width.value > 0)
        start += fmt::format(" width=\"{:.1f}{}\"", width.value, width.isPercentage ? "%" : "");
    if (!declarations.empty()) start += fmt::format(" class=\"{}\"", rules_.className("table", "t", declarations));
    line(start + ">");
    indent_ += 2;
    line("<tbody>");
    indent_ += 2;
    line("<tr>");
    indent_ += 2;
}

void BodyWriter::openCell(const std::shared_ptr<TextBlock>& block) {
    static constexpr std::array<std::string_view, 4> kAlignments{"top", "middle", "bottom", "baseline"};
    const auto& cell = static_cast<const TextTableBlock&>(*block);
    std::string start = "<td";
    if (cell.columnSpan > 1) start += fmt::format(" colspan=\"{}\"", cell.columnSpan);
    if (cell.rowSpan > 1) start += fmt::format(" rowspan=\"{}\"", cell.rowSpan);
    start += fmt::format(" valign=\"{}\" class=\"{}\">", kAlignments[static_cast<std::size_t>(cell.verticalAlignment)],
                         rules_.className("td", "td", cellDeclarations(cell)));
    line(start);
    indent_ += 2;
    cells_.push_back({block, 0});
}

void BodyWriter::closeCell(bool endsTable, bool endsRow) {
    closeLists(listBase());
    cells_.pop_back();
    indent_ -= 2;
    line("</td>");
    if (!endsRow) return;
    indent_ -= 2;
    line("</tr>");
    if (!endsTable) return;
    indent_ -= 2;
    line("</tbody>");
    indent_ -= 2;
    line("</table>");
}

// Lists

void BodyWriter::enterLists(const ParagraphStyle& style) {
    const std::size_t base = listBase();
    std::size_t common = 0;
    while (common < style.textLists.size() && base + common < lists_.size() &&
           lists_[base + common].list == style.textLists[common])
        ++common;
    closeLists(base + common);
    for (; common < style.textLists.size(); ++common) {
        const std::shared_ptr<TextList>& list = style.textLists[common];
        const bool ordered = isOrdered(list->markerFormat());
        const std::string_view element = ordered ? "ol" : "ul";
        const std::string name =
            rules_.className(element, element, fmt::format("list-style-type: {}", listStyleType(list->markerFormat())));
        // A list that a table interrupted goes on with its numbers.
        const std::int64_t start = itemNumbers_.try_emplace(list.get(), list->startingItemNumber()).first->second;
        line(ordered && start != 1 ? fmt::format("<{} class=\"{}\" start=\"{}\">", element, name, start)
                                   : fmt::format("<{} class=\"{}\">", element, name));
        indent_ += 2;
        lists_.push_back({list, ordered});
        if (!cells_.empty()) ++cells_.back().listsInside;
    }
}

void BodyWriter::closeLists(std::size_t keep) {
    while (lists_.size() > keep) {
        indent_ -= 2;
        line(lists_.back().ordered ? "</ol>" : "</ul>");
        lists_.pop_back();
        if (!cells_.empty() && cells_.back().listsInside > 0) --cells_.back().listsInside;
    }
}

// The marker that stands in the text; the list element makes it again. Numbers count on in any case.
std::size_t BodyWriter::markerLength(Range contents, const TextList& list) {
    const std::int64_t number = itemNumbers_.try_emplace(&list, list.startingItemNumber()).first->second++;
    const std::u16string_view content = units_.substr(contents.location, contents.length);
    const std::u16string marker = u"\t" + list.markerForItemNumber(number) + u"\t";
    if (content.starts_with(marker)) return marker.size();
    constexpr std::size_t kLongestMarker = 16;
    if (!content.starts_with(u'\t')) return 0;
    const std::size_t end = content.find(u'\t', 1);
    return end != std::u16string_view::npos && end <= kLongestMarker ? end + 1 : 0;
}

// Paragraphs

HTMLParagraphLook BodyWriter::look(Range enclosing) const {
    HTMLParagraphLook made;
    const AttributeSet& first = text_.attributesAt(enclosing.location);
    made.font = htmlFont(fontOf(first));
    const auto shared = [&](AttributeName name) {
        const Color* color = first.find<Color>(name);
        bool isShared = color != nullptr;
        text_.enumerateAttributes(enclosing, [&](const AttributeSet& run, Range) {
            const Color* other = run.find<Color>(name);
            isShared = isShared && other && *other == *color;
            return isShared;
        });
        return isShared ? htmlColor(*color) : std::string();
    };
    made.color = shared(kForegroundColorAttributeName);
    made.stroke = shared(kStrokeColorAttributeName);
    made.background = shared(kBackgroundColorAttributeName);
    return made;
}

void BodyWriter::writeItem(Range contents, Range enclosing, const ParagraphStyle& style) {
    const bool isItem = !style.textLists.empty();
    if (isItem) {
        const std::size_t marker = markerLength(contents, *style.textLists.back());
        contents = {contents.location + marker, contents.length - marker};
        enclosing = {enclosing.location + marker, enclosing.length - marker};
        if (enclosing.length == 0) enclosing = {contents.location - 1, 1};
    }
    const HTMLParagraphLook shared = look(enclosing);
    const std::string inner = content(contents, shared);
    const AttributeSet& first = text_.attributesAt(enclosing.location);
    const double minimumHeight = contents.length == 0 ? htmlLineHeight(fontOf(first)) : 0;
    const std::string declarations = paragraphDeclarations(style, shared, minimumHeight);
    const std::string direction = style.baseWritingDirection == WritingDirection::rightToLeft ? " dir=\"rtl\"" : "";
    std::string filled = inner;
    if (contents.length == 0) {
        const std::string span = spanDeclarations(first, shared);
        if (!span.empty()) filled = fmt::format("<span class=\"{}\"></span>", rules_.className("span", "s", span));
        filled += "<br>";
    }
    if (!isItem && style.headerLevel >= 1 && style.headerLevel <= 6) {
        line(fmt::format("<h{0}{1} style=\"{2}\">{3}</h{0}>", style.headerLevel, direction,
                         escapedAttribute(declarations), filled));
        return;
    }
    const std::string_view element = isItem ? "li" : "p";
    line(fmt::format("<{0}{1} class=\"{2}\">{3}</{0}>", element, direction,
                     rules_.paragraphClass(element, declarations), filled));
}

// Runs that need the same span share one; bold and italic lie inside.
std::string BodyWriter::content(Range contents, const HTMLParagraphLook& shared) {
    std::string out;
    text_.enumerateAttribute(kLinkAttributeName, contents, [&](const AttributeValue* link, Range linked) {
        const std::string address = link ? addressOf(*link) : std::string();
        if (!address.empty()) out += "<a href=\"" + escapedAttribute(address) + "\">";
        std::string span; // the declarations of the span that is open
        text_.enumerateAttributes(linked, [&](const AttributeSet& run, Range range) {
            const auto* object = run.find<TextAttachmentReference>(kAttachmentAttributeName);
            std::string wanted = object ? std::string() : spanDeclarations(run, shared);
            if (wanted != span) {
                if (!span.empty()) out += "</span>";
                if (!wanted.empty()) out += "<span class=\"" + rules_.className("span", "s", wanted) + "\">";
                span = std::move(wanted);
            }
            appendRun(out, run, range);
        });
        if (!span.empty()) out += "</span>";
        if (!address.empty()) out += "</a>";
    });
    return out;
}

void BodyWriter::appendRun(std::string& out, const AttributeSet& run, Range range) {
    const auto* object = run.find<TextAttachmentReference>(kAttachmentAttributeName);
    if (object && *object) {
        for (const char16_t unit : units_.substr(range.location, range.length))
            if (unit == kAttachmentCharacter) out += attachment(**object);
        return;
    }
    const std::uint32_t traits = fontOf(run).traits();
    if (traits & kBoldFontTrait) out += "<b>";
    if (traits & kItalicFontTrait) out += "<i>";
    appendText(out, range);
    if (traits & kItalicFontTrait) out += "</i>";
    if (traits & kBoldFontTrait) out += "</b>";
}

// Blanks that a reader would drop are no-break blanks in a span that says so.
void BodyWriter::appendText(std::string& out, Range range) {
    const auto isBlank = [this](std::size_t at) {
        return at >= paragraph_.location && at < paragraph_.end() && units_[at] == u' ';
    };
    const auto endsLine = [this](std::size_t at) {
        const char16_t unit = units_[at];
        return unit == u'\t' || unit == 0x2028 || unit == 0x85 || unit == u'\f';
    };
    for (std::size_t at = range.location; at < range.end();) {
        const char16_t unit = units_[at];
        std::size_t end = at + 1;
        if (unit == u' ') {
            while (end < range.end() && units_[end] == u' ') ++end;
            const bool atEdge = at == paragraph_.location || end == paragraph_.end() || endsLine(at - 1);
            if (end - at == 1 && !atEdge && !isBlank(at - 1) && !isBlank(end)) {
                out += ' ';
            } else {
                out += "<span class=\"Apple-converted-space\">";
                for (std::size_t i = at; i < end; ++i) out += "\u00A0";
                out += "</span>";
            }
        } else if (unit == u'\t') {
            while (end < range.end() && units_[end] == u'\t') ++end;
            rules_.useTabs();
            out += "<span class=\"Apple-tab-span\">" + std::string(end - at, '\t') + "</span>";
        } else if (unit == 0x2028 || unit == 0x85 || unit == u'\f' || unit == u'\v') {
            out += at + 1 == paragraph_.end() ? "<br><br>" : "<br>"; // a paragraph's end takes one
        } else if (unit >= 0x20 && unit != kAttachmentCharacter && unit != 0x7F) {
            while (end < range.end() && units_[end] > u' ' && units_[end] != 0x2028 && units_[end] != 0x85 &&
                   units_[end] != kAttachmentCharacter && units_[end] != 0x7F)
                ++end;
            out += escaped(utf8FromUTF16(units_.substr(at, end - at)));
        }
        at = end;
    }
}

std::string BodyWriter::attachment(const TextAttachment& object) const {
    const auto& wrapper = object.fileWrapper();
    if (!wrapper) return {};
    const std::string& name = wrapper->filename().empty() ? wrapper->preferredFilename() : wrapper->filename();
    if (name.empty()) return {};
    const std::string address = percentEncodedForURLPath(name);
    const auto type = UTType::typeWithIdentifier(object.fileType());
    const bool isPicture = type && (type->conformsTo(kUTTypeImage) || type->conformsTo(kUTTypePDF));
    // Names go in as they are, since others look for them so; only what would end the place they stand in is escaped.
    std::string plain;
    for (const char c : name) {
        if (isPicture && c == '"') {
            plain += "&quot;";
        } else if (!isPicture && c == '<') {
            plain += "&lt;";
        } else {
            plain += c;
        }
    }
    return isPicture ? fmt::format("<img src=\"file:///{}\" alt=\"{}\">", address, plain)
                     : fmt::format("<object data=\"file:///{}\">{}</object>", address, plain);
}

} // namespace

Result<std::string> htmlDataFromAttributedString(const AttributedString& text, const HTMLWriteOptions& options) {
    BodyWriter writer(text);
    const std::string body = writer.write();
    const std::string indent(static_cast<std::size_t>(std::max(0, options.prefixSpaces)), ' ');
    std::string page =
        "<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\">\n"
        "<html>\n<head>\n";
    const auto line = [&](std::string_view content) { page.append(indent).append(content).append("\n"); };
    line("<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\">");
    line("<meta http-equiv=\"Content-Style-Type\" content=\"text/css\">");
    line("<title>" + escaped(options.title) + "</title>");
    line("<meta name=\"Generator\" content=\"Cocoa HTML Writer\">");
    line(fmt::format("<meta name=\"CocoaVersion\" content=\"{}\">", kVersion));
    line("<style type=\"text/css\">");
    page += writer.rules().text(indent + indent);
    line("</style>");
    page += "</head>\n<body>\n";
    page += body;
    page += "</body>\n</html>\n";
    return page;
}

} // namespace platform
