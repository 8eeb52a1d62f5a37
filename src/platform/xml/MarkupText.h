// Corrections to markup as text, made before a parser sees it. Each is one pass.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// With the entity names of HTML replaced by their characters, so that no DTD is needed for them. The five names of XML
// and references by number stay; a name that nobody knows becomes the text that it looks like ("&amp;name;"). Comments,
// CDATA sections and instructions stay as they are.
std::string resolvingHTMLEntities(std::string_view xml);

// With each CDATA section as escaped text, which HTML readers understand.
std::string escapingSections(std::string_view markup);

// With the text of the page's title as text: HTML has references in a title, but no tags, comments or sections. To
// libxml2 a comment without an end that stands there is one to the end of the page, and an end of the page is one.
// Nothing when the title is plain.
std::optional<std::string> escapingTitle(std::string_view page);

// With the end tags that keep list items whole. libxml2 passes over the end of an item in which a division is open, and
// takes the end of a division that has no start in the item for that of one around the list; pages made by literal
// rewriting have both. A division left open ends with its item, and an end without a start goes.
std::string keepingListItemsWhole(std::string_view markup);

// Whether a start tag has more attributes than the limit. Parsers compare each attribute with all before it, so such a
// tag has to be found before they see it.
bool hasTagWithTooManyAttributes(std::string_view markup);

// The name in the first start tag, in lower case; "" without one.
std::string nameOfFirstTag(std::string_view markup);

} // namespace platform
