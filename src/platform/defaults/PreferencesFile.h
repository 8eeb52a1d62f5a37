// One domain's file: reading it, and changing one key of it so that no other writer's change is lost.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/base/Value.h"

namespace platform {

struct PreferencesFile {
    Dictionary values;
    std::string bytes;
    std::string trouble; // why the values are empty although there is a file; "" when all is well
};

// NAME.plist in the environment's directory for preferences.
std::string preferencesPath(std::string_view domain);

// An absent file has no values and no trouble.
PreferencesFile readPreferencesFile(const std::string& path);

// Sets or, for a null value, removes the key and answers all values. Holds PATH.lock meanwhile. A file that was
// damaged is kept as PATH.damaged. An unreadable one is an error, since what it holds would be lost.
Result<Dictionary> changePreferencesFile(const std::string& path, std::string_view key, const Value* value);

} // namespace platform
