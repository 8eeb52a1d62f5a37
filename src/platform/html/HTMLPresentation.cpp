#include "platform/html/HTMLPresentation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include <fmt/format.h>

namespace platform {

namespace {

using T = HTMLTag;

struct BuiltInRow {
    HTMLTag tag;
    std::string_view text;
};

constexpr std::string_view kBlock = "display:block", kHidden = "display:none";

constexpr auto kBuiltIn = std::to_array<BuiltInRow>({
    {T::html, kBlock},
    {T::body, "display:block; margin:8px"},
    {T::head, kHidden},
    {T::title, kHidden},
    {T::meta, kHidden},
    {T::link, kHidden},
    {T::base, kHidden},
    {T::style, kHidden},
    {T::script, kHidden},
    {T::template_, kHidden},
    {T::area, kHidden},
    {T::param, kHidden},
    {T::source, kHidden},
    {T::track, kHidden},
    {T::noframes, kHidden},
    {T::noembed, kHidden},
    {T::rp, kHidden},
    {T::basefont, kHidden},
    {T::bgsound, kHidden},
    {T::p, "display:block; margin:1em 0"},
    {T::div, kBlock},
    {T::article, kBlock},
    {T::aside, kBlock},
    {T::footer, kBlock},
    {T::header, kBlock},
    {T::hgroup, kBlock},
    {T::main, kBlock},
    {T::nav, kBlock},
    {T::search, kBlock},
    {T::section, kBlock},
    {T::address, "display:block; font-style:italic"},
    {T::blockquote, "display:block; margin:1em 40px"},
    {T::figure, "display:block; margin:1em 40px"},
    {T::figcaption, kBlock},
    {T::details, kBlock},
    {T::summary, kBlock},
    {T::dialog, kBlock},
    {T::form, kBlock},
    {T::fieldset, "display:block; margin:0 2px; padding:.35em .75em .625em; border:2px groove"},
    {T::legend, kBlock},
    {T::center, "display:block; text-align:center"},
    {T::frameset, kBlock},
    {T::frame, kBlock},
    {T::optgroup, kBlock},
    {T::option, kBlock},
    {T::h1, "display:block; font-size:2em; margin:.67em 0; font-weight:bold"},
    {T::h2, "display:block; font-size:1.5em; margin:.83em 0; font-weight:bold"},
    {T::h3, "display:block; font-size:1.17em; margin:1em 0; font-weight:bold"},
    {T::h4, "display:block; margin:1.33em 0; font-weight:bold"},
    {T::h5, "display:block; font-size:.83em; margin:1.67em 0; font-weight:bold"},
    {T::h6, "display:block; font-size:.67em; margin:2.33em 0; font-weight:bold"},
    {T::ul, "display:block; margin:1em 0; padding-left:40px"},
    {T::ol, "display:block; margin:1em 0; padding-left:40px; list-style-type:decimal"},
    {T::menu, "display:block; margin:1em 0; padding-left:40px"},
    {T::dir, "display:block; margin:1em 0; padding-left:40px"},
    {T::li, "display:list-item; text-align:match-parent"},
    {T::dl, "display:block; margin:1em 0"},
    {T::dt, kBlock},
    {T::dd, "display:block; margin-left:40px"},
    {T::table, "display:table; border-collapse:separate; text-indent:0"},
    {T::thead, "display:table-header-group; vertical-align:middle"},
    {T::tbody, "display:table-row-group; vertical-align:middle"},
    {T::tfoot, "display:table-footer-group; vertical-align:middle"},
    {T::tr, "display:table-row; vertical-align:inherit"},
    {T::td, "display:table-cell; vertical-align:inherit; padding:1px"},
    {T::th, "display:table-cell; vertical-align:inherit; padding:1px; font-weight:bold; text-align:center"},
    {T::col, "display:table-column"},
    {T::colgroup, "display:table-column-group"},
    {T::caption, "display:table-caption; text-align:center"},
    {T::b, "font-weight:bold"},
    {T::strong, "font-weight:bold"},
    {T::i, "font-style:italic"},
    {T::em, "font-style:italic"},
    {T::cite, "font-style:italic"},
    {T::var, "font-style:italic"},
    {T::dfn, "font-style:italic"},
    {T::u, "text-decoration:underline"},
    {T::ins, "text-decoration:underline"},
    {T::s, "text-decoration:line-through"},
    {T::strike, "text-decoration:line-through"},
    {T::del, "text-decoration:line-through"},
    {T::big, "font-size:larger"},
    {T::small, "font-size:smaller"},
    {T::sub, "vertical-align:sub; font-size:smaller"},
    {T::sup, "vertical-align:super; font-size:smaller"},
    {T::tt, "font-family:monospace"},
    {T::code, "font-family:monospace"},
    {T::kbd, "font-family:monospace"},
    {T::samp, "font-family:monospace"},
    {T::pre, "display:block; font-family:monospace; white-space:pre; margin:1em 0"},
    {T::xmp, "display:block; font-family:monospace; white-space:pre; margin:1em 0"},
    {T::listing, "display:block; font-family:monospace; white-space:pre; margin:1em 0"},
    {T::plaintext, "display:block; font-family:monospace; white-space:pre; margin:1em 0"},
    {T::nobr, "white-space:nowrap"},
    {T::mark, "background-color:yellow; color:black"},
    {T::hr, "display:block; margin:.5em auto; color:gray; border:1px inset"},
    {T::bdo, "unicode-bidi:bidi-override"},
    {T::bdi, "unicode-bidi:isolate"},
    {T::ruby, "display:ruby"},
    {T::rt, "display:ruby-text; font-size:50%"},
    {T::button, "display:inline-block; text-align:center; white-space:normal"},
    {T::input, "display:inline-block; text-indent:0; text-align:start"},
    {T::select, "display:inline-block; text-indent:0; text-align:start; white-space:nowrap"},
    {T::textarea, "display:inline-block; font-family:monospace; white-space:pre-wrap; text-indent:0; text-align:start"},
});

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n\r\f";
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

// What attribute reading needs in one place.
struct Source {
    const HTMLDocument& page;
    HTMLDocument::NodeIndex element;
    std::string& out;

    std::optional<std::string_view> get(HTMLAttribute name) const { return page.attribute(element, name); }
    HTMLTag tag() const { return page[element].tag; }
    bool isOneOf(std::initializer_list<HTMLTag> tags) const { return std::ranges::find(tags, tag()) != tags.end(); }

    void color(HTMLAttribute name, std::string_view property) const {
        const auto value = get(name);
        const auto color = value ? legacyColor(*value) : std::nullopt;
        if (!color) return;
        const auto part = [](double component) { return static_cast<int>(component * 255 + 0.5); };
        fmt::format_to(std::back_inserter(out), "{}:#{:02x}{:02x}{:02x};", property, part(color->red),
                       part(color->green), part(color->blue));
    }

    // "120", "120px" or "50%".
    static std::optional<std::string> dimension(std::string_view text) {
        text = trimmed(text);
        double number = 0;
        const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (status != std::errc() || number < 0) return std::nullopt;
        const bool isPercentage = end != text.data() + text.size() && *end == '%';
        return fmt::format("{}{}", number, isPercentage ? "%" : "px");
    }

    void dimension(HTMLAttribute name, std::string_view property) const {
        const auto value = get(name);
        if (const auto text = value ? dimension(*value) : std::nullopt)
            fmt::format_to(std::back_inserter(out), "{}:{};", property, *text);
    }
};

struct WordRow {
    std::string_view word, text;
};

template<std::size_t N>
void appendWord(const std::array<WordRow, N>& words, std::string_view value, std::string& out) {
    const std::string lower = asciiLowerCase(trimmed(value.substr(0, 32)));
    for (const WordRow& entry : words)
        if (entry.word == lower) out += entry.text;
}

constexpr std::array kAlignments{
    WordRow{"left", "text-align:left;"},       WordRow{"right", "text-align:right;"},
    WordRow{"center", "text-align:center;"},   WordRow{"middle", "text-align:center;"},
    WordRow{"justify", "text-align:justify;"},
};
constexpr std::array kFloats{WordRow{"left", "float:left;"}, WordRow{"right", "float:right;"}};
constexpr std::array kVerticalAlignments{
    WordRow{"top", "vertical-align:top;"},
    WordRow{"middle", "vertical-align:middle;"},
    WordRow{"bottom", "vertical-align:bottom;"},
    WordRow{"baseline", "vertical-align:baseline;"},
};
constexpr std::array kListTypes{
    WordRow{"disc", "list-style-type:disc;"},     WordRow{"circle", "list-style-type:circle;"},
    WordRow{"square", "list-style-type:square;"}, WordRow{"none", "list-style-type:none;"},
    WordRow{"1", "list-style-type:decimal;"},
};

void appendListType(std::string_view value, std::string& out) {
    // The letter's case matters.
    value = trimmed(value);
    constexpr std::array kLetters{
        WordRow{"a", "list-style-type:lower-alpha;"},
        WordRow{"A", "list-style-type:upper-alpha;"},
        WordRow{"i", "list-style-type:lower-roman;"},
        WordRow{"I", "list-style-type:upper-roman;"},
    };
    for (const WordRow& entry : kLetters)
        if (entry.word == value) out += entry.text;
    appendWord(kListTypes, value, out);
}

// 1 to 7; a sign counts from 3.
void appendFontSize(std::string_view value, std::string& out) {
    static constexpr std::array<std::string_view, 7> kSizes{"x-small", "small",    "medium",   "large",
                                                            "x-large", "xx-large", "xxx-large"};
    value = trimmed(value);
    const char sign = value.empty() ? '\0' : value.front();
    if (sign == '+' || sign == '-') value.remove_prefix(1);
    int number = 0;
    if (std::from_chars(value.data(), value.data() + value.size(), number).ec != std::errc()) return;
    number = std::clamp(number, 0, 100);
    if (sign == '+') number = 3 + number;
    if (sign == '-') number = 3 - number;
    fmt::format_to(std::back_inserter(out), "font-size:{};",
                   kSizes[static_cast<std::size_t>(std::clamp(number, 1, 7) - 1)]);
}

void appendFontFace(std::string_view value, std::string& out) {
    out += "font-family:";
    bool isFirst = true;
    while (!value.empty()) {
        const std::size_t comma = std::min(value.find(','), value.size());
        std::string name;
        for (const char c : trimmed(value.substr(0, comma)))
            if (c != '"' && c != '\'' && c != '\\' && c != '\n') name += c;
        value.remove_prefix(std::min(comma + 1, value.size()));
        if (name.empty()) continue;
        const std::string lower = asciiLowerCase(name);
        const bool isGeneric = lower == "serif" || lower == "sans-serif" || lower == "monospace" ||
                               lower == "cursive" || lower == "fantasy" || lower == "system-ui";
        out += (isFirst ? "" : ",") + (isGeneric ? lower : "\"" + name + "\"");
        isFirst = false;
    }
    out += ';';
}

// What a cell takes from the table's attributes.
void appendTableParts(const Source& source) {
    constexpr int kSteps = 4; // row, group, table, and one to spare
    auto at = source.page[source.element].parent;
    for (int step = 0; step < kSteps && at != HTMLDocument::kNone; ++step, at = source.page[at].parent) {
        if (source.page[at].tag != HTMLTag::table) continue;
        if (const auto padding = source.page.attribute(at, HTMLAttribute::cellpadding))
            if (const auto length = Source::dimension(*padding))
                fmt::format_to(std::back_inserter(source.out), "padding:{};", *length);
        if (const auto border = source.page.attribute(at, HTMLAttribute::border); border && trimmed(*border) != "0")
            source.out += "border-width:1px;border-style:inset;";
        return;
    }
}

void appendTable(const Source& source) {
    const auto border = source.get(HTMLAttribute::border);
    if (border) {
        double width = 1;
        const std::string_view text = trimmed(*border);
        std::from_chars(text.data(), text.data() + text.size(), width);
        fmt::format_to(std::back_inserter(source.out), "border-width:{}px;border-style:outset;", std::max(0.0, width));
    }
    source.color(HTMLAttribute::bordercolor, "border-color");
    if (const auto align = source.get(HTMLAttribute::align)) {
        appendWord(kFloats, *align, source.out);
        if (asciiLowerCase(trimmed(*align)) == "center") source.out += "margin-left:auto;margin-right:auto;";
    }
}

void appendDirection(const Source& source) {
    const auto value = source.get(HTMLAttribute::dir);
    if (!value) return;
    const std::string lower = asciiLowerCase(trimmed(value->substr(0, 16)));
    if (lower != "ltr" && lower != "rtl") return;
    source.out += "direction:" + lower + ';';
    if (source.tag() != T::bdo && source.tag() != T::bdi) source.out += "unicode-bidi:embed;";
}

} // namespace

const CssDeclarations& builtInDeclarations(HTMLTag tag) {
    static const auto& table = *[] {
        auto* made = new std::array<CssDeclarations, kHTMLTagCount>;
        for (const BuiltInRow& entry : kBuiltIn)
            (*made)[static_cast<std::size_t>(entry.tag)] = cssDeclarations(entry.text);
        return made;
    }();
    return table[static_cast<std::size_t>(tag)];
}

const CssDeclarations& builtInLinkDeclarations() {
    static const auto& made = *new CssDeclarations(cssDeclarations("color:#0000ee; text-decoration:underline"));
    return made;
}

const CssDeclarations& builtInQuirksTableDeclarations() {
    static const auto& made = *new CssDeclarations(cssDeclarations(
        "font-size:medium; font-weight:normal; font-style:normal; color:black; text-align:start; white-space:normal"));
    return made;
}

void appendPresentation(std::string& text, const HTMLDocument& page, HTMLDocument::NodeIndex element) {
    const Source source{page, element, text};
    const bool isCell = source.isOneOf({T::td, T::th});
    if (isCell) appendTableParts(source);
    if (page[element].count == 0) return;
    const bool isTablePart = isCell || source.isOneOf({T::tr, T::tbody, T::thead, T::tfoot, T::col, T::colgroup});
    appendDirection(source);
    if (source.get(HTMLAttribute::hidden)) text += "display:none;";
    if (isTablePart || source.isOneOf({T::body, T::table})) source.color(HTMLAttribute::bgcolor, "background-color");
    if (source.tag() == T::body) source.color(HTMLAttribute::text, "color");
    if (source.tag() == T::table) appendTable(source);
    if (isCell || source.isOneOf({T::table, T::col, T::colgroup, T::hr}))
        source.dimension(HTMLAttribute::width, "width");
    if (isCell && source.get(HTMLAttribute::nowrap)) text += "white-space:nowrap;";
    if (const auto align = source.get(HTMLAttribute::valign); align && isTablePart)
        appendWord(kVerticalAlignments, *align, text);
    if (const auto align = source.get(HTMLAttribute::align)) {
        if (isTablePart ||
            source.isOneOf({T::p, T::div, T::h1, T::h2, T::h3, T::h4, T::h5, T::h6, T::caption, T::legend}))
            appendWord(kAlignments, *align, text);
        if (source.isOneOf({T::img, T::object, T::iframe})) appendWord(kFloats, *align, text);
    }
    if (source.tag() == T::font) {
        if (const auto face = source.get(HTMLAttribute::face)) appendFontFace(*face, text);
        if (const auto size = source.get(HTMLAttribute::size)) appendFontSize(*size, text);
        source.color(HTMLAttribute::color, "color");
    }
    if (const auto type = source.get(HTMLAttribute::type); type && source.isOneOf({T::ul, T::ol, T::li}))
        appendListType(*type, text);
}

} // namespace platform
