// Values as JSON, for scripts.
#pragma once

#include <string>

#include "platform/base/Value.h"

namespace quillet {

// One line without line break. Strings are strings (lone surrogates become U+FFFD), data is base64, dates are ISO 8601;
// an error is an object with "domain", "code", "localizedDescription" and "userInfo".
std::string jsonLine(const platform::Dictionary& dictionary);

} // namespace quillet
