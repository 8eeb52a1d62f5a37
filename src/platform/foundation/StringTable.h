// Counterpart of NSLocalizedString: the English text is the key, and the answer where no translation is.
//
// The language is the environment's, not the C library's: a service answers in its own environment's language without
// setlocale, which is process-wide, and tests choose one. The catalogues are gettext's,
// <catalogueDirectory>/<language>/LC_MESSAGES/quillet-enex-import.mo, and are read by our own code for that reason.
// scripts/update-catalogue collects the texts from the two names below.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Callable from any thread. A catalogue is read at the first question and when language or directory have changed.
std::string localizedString(std::string_view english);

// Marks a text of a table, which is looked up later.
consteval std::string_view localizable(std::string_view english) {
    return english;
}

} // namespace platform
