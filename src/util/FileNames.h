// Titles and other free text made into safe, unique file names, and what an ENEX file's odd texts need cleaned up.
//
// Lengths and positions are UTF-16 units. Everything is a pure function, except for what looks at the file system:
// makeFilenameUniqueInDirectoryAtURL and fileDisplayName.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/TextEncoding.h"
#include "platform/foundation/URL.h"

namespace quillet {

// The longest file name, in UTF-16 units.
inline constexpr std::size_t kMaximumFilenameLength = 255;

// A file name from the text's first line or sentence.
std::u16string generateFilename(std::u16string_view text);

enum class TruncateToPeriod { no, yes };
// With `no`, periods do not end the name.
// @sel generateFilenameTruncatingToPeriod:
std::u16string generateFilenameTruncatingToPeriod(std::u16string_view text, TruncateToPeriod period);

// The text made safe as one path component of at most 255 units.
std::u16string stringSanitizedForFileName(std::u16string_view text);

// The name itself while nothing is reachable under it; otherwise the first free one of "Note 1.ext", "Note 2.ext"…,
// sanitized. Asks the file system once a candidate. A symbolic link to nothing takes its name. Names that differ by
// case only are two names, as the file system has them.
// @sel makeFilenameUniqueInDirectoryAtURL:
std::u16string makeFilenameUniqueInDirectoryAtURL(std::u16string_view name, const platform::URL& directory);

// Whether a file system would take the two for one name: case, diacritics and character width are ignored, in every
// locale alike. "ø" and "o" are two names.
// @sel isEqualToFilename:
bool isEqualToFilename(std::u16string_view name, std::u16string_view other);
// The same comparison; despite its name it ignores diacritics and width too.
// @sel isCaseInsensitiveEqualToString:
bool isCaseInsensitiveEqualToString(std::u16string_view text, std::u16string_view other);

// The decomposed form in which file systems of the notes' origin store a name. Lone surrogates become U+FFFD, and the
// text ends at its first NUL.
std::u16string fileSystemRepresentationString(std::u16string_view text);

// The last component of the path, without its extension when the file is there and marked to hide it.
std::u16string fileDisplayName(std::u16string_view path);

// At most `maximum` units; a longer text becomes its first and last half of `maximum`, rounded down, joined by "…":
// 2m + 1 units, which is one more than an even maximum.
// @sel stringByTruncatingMiddleWithMaxLength:
std::u16string stringByTruncatingMiddleWithMaxLength(std::u16string_view text, std::size_t maximum);

// Without control characters, illegal characters and surrogates, unit by unit, so that no character beyond the first
// plane is left. U+DBFF and U+DFFF stay: the two ranges of surrogates end one unit early, and files made so far
// have names with them.
std::u16string stringByRemovingControlAndIllegalCharacters(std::u16string_view text);

// @sel stringByRemovingCharactersInSet:
std::u16string stringByRemovingCharactersInSet(std::u16string_view text, const platform::CharacterSet& set);

// CR LF, LF CR and a single CR become LF.
std::u16string stringByStandardizingNewlines(std::u16string_view text);

// Each LF and each CR becomes a space; then spaces and tabs at the ends go.
std::u16string stringByRemovingNewlines(std::u16string_view text);

// Each line break and each tab becomes a space, runs of spaces become one, the ends are trimmed. Linear.
std::u16string stringByRemovingNewlinesAndTabs(std::u16string_view text);

std::u16string stringByTrimmingWhitespace(std::u16string_view text);
void trimWhitespace(std::u16string& text);

std::u16string stringByEscapingBackslashes(std::u16string_view text);
std::u16string stringByEscapingQuotes(std::u16string_view text); // ' and "

// Without U+FFFC, an attachment's place-holder.
std::u16string stringWithoutAttachments(std::u16string_view text);

// The text's UTF-8 with what a URL may not hold percent-encoded.
std::string percentEncodedURLString(std::u16string_view text);

// At most `length` bytes, up to a zero byte. "" for null or a length of 0, whatever the encoding; nothing when the
// bytes are not valid.
// @sel stringWithCString:encoding:length:
std::optional<std::u16string> stringWithCString(const char* bytes, platform::TextEncoding encoding, std::size_t length);

// Some exporters end time stamps in " amZ" or " pmZ". In a text that does, the first such four units become "Z".
std::u16string fixedInvalidDateString(std::u16string_view text);

// The address that a web reader's address stands for; any other is returned as it is. Nothing when an "about:reader"
// address names one that is no URL.
std::optional<platform::URL> URLCleanedForImport(const platform::URL& url);

} // namespace quillet
