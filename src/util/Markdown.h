// Markdown text: what a line or span is, links read and made, checklist items, and which files are Markdown.
//
// Out-parameters are written only when given. Lengths are UTF-16 units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Value.h"
#include "platform/foundation/URL.h"

namespace quillet {

inline constexpr std::u16string_view QLTMarkdownBulletAsterisk = u"* ";
inline constexpr std::u16string_view QLTMarkdownBulletPlus = u"+ ";
inline constexpr std::u16string_view QLTMarkdownBulletDash = u"- ";
inline constexpr std::u16string_view QLTMarkdownChecklistOnString = u"- [x] ";
inline constexpr std::u16string_view QLTMarkdownChecklistOffString = u"- [ ] ";
inline constexpr std::u16string_view QLTMarkdownChecklistIndentString = u"    ";
inline constexpr std::u16string_view QLTMarkdownStrongAsterisk = u"**";
inline constexpr std::u16string_view QLTMarkdownStrongUnderscore = u"__";
inline constexpr std::u16string_view QLTMarkdownEmphasisAsterisk = u"*";
inline constexpr std::u16string_view QLTMarkdownEmphasisUnderscore = u"_";
inline constexpr std::u16string_view QLTMarkdownOpeningStrikeMarker = u"~";
inline constexpr std::u16string_view QLTMarkdownClosingStrikeMarker = u"~";
inline constexpr std::u16string_view QLTMarkdownOpeningHighlightMarker = u"<mark>";
inline constexpr std::u16string_view QLTMarkdownClosingHighlightMarker = u"</mark>";
inline constexpr std::u16string_view QLTMarkdownHeadingMarker = u"#";
inline constexpr std::string_view QLTMarkdownType = "net.daringfireball.markdown";

enum class MarkdownListType { none = 0, numbered = 1, bulleted = 2 };

// The bullet with the quote markers and indentation before it ("> - "); the number of a numbered line.
// @sel getListTypeAndCurrentBullet:listNumber:
MarkdownListType getListTypeAndCurrentBullet(std::u16string_view line, std::u16string* bullet = nullptr,
                                             std::int64_t* listNumber = nullptr);

bool isStrong(std::u16string_view span, std::u16string_view* marker = nullptr);
bool isEmphasized(std::u16string_view span, std::u16string_view* marker = nullptr);
bool isStruckthrough(std::u16string_view span);
bool isHighlighted(std::u16string_view span);

// The number signs at the start, but at most the length less one: "#tag" is of level 1, "###" of level 2, "#" of none.
std::size_t headingLevel(std::u16string_view line);

// What a link is made of.
struct MarkdownLink {
    std::u16string link;
    std::u16string text; // of an image, its alternative text
    std::optional<std::u16string> title;

    friend bool operator==(const MarkdownLink&, const MarkdownLink&) = default;
};

// "[text](link "title")"; nothing for anything else.
// @sel getLink:text:title:
std::optional<MarkdownLink> getLink(std::u16string_view span);
// "![alternative text](link "title")"
// @sel getImageLink:altText:title:
std::optional<MarkdownLink> getImageLink(std::u16string_view span);

// Without inline and reference images. From the first image of a line everything goes up to the line's last closing
// bracket. Linear.
std::u16string markdownByRemovingImages(std::u16string_view text);

// What follows "[x]" or "[ ]" of each checklist marker up to the end of its line, trimmed, without empty items. Views
// into the text: a line of many markers would otherwise take memory in the square of its length.
std::vector<std::u16string_view> completedChecklistItems(std::u16string_view text);
std::vector<std::u16string_view> outstandingChecklistItems(std::u16string_view text);

// Whether the line is of a checklist; then its value and its level, which is 0.
// @sel getMarkdownChecklistValue:indentationLevel:
bool getMarkdownChecklistValue(std::u16string_view line, bool* value = nullptr,
                               std::int64_t* indentationLevel = nullptr);

// The title is left out when it is empty. Nothing is escaped.
// @sel markdownLinkWithText:link:title:
std::u16string markdownLinkWithText(std::u16string_view text, std::u16string_view link, std::u16string_view title);
// @sel markdownImageLinkWithAltText:imageLink:title:
std::u16string markdownImageLinkWithAltText(std::u16string_view altText, std::u16string_view imageLink,
                                            std::u16string_view title);

// The way from one file to another, percent-encoded as a URL path ("../pictures/a%20b.png").
// @sel relativeLinkFor:toInsertIntoItemAtURL:
std::string relativeLinkFor(const platform::URL& target, const platform::URL& item);

// Case is ignored. The extensions come from MarkdownExtensions.plist in the data directory, read once.
// @sel isFileExtensionSupportedMarkdownExtension:
bool isFileExtensionSupportedMarkdownExtension(std::u16string_view extension);

// The file name extensions of QLTMarkdownType in a property list with imported type declarations; empty for any other
// value.
std::vector<std::u16string> markdownExtensionsOfDeclarations(const platform::Value& propertyList);

} // namespace quillet
