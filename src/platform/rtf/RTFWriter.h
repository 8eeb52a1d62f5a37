// Counterpart of NSAttributedString's RTFFromRange:documentAttributes: and
// RTFDFileWrapperFromRange:documentAttributes:.
//
// What is written is read by any word processor: fonts and colors in tables at the head, lists both as list tables and
// as marker text, tables as rows and cells, links as fields. Attributes that RTF has no word for are left out.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Range.h"
#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/text/AttributedString.h"

namespace platform {

class FileWrapper;

// The document attributes that the writer takes and the reader gives. Lengths are points; sizes are strings in the form
// "{595, 842}". An attribute that is not given leaves no word.
inline constexpr std::string_view kPaperSizeDocumentAttribute = "PaperSize";
inline constexpr std::string_view kLeftMarginDocumentAttribute = "LeftMargin";
inline constexpr std::string_view kRightMarginDocumentAttribute = "RightMargin";
inline constexpr std::string_view kTopMarginDocumentAttribute = "TopMargin";
inline constexpr std::string_view kBottomMarginDocumentAttribute = "BottomMargin";
inline constexpr std::string_view kViewSizeDocumentAttribute = "ViewSize";
inline constexpr std::string_view kViewModeDocumentAttribute = "ViewMode"; // 0 as wide as the window, 1 page
inline constexpr std::string_view kDefaultTabIntervalDocumentAttribute = "DefaultTabInterval";
inline constexpr std::string_view kCocoaRTFVersionDocumentAttribute = "CocoaRTFVersion"; // reading only

// The text of a package lies under this name.
inline constexpr std::string_view kRTFDTextName = "TXT.rtf";

// The range as RTF. Attachments leave nothing. The range must lie inside the text; linear in what it holds.
Result<std::string> rtfFromRange(const AttributedString& text, Range range, const Dictionary& documentAttributes = {});

// One attachment character of a text and the name of its file in the package.
struct RTFDEntry {
    std::size_t position = 0; // in the text, UTF-16 units
    TextAttachmentReference attachment;
    std::string name; // UTF-8; one path component
};

// The names that the attachments in the range get, in text order: a wrapper's preferred name; for a further file of
// the same name, and for one named like the package's text, "1__#$!@%!#__name" and so on. Attachments without contents
// are left out. Whoever adds files to the package afterwards gives them these names, or changes them here first.
std::vector<RTFDEntry> rtfdEntriesInRange(const AttributedString& text, Range range);

// The range as a package: the text, naming each attachment, and one file an entry. An attachment without an entry
// leaves nothing; two entries of one name put the later one's file there.
Result<std::shared_ptr<FileWrapper>> rtfdFileWrapperFromRange(const AttributedString& text, Range range,
                                                              const Dictionary& documentAttributes,
                                                              const std::vector<RTFDEntry>& entries);
Result<std::shared_ptr<FileWrapper>> rtfdFileWrapperFromRange(const AttributedString& text, Range range,
                                                              const Dictionary& documentAttributes = {});

} // namespace platform
