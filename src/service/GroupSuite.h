// The application's preferences, which it shares with its service.
#pragma once

#include <string_view>

namespace quillet {

inline constexpr std::string_view kGroupSuite = "Q7X2M9K4T1.com.tesseral.Quillet";

// Has preferences and note styles read anew, so that an import follows what the user has changed since the one before.
// Not while an import runs in this process.
void readGroupSuite();

} // namespace quillet
