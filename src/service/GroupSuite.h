// The application's preferences, which it shares with its service.
#pragma once

#include <string_view>

namespace quillet {

inline constexpr std::string_view kGroupSuite = "Q7X2M9K4T1.com.tesseral.Quillet";

} // namespace quillet
