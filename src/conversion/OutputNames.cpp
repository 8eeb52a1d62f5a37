#include "conversion/OutputNames.h"

#include <fmt/core.h>

#include "platform/base/UTF16.h"
#include "platform/files/ByteLimit.h"
#include "platform/files/OutputDirectory.h"
#include "platform/foundation/PathString.h"
#include "util/FileNames.h"

namespace quillet {

namespace {

// "Note.qltnote" and 2 give "Note 2.qltnote".
std::string numberedName(const std::string& name, std::size_t number) {
    const std::string suffix = fmt::format(" {}", number);
    const std::string shortened = platform::nameLimitedInBytes(name, suffix.size());
    const std::string candidate = platform::appendingPathExtension(platform::deletingPathExtension(shortened) + suffix,
                                                                   platform::pathExtension(shortened));
    return platform::utf8FromUTF16(stringSanitizedForFileName(platform::utf16FromUTF8(candidate)));
}

} // namespace

std::string freeNameInDirectory(platform::OutputDirectory& directory, std::u16string_view name) {
    const std::string wanted = platform::nameLimitedInBytes(platform::utf8FromUTF16(name));
    return directory.firstFreeName(wanted, [&](std::size_t number) { return numberedName(wanted, number); });
}

std::u16string namedAsOneComponent(std::u16string_view name) {
    const bool isOne = !name.empty() && name != u"." && name != u".." && name.find(u'/') == std::u16string_view::npos &&
                       name.find(u'\0') == std::u16string_view::npos;
    if (isOne) return std::u16string(name);
    std::u16string safe = stringSanitizedForFileName(name);
    std::erase(safe, u'\0');
    return safe;
}

} // namespace quillet
