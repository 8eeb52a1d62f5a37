// Bytes in the code pages of old documents as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The bytes as text; bytes that the code page has no character for become U+FFFD. Nothing when no code page of that
// name is known. Names are those of the IANA registry and their usual aliases: "windows-1252", "GBK", "macintosh".
std::optional<std::u16string> decodeBytes(std::string_view bytes, std::string_view codePageName);

} // namespace platform
