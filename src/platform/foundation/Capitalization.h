// Counterpart of localizedCapitalizedString.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// The first letter of each word in its title case, the others in lower case, by the rules of the environment's locale
// ("ijsland" is "IJsland" in Dutch, "istanbul" "İstanbul" in Turkish).
std::u16string localizedCapitalized(std::u16string_view text);

// The same, but every other letter stays as it is.
std::u16string localizedWordStartsCapitalized(std::u16string_view text);

// Full case mappings: "ß" becomes "SS".
std::u16string localizedUppercased(std::u16string_view text);
std::u16string localizedLowercased(std::u16string_view text);

} // namespace platform
