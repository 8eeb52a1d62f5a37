// From note markup to a page: attachments become images or markers, checkboxes marker characters, encrypted blocks
// asterisks; a few list and paragraph shapes are flattened; the result is poured into the page template.
//
// The rewriting is literal scanning over the serialised note element, whose form it relies on: every element has an end
// tag, values stand in double quotes, and no ">" stands in a text or a value.
#pragma once

#include <string>
#include <string_view>

#include "conversion/NotePage.h"
#include "platform/base/Result.h"

namespace platform {
class XMLElement;
}

namespace quillet {

struct EvernoteXMLItem;
class NoteScratch;

enum class UseInlineImages { no, yes };
enum class ConvertDividers { no, yes };

// Markers that pass through the HTML reader as text and become objects in the rich text. The fences' own blanks and the
// two that join them to the name are one blank each when the reader has collapsed them.
inline constexpr std::string_view kAttachmentOpeningFence = "***QLTATTACHMENT ";
inline constexpr std::string_view kAttachmentClosingFence = " QLTATTACHMENT***";
inline constexpr std::string_view kDividerMarker = "***QLTDIVIDER***";

// The note's inner markup with its media resolved. Writes attachment files into the scratch directory; they stay
// there when a later step fails.
// @sel XMLStringFromNoteElement:useInlineImages:error:
platform::Result<std::string> XMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch,
                                                       const platform::XMLElement& noteElement,
                                                       UseInlineImages useInlineImages);

// The finished page.
// @sel noteXHTMLStringFromNoteElement:useInlineImages:convertDividers:error:
platform::Result<std::string> noteXHTMLStringFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch,
                                                             const platform::XMLElement& noteElement,
                                                             UseInlineImages useInlineImages,
                                                             ConvertDividers convertDividers);

// The same page, still to be parsed, with its inline images in their slots.
platform::Result<NotePage> notePageFromNoteElement(EvernoteXMLItem& item, NoteScratch& scratch,
                                                   const platform::XMLElement& noteElement,
                                                   UseInlineImages useInlineImages, ConvertDividers convertDividers);

} // namespace quillet
