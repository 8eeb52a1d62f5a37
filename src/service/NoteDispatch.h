// What becomes of one finished note: its converter is chosen, its files are written, its item entry is made.
#pragma once

#include <string_view>

#include "enex/EvernoteXMLItem.h"
#include "platform/base/Result.h"

namespace quillet {

class NoteOutput;

// Keys of an item entry.
inline constexpr std::string_view kNameItemKey = "name";
inline constexpr std::string_view kIdentifierItemKey = "identifier";
inline constexpr std::string_view kSourceItemKey = "source";
inline constexpr std::string_view kTagsItemKey = "tags";
inline constexpr std::string_view kFileURLItemKey = "fileURL";

// Writes the note and returns its entry. On failure nothing of the note is left in the destination.
// @sel getItemDict:
platform::Result<ItemEntry> getItemDict(EvernoteXMLItem& item, NoteOutput& output);

} // namespace quillet
