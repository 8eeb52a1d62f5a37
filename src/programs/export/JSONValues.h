// Values as JSON trees: shared by what prints JSON here, and included nowhere else.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "platform/base/Value.h"

namespace quillet {

// Strings are strings (lone surrogates become U+FFFD), data is base64, dates are ISO 8601; an error is an object with
// "domain", "code", "localizedDescription" and "userInfo". As deep as the value, which a property list bounds.
nlohmann::ordered_json jsonFromValue(const platform::Value& value);

// One line without line break.
std::string jsonText(const nlohmann::ordered_json& tree);

} // namespace quillet
