#include "platform/xml/HTMLTags.h"

#include <array>

#include "platform/xml/NameTable.h"

namespace platform {

namespace {

struct TagRow {
    std::string_view name;
    unsigned flags;
};

constexpr unsigned V = kVoidTag, F = kFormattingTag, S = kSpecialTag, P = kClosesParagraph, C = kScopeTag, H = kHeadTag,
                   I = kImpliedEndTag, T = kTableContextTag, N = kHeadingTag, E = kEndsOthersTag, M = kMarkerTag;

constexpr auto kTags = std::to_array<TagRow>({
    {"", 0},
    {"a", F | E},
    {"abbr", 0},
    {"acronym", 0},
    {"address", S | P},
    {"applet", S | C | M},
    {"area", V | S},
    {"article", S | P},
    {"aside", S | P},
    {"audio", 0},
    {"b", F},
    {"base", V | S | H},
    {"basefont", V | S | H},
    {"bdi", 0},
    {"bdo", 0},
    {"bgsound", V | S | H},
    {"big", F},
    {"blockquote", S | P},
    {"body", S},
    {"br", V | S},
    {"button", S | E},
    {"canvas", 0},
    {"caption", S | C | M},
    {"center", S | P},
    {"cite", 0},
    {"code", F},
    {"col", V | S},
    {"colgroup", S},
    {"data", 0},
    {"dd", S | P | I | E},
    {"del", 0},
    {"details", S | P},
    {"dfn", 0},
    {"dialog", P},
    {"dir", S | P},
    {"div", S | P},
    {"dl", S | P},
    {"dt", S | P | I | E},
    {"em", F},
    {"embed", V | S},
    {"fieldset", S | P},
    {"figcaption", S | P},
    {"figure", S | P},
    {"font", F},
    {"footer", S | P},
    {"form", S | P},
    {"frame", V | S},
    {"frameset", S},
    {"h1", S | P | N | E},
    {"h2", S | P | N | E},
    {"h3", S | P | N | E},
    {"h4", S | P | N | E},
    {"h5", S | P | N | E},
    {"h6", S | P | N | E},
    {"head", S},
    {"header", S | P},
    {"hgroup", S | P},
    {"hr", V | S | P},
    {"html", S | C},
    {"i", F},
    {"iframe", S},
    {"img", V | S},
    {"input", V | S},
    {"ins", 0},
    {"kbd", 0},
    {"keygen", V | S},
    {"label", 0},
    {"legend", 0},
    {"li", S | P | I | E},
    {"link", V | S | H},
    {"listing", S | P},
    {"main", S | P},
    {"map", 0},
    {"mark", 0},
    {"marquee", S | C | M},
    {"menu", S | P},
    {"meta", V | S | H},
    {"nav", S | P},
    {"nobr", F | E},
    {"noembed", S},
    {"noframes", S | H},
    {"noscript", S},
    {"object", S | C | M},
    {"ol", S | P},
    {"optgroup", I | E},
    {"option", I | E},
    {"p", S | P | I},
    {"param", V | S},
    {"picture", 0},
    {"plaintext", S | P},
    {"pre", S | P},
    {"q", 0},
    {"rp", I | E},
    {"rt", I | E},
    {"ruby", 0},
    {"s", F},
    {"samp", 0},
    {"script", S | H},
    {"search", S | P},
    {"section", S | P},
    {"select", S},
    {"small", F},
    {"source", V | S},
    {"span", 0},
    {"strike", F},
    {"strong", F},
    {"style", S | H},
    {"sub", 0},
    {"summary", S | P},
    {"sup", 0},
    {"svg", 0},
    {"table", S | P | C | T},
    {"tbody", S | T},
    {"td", S | C | M},
    {"template", S | C | H},
    {"textarea", S},
    {"tfoot", S | T},
    {"th", S | C | M},
    {"thead", S | T},
    {"time", 0},
    {"title", S | H},
    {"tr", S | T},
    {"track", V | S},
    {"tt", F},
    {"u", F},
    {"ul", S | P},
    {"var", 0},
    {"video", 0},
    {"wbr", V | S},
    {"xmp", S | P},
});
static_assert(kTags.size() == kHTMLTagCount);

constexpr auto kAttributes = std::to_array<std::string_view>({
    "align",   "alt",      "aria-label", "background", "bgcolor", "border", "bordercolor", "cellpadding", "cellspacing",
    "charset", "class",    "color",      "colspan",    "content", "data",   "dir",         "face",        "height",
    "hidden",  "href",     "hspace",     "http-equiv", "id",      "link",   "name",        "nowrap",      "reversed",
    "rowspan", "selected", "size",       "span",       "src",     "srcdoc", "start",       "style",       "text",
    "title",   "type",     "valign",     "value",      "vspace",  "width",
});
static_assert(kAttributes.size() == static_cast<std::size_t>(HTMLAttribute::none));

} // namespace

constinit const std::array<std::uint16_t, kHTMLTagCount> kHTMLTagFlags = [] {
    std::array<std::uint16_t, kHTMLTagCount> flags{};
    for (std::size_t i = 0; i < flags.size(); ++i) flags[i] = static_cast<std::uint16_t>(kTags[i].flags);
    return flags;
}();

HTMLTag htmlTagNamed(std::string_view lowerCaseName) {
    static constexpr NameTable kNames([] {
        std::array<std::string_view, kTags.size() - 1> names; // all but `unknown`
        for (std::size_t i = 0; i < names.size(); ++i) names[i] = kTags[i + 1].name;
        return names;
    }());
    return static_cast<HTMLTag>((kNames.find(lowerCaseName) + 1) % kTags.size());
}

std::string_view htmlTagName(HTMLTag tag) {
    return kTags[static_cast<std::size_t>(tag)].name;
}

HTMLAttribute htmlAttributeNamed(std::string_view lowerCaseName) {
    static constexpr NameTable kNames(kAttributes);
    return static_cast<HTMLAttribute>(kNames.find(lowerCaseName));
}

} // namespace platform
