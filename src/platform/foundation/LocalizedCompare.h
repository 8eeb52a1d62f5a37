// Counterpart of localizedStandardCompare: the order in which a file manager lists names.
#pragma once

#include <compare>
#include <string_view>

namespace platform {

// By the rules of the environment's locale, case and width ignored, runs of digits by their number ("Note 2" before
// "Note 10"). Equivalent texts need not be equal ("note" and "Note").
std::weak_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b);

} // namespace platform
