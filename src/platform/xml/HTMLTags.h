// The element and attribute names of HTML that reading knows, as numbers, with what tree building asks about a name.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

// In the order of the table in HTMLTags.cpp; `unknown` stands for every other name.
enum class HTMLTag : std::uint8_t {
    // clang-format off
    unknown, a, abbr, acronym, address, applet, area, article, aside, audio, b, base, basefont, bdi, bdo, bgsound, big,
    blockquote, body, br, button, canvas, caption, center, cite, code, col, colgroup, data, dd, del, details, dfn,
    dialog, dir, div, dl, dt, em, embed, fieldset, figcaption, figure, font, footer, form, frame, frameset, h1, h2, h3,
    h4, h5, h6, head, header, hgroup, hr, html, i, iframe, img, input, ins, kbd, keygen, label, legend, li, link,
    listing, main, map, mark, marquee, menu, meta, nav, nobr, noembed, noframes, noscript, object, ol, optgroup, option,
    p, param, picture, plaintext, pre, q, rp, rt, ruby, s, samp, script, search, section, select, small, source, span,
    strike, strong, style, sub, summary, sup, svg, table, tbody, td, template_, textarea, tfoot, th, thead, time, title,
    tr, track, tt, u, ul, var, video, wbr, xmp,
    // clang-format on
};

inline constexpr std::size_t kHTMLTagCount = static_cast<std::size_t>(HTMLTag::xmp) + 1;

// What a name is to tree building; bits.
enum HTMLTagFlag : std::uint16_t {
    kVoidTag = 1,           // never has content
    kFormattingTag = 2,     // opened again after mis-nesting
    kSpecialTag = 4,        // ends the search of a stray end tag
    kClosesParagraph = 8,   // its start tag ends an open p
    kScopeTag = 16,         // hides what is open around it
    kHeadTag = 32,          // belongs to the head while the body has not begun
    kImpliedEndTag = 64,    // may be left open without harm
    kTableContextTag = 128, // holds only rows, cells and the like
    kHeadingTag = 256,
    kEndsOthersTag = 512, // its start tag ends other elements than an open p
    kMarkerTag = 1024,    // formatting outside does not reach inside, and the reverse
};

HTMLTag htmlTagNamed(std::string_view lowerCaseName);
std::string_view htmlTagName(HTMLTag tag); // "" for unknown
extern const std::array<std::uint16_t, kHTMLTagCount> kHTMLTagFlags;
inline std::uint16_t htmlTagFlags(HTMLTag tag) { // HTMLTagFlag bits
    return kHTMLTagFlags[static_cast<std::size_t>(tag)];
}
inline bool hasFlag(HTMLTag tag, HTMLTagFlag flag) {
    return (htmlTagFlags(tag) & flag) != 0;
}

// The attributes that are kept; all others leave no trace in the tree.
enum class HTMLAttribute : std::uint8_t {
    // clang-format off
    align, alt, ariaLabel, background, bgcolor, border, bordercolor, cellpadding, cellspacing, charset, class_, color,
    colspan, content, data, dir, face, height, hidden, href, hspace, httpEquiv, id, link, name, nowrap, reversed,
    rowspan, selected, size, span, src, srcdoc, start, style, text, title, type, valign, value, vspace, width, none
    // clang-format on
};

// HTMLAttribute::none for a name that is not kept.
HTMLAttribute htmlAttributeNamed(std::string_view lowerCaseName);

} // namespace platform
