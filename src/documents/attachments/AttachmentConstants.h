// Types, plain-text forms and sizes that attachments, cells and the conversions of rich text share.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillet {

// File type of a checklist attachment, and its pasteboard type.
inline constexpr std::string_view QLTChecklistType = "com.tesseral.checklist";
inline constexpr std::string_view QLTDividerTextAttachmentType = "com.tesseral.quillet.note.divider";

inline constexpr std::u16string_view QLTChecklistOnValueReplacementString = u"\u2713 ";
inline constexpr std::u16string_view QLTChecklistOffValueReplacementString = u"\u25E6 ";
inline constexpr std::u16string_view QLTDividerReplacementString = u"***";

// Points.
inline constexpr double QLTChecklistImageDimension = 18; // side of the box; also one step of indentation
inline constexpr double QLTChecklistRightBorder = 2;     // between the box and the text
inline constexpr double QLTDividerTextAttachmentCellSize = 1;
inline constexpr double QLTDividerTextAttachmentCellBorderSize = 7; // above and below the line

inline constexpr std::uint64_t QLTChecklistMaxIndentationLevel = 5;

} // namespace quillet
